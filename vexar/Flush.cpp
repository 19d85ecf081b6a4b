// QTV_VX_Vexar_flush: waits until what was logged has left the queue and
// been acknowledged by the reliable readers, so that an application can
// finalize without losing its last lines.
//
// The wait holds no global lock (logging calls take it); the logger stays
// alive meanwhile through the flush gate, which destroy closes after
// telling flushes in progress to return.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <optional>
#include <shared_mutex>
#include <thread>

#include "platform/dds/data_writer.h"
#include "platform/runtime/global_lock.h"
#include "type/vexarSupport.h"
#include "vexar/Vexar.h"
#include "vexar/logger_core.hpp"
#include "vexar/report_line.hpp"

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char *kSource = "QTV_VX_Vexar_flush";
// How often the queue is looked at, and how long one wait for
// acknowledgments lasts before the flush looks whether it must end.
constexpr auto kQueuePoll = std::chrono::milliseconds(1);
constexpr auto kAckSlice = std::chrono::milliseconds(50);
// A queue that has not moved for this long may hold a head whose write
// timed out: the write thread retries it only when woken.
constexpr auto kStallBeforeWake = std::chrono::milliseconds(100);

std::shared_mutex &flushGate() noexcept {
    static auto *gate = new std::shared_mutex;
    return *gate;
}
std::atomic<bool> gFlushesEnding{false};

// Empty for an infinite time-out; nothing at all for an invalid one.
std::optional<std::optional<Clock::time_point>> deadlineOf(const DDS_Duration_t &timeout) noexcept {
    if (timeout.sec == DDS_DURATION_INFINITE_SEC && timeout.nanosec == DDS_DURATION_INFINITE_NSEC) {
        return std::optional<Clock::time_point>();
    }
    if (timeout.sec < 0 || timeout.nanosec >= 1000000000u) return std::nullopt;
    return Clock::now() + std::chrono::seconds(timeout.sec) + std::chrono::nanoseconds(timeout.nanosec);
}

bool expired(const std::optional<Clock::time_point> &deadline) noexcept {
    return deadline && Clock::now() >= *deadline;
}

DDS_Duration_t nextAckWait(const std::optional<Clock::time_point> &deadline) noexcept {
    auto wait = std::chrono::duration_cast<std::chrono::nanoseconds>(kAckSlice);
    if (deadline) wait = std::clamp(std::chrono::nanoseconds(*deadline - Clock::now()), {}, wait);
    return DDS_Duration_t{0, static_cast<DDS_UnsignedLong>(wait.count())};
}

// What a flush needs, taken under the global lock while `self` is surely
// the running logger.
struct FlushTarget {
    QTV_VX_MessageQueue *queue;
    DDS_DataWriter *writer;
};

DDS_ReturnCode_t refuse(DDS_ReturnCode_t code, const char *text) noexcept {
    vexar::reportError(text, kSource);
    return code;
}

// Null after the refusal's line; otherwise the caller holds the gate shared.
std::optional<FlushTarget> enterFlush(QTV_VX_Vexar *self, DDS_ReturnCode_t &refusal) noexcept {
    if (vexar::onWriteThread()) {
        refusal = refuse(DDS_RETCODE_PRECONDITION_NOT_MET, "Cannot flush from the write thread");
        return std::nullopt;
    }
    if (!OBLX_GlobalLock_take()) {
        refusal = refuse(DDS_RETCODE_ERROR, "Unable to lock: It is not safe to flush");
        return std::nullopt;
    }
    std::optional<FlushTarget> target;
    if (self == vexar::shared(QTV_VX_Vexar_instance).load() && vexar::stateKind(*self) == QTV_VX_STATE_OPERATIONAL) {
        flushGate().lock_shared();
        target = FlushTarget{self->q, QTV_VX_LogMessageDataWriter_as_datawriter(
                                          QTV_VX_DDSEntities_getLogMessageWriter(self->_ddsEntities))};
    }
    OBLX_GlobalLock_give();
    if (!target) refusal = refuse(DDS_RETCODE_PRECONDITION_NOT_MET, "Vexar is not running");
    return target;
}

// OK once the queue is empty; TIMEOUT at the deadline; PRECONDITION_NOT_MET
// when the logger is being finalized.
DDS_ReturnCode_t waitForEmptyQueue(QTV_VX_MessageQueue &queue,
                                   const std::optional<Clock::time_point> &deadline) noexcept {
    DDS_Long last = -1;
    Clock::time_point lastMove = Clock::now();
    for (;;) {
        if (gFlushesEnding.load()) return DDS_RETCODE_PRECONDITION_NOT_MET;
        DDS_Long queued = vexar::queuedMessages(queue);
        if (queued == 0) return DDS_RETCODE_OK;
        if (queued < 0) return DDS_RETCODE_ERROR;
        if (queued != last) {
            last = queued;
            lastMove = Clock::now();
        } else if (Clock::now() - lastMove >= kStallBeforeWake) {
            vexar::wakeConsumer(queue);
            lastMove = Clock::now();
        }
        if (expired(deadline)) return DDS_RETCODE_TIMEOUT;
        std::this_thread::sleep_for(kQueuePoll);
    }
}

DDS_ReturnCode_t waitForAcknowledgments(DDS_DataWriter *writer,
                                        const std::optional<Clock::time_point> &deadline) noexcept {
    // The write thread sends a batch when it finds the queue empty; sending
    // here too spares the flush waiting for it.
    DDS_DataWriter_flush(writer);
    for (;;) {
        if (gFlushesEnding.load()) return DDS_RETCODE_PRECONDITION_NOT_MET;
        const DDS_Duration_t wait = nextAckWait(deadline);
        DDS_ReturnCode_t result = DDS_DataWriter_wait_for_acknowledgments(writer, &wait);
        if (result != DDS_RETCODE_TIMEOUT || expired(deadline)) return result;
    }
}

DDS_ReturnCode_t flush(const FlushTarget &target, const std::optional<Clock::time_point> &deadline) noexcept {
    DDS_ReturnCode_t result = waitForEmptyQueue(*target.queue, deadline);
    if (result == DDS_RETCODE_OK) result = waitForAcknowledgments(target.writer, deadline);
    if (result == DDS_RETCODE_PRECONDITION_NOT_MET) vexar::reportError("Vexar finalized while flushing", kSource);
    return result;
}

}  // namespace

namespace vexar {

void endFlushes() noexcept {
    gFlushesEnding.store(true);
    flushGate().lock();
    flushGate().unlock();
    gFlushesEnding.store(false);
}

}  // namespace vexar

extern "C" {

DDS_ReturnCode_t QTV_VX_Vexar_flush(QTV_VX_Vexar *self, const DDS_Duration_t *timeout) {
    if (self == nullptr) return refuse(DDS_RETCODE_BAD_PARAMETER, "QTV_VX_Vexar is NULL");
    if (timeout == nullptr) return refuse(DDS_RETCODE_BAD_PARAMETER, "Flush timeout is NULL");
    const auto deadline = deadlineOf(*timeout);
    if (!deadline) return refuse(DDS_RETCODE_BAD_PARAMETER, "Invalid flush timeout");
    DDS_ReturnCode_t refusal = DDS_RETCODE_OK;
    std::optional<FlushTarget> target = enterFlush(self, refusal);
    if (!target) return refusal;
    DDS_ReturnCode_t result = flush(*target, *deadline);
    flushGate().unlock_shared();
    return result;
}

}  // extern "C"
