// What the logger's benchmarks share: a running logger on options of their
// choosing, and waits on its queue read from the logger's own counts.
#pragma once

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "vexar/QosLibrary.h"
#include "vexar/Vexar.h"
#include "vexar/message_counts.hpp"

namespace vexar_bench {

// The built-in QoS profile the benchmarks run under: Lossless unless
// VEXAR_BENCH_PROFILE names another one ("Bounded"), or "default" for none.
inline const char *benchProfile() {
    const char *chosen = std::getenv("VEXAR_BENCH_PROFILE");
    return chosen != nullptr && *chosen != '\0' ? chosen : QTV_VX_QOS_PROFILE_LOSSLESS;
}

inline bool benchUsesDefaultQos() { return std::strcmp(benchProfile(), "default") == 0; }

// The process-wide logger on registered options, finalized at the end.
// Remote administration is off: no benchmark sends commands.
class BenchLogger {
public:
    BenchLogger(int domain, DDS_Long queueSize, DDS_DomainParticipant *participant = nullptr)
        : options_(QTV_VX_Options_createDefault()), queueSize_(queueSize) {
        QTV_VX_Options_setDomainId(options_, domain);
        if (participant != nullptr) QTV_VX_Options_setDomainParticipant(options_, participant);
        QTV_VX_Options_setQueueSize(options_, queueSize);
        QTV_VX_Options_setRemoteAdministrationEnabled(options_, 0);
        if (!benchUsesDefaultQos()) {
            QTV_VX_Options_setQosLibrary(options_, QTV_VX_QOS_LIBRARY_NAME);
            QTV_VX_Options_setQosProfile(options_, benchProfile());
        }
        QTV_VX_Vexar_setOptions(options_);
        logger_ = QTV_VX_Vexar_getInstance();
    }
    ~BenchLogger() {
        QTV_VX_Vexar_finalizeInstance();
        QTV_VX_Options_delete(options_);
    }
    BenchLogger(const BenchLogger &) = delete;
    BenchLogger &operator=(const BenchLogger &) = delete;

    QTV_VX_Vexar *get() const { return logger_; }

    // Waits while fewer than `room` places are free in the queue, so that
    // the next call does not meet a full queue (which drops the message
    // with a printed warning).
    void waitForRoom(std::uint64_t room = 1) const {
        waitWhile([&] { return queued() + room > static_cast<std::uint64_t>(queueSize_); });
    }

    // Waits until the write thread has taken everything out of the queue.
    void waitUntilDrained() const {
        waitWhile([] { return queued() != 0; });
    }

private:
    // At most ten seconds: a write thread that stopped must not hang the run
    // (the calls then meet a full queue, and the figures say so).
    template <typename Condition>
    static void waitWhile(Condition condition) {
        auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (condition() && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::microseconds(20));
        }
    }

    static std::uint64_t queued() {
        vexar::QueueOutcomes outcomes = vexar::queueOutcomes();
        return outcomes.queued - outcomes.settled();
    }

    QTV_VX_Options *options_;
    DDS_Long queueSize_;
    QTV_VX_Vexar *logger_ = nullptr;
};

}  // namespace vexar_bench
