/* Listeners: the callbacks that an entity calls when one of its statuses
 * changes, with the status records they receive.
 *
 * Writers call on_publication_matched; readers call on_data_available and
 * on_subscription_matched. A callback runs only when its status bit is in
 * the mask given with the listener, and its pointer is not null.
 *
 * Callbacks run on Cyclone's threads, concurrently with the application's
 * threads, one callback at a time per entity. Cyclone calls a listener on
 * the thread that caused the event: the receive thread for remote data,
 * but the writing thread itself when a writer and a reader of one process
 * meet. A status that changed before its listener was installed (a reader
 * matched while the writer was being created, data that arrived before
 * set_listener) is delivered at once by the installing call, on the
 * installing thread, so installing a listener after creation loses nothing.
 *
 * Deleting an entity, or replacing its listener, waits until its callback
 * in progress has returned, so a callback must never delete its own entity
 * (nor the publisher, subscriber or participant that contains it) nor set
 * its listener: that would wait for itself. Reading, taking and writing
 * from a callback are fine.
 *
 * Participants, topics, publishers and subscribers take no callbacks:
 * their listener records carry only listener_data, and creating one of
 * them with a listener and a non-zero mask is refused as unsupported. */
#ifndef VEXAR_PLATFORM_LISTENER_H
#define VEXAR_PLATFORM_LISTENER_H

#include "platform/dds/entity.h"

VEXAR_BEGIN_DECLS

/* A writer's matches with readers. Counts are since the writer's creation
 * (total) and at present (current); the _change fields count the change
 * since the status was last read or reported. */
typedef struct DDS_PublicationMatchedStatus {
    DDS_Long total_count;
    DDS_Long total_count_change;
    DDS_Long current_count;
    DDS_Long current_count_change;
    DDS_InstanceHandle_t last_subscription_handle; /* the reader that matched or unmatched last */
} DDS_PublicationMatchedStatus;

/* A reader's matches with writers, as above. */
typedef struct DDS_SubscriptionMatchedStatus {
    DDS_Long total_count;
    DDS_Long total_count_change;
    DDS_Long current_count;
    DDS_Long current_count_change;
    DDS_InstanceHandle_t last_publication_handle;
} DDS_SubscriptionMatchedStatus;

/* Samples of the reader's topic that never reached it, counted as above. */
typedef struct DDS_SampleLostStatus {
    DDS_Long total_count;
    DDS_Long total_count_change;
} DDS_SampleLostStatus;

#define DDS_SampleLostStatus_INITIALIZER \
    { 0, 0 }
#define DDS_PublicationMatchedStatus_INITIALIZER \
    { 0, 0, 0, 0, DDS_HANDLE_NIL }
#define DDS_SubscriptionMatchedStatus_INITIALIZER \
    { 0, 0, 0, 0, DDS_HANDLE_NIL }

typedef void (*DDS_DataWriterListener_PublicationMatchedCallback)(void *listener_data, DDS_DataWriter *writer,
                                                                  const DDS_PublicationMatchedStatus *status);
typedef void (*DDS_DataReaderListener_DataAvailableCallback)(void *listener_data, DDS_DataReader *reader);
typedef void (*DDS_DataReaderListener_SubscriptionMatchedCallback)(void *listener_data, DDS_DataReader *reader,
                                                                   const DDS_SubscriptionMatchedStatus *status);

/* The entity keeps a copy of the record, so it may live on the stack. */
typedef struct DDS_DataWriterListener {
    void *listener_data; /* passed to every callback */
    DDS_DataWriterListener_PublicationMatchedCallback on_publication_matched;
} DDS_DataWriterListener;

typedef struct DDS_DataReaderListener {
    void *listener_data;
    DDS_DataReaderListener_DataAvailableCallback on_data_available;
    DDS_DataReaderListener_SubscriptionMatchedCallback on_subscription_matched;
} DDS_DataReaderListener;

/* Entities without callbacks of their own. */
typedef struct DDS_DomainParticipantListener {
    void *listener_data;
} DDS_DomainParticipantListener;
typedef struct DDS_TopicListener {
    void *listener_data;
} DDS_TopicListener;
typedef struct DDS_PublisherListener {
    void *listener_data;
} DDS_PublisherListener;
typedef struct DDS_SubscriberListener {
    void *listener_data;
} DDS_SubscriberListener;

#define DDS_DataWriterListener_INITIALIZER \
    { NULL, NULL }
#define DDS_DataReaderListener_INITIALIZER \
    { NULL, NULL, NULL }

VEXAR_END_DECLS

#endif
