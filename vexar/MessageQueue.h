/* The bounded first-in-first-out queue between the threads that log and the
 * one thread that publishes. Producers push copies of their messages; the
 * consumer waits for the head with front, publishes it, and only then
 * removes it with pop. Elements come from a pool allocated whole at
 * creation, and short texts are copied into the element itself, so pushing
 * a message of up to 127 characters with a category of up to 31 allocates
 * nothing. */
#ifndef VEXAR_VEXAR_MESSAGEQUEUE_H
#define VEXAR_VEXAR_MESSAGEQUEUE_H

#include "platform/runtime/buffer_pool.h"
#include "platform/runtime/clock.h"
#include "platform/dds_types.h"
#include "platform/export.h"
#include "platform/runtime/inline_list.h"
#include "platform/runtime/mutex.h"
#include "platform/runtime/semaphore.h"
#include "type/vexar.h"

VEXAR_BEGIN_DECLS

/* Texts up to one byte less than these sizes are held inside the element. */
#define QTV_VX_MESSAGE_QUEUE_INLINE_MESSAGE_SIZE 128
#define QTV_VX_MESSAGE_QUEUE_INLINE_CATEGORY_SIZE 32

typedef struct QTV_VX_MessageQueueProperty {
    DDS_Long queueSize; /* capacity, at least 1 */
} QTV_VX_MessageQueueProperty;

/* What a producer hands in and the consumer gets back: the sample to
 * publish and the time stamp to publish it with. */
typedef struct QTV_VX_LogMessagePlusTime {
    QTV_VX_LogMessage message;
    DDS_Time_t writeTime;
} QTV_VX_LogMessagePlusTime;

/* One pooled element. Its text pointers point either at its own inline
 * buffers or at heap copies that it owns. */
typedef struct QTV_VX_MessageQueueElement {
    OBLX_InlineListNode node;
    QTV_VX_LogMessagePlusTime messagePlusTime;
    char inlineMessage[QTV_VX_MESSAGE_QUEUE_INLINE_MESSAGE_SIZE];
    char inlineCategory[QTV_VX_MESSAGE_QUEUE_INLINE_CATEGORY_SIZE];
} QTV_VX_MessageQueueElement;

typedef struct QTV_VX_MessageQueue {
    QTV_VX_MessageQueueProperty property;
    OBLX_Mutex *mutex;                /* guards queue and elementPool */
    OBLX_CountingSemaphore *countSem; /* elements pushed and not yet fetched by front */
    OBLX_BufferPool *elementPool;     /* exactly queueSize elements, never grows */
    OBLX_InlineList queue;            /* elements in arrival order */
} QTV_VX_MessageQueue;

/* Failures print a line through QTV_VX_Vexar_printMessage, with the
 * operation's name as its source. */

/* A new empty queue, or null when the record cannot be allocated (or
 * `property` is null). If a member cannot be created, the line is printed
 * and the queue is returned without it: pushes then fail with a printed
 * line instead of queueing. */
VEXAR_API QTV_VX_MessageQueue *QTV_VX_MessageQueue_new(const QTV_VX_MessageQueueProperty *property);

/* Queues a copy of `item`: the ids, level and time, and its texts, the
 * message cut to 4096 characters and the category to 512. When the queue is
 * full the new message is dropped with a warning; queued ones are never
 * displaced. Returns 1 when queued, else 0. Any number of threads may push. */
VEXAR_API DDS_Long QTV_VX_MessageQueue_push(QTV_VX_MessageQueue *self, const QTV_VX_LogMessagePlusTime *item);

/* Waits at most `timeout` (null: without limit) for a message pushed and not
 * yet fetched, and returns the head, which stays in the queue (borrowed,
 * valid until pop). Null on time-out, silently, or on a printed failure.
 * Each successful call consumes one push: a head left in place is returned
 * again only after a later push. One consumer thread only. */
VEXAR_API const QTV_VX_LogMessagePlusTime *QTV_VX_MessageQueue_front(QTV_VX_MessageQueue *self,
                                                                     const OBLX_Time_t *timeout);

/* Removes and frees the head, if any. */
VEXAR_API void QTV_VX_MessageQueue_pop(QTV_VX_MessageQueue *self);

/* Frees the queue with the messages still in it, unpublished. Accepts null
 * and a queue that new left incomplete. No thread may be using it. */
VEXAR_API void QTV_VX_MessageQueue_delete(QTV_VX_MessageQueue *self);

/* The capacity; -1 for a null queue. */
VEXAR_API DDS_Long QTV_VX_MessageQueue_getMessageQueueProperty(const QTV_VX_MessageQueue *self);

VEXAR_END_DECLS

#endif
