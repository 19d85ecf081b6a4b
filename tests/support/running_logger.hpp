// The process-wide logger for tests: options on a test domain, a session
// that finalizes the logger when it ends, and a way to hold the write thread
// so that the queue keeps what was logged for the test to read.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "vexar/Vexar.h"
#include "vexar/logger_core.hpp"

namespace vexar_test {

struct OptionsDeleter {
    void operator()(QTV_VX_Options *options) const { QTV_VX_Options_delete(options); }
};
using OptionsPtr = std::unique_ptr<QTV_VX_Options, OptionsDeleter>;

// Remote administration off unless asked: most tests need no command reader.
inline OptionsPtr loggerOptions(int domainId, DDS_Long echo = 0, DDS_Long remoteAdministration = 0) {
    OptionsPtr options(QTV_VX_Options_createDefault());
    QTV_VX_Options_setDomainId(options.get(), domainId);
    QTV_VX_Options_setEchoToStdout(options.get(), echo);
    QTV_VX_Options_setRemoteAdministrationEnabled(options.get(), remoteAdministration);
    return options;
}

// Registers the options, starts the logger and finalizes it at the end.
class LoggerSession {
public:
    explicit LoggerSession(OptionsPtr options) : options_(std::move(options)) {
        EXPECT_EQ(QTV_VX_Vexar_setOptions(options_.get()), 1);
        logger_ = QTV_VX_Vexar_getInstance();
        EXPECT_NE(logger_, nullptr);
    }
    ~LoggerSession() { QTV_VX_Vexar_finalizeInstance(); }  // not copyable: it owns the options

    QTV_VX_Vexar *logger() const { return logger_; }
    QTV_VX_Options *options() const { return options_.get(); }

private:
    OptionsPtr options_;
    QTV_VX_Vexar *logger_ = nullptr;
};

// Stops the write thread's loop and waits until it has left it; the queue
// then keeps every message pushed.
inline bool holdWriteThread(LogMessageWriteThread *thread) {
    vexar::stopWriteThread(thread);
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (vexar::shared(thread->exitRun).load() == 0) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

struct QueuedMessage {
    DDS_Long level;
    std::string category;
    std::string message;
};

// Takes everything out of the queue, oldest first (the write thread must be
// held).
inline std::vector<QueuedMessage> drainQueue(QTV_VX_MessageQueue *queue) {
    std::vector<QueuedMessage> drained;
    const OBLX_Time_t noWait = OBLX_TIME_ZERO;
    while (const QTV_VX_LogMessagePlusTime *head = QTV_VX_MessageQueue_front(queue, &noWait)) {
        drained.push_back({head->message.level, head->message.category, head->message.message});
        QTV_VX_MessageQueue_pop(queue);
    }
    return drained;
}

}  // namespace vexar_test
