/* A non-recursive mutex. Misuse (taking it twice from one thread, giving it
 * from a thread that does not hold it) is detected and reported, not a hang. */
#ifndef VEXAR_PLATFORM_MUTEX_H
#define VEXAR_PLATFORM_MUTEX_H

#include "platform/dds_types.h"
#include "platform/runtime/sync_result.h"

VEXAR_BEGIN_DECLS

typedef struct OBLX_Mutex OBLX_Mutex;

/* Null (reported) when the mutex cannot be made. */
VEXAR_API OBLX_Mutex *OBLX_Mutex_new(void);
/* Accepts null. The mutex must not be held. */
VEXAR_API void OBLX_Mutex_delete(OBLX_Mutex *self);
/* Waits without limit. OBLX_SYNC_ERROR (reported) for null or misuse. */
VEXAR_API OBLX_SyncResult OBLX_Mutex_take(OBLX_Mutex *self);
VEXAR_API OBLX_SyncResult OBLX_Mutex_give(OBLX_Mutex *self);

VEXAR_END_DECLS

#endif
