/* The domain participant: registers types, creates and deletes the topics,
 * content-filtered topics, publishers and subscribers of one domain, and
 * gives their default QoS.
 *
 * A participant is made by the factory (platform/dds/domain_participant_factory.h)
 * or adopted from an application that already has a Cyclone participant
 * (OBLX_DomainParticipant_adoptCyclone). Either way it is deleted with
 * DDS_DomainParticipantFactory_delete_participant, which deletes the
 * Cyclone participant only when the factory created it.
 *
 * Every operation reports misuse (a null argument, an entity of another
 * participant) through the middleware logger and returns the OMG code. */
#ifndef VEXAR_PLATFORM_DOMAIN_PARTICIPANT_H
#define VEXAR_PLATFORM_DOMAIN_PARTICIPANT_H

#include <stdint.h>

#include "platform/dds/entity.h"
#include "platform/dds/listener.h"
#include "platform/dds/qos.h"
#include "platform/types/sequence.h"
#include "platform/plugin/type_plugin.h"

VEXAR_BEGIN_DECLS

/* A participant record for `cyclone_participant`, a participant that the
 * application created with Cyclone's dds_create_participant (its
 * dds_entity_t, which is an int32_t). The record borrows it: deleting the
 * record (DDS_DomainParticipantFactory_delete_participant) never deletes
 * the Cyclone participant, nor anything the application created in it with
 * Cyclone's API. Null, reported, when the handle is not a live participant.
 * The result can be given to QTV_VX_Options_setDomainParticipant. */
VEXAR_API DDS_DomainParticipant *OBLX_DomainParticipant_adoptCyclone(int32_t cyclone_participant);

/* Whether the participant was adopted rather than created by the factory. */
VEXAR_API DDS_Boolean OBLX_DomainParticipant_is_adopted(const DDS_DomainParticipant *self);

VEXAR_API DDS_Entity *DDS_DomainParticipant_as_entity(DDS_DomainParticipant *self);

/* The domain id; -1 for null. */
VEXAR_API DDS_DomainId_t DDS_DomainParticipant_get_domain_id(DDS_DomainParticipant *self);

/* The participant's QoS into `qos`, an initialized record: its user data,
 * name and role, and wire_protocol's rtps_host_id, rtps_app_id and
 * rtps_instance_id read from the participant's GUID prefix. */
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipant_get_qos(DDS_DomainParticipant *self, DDS_DomainParticipantQos *qos);

/* The factory, for a participant made by it or adopted. */
VEXAR_API DDS_DomainParticipantFactory *DDS_DomainParticipant_get_participant_factoryI(DDS_DomainParticipant *self);

/* ---- Discovery ------------------------------------------------------------ */

/* A live participant of the domain as discovery announced it: the ids of
 * its GUID prefix (as wire_protocol in DDS_DomainParticipant_get_qos), its
 * entity name (participant_name.name), null when it announced none, and its
 * user data (user_data.value), null and 0 when it has none. */
typedef struct OBLX_DiscoveredParticipant {
    DDS_Long rtps_host_id;
    DDS_Long rtps_app_id;
    DDS_Long rtps_instance_id;
    const char *name;
    const DDS_Octet *user_data;
    DDS_Long user_data_length;
} OBLX_DiscoveredParticipant;

typedef void (*OBLX_DiscoveredParticipantVisitor)(void *context, const OBLX_DiscoveredParticipant *participant);

/* Calls `visit` for each live participant that discovery knows in the
 * participant's domain, this one included; the record is borrowed for the
 * call. The first call starts following discovery, so participants that
 * are announced later are seen by later calls. */
VEXAR_API DDS_ReturnCode_t OBLX_DomainParticipant_visit_discovered_participants(DDS_DomainParticipant *self,
                                                                                OBLX_DiscoveredParticipantVisitor visit,
                                                                                void *context);

/* ---- Types ---------------------------------------------------------------- */

/* Registers `plugin`'s type under `type_name`. The participant keeps its own
 * copy of the plugin record, so the caller may delete it afterwards.
 * Registering the same plugin under the same name again is DDS_RETCODE_OK;
 * another plugin under a name in use is DDS_RETCODE_PRECONDITION_NOT_MET.
 * `registration_data` is handed to the plugin's on_participant_attached. */
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipant_register_type(DDS_DomainParticipant *self, const char *type_name,
                                                               const OBLX_TypePlugin *plugin, void *registration_data);

/* Forgets the registration; DDS_RETCODE_PRECONDITION_NOT_MET while a topic
 * of the type exists, DDS_RETCODE_BAD_PARAMETER for an unknown name. */
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipant_unregister_type(DDS_DomainParticipant *self, const char *type_name);

/* ---- Topics --------------------------------------------------------------- */

/* The topic or content-filtered topic of that name created through this
 * participant, or null (not reported). */
VEXAR_API DDS_TopicDescription *DDS_DomainParticipant_lookup_topicdescription(DDS_DomainParticipant *self,
                                                                              const char *topic_name);

