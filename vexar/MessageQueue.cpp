#include "vexar/MessageQueue.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "platform/runtime/dds_string.h"
#include "vexar/message_counts.hpp"
#include "vexar/report_line.hpp"

namespace {

using Element = QTV_VX_MessageQueueElement;

constexpr size_t kElementAlignment = 8;

using vexar::reportError;

bool present(const QTV_VX_MessageQueue *self, const char *source) noexcept {
    return vexar::present(self, source, "Message queue is NULL");
}

Element *elementOf(OBLX_InlineListNode *node) noexcept {
    if (node == nullptr) {
        return nullptr;
    }
    return reinterpret_cast<Element *>(reinterpret_cast<char *>(node) - offsetof(Element, node));
}

// Points `field` at a copy of `text`: the element's inline buffer when the
// text fits, else a heap copy of at most `bound` characters. False when the
// heap copy cannot be made; `field` is then null.
template <size_t InlineSize>
bool storeText(char *&field, char (&inlineBuffer)[InlineSize], const char *text, size_t bound) noexcept {
    const size_t length = strnlen(text, bound);
    field = length < InlineSize ? inlineBuffer : DDS_String_alloc(length);
    if (field == nullptr) {
        return false;
    }
    std::memcpy(field, text, length);
    field[length] = '\0';
    return true;
}

void releaseText(char *text, const char *inlineBuffer) noexcept {
    if (text != inlineBuffer) {
        DDS_String_free(text);
    }
}

// Copies `item` into a fresh element. False (printed) when a heap copy fails;
// the element then owns only what it managed to copy.
bool fillElement(Element *element, const QTV_VX_LogMessagePlusTime *item, const char *source) noexcept {
    OBLX_InlineListNode_initialize(&element->node);
    element->messagePlusTime = *item;
    QTV_VX_LogMessage &copy = element->messagePlusTime.message;
    // Until the texts are copied the element must not point at the caller's.
    copy.message = element->inlineMessage;
    copy.category = element->inlineCategory;
    if (!storeText(copy.message, element->inlineMessage, item->message.message,
                   QTV_VX_LOG_MESSAGE_MESSAGE_MAX_LENGTH)) {
        reportError("Unable to allocate message", source);
        return false;
    }
    if (!storeText(copy.category, element->inlineCategory, item->message.category,
                   QTV_VX_LOG_MESSAGE_CATEGORY_MAX_LENGTH)) {
        reportError("Unable to allocate category", source);
        return false;
    }
    return true;
}

void recycle(QTV_VX_MessageQueue *self, Element *element) noexcept {
    releaseText(element->messagePlusTime.message.message, element->inlineMessage);
    releaseText(element->messagePlusTime.message.category, element->inlineCategory);
    OBLX_BufferPool_returnBuffer(self->elementPool, element);
}

// Caller holds the mutex.
bool enqueue(QTV_VX_MessageQueue *self, const QTV_VX_LogMessagePlusTime *item, const char *source) noexcept {
    if (OBLX_InlineList_getSize(&self->queue) >= self->property.queueSize) {
        vexar::reportWarning("Max queue size reached, message will get lost", source);
        return false;
    }
    auto *element =
        self->elementPool != nullptr ? static_cast<Element *>(OBLX_BufferPool_getBuffer(self->elementPool)) : nullptr;
    if (element == nullptr) {
        reportError("Unable to get new queue element", source);
        return false;
    }
    if (!fillElement(element, item, source)) {
        recycle(self, element);
        return false;
    }
    OBLX_InlineList_addNodeToBack(&self->queue, &element->node);
    vexar::countInQueues(vexar::QueueOutcome::queued);
    return true;
}

// Caller holds the mutex, or is the last user of the queue.
bool discardHead(QTV_VX_MessageQueue *self) noexcept {
    Element *head = elementOf(OBLX_InlineList_getFirst(&self->queue));
    if (head == nullptr) {
        return false;
    }
    OBLX_InlineList_removeNode(&self->queue, &head->node);
    recycle(self, head);
    return true;
}

bool lock(QTV_VX_MessageQueue *self, const char *source) noexcept {
    if (OBLX_Mutex_take(self->mutex) == OBLX_SYNC_OK) {
        return true;
    }
    reportError("Unable to take message queue mutex", source);
    return false;
}

void unlock(QTV_VX_MessageQueue *self, const char *source) noexcept {
    if (OBLX_Mutex_give(self->mutex) != OBLX_SYNC_OK) {
        reportError("Unable to give message queue mutex", source);
    }
}

// The pool holds exactly queueSize elements, allocated now and never grown,
// so logging allocates no element later.
OBLX_BufferPool *newElementPool(DDS_Long queueSize) noexcept {
    const OBLX_BufferPoolProperty property = {queueSize, queueSize, OBLX_BUFFER_POOL_INCREMENT_DOUBLE,
                                              DDS_BOOLEAN_FALSE /* the queue's mutex serializes it */,
                                              DDS_BOOLEAN_TRUE};
    return OBLX_BufferPool_new(sizeof(Element), kElementAlignment, &property);
}

// Stops at the first member that cannot be made, leaving the rest null.
void createMembers(QTV_VX_MessageQueue *self, const char *source) noexcept {
    self->mutex = OBLX_Mutex_new();
    if (self->mutex == nullptr) {
        reportError("Unable to create mutex", source);
        return;
    }
    self->countSem = OBLX_CountingSemaphore_new(0);
    if (self->countSem == nullptr) {
        reportError("Unable to create counting semaphore", source);
        return;
    }
    self->elementPool = newElementPool(self->property.queueSize);
    if (self->elementPool == nullptr) {
        reportError("Unable to create element pool", source);
    }
}

}  // namespace

