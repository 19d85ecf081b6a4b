#include <atomic>
#include <cstdint>
#include <limits>

#include "platform/runtime/global_lock.h"
#include "platform/runtime/thread.h"
#include "vexar/Vexar.h"
#include "vexar/admin_state.hpp"
#include "vexar/logger_core.hpp"
#include "vexar/message_counts.hpp"
#include "vexar/report_line.hpp"

namespace {

using vexar::CallOutcome;

constexpr DDS_Long kNoLevel = std::numeric_limits<DDS_Long>::min();
constexpr DDS_Long kEveryLevel = std::numeric_limits<DDS_Long>::max();

// The level gate: the highest level at which a logging call can do more than
// be refused. A call above it is refused with one relaxed load and a compare,
// before the global lock and the clock, which is what keeps a filtered call
// cheap. kNoLevel while no logger runs, kEveryLevel while echo is on (echo
// prints whatever the level). Written under the State mutex only, so the
// last value written is computed from the latest filter level and state.
//
// Beside it, in the same cache line, the echo flag of the running logger's
// registered options. An application may write that field
// directly while the logger runs, and echo prints whatever the level, so a
// call above the ceiling reads it too: one more load. Registered options
// outlive their logger.
// Points at gNoEcho when there is no such field: one load, no test.
DDS_Long gNoEcho = 0;
struct alignas(64) LevelGate {
    std::atomic<DDS_Long> ceiling{kNoLevel};
    std::atomic<const DDS_Long *> registeredEcho{&gNoEcho};
};
LevelGate gGate;

bool echoRequested() noexcept {
    DDS_Long *flag = const_cast<DDS_Long *>(gGate.registeredEcho.load(std::memory_order_relaxed));
    return std::atomic_ref<DDS_Long>(*flag).load(std::memory_order_relaxed) == 1;
}
bool aboveLevelGate(DDS_Long level) noexcept {
    return level > gGate.ceiling.load(std::memory_order_relaxed) && !echoRequested();
}
// Invalid arguments pass the gate, so that their errors are still printed.
bool refusedAtGate(DDS_Long level, const char *message, const char *category) noexcept {
    if (message == nullptr || category == nullptr || !aboveLevelGate(level)) return false;
    vexar::countCall(CallOutcome::refused);
    return true;
}

DDS_Long levelCeilingOf(const QTV_VX_Vexar &self) noexcept {
    if (vexar::shared(self.options->echoToStdout).load() == 1) return kEveryLevel;
    if (vexar::stateKind(self) != QTV_VX_STATE_OPERATIONAL) return kNoLevel;
    return vexar::shared(const_cast<DDS_Long &>(self.filterLevel)).load();
}

constexpr const char *kParamsSource = "QTV_VX_Vexar_logMessageWithParams";

// Messages raised on the write thread itself would feed its own queue.
bool raisedOnWriteThread(const QTV_VX_Vexar &self, DDS_UnsignedLong caller) noexcept {
    DDS_UnsignedLong writer = vexar::writeThreadId(self.logMessageWriteThread);
    return writer != 0 && writer == caller;
}

// The echo precedes the state and level tests on purpose: with echo on,
// every message is printed whatever the filter level. The application may
// write the field meanwhile.
void echo(const QTV_VX_Vexar &self, const QTV_VX_Vexar_MessageParams &params) noexcept {
    if (vexar::shared(self.options->echoToStdout).load() == 1 && params.message[0] != '\0') {
        QTV_VX_Vexar_printMessage(params.message, "", params.log_level);
    }
}

bool passesFilter(QTV_VX_Vexar &self, DDS_Long level) noexcept {
    return vexar::stateKind(self) == QTV_VX_STATE_OPERATIONAL && level <= vexar::shared(self.filterLevel).load();
}

// The queue copies the texts, so the caller's may be borrowed here.
CallOutcome enqueue(QTV_VX_Vexar &self, const QTV_VX_Vexar_MessageParams &params) noexcept {
    QTV_VX_LogMessagePlusTime item{};
    item.message.hostAndAppId.rtps_host_id = QTV_VX_DDSEntities_getRtpsHostId(self._ddsEntities);
    item.message.hostAndAppId.rtps_app_id = QTV_VX_DDSEntities_getRtpsAppId(self._ddsEntities);
    item.message.level = params.log_level;
    item.message.category = const_cast<char *>(params.category);
    item.message.message = const_cast<char *>(params.message);
    item.writeTime = params.timestamp;
    return QTV_VX_MessageQueue_push(self.q, &item) == 1 ? CallOutcome::queued : CallOutcome::dropped;
}

bool isSingleton(const QTV_VX_Vexar *self) noexcept {
    return self != nullptr && self == vexar::shared(QTV_VX_Vexar_instance).load();
}

bool takeGlobalLock() noexcept {
    if (OBLX_GlobalLock_take()) return true;
    vexar::reportError("Unable to lock: It is not safe to log message", kParamsSource);
    return false;
}

void releaseGlobalLock() noexcept {
    if (!OBLX_GlobalLock_give()) vexar::reportError("Unable to unlock when logging message.", kParamsSource);
}

void logLevelCall(QTV_VX_Vexar *self, DDS_Long level, const char *message) noexcept {
    QTV_VX_Vexar_logMessageWithLevelCategory(self, level, message, "");
}

// The lock comes before the clock: a logger that is no longer the singleton
// (its clock already gone) must not be touched.
CallOutcome logUnderGlobalLock(QTV_VX_Vexar *self, DDS_Long level, const char *message, const char *category) noexcept {
    if (!takeGlobalLock()) return CallOutcome::refused;
    CallOutcome outcome = CallOutcome::refused;
    if (isSingleton(self)) outcome = vexar::logNow(*self, level, message, category);
    releaseGlobalLock();
    return outcome;
}

CallOutcome logParamsUnderGlobalLock(QTV_VX_Vexar *self, const QTV_VX_Vexar_MessageParams *params) noexcept {
    if (!takeGlobalLock()) return CallOutcome::refused;
    CallOutcome outcome = CallOutcome::refused;
    if (vexar::validParams(params) && isSingleton(self)) outcome = vexar::runLoggingSteps(*self, *params);
    releaseGlobalLock();
    return outcome;
}

}  // namespace

