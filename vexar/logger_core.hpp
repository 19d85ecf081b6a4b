// What the logger's own files share: the logging steps that the API and the
// middleware device both run, the clock conversion, the device gate and the
// atomic views of the flags that cross threads without a lock.
#pragma once

#include <atomic>

#include "platform/runtime/clock.h"
#include "vexar/Vexar.h"
#include "vexar/message_counts.hpp"

namespace vexar {

// Plain C fields read and written from several threads.
template <typename T>
std::atomic_ref<T> shared(volatile T &field) noexcept {
    return std::atomic_ref<T>(const_cast<T &>(field));
}
template <typename T>
std::atomic_ref<T> shared(T &field) noexcept {
    return std::atomic_ref<T>(field);
}

inline bool isInitialized() noexcept { return shared(gQTV_VX_Vexar_initialized).load() != 0; }

inline QTV_VX_ADMIN_StateKind stateKind(const QTV_VX_Vexar &logger) noexcept {
    return shared(logger.state->state).load();
}
inline void setStateKind(QTV_VX_Vexar &logger, QTV_VX_ADMIN_StateKind kind) noexcept {
    shared(logger.state->state).store(kind);
}

// The clock's seconds and 2^-32 fraction as seconds and nanoseconds. The
// nanoseconds are rounded up except for the two fractions that convert
// exactly; a sum of 10^9 carries into the seconds unless they are at their
// maximum.
DDS_Time_t ddsTimeFromClockTime(const OBLX_Time_t &clockTime) noexcept;

// The logging steps, run under whatever guard keeps `self` alive (the
// global lock, or the device gate). logNow reads the clock, validates and
// runs the rest: the write-thread drop, echo, filter and queue.
// Both return what became of the message.
bool validParams(const QTV_VX_Vexar_MessageParams *params) noexcept;
CallOutcome runLoggingSteps(QTV_VX_Vexar &self, const QTV_VX_Vexar_MessageParams &params) noexcept;
CallOutcome logNow(QTV_VX_Vexar &self, DDS_Long level, const char *message, const char *category) noexcept;

// The level gate lets a call above every level that could do anything be
// refused before the global lock. Refresh it whenever the singleton, its
// state, its filter level or its echo option changes (it takes the State
// mutex and ignores a logger that is not the singleton); close it when the
// singleton goes.
void refreshLevelGate(const QTV_VX_Vexar &self) noexcept;
void closeLevelGate() noexcept;
// Whether a call at `level` through the singleton can be more than refused;
// when not, counts it refused.
bool passesLevelGate(DDS_Long level) noexcept;
// Refreshes the gate when `options` are the running logger's; takes the
// global lock, so only application threads may call it.
void refreshLevelGateFor(const QTV_VX_Options *options) noexcept;

// Each changes the State sample under the State mutex and writes it;
// false when the write failed. The verbosities and the print format are
// read back from the middleware logger.
bool publishFilterLevel(QTV_VX_Vexar &self, DDS_Long level) noexcept;
bool publishVerbosities(QTV_VX_Vexar &self) noexcept;
bool publishPrintFormat(QTV_VX_Vexar &self) noexcept;

// The middleware logger; null after the line "Unable to get QTV Logger"
// under `source`.
OBLX_Config_Logger *middlewareLogger(const char *source) noexcept;

// The device gate. Captured middleware lines reach the logger only while it
// is attached; detaching waits for every capture in flight, so the logger
// may be freed afterwards.
void attachLoggerDevice(QTV_VX_Vexar &logger) noexcept;
void detachLoggerDevice() noexcept;

// Stops the write thread's loop at its next turn; accepts null.
void stopWriteThread(LogMessageWriteThread *thread) noexcept;
// The write thread's id while it runs, else 0; accepts null.
DDS_UnsignedLong writeThreadId(const LogMessageWriteThread *thread) noexcept;
// True on a write thread: lets the device drop its lines before any lock.
bool onWriteThread() noexcept;

// What a flush waits for: the messages still in `queue` (the head leaves
// only once written), -1 when its mutex fails. wakeConsumer gives the
// queue's semaphore once, so that a head left after a timed-out write is
// written again without waiting for a later push; a spare count only costs
// the write thread one empty look.
DDS_Long queuedMessages(QTV_VX_MessageQueue &queue) noexcept;
void wakeConsumer(QTV_VX_MessageQueue &queue) noexcept;
// Makes flushes in progress return and waits until they have; destroy calls
// it before it stops the write thread and deletes the writer.
void endFlushes() noexcept;

// How the write thread publishes one message: the typed LogMessage writer's
// write with the message's time stamp. Replaceable so that tests can make
// the outcomes (time-outs, errors) that a real writer rarely gives; returns
// the one replaced.
using LogMessagePublisher = DDS_ReturnCode_t (*)(struct QTV_VX_LogMessageDataWriter *writer,
                                                 const QTV_VX_LogMessagePlusTime &item);
LogMessagePublisher replaceLogMessagePublisher(LogMessagePublisher publisher) noexcept;

}  // namespace vexar
