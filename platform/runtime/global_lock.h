/* The process-wide global lock. It serializes creation, finalization and use
 * of process-wide objects across threads. It is recursive, so a holder may
 * call code that takes it again; every take must be matched by one give. */
#ifndef VEXAR_PLATFORM_GLOBAL_LOCK_H
#define VEXAR_PLATFORM_GLOBAL_LOCK_H

#include "platform/dds_types.h"

VEXAR_BEGIN_DECLS

/* Blocks until the calling thread holds the lock. TRUE on success; a failure
 * is reported through the middleware logger and gives FALSE. */
VEXAR_API DDS_Boolean OBLX_GlobalLock_take(void);
/* Releases one take by the calling thread. FALSE (reported) when the caller
 * does not hold the lock. */
VEXAR_API DDS_Boolean OBLX_GlobalLock_give(void);

VEXAR_END_DECLS

#endif