namespace vexar {

DDS_Time_t ddsTimeFromClockTime(const OBLX_Time_t &clockTime) noexcept {
    constexpr std::uint64_t kDivisor = 2305843009u;  // 2^61 / 10^9, truncated
    constexpr DDS_UnsignedLong kNanosPerSecond = 1000000000u;
    constexpr DDS_Long kMaxSeconds = 2147483647;
    std::uint64_t fraction = clockTime.frac;
    auto nanoseconds = static_cast<DDS_UnsignedLong>((fraction << 29) / kDivisor);
    if (fraction != 0 && fraction != kDivisor) nanoseconds += 1;
    DDS_Time_t time{clockTime.sec, nanoseconds};
    if (time.nanosec > kNanosPerSecond - 1 && time.sec != kMaxSeconds) {
        time.nanosec -= kNanosPerSecond;
        time.sec += 1;
    }
    return time;
}

bool validParams(const QTV_VX_Vexar_MessageParams *params) noexcept {
    const char *problem = nullptr;
    if (params == nullptr) {
        problem = "Message params is NULL";
    } else if (params->message == nullptr) {
        problem = "Message to be logged is NULL";
    } else if (params->category == nullptr) {
        problem = "Message category is NULL";
    } else if (params->timestamp.sec < 0) {
        problem = "Invalid message timestamp";
    }
    if (problem != nullptr) reportError(problem, kParamsSource);
    return problem == nullptr;
}

CallOutcome runLoggingSteps(QTV_VX_Vexar &self, const QTV_VX_Vexar_MessageParams &params) noexcept {
    DDS_UnsignedLong caller = OBLX_Thread_currentId();
    if (caller == 0) {
        reportWarning("Unable to get current thread Id, message missed", kParamsSource);
        return CallOutcome::refused;
    }
    if (raisedOnWriteThread(self, caller)) return CallOutcome::refused;
    echo(self, params);
    return passesFilter(self, params.log_level) ? enqueue(self, params) : CallOutcome::refused;
}

CallOutcome logNow(QTV_VX_Vexar &self, DDS_Long level, const char *message, const char *category) noexcept {
    OBLX_Time_t now{};
    if (!OBLX_Clock_getTime(self.clock, &now)) {
        reportError("Unable to get current Time from internal clock", "QTV_VX_Vexar_logMessageWithLevelCategory");
        return CallOutcome::refused;
    }
    QTV_VX_Vexar_MessageParams params{level, message, category, ddsTimeFromClockTime(now)};
    return validParams(&params) ? runLoggingSteps(self, params) : CallOutcome::refused;
}

// Without a logger the gate is closed, yet a call through the singleton
// would create one: such a level passes.
bool passesLevelGate(DDS_Long level) noexcept {
    if (!aboveLevelGate(level) || !isInitialized()) return true;
    countCall(CallOutcome::refused);
    return false;
}

void refreshLevelGate(const QTV_VX_Vexar &self) noexcept {
    auto stateLock = lockState();
    if (!isSingleton(&self)) return;
    gGate.ceiling.store(levelCeilingOf(self), std::memory_order_relaxed);
    const bool registered = self.options == shared(gQTV_VX_Vexar_currentOptions).load();
    gGate.registeredEcho.store(registered ? &self.options->echoToStdout : &gNoEcho, std::memory_order_relaxed);
}

void refreshLevelGateFor(const QTV_VX_Options *options) noexcept {
    if (!OBLX_GlobalLock_take()) return;
    QTV_VX_Vexar *running = shared(QTV_VX_Vexar_instance).load();
    if (running != nullptr && running->options == options) refreshLevelGate(*running);
    OBLX_GlobalLock_give();
}

void closeLevelGate() noexcept {
    auto stateLock = lockState();
    gGate.ceiling.store(kNoLevel, std::memory_order_relaxed);
    gGate.registeredEcho.store(&gNoEcho, std::memory_order_relaxed);
}

bool publishFilterLevel(QTV_VX_Vexar &self, DDS_Long level) noexcept {
    auto stateLock = lockState();
    self.state->filterLevel = level;
    return QTV_VX_Vexar_writeState(&self) == 1;
}

}  // namespace vexar