namespace vexar {

DDS_Long queuedMessages(QTV_VX_MessageQueue &queue) noexcept {
    constexpr const char *source = "QTV_VX_Vexar_flush";
    if (!lock(&queue, source)) return -1;
    DDS_Long length = OBLX_InlineList_getSize(&queue.queue);
    unlock(&queue, source);
    return length;
}

void wakeConsumer(QTV_VX_MessageQueue &queue) noexcept { OBLX_CountingSemaphore_give(queue.countSem); }

}  // namespace vexar

extern "C" {

QTV_VX_MessageQueue *QTV_VX_MessageQueue_new(const QTV_VX_MessageQueueProperty *property) {
    constexpr const char *source = "QTV_VX_MessageQueue_new";
    if (property == nullptr) {
        reportError("Message queue property is NULL", source);
        return nullptr;
    }
    auto *self = static_cast<QTV_VX_MessageQueue *>(std::calloc(1, sizeof(QTV_VX_MessageQueue)));
    if (self == nullptr) {
        reportError("Unable to allocate memory for Message Queue", source);
        return nullptr;
    }
    self->property = *property;
    OBLX_InlineList_initialize(&self->queue);
    createMembers(self, source);
    return self;
}

DDS_Long QTV_VX_MessageQueue_push(QTV_VX_MessageQueue *self, const QTV_VX_LogMessagePlusTime *item) {
    constexpr const char *source = "QTV_VX_MessageQueue_push";
    if (self == nullptr || item == nullptr || item->message.message == nullptr || item->message.category == nullptr) {
        reportError("Message queue or message to push is NULL", source);
        return 0;
    }
    if (!lock(self, source)) {
        return 0;
    }
    const bool queued = enqueue(self, item, source);
    unlock(self, source);
    if (queued && OBLX_CountingSemaphore_give(self->countSem) != OBLX_SYNC_OK) {
        reportError("Unable to give message queue counting semaphore", source);
    }
    return queued ? 1 : 0;
}

const QTV_VX_LogMessagePlusTime *QTV_VX_MessageQueue_front(QTV_VX_MessageQueue *self, const OBLX_Time_t *timeout) {
    // "MEssageQueue" is deliberate: the published report text.
    constexpr const char *source = "QTV_VX_MEssageQueue_front";
    if (!present(self, source)) {
        return nullptr;
    }
    switch (OBLX_CountingSemaphore_take(self->countSem, timeout)) {
    case OBLX_SYNC_OK:
        break;
    case OBLX_SYNC_TIMEOUT:
        return nullptr;
    default:
        reportError("Unable to take message queue counting semaphore", source);
        return nullptr;
    }
    if (!lock(self, source)) {
        return nullptr;
    }
    // Only this consumer removes elements, so the head outlives the unlock.
    Element *head = elementOf(OBLX_InlineList_getFirst(&self->queue));
    unlock(self, source);
    return head != nullptr ? &head->messagePlusTime : nullptr;
}

void QTV_VX_MessageQueue_pop(QTV_VX_MessageQueue *self) {
    constexpr const char *source = "QTV_VX_MessageQueue_pop";
    if (!present(self, source) || !lock(self, source)) {
        return;
    }
    discardHead(self);
    unlock(self, source);
}

void QTV_VX_MessageQueue_delete(QTV_VX_MessageQueue *self) {
    if (self == nullptr) {
        return;
    }
    OBLX_Mutex_delete(self->mutex);
    OBLX_CountingSemaphore_delete(self->countSem);
    if (self->elementPool != nullptr) {
        while (discardHead(self)) {
            vexar::countInQueues(vexar::QueueOutcome::discarded);
        }
        OBLX_BufferPool_delete(self->elementPool);
    }
    std::free(self);
}

DDS_Long QTV_VX_MessageQueue_getMessageQueueProperty(const QTV_VX_MessageQueue *self) {
    return present(self, "QTV_VX_MessageQueue_getMessageQueueProperty") ? self->property.queueSize : -1;
}

}  // extern "C"
