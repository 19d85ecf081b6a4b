/* The process-wide participant factory: creates and deletes domain
 * participants, holds the default participant QoS and answers QoS profile
 * look-ups.
 *
 * QoS profiles come from the <qos_library> elements of the XML documents
 * loaded into the factory (platform/dds/xml_configuration.h), in the OMG
 * DDS-XML format; they are checked when a document is loaded, so a profile
 * that can be found can be read. Before its first profile look-up (a
 * _from_profile operation, get_qos_profiles or a default QoS) the factory
 * loads the files named in the environment variable DDS_QOS_PROFILES,
 * separated by ';', once per process; a file it cannot load is reported
 * and the others still load. */
#ifndef VEXAR_PLATFORM_DOMAIN_PARTICIPANT_FACTORY_H
#define VEXAR_PLATFORM_DOMAIN_PARTICIPANT_FACTORY_H

#include "platform/dds/entity.h"
#include "platform/dds/listener.h"
#include "platform/dds/qos.h"
#include "platform/types/sequence.h"
#include "platform/dds/xml_configuration.h"

VEXAR_BEGIN_DECLS

/* The one factory of the process; never null, never freed. */
VEXAR_API DDS_DomainParticipantFactory *DDS_DomainParticipantFactory_get_instance(void);

/* A new participant on `domain_id` (0..230) with `qos`, or with the
 * factory's default participant QoS when `qos` is null. The listener must
 * be null or the mask 0 (participants take no callbacks). Null on failure,
 * reported. */
VEXAR_API DDS_DomainParticipant *
DDS_DomainParticipantFactory_create_participant(DDS_DomainParticipantFactory *self, DDS_DomainId_t domain_id,
                                                const DDS_DomainParticipantQos *qos,
                                                const DDS_DomainParticipantListener *listener, DDS_StatusMask mask);

/* Deletes a participant that contains no topics, content-filtered topics,
 * publishers or subscribers (DDS_RETCODE_PRECONDITION_NOT_MET otherwise:
 * call DDS_DomainParticipant_delete_contained_entities first). A
 * participant adopted from the application (OBLX_DomainParticipant_adoptCyclone)
 * loses its record here; its Cyclone participant stays. */
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipantFactory_delete_participant(DDS_DomainParticipantFactory *self,
                                                                           DDS_DomainParticipant *participant);

/* The default participant QoS into `qos`, an initialized record: the one
 * the application set, or else the record's defaults with the loaded
 * profile marked is_default_qos="true" over them. */
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipantFactory_get_default_participant_qos(DDS_DomainParticipantFactory *self,
                                                                                    DDS_DomainParticipantQos *qos);
/* Replaces it for participants created later with a null QoS; from then
 * on a default profile no longer applies to it. */
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipantFactory_set_default_participant_qos(
    DDS_DomainParticipantFactory *self, const DDS_DomainParticipantQos *qos);

/* ---- QoS profiles --------------------------------------------------------- */

/* The names of the profiles of `library_name` into `profile_names`, in
 * document order; length 0 for a library that is not loaded. */
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipantFactory_get_qos_profiles(DDS_DomainParticipantFactory *self,
                                                                         DDS_StringSeq *profile_names,
                                                                         const char *library_name);

/* Each fills `qos`, an initialized record, from the profile: the record's
 * defaults, then the profile's base profiles (base_name "P" in the same
 * library or "L::P"), then its own element of the record's kind; each
 * element sets only what it names. The plain forms take the elements
 * without a topic_filter; the _w_topic_name forms then also those whose
 * topic_filter (a shell pattern) matches `topic_name`, in document order.
 * An unknown library or profile leaves `qos` as it was and returns
 * DDS_RETCODE_BAD_PARAMETER, reported. */
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipantFactory_get_participant_qos_from_profile(
    DDS_DomainParticipantFactory *self, DDS_DomainParticipantQos *qos, const char *library_name,
    const char *profile_name);
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipantFactory_get_publisher_qos_from_profile(
    DDS_DomainParticipantFactory *self, DDS_PublisherQos *qos, const char *library_name, const char *profile_name);
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipantFactory_get_subscriber_qos_from_profile(
    DDS_DomainParticipantFactory *self, DDS_SubscriberQos *qos, const char *library_name, const char *profile_name);
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipantFactory_get_topic_qos_from_profile(DDS_DomainParticipantFactory *self,
                                                                                   DDS_TopicQos *qos,
                                                                                   const char *library_name,
                                                                                   const char *profile_name);
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipantFactory_get_topic_qos_from_profile_w_topic_name(
    DDS_DomainParticipantFactory *self, DDS_TopicQos *qos, const char *library_name, const char *profile_name,
    const char *topic_name);
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipantFactory_get_datawriter_qos_from_profile(
    DDS_DomainParticipantFactory *self, DDS_DataWriterQos *qos, const char *library_name, const char *profile_name);
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipantFactory_get_datawriter_qos_from_profile_w_topic_name(
    DDS_DomainParticipantFactory *self, DDS_DataWriterQos *qos, const char *library_name, const char *profile_name,
    const char *topic_name);
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipantFactory_get_datareader_qos_from_profile(
    DDS_DomainParticipantFactory *self, DDS_DataReaderQos *qos, const char *library_name, const char *profile_name);
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipantFactory_get_datareader_qos_from_profile_w_topic_name(
    DDS_DomainParticipantFactory *self, DDS_DataReaderQos *qos, const char *library_name, const char *profile_name,
    const char *topic_name);

VEXAR_END_DECLS

#endif
