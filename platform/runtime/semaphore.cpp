#include "platform/runtime/semaphore.h"

#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <limits>
#include <new>

#include "platform/runtime/monotonic_time.hpp"
#include "platform/runtime/posix_failure.hpp"
#include "platform/log/report.h"
#include "platform/runtime/spin_pause.hpp"

using vexar::runtime::posixCallSucceeded;

// An atomic count; the mutex and the condition variable (on the monotonic
// clock) serve only a taker that has to sleep. A give with nobody asleep is
// one atomic add and a load, so a producer does not queue behind the
// consumer's lock. Unlike sem_t this needs no retry on EINTR, and its timed
// wait cannot be stretched or cut short by a change of the wall clock.
struct OBLX_CountingSemaphore {
    std::atomic<DDS_Long> count;
    // Takers between registering under the mutex and leaving it. A giver
    // adds to the count before it reads this, and a sleeper registers before
    // it reads the count (both sequentially consistent), so either the giver
    // sees the sleeper and signals or the sleeper sees the gift.
    std::atomic<DDS_Long> sleepers;
    pthread_mutex_t mutex;
    pthread_cond_t available;
};

namespace {

constexpr DDS_Long kCountLimit = std::numeric_limits<DDS_Long>::max() / 2;

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
    self->count.store(initialCount, std::memory_order_relaxed);
    self->sleepers.store(0, std::memory_order_relaxed);
    return true;
}

// Sequentially consistent, as the handshake with the givers needs.
bool tryTake(OBLX_CountingSemaphore *self) noexcept {
    DDS_Long count = self->count.load();
    while (count > 0) {
        if (self->count.compare_exchange_weak(count, count - 1)) return true;
    }
    return false;
}

// A consumer woken often finds the next gift within microseconds; a short
// spin spares it the sleep and its giver the wake-up call.
bool spinTake(OBLX_CountingSemaphore *self) noexcept {
    constexpr int kSpins = 200;
    for (int spin = 0; spin < kSpins; ++spin) {
        vexar::runtime::spinPause();  // the caller has just tried
        if (tryTake(self)) return true;
    }
    return false;
}

bool lock(OBLX_CountingSemaphore *self, const char *context) noexcept {
    return posixCallSucceeded(pthread_mutex_lock(&self->mutex), context, "pthread_mutex_lock");
}

void unlock(OBLX_CountingSemaphore *self, const char *context) noexcept {
    posixCallSucceeded(pthread_mutex_unlock(&self->mutex), context, "pthread_mutex_unlock");
}

// Sleeps, holding the mutex, until a gift is taken or the time is up.
OBLX_SyncResult sleepForCount(OBLX_CountingSemaphore *self, const OBLX_Time_t *timeout) noexcept {
    const char *context = "OBLX_CountingSemaphore_take";
    if (timeout == nullptr) {
        while (!tryTake(self)) {
            if (!posixCallSucceeded(pthread_cond_wait(&self->available, &self->mutex), context, "pthread_cond_wait")) {
                return OBLX_SYNC_ERROR;
            }
        }
        return OBLX_SYNC_OK;
    }
    const timespec deadline = vexar::runtime::monotonicDeadlineAfter(OBLX_Time_toNanoseconds(timeout));
    while (!tryTake(self)) {
        const int error = pthread_cond_timedwait(&self->available, &self->mutex, &deadline);
        if (error == ETIMEDOUT) return tryTake(self) ? OBLX_SYNC_OK : OBLX_SYNC_TIMEOUT;
        if (!posixCallSucceeded(error, context, "pthread_cond_timedwait")) return OBLX_SYNC_ERROR;
    }
    return OBLX_SYNC_OK;
}

OBLX_SyncResult sleepingTake(OBLX_CountingSemaphore *self, const OBLX_Time_t *timeout) noexcept {
    const char *context = "OBLX_CountingSemaphore_take";
    if (!lock(self, context)) return OBLX_SYNC_ERROR;
    self->sleepers.fetch_add(1);
    const OBLX_SyncResult result = sleepForCount(self, timeout);
    self->sleepers.fetch_sub(1);
    unlock(self, context);
    return result;
}

bool hasNoWait(const OBLX_Time_t *timeout) noexcept {
    return timeout != nullptr && OBLX_Time_toNanoseconds(timeout) <= 0;
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
    // One add, not a read and then a swap: the consumer's takes keep the
    // count's line on its core, and each access would fetch it anew. A give
    // that finds the count at the limit takes its add back; the limit lies
    // far enough below the type's maximum that concurrent givers cannot
    // carry it over.
    if (self->count.fetch_add(1) >= kCountLimit) {
        self->count.fetch_sub(1);
        OBLX_Report_failure(context, "count at its maximum");
        return OBLX_SYNC_ERROR;
    }
    if (self->sleepers.load() > 0) {
        // Under the mutex, so the signal cannot fall between a sleeper's
        // look at the count and its wait.
        if (!lock(self, context)) return OBLX_SYNC_ERROR;
        pthread_cond_signal(&self->available);
        unlock(self, context);
    }
    return OBLX_SYNC_OK;
}

OBLX_SyncResult OBLX_CountingSemaphore_take(OBLX_CountingSemaphore *self, const OBLX_Time_t *timeout) {
    if (self == nullptr) {
        OBLX_Report_badParameter("OBLX_CountingSemaphore_take", "self");
        return OBLX_SYNC_ERROR;
    }
    if (tryTake(self)) return OBLX_SYNC_OK;
    if (hasNoWait(timeout)) return OBLX_SYNC_TIMEOUT;
    if (spinTake(self)) return OBLX_SYNC_OK;
    return sleepingTake(self, timeout);
}

}  // extern "C"
