/* A counting semaphore whose take may wait with a time-out. */
#ifndef VEXAR_PLATFORM_SEMAPHORE_H
#define VEXAR_PLATFORM_SEMAPHORE_H

#include "platform/runtime/clock.h"
#include "platform/dds_types.h"
#include "platform/runtime/sync_result.h"

VEXAR_BEGIN_DECLS

typedef struct OBLX_CountingSemaphore OBLX_CountingSemaphore;

/* Starts with `initialCount` (>= 0) gives available. Null (reported) on failure. */
VEXAR_API OBLX_CountingSemaphore *OBLX_CountingSemaphore_new(DDS_Long initialCount);
/* Accepts null. No thread may be waiting on it. */
VEXAR_API void OBLX_CountingSemaphore_delete(OBLX_CountingSemaphore *self);
/* Adds one to the count, waking one waiter. Refused (reported) when the
 * count has reached 2^30 - 1. */
VEXAR_API OBLX_SyncResult OBLX_CountingSemaphore_give(OBLX_CountingSemaphore *self);
/* Takes one from the count, waiting while it is zero: without limit when
 * `timeout` is null, otherwise at most `timeout` (a duration; zero or
 * negative only tries). The wait runs on a monotonic clock, so changes of the
 * wall clock neither shorten nor stretch it. OBLX_SYNC_TIMEOUT when the time
 * ran out, OBLX_SYNC_ERROR (reported) for a null semaphore. */
VEXAR_API OBLX_SyncResult OBLX_CountingSemaphore_take(OBLX_CountingSemaphore *self, const OBLX_Time_t *timeout);

VEXAR_END_DECLS

#endif
