#include "platform/runtime/global_lock.h"

#include "platform/runtime/owned_lock.hpp"
#include "platform/log/report.h"

namespace {
// Constant-initialized, so it works before main and needs no teardown.
constinit vexar::runtime::OwnedLock gGlobalLock{true};
}  // namespace

extern "C" {

DDS_Boolean OBLX_GlobalLock_take(void) {
    // A recursive lock is always granted to its holder.
    gGlobalLock.take();
    return DDS_BOOLEAN_TRUE;
}

DDS_Boolean OBLX_GlobalLock_give(void) {
    if (gGlobalLock.give()) return DDS_BOOLEAN_TRUE;
    OBLX_Report_failure("OBLX_GlobalLock_give", "not held by the calling thread");
    return DDS_BOOLEAN_FALSE;
}

}  // extern "C"
