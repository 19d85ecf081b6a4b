#include "platform/global_lock.h"

#include <pthread.h>

#include "platform/posix_failure.hpp"

using vexar::platform::posixCallSucceeded;

namespace {
// Statically initialized, so it works before main and needs no teardown.
pthread_mutex_t gGlobalLock = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
}  // namespace

extern "C" {

DDS_Boolean OBLX_GlobalLock_take(void) {
    return posixCallSucceeded(pthread_mutex_lock(&gGlobalLock), "OBLX_GlobalLock_take", "pthread_mutex_lock");
}

DDS_Boolean OBLX_GlobalLock_give(void) {
    return posixCallSucceeded(pthread_mutex_unlock(&gGlobalLock), "OBLX_GlobalLock_give", "pthread_mutex_unlock");
}

}  // extern "C"
