#include "platform/mutex.h"

#include <pthread.h>

#include <new>

#include "platform/posix_failure.hpp"
#include "platform/report.h"

using vexar::platform::posixCallSucceeded;

struct OBLX_Mutex {
    pthread_mutex_t mutex;
};

namespace {

OBLX_SyncResult syncResult(int error, const char *context, const char *call) noexcept {
    return posixCallSucceeded(error, context, call) ? OBLX_SYNC_OK : OBLX_SYNC_ERROR;
}

// An error-checking mutex turns a self-deadlock or a foreign give into a
// reported error instead of a hang or undefined behaviour.
int initializeErrorCheckingMutex(pthread_mutex_t *mutex) noexcept {
    pthread_mutexattr_t attributes;
    int error = pthread_mutexattr_init(&attributes);
    if (error != 0) return error;
    error = pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_ERRORCHECK);
    if (error == 0) error = pthread_mutex_init(mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
    return error;
}

}  // namespace

extern "C" {

OBLX_Mutex *OBLX_Mutex_new(void) {
    auto *self = new (std::nothrow) OBLX_Mutex;
    if (self == nullptr) {
        OBLX_Report_allocationFailure("OBLX_Mutex_new", sizeof(OBLX_Mutex));
        return nullptr;
    }
    if (!posixCallSucceeded(initializeErrorCheckingMutex(&self->mutex), "OBLX_Mutex_new", "pthread_mutex_init")) {
        delete self;
        return nullptr;
    }
    return self;
}

void OBLX_Mutex_delete(OBLX_Mutex *self) {
    if (self == nullptr) return;
    posixCallSucceeded(pthread_mutex_destroy(&self->mutex), "OBLX_Mutex_delete", "pthread_mutex_destroy");
    delete self;
}

OBLX_SyncResult OBLX_Mutex_take(OBLX_Mutex *self) {
    if (self == nullptr) {
        OBLX_Report_badParameter("OBLX_Mutex_take", "self");
        return OBLX_SYNC_ERROR;
    }
    return syncResult(pthread_mutex_lock(&self->mutex), "OBLX_Mutex_take", "pthread_mutex_lock");
}

OBLX_SyncResult OBLX_Mutex_give(OBLX_Mutex *self) {
    if (self == nullptr) {
        OBLX_Report_badParameter("OBLX_Mutex_give", "self");
        return OBLX_SYNC_ERROR;
    }
    return syncResult(pthread_mutex_unlock(&self->mutex), "OBLX_Mutex_give", "pthread_mutex_unlock");
}

}  // extern "C"
