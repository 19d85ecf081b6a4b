/* A pool of fixed-size buffers, allocated in blocks and handed out without
 * touching the heap once the pool has grown to what its users need. */
#ifndef VEXAR_PLATFORM_BUFFER_POOL_H
#define VEXAR_PLATFORM_BUFFER_POOL_H

#include <stddef.h>

#include "platform/dds_types.h"

VEXAR_BEGIN_DECLS

/* `maximal` without limit. */
#define OBLX_BUFFER_POOL_UNLIMITED ((DDS_Long)-1)
/* `increment` that doubles the pool each time it grows. */
#define OBLX_BUFFER_POOL_INCREMENT_DOUBLE ((DDS_Long)-1)

typedef struct OBLX_BufferPoolProperty {
    DDS_Long initial;                /* buffers allocated at creation, in one block */
    DDS_Long maximal;                /* the pool never holds more; OBLX_BUFFER_POOL_UNLIMITED */
    DDS_Long increment;              /* buffers added per growth; 0 never grows; OBLX_BUFFER_POOL_INCREMENT_DOUBLE */
    DDS_Boolean multiThreadedAccess; /* false: the caller serializes every call */
    DDS_Boolean zeroOnGet;           /* buffers are zero-filled when handed out */
} OBLX_BufferPoolProperty;

#define OBLX_BUFFER_POOL_PROPERTY_DEFAULT \
    { 16, OBLX_BUFFER_POOL_UNLIMITED, OBLX_BUFFER_POOL_INCREMENT_DOUBLE, DDS_BOOLEAN_TRUE, DDS_BOOLEAN_FALSE }

typedef struct OBLX_BufferPool OBLX_BufferPool;

/* Buffers of `bufferSize` bytes aligned to `alignment` (a power of two; 0
 * for the platform's maximal alignment). Null (reported) on a bad property
 * or when the initial block cannot be allocated. */
VEXAR_API OBLX_BufferPool *OBLX_BufferPool_new(size_t bufferSize, size_t alignment,
                                               const OBLX_BufferPoolProperty *property);
/* A free buffer, growing the pool if allowed; null when exhausted. */
VEXAR_API void *OBLX_BufferPool_getBuffer(OBLX_BufferPool *pool);
/* Gives back a buffer of this pool; null is ignored. */
VEXAR_API void OBLX_BufferPool_returnBuffer(OBLX_BufferPool *pool, void *buffer);
/* Frees every block, including buffers not returned. Accepts null. */
VEXAR_API void OBLX_BufferPool_delete(OBLX_BufferPool *pool);
/* Buffers the pool holds, handed out or free. */
VEXAR_API DDS_Long OBLX_BufferPool_getBufferCount(OBLX_BufferPool *pool);
/* Buffers ready to be handed out without growing. */
VEXAR_API DDS_Long OBLX_BufferPool_getFreeBufferCount(OBLX_BufferPool *pool);

VEXAR_END_DECLS

#endif
