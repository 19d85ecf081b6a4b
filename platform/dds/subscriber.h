/* The subscriber: creates and deletes the data readers of one participant,
 * on plain or content-filtered topics. */
#ifndef VEXAR_PLATFORM_SUBSCRIBER_H
#define VEXAR_PLATFORM_SUBSCRIBER_H

#include "platform/dds/entity.h"
#include "platform/dds/listener.h"
#include "platform/dds/qos.h"

VEXAR_BEGIN_DECLS

VEXAR_API DDS_Entity *DDS_Subscriber_as_entity(DDS_Subscriber *self);
VEXAR_API DDS_DomainParticipant *DDS_Subscriber_get_participant(DDS_Subscriber *self);
VEXAR_API DDS_ReturnCode_t DDS_Subscriber_get_qos(DDS_Subscriber *self, DDS_SubscriberQos *qos);

/* A reader on `topic` (a topic or content-filtered topic of this
 * subscriber's participant) with `qos`, or the participant's default reader
 * QoS for the description's name when `qos` is null. The listener is
 * installed before the reader is enabled. Null on failure, reported. */
VEXAR_API DDS_DataReader *DDS_Subscriber_create_datareader(DDS_Subscriber *self, DDS_TopicDescription *topic,
                                                           const DDS_DataReaderQos *qos,
                                                           const DDS_DataReaderListener *listener, DDS_StatusMask mask);

/* Deletes a reader of this subscriber with its read conditions.
 * DDS_RETCODE_PRECONDITION_NOT_MET while it has samples on loan. Waits for
 * its listener callback in progress, so never call it from that callback. */
VEXAR_API DDS_ReturnCode_t DDS_Subscriber_delete_datareader(DDS_Subscriber *self, DDS_DataReader *reader);

/* Deletes every reader of this subscriber; DDS_RETCODE_PRECONDITION_NOT_MET,
 * with nothing deleted, while one of them has samples on loan. */
VEXAR_API DDS_ReturnCode_t DDS_Subscriber_delete_contained_entities(DDS_Subscriber *self);

VEXAR_END_DECLS

#endif
