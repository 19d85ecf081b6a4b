#include "platform/runtime/mutex.h"

#include <new>

#include "platform/runtime/owned_lock.hpp"
#include "platform/log/report.h"

struct OBLX_Mutex {
    vexar::runtime::OwnedLock lock{false};
};

extern "C" {

OBLX_Mutex *OBLX_Mutex_new(void) {
    auto *self = new (std::nothrow) OBLX_Mutex;
    if (self == nullptr) OBLX_Report_allocationFailure("OBLX_Mutex_new", sizeof(OBLX_Mutex));
    return self;
}

void OBLX_Mutex_delete(OBLX_Mutex *self) { delete self; }

OBLX_SyncResult OBLX_Mutex_take(OBLX_Mutex *self) {
    if (self == nullptr) {
        OBLX_Report_badParameter("OBLX_Mutex_take", "self");
        return OBLX_SYNC_ERROR;
    }
    if (self->lock.take()) return OBLX_SYNC_OK;
    OBLX_Report_failure("OBLX_Mutex_take", "already held by the calling thread");
    return OBLX_SYNC_ERROR;
}

OBLX_SyncResult OBLX_Mutex_give(OBLX_Mutex *self) {
    if (self == nullptr) {
        OBLX_Report_badParameter("OBLX_Mutex_give", "self");
        return OBLX_SYNC_ERROR;
    }
    if (self->lock.give()) return OBLX_SYNC_OK;
    OBLX_Report_failure("OBLX_Mutex_give", "not held by the calling thread");
    return OBLX_SYNC_ERROR;
}

}  // extern "C"
