#include "platform/semaphore.h"

#include <pthread.h>

#include <cerrno>
#include <limits>
#include <new>

#include "platform/monotonic_time.hpp"
#include "platform/posix_failure.hpp"
#include "platform/report.h"

using vexar::platform::posixCallSucceeded;

// A count under a mutex with a condition variable on the monotonic clock.
// Unlike sem_t this needs no retry on EINTR, and its timed wait cannot be
// stretched or cut short by a change of the wall clock.
struct OBLX_CountingSemaphore {
    pthread_mutex_t mutex;
    pthread_cond_t available;
    DDS_Long count;
};

namespace {

int initializeMonotonicCondition(pthread_cond_t *condition) noexcept {
    pthread_condattr_t attributes;
    int error = pthread_condattr_init(&attributes);
    if (error != 0) return error;
    error = pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    if (error == 0) error = pthread_cond_init(condition, &attributes);
    pthread_condattr_destroy(&attributes);
    return error;
}

bool initialize(OBLX_CountingSemaphore *self, DDS_Long initialCount) noexcept {
    const char *context = "OBLX_CountingSemaphore_new";
    if (!posixCallSucceeded(pthread_mutex_init(&self->mutex, nullptr), context, "pthread_mutex_init")) return false;
    if (!posixCallSucceeded(initializeMonotonicCondition(&self->available), context, "pthread_cond_init")) {
        pthread_mutex_destroy(&self->mutex);
        return false;
    }
    self->count = initialCount;
    return true;
}

// Waits, holding the mutex, until the count is positive or the time is up.
OBLX_SyncResult waitForCount(OBLX_CountingSemaphore *self, const OBLX_Time_t *timeout) noexcept {
    const char *context = "OBLX_CountingSemaphore_take";
    if (self->count > 0) return OBLX_SYNC_OK;
    if (timeout == nullptr) {
        while (self->count == 0) {
            if (!posixCallSucceeded(pthread_cond_wait(&self->available, &self->mutex), context, "pthread_cond_wait")) {
                return OBLX_SYNC_ERROR;
            }
        }
        return OBLX_SYNC_OK;
    }
    const timespec deadline = vexar::platform::monotonicDeadlineAfter(OBLX_Time_toNanoseconds(timeout));
    while (self->count == 0) {
        const int error = pthread_cond_timedwait(&self->available, &self->mutex, &deadline);
        if (error == ETIMEDOUT) return self->count > 0 ? OBLX_SYNC_OK : OBLX_SYNC_TIMEOUT;
        if (!posixCallSucceeded(error, context, "pthread_cond_timedwait")) return OBLX_SYNC_ERROR;
    }
    return OBLX_SYNC_OK;
}

bool lock(OBLX_CountingSemaphore *self, const char *context) noexcept {
    return posixCallSucceeded(pthread_mutex_lock(&self->mutex), context, "pthread_mutex_lock");
}

void unlock(OBLX_CountingSemaphore *self, const char *context) noexcept {
    posixCallSucceeded(pthread_mutex_unlock(&self->mutex), context, "pthread_mutex_unlock");
}

}  // namespace

extern "C" {

OBLX_CountingSemaphore *OBLX_CountingSemaphore_new(DDS_Long initialCount) {
    if (initialCount < 0) {
        OBLX_Report_badParameter("OBLX_CountingSemaphore_new", "initialCount");
        return nullptr;
    }
    auto *self = new (std::nothrow) OBLX_CountingSemaphore;
    if (self == nullptr) {
        OBLX_Report_allocationFailure("OBLX_CountingSemaphore_new", sizeof(OBLX_CountingSemaphore));
        return nullptr;
    }
    if (!initialize(self, initialCount)) {
        delete self;
        return nullptr;
    }
    return self;
}

void OBLX_CountingSemaphore_delete(OBLX_CountingSemaphore *self) {
    if (self == nullptr) return;
    const char *context = "OBLX_CountingSemaphore_delete";
    posixCallSucceeded(pthread_cond_destroy(&self->available), context, "pthread_cond_destroy");
    posixCallSucceeded(pthread_mutex_destroy(&self->mutex), context, "pthread_mutex_destroy");
    delete self;
}

OBLX_SyncResult OBLX_CountingSemaphore_give(OBLX_CountingSemaphore *self) {
    const char *context = "OBLX_CountingSemaphore_give";
    if (self == nullptr) {
        OBLX_Report_badParameter(context, "self");
        return OBLX_SYNC_ERROR;
    }
    if (!lock(self, context)) return OBLX_SYNC_ERROR;
    OBLX_SyncResult result = OBLX_SYNC_OK;
    if (self->count == std::numeric_limits<DDS_Long>::max()) {
        OBLX_Report_failure(context, "count at its maximum");
        result = OBLX_SYNC_ERROR;
    } else {
        self->count += 1;
        pthread_cond_signal(&self->available);
    }
    unlock(self, context);
    return result;
}

OBLX_SyncResult OBLX_CountingSemaphore_take(OBLX_CountingSemaphore *self, const OBLX_Time_t *timeout) {
    const char *context = "OBLX_CountingSemaphore_take";
    if (self == nullptr) {
        OBLX_Report_badParameter(context, "self");
        return OBLX_SYNC_ERROR;
    }
    if (!lock(self, context)) return OBLX_SYNC_ERROR;
    const OBLX_SyncResult result = waitForCount(self, timeout);
    if (result == OBLX_SYNC_OK) self->count -= 1;
    unlock(self, context);
    return result;
}

}  // extern "C"