extern "C" {

#define QTV_VX_DEFINE_LEVEL_CALL(name, level) \
    void QTV_VX_Vexar_##name(QTV_VX_Vexar *self, const char *message) { logLevelCall(self, level, message); }

QTV_VX_DEFINE_LEVEL_CALL(fatal, QTV_VX_LOG_LEVEL_FATAL)
QTV_VX_DEFINE_LEVEL_CALL(severe, QTV_VX_LOG_LEVEL_SEVERE)
QTV_VX_DEFINE_LEVEL_CALL(error, QTV_VX_LOG_LEVEL_ERROR)
QTV_VX_DEFINE_LEVEL_CALL(warning, QTV_VX_LOG_LEVEL_WARNING)
QTV_VX_DEFINE_LEVEL_CALL(notice, QTV_VX_LOG_LEVEL_NOTICE)
QTV_VX_DEFINE_LEVEL_CALL(info, QTV_VX_LOG_LEVEL_INFO)
QTV_VX_DEFINE_LEVEL_CALL(debug, QTV_VX_LOG_LEVEL_DEBUG)
QTV_VX_DEFINE_LEVEL_CALL(trace, QTV_VX_LOG_LEVEL_TRACE)

void QTV_VX_Vexar_log(QTV_VX_Vexar *self, DDS_Long level, const char *message) { logLevelCall(self, level, message); }

void QTV_VX_Vexar_logMessageWithLevelCategory(QTV_VX_Vexar *self, DDS_Long level, const char *message,
                                              const char *category) {
    if (refusedAtGate(level, message, category)) return;
    vexar::countCall(logUnderGlobalLock(self, level, message, category));
}

void QTV_VX_Vexar_logMessageWithParams(QTV_VX_Vexar *self, const QTV_VX_Vexar_MessageParams *params) {
    if (params != nullptr && params->timestamp.sec >= 0 &&
        refusedAtGate(params->log_level, params->message, params->category)) {
        return;
    }
    vexar::countCall(logParamsUnderGlobalLock(self, params));
}

DDS_Long QTV_VX_Vexar_setFilterLevel(QTV_VX_Vexar *self, DDS_Long level) {
    if (level < 0) return 1;
    // The level in force and the published State change under one lock, so
    // a remote command racing an application call cannot leave them apart.
    auto stateLock = vexar::lockState();
    if (vexar::shared(self->filterLevel).exchange(level) == level) return 0;
    vexar::refreshLevelGate(*self);
    if (!vexar::publishFilterLevel(*self, level)) {
        vexar::reportWarning("Unable to write State", "QTV_VX_Vexar_setFilterLevel");
    }
    return 0;
}

}  // extern "C"
