#include "platform/runtime/thread.h"

#include <pthread.h>
#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <new>

#include "platform/runtime/hot_thread_local.hpp"
#include "platform/log/logger.h"
#include "platform/runtime/monotonic_time.hpp"
#include "platform/runtime/posix_failure.hpp"
#include "platform/log/report.h"

using vexar::runtime::posixCallSucceeded;

struct OBLX_Thread {
    pthread_t handle;
    void *(*entry)(void *);
    void *arg;
    char name[16];  // the kernel's limit: 15 characters and the terminator
    bool cancelAsynchronously;
};

namespace {

// Set by the thread itself, so a thread can recognize its own object
// without reading `handle`, which its creator writes concurrently.
thread_local OBLX_Thread *tRunningThread = nullptr;

// Cached: the id is compared on every logging call. A forked child's thread
// has a new id, so the cache is dropped in the child.
VEXAR_HOT_THREAD_LOCAL DDS_UnsignedLong tKernelThreadId = 0;
const int gForgetIdInForkedChild = pthread_atfork(nullptr, nullptr, [] { tKernelThreadId = 0; });

// The thread names itself before running its entry, so the name is in
// place for anything the entry does.
void *runThread(void *argument) {
    auto *self = static_cast<OBLX_Thread *>(argument);
    tRunningThread = self;
    if (self->name[0] != '\0') pthread_setname_np(pthread_self(), self->name);
    if (self->cancelAsynchronously) pthread_setcanceltype(PTHREAD_CANCEL_ASYNCHRONOUS, nullptr);
    return self->entry(self->arg);
}

size_t roundedStackSize(DDS_Long requested) noexcept {
    const size_t pageSize = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    const size_t size = std::max(static_cast<size_t>(requested), static_cast<size_t>(PTHREAD_STACK_MIN));
    return (size + pageSize - 1) / pageSize * pageSize;
}

int applyRealtimePriority(pthread_attr_t *attributes, DDS_Long priority) noexcept {
    const int lowest = sched_get_priority_min(SCHED_FIFO);
    const int highest = sched_get_priority_max(SCHED_FIFO);
    sched_param parameters{};
    parameters.sched_priority =
        priority == OBLX_THREAD_PRIORITY_DEFAULT ? lowest : std::clamp(static_cast<int>(priority), lowest, highest);
    int error = pthread_attr_setinheritsched(attributes, PTHREAD_EXPLICIT_SCHED);
    if (error == 0) error = pthread_attr_setschedpolicy(attributes, SCHED_FIFO);
    if (error == 0) error = pthread_attr_setschedparam(attributes, &parameters);
    return error;
}

int startThread(OBLX_Thread *self, DDS_Long priority, DDS_Long stackSize, bool realtime) noexcept {
    pthread_attr_t attributes;
    int error = pthread_attr_init(&attributes);
    if (error != 0) return error;
    if (stackSize > 0) error = pthread_attr_setstacksize(&attributes, roundedStackSize(stackSize));
    if (error == 0 && realtime) error = applyRealtimePriority(&attributes, priority);
    if (error == 0) error = pthread_create(&self->handle, &attributes, &runThread, self);
    pthread_attr_destroy(&attributes);
    return error;
}

OBLX_Thread *newThreadRecord(const char *name, DDS_ThreadSettingsKindMask options, void *(*entry)(void *),
                             void *arg) noexcept {
    auto *self = new (std::nothrow) OBLX_Thread{};
    if (self == nullptr) return nullptr;
    self->entry = entry;
    self->arg = arg;
    if (name != nullptr) std::strncpy(self->name, name, sizeof self->name - 1);
    self->cancelAsynchronously = (options & DDS_THREAD_SETTINGS_CANCEL_ASYNCHRONOUS) != 0;
    return self;
}

}  // namespace

extern "C" {

OBLX_Thread *OBLX_Thread_new(const char *name, DDS_Long priority, DDS_ThreadSettingsKindMask options,
                             DDS_Long stackSize, void *(*entry)(void *), void *arg) {
    const char *context = "OBLX_Thread_new";
    if (entry == nullptr) {
        OBLX_Report_badParameter(context, "entry");
        return nullptr;
    }
    OBLX_Thread *self = newThreadRecord(name, options, entry, arg);
    if (self == nullptr) {
        OBLX_Report_allocationFailure(context, sizeof(OBLX_Thread));
        return nullptr;
    }
    const bool realtime = (options & DDS_THREAD_SETTINGS_REALTIME_PRIORITY) != 0;
    int error = startThread(self, priority, stackSize, realtime);
    if (error == EPERM && realtime && (options & DDS_THREAD_SETTINGS_PRIORITY_ENFORCE) == 0) {
        OBLX_Config_Logger_log(
            OBLX_CONFIG_LOG_CATEGORY_PLATFORM, OBLX_CONFIG_LOG_LEVEL_WARNING, context, __FILE__, __LINE__,
            "real-time priority refused for thread \"%s\"; it runs with default scheduling", self->name);
        error = startThread(self, priority, stackSize, false);
    }
    if (!posixCallSucceeded(error, context, "pthread_create")) {
        delete self;
        return nullptr;
    }
    return self;
}

void OBLX_Thread_delete(OBLX_Thread *self) {
    if (self == nullptr) return;
    if (self == tRunningThread) {
        tRunningThread = nullptr;
        posixCallSucceeded(pthread_detach(pthread_self()), "OBLX_Thread_delete", "pthread_detach");
    } else {
        posixCallSucceeded(pthread_join(self->handle, nullptr), "OBLX_Thread_delete", "pthread_join");
    }
    delete self;
}

DDS_UnsignedLong OBLX_Thread_currentId(void) {
    if (tKernelThreadId == 0) tKernelThreadId = static_cast<DDS_UnsignedLong>(gettid());
    return tKernelThreadId;
}

void OBLX_Thread_sleep(const OBLX_Time_t *duration) {
    if (duration == nullptr) {
        OBLX_Report_badParameter("OBLX_Thread_sleep", "duration");
        return;
    }
    const DDS_LongLong nanoseconds = OBLX_Time_toNanoseconds(duration);
    if (nanoseconds <= 0) return;
    // An absolute deadline lets an interrupted sleep resume for exactly the
    // time that is left.
    const timespec deadline = vexar::runtime::monotonicDeadlineAfter(nanoseconds);
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &deadline, nullptr) == EINTR) {}
}

}  // extern "C"
