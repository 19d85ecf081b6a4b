/* Outcome of a blocking take on a mutex or semaphore. */
#ifndef VEXAR_PLATFORM_SYNC_RESULT_H
#define VEXAR_PLATFORM_SYNC_RESULT_H

#include "platform/export.h"

VEXAR_BEGIN_DECLS

/* A time-out is not an error: callers poll with it, so it has its own value. */
typedef enum OBLX_SyncResult { OBLX_SYNC_OK = 0, OBLX_SYNC_TIMEOUT = 1, OBLX_SYNC_ERROR = 2 } OBLX_SyncResult;

VEXAR_END_DECLS

#endif
