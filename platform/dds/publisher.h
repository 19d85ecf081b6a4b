/* The publisher: creates and deletes the data writers of one participant.
 * Writers are created on plain topics; a writer on a content-filtered
 * topic does not exist in DDS. */
#ifndef VEXAR_PLATFORM_PUBLISHER_H
#define VEXAR_PLATFORM_PUBLISHER_H

#include "platform/dds/entity.h"
#include "platform/dds/listener.h"
#include "platform/dds/qos.h"

VEXAR_BEGIN_DECLS

VEXAR_API DDS_Entity *DDS_Publisher_as_entity(DDS_Publisher *self);
VEXAR_API DDS_DomainParticipant *DDS_Publisher_get_participant(DDS_Publisher *self);
VEXAR_API DDS_ReturnCode_t DDS_Publisher_get_qos(DDS_Publisher *self, DDS_PublisherQos *qos);

/* A writer on `topic` (of this publisher's participant) with `qos`, or the
 * participant's default writer QoS for the topic's name when `qos` is null
 * (DDS_DomainParticipant_get_default_datawriter_qos_w_topic_name). The listener's
 * callbacks whose status bits are in `mask` are installed before the writer
 * is enabled, so no event is missed. Null on failure, reported. */
VEXAR_API DDS_DataWriter *DDS_Publisher_create_datawriter(DDS_Publisher *self, DDS_Topic *topic,
                                                          const DDS_DataWriterQos *qos,
                                                          const DDS_DataWriterListener *listener, DDS_StatusMask mask);

/* Deletes a writer of this publisher; waits for its listener callback in
 * progress, so never call it from that callback. */
VEXAR_API DDS_ReturnCode_t DDS_Publisher_delete_datawriter(DDS_Publisher *self, DDS_DataWriter *writer);

/* Deletes every writer of this publisher. */
VEXAR_API DDS_ReturnCode_t DDS_Publisher_delete_contained_entities(DDS_Publisher *self);

VEXAR_END_DECLS

#endif