/* A topic of a registered type; `qos` null means the default topic QoS for
 * its name.
 * Null, reported, when the type is not registered or the name is taken by
 * a topic of another type. The listener must be null or the mask 0. */
VEXAR_API DDS_Topic *DDS_DomainParticipant_create_topic(DDS_DomainParticipant *self, const char *topic_name,
                                                        const char *type_name, const DDS_TopicQos *qos,
                                                        const DDS_TopicListener *listener, DDS_StatusMask mask);

/* DDS_RETCODE_PRECONDITION_NOT_MET while a writer, reader or
 * content-filtered topic uses the topic. */
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipant_delete_topic(DDS_DomainParticipant *self, DDS_Topic *topic);

/* A filtered view of `related_topic`: readers created on it see only the
 * samples for which `filter_expression` holds (see platform/filter/content_filter.hpp
 * for the language; %0, %1, ... take `expression_parameters` in order, which
 * may be null when there are none). The expression is checked against the
 * type when the topic is created: a bad expression is reported with its
 * column and gives null. The filter runs on each incoming sample in the
 * reader's receive path; disposes and unregistrations pass unfiltered. */
VEXAR_API DDS_ContentFilteredTopic *
DDS_DomainParticipant_create_contentfilteredtopic(DDS_DomainParticipant *self, const char *name,
                                                  DDS_Topic *related_topic, const char *filter_expression,
                                                  const DDS_StringSeq *expression_parameters);

/* DDS_RETCODE_PRECONDITION_NOT_MET while a reader uses it. */
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipant_delete_contentfilteredtopic(DDS_DomainParticipant *self,
                                                                             DDS_ContentFilteredTopic *topic);

/* ---- Publishers and subscribers ------------------------------------------- */

/* `qos` null means the default; the listener must be null or the mask 0. */
VEXAR_API DDS_Publisher *DDS_DomainParticipant_create_publisher(DDS_DomainParticipant *self,
                                                                const DDS_PublisherQos *qos,
                                                                const DDS_PublisherListener *listener,
                                                                DDS_StatusMask mask);
/* DDS_RETCODE_PRECONDITION_NOT_MET while it contains writers. */
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipant_delete_publisher(DDS_DomainParticipant *self,
                                                                  DDS_Publisher *publisher);

VEXAR_API DDS_Subscriber *DDS_DomainParticipant_create_subscriber(DDS_DomainParticipant *self,
                                                                  const DDS_SubscriberQos *qos,
                                                                  const DDS_SubscriberListener *listener,
                                                                  DDS_StatusMask mask);
/* DDS_RETCODE_PRECONDITION_NOT_MET while it contains readers. */
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipant_delete_subscriber(DDS_DomainParticipant *self,
                                                                   DDS_Subscriber *subscriber);

/* Deletes every publisher, subscriber (with their writers and readers),
 * content-filtered topic and topic created through this participant; type
 * registrations stay. DDS_RETCODE_PRECONDITION_NOT_MET, with nothing
 * deleted, while a reader has samples on loan. */
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipant_delete_contained_entities(DDS_DomainParticipant *self);

/* ---- Default QoS ---------------------------------------------------------- *
 * Each fills `qos`, an initialized record, with the record's defaults (see
 * platform/dds/qos.h) and over them the loaded QoS profile marked
 * is_default_qos="true", when there is one (with its base profiles). The
 * plain forms take the profile's elements without a topic_filter; the
 * _w_topic_name forms also those whose topic_filter matches `topic_name`.
 * Entities created with a null QoS get these values.
 * DDS_RETCODE_ILLEGAL_OPERATION, reported, from an XML extension callback of
 * the participant factory. */

VEXAR_API DDS_ReturnCode_t DDS_DomainParticipant_get_default_publisher_qos(DDS_DomainParticipant *self,
                                                                           DDS_PublisherQos *qos);
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipant_get_default_subscriber_qos(DDS_DomainParticipant *self,
                                                                            DDS_SubscriberQos *qos);
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipant_get_default_topic_qos(DDS_DomainParticipant *self, DDS_TopicQos *qos);
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipant_get_default_topic_qos_w_topic_name(DDS_DomainParticipant *self,
                                                                                    DDS_TopicQos *qos,
                                                                                    const char *topic_name);
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipant_get_default_datawriter_qos(DDS_DomainParticipant *self,
                                                                            DDS_DataWriterQos *qos);
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipant_get_default_datawriter_qos_w_topic_name(DDS_DomainParticipant *self,
                                                                                         DDS_DataWriterQos *qos,
                                                                                         const char *topic_name);
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipant_get_default_datareader_qos(DDS_DomainParticipant *self,
                                                                            DDS_DataReaderQos *qos);
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipant_get_default_datareader_qos_w_topic_name(DDS_DomainParticipant *self,
                                                                                         DDS_DataReaderQos *qos,
                                                                                         const char *topic_name);

VEXAR_END_DECLS

#endif
