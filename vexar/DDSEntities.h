/* The logger's DDS entities: its participant (borrowed from the options or
 * created here), the four topics, the content-filtered view of the request
 * topic that passes only requests addressed to this application, one
 * publisher with the LogMessage, State and CommandResponse writers, and one
 * subscriber with the CommandRequest reader.
 *
 * QoS: each entity's QoS comes from the options' named QoS library and
 * profile when that profile exists, else from the middleware's defaults.
 * Then fixed values are imposed: the writers and the reader keep their
 * reliability, durability, ownership and ordering whatever a profile says
 * (a profile may choose their history depth); topics get theirs only on
 * defaults. Every entity is marked protocol.vendor_specific_entity.
 *
 * Topics already present on a participant shared with the application are
 * reused and left alone at destruction; only what was created here is
 * deleted. Failures are printed through QTV_VX_Vexar_printMessage with the
 * operation's name as source. */
#ifndef VEXAR_VEXAR_DDSENTITIES_H
#define VEXAR_VEXAR_DDSENTITIES_H

#include "platform/dds_types.h"
#include "platform/dds/domain_participant.h"
#include "platform/dds/domain_participant_factory.h"
#include "platform/dds/entity.h"
#include "platform/export.h"
#include "platform/dds/listener.h"
#include "platform/dds/qos.h"
#include "platform/dds/topic.h"
#include "vexar/Options.h"
#include "vexar/Vexar.h"

VEXAR_BEGIN_DECLS

/* Topic names and the type names registered for them. */
#define QTV_VX_LOG_TOPIC_NAME "qtv/vexar"
#define QTV_VX_STATE_TOPIC_NAME "qtv/vexar/administration/state"
#define QTV_VX_COMMAND_REQUEST_TOPIC_NAME "qtv/vexar/administration/command_request"
#define QTV_VX_COMMAND_RESPONSE_TOPIC_NAME "qtv/vexar/administration/command_response"
#define QTV_VX_LOG_MESSAGE_REGISTERED_TYPE_NAME "com::qtv::vx::LogMessage"
#define QTV_VX_STATE_REGISTERED_TYPE_NAME "com::qtv::vx::admin::State"
#define QTV_VX_COMMAND_REQUEST_REGISTERED_TYPE_NAME "com::qtv::vx::admin::CommandRequest"
#define QTV_VX_COMMAND_RESPONSE_REGISTERED_TYPE_NAME "com::qtv::vx::admin::CommandResponse"

/* A participant that the logger creates announces its process in its user
 * data, when the QoS left that empty: this prefix, then "exe@host[pid]"
 * (executable name, host name, process id). Its name stays the kind. */
#define QTV_VX_IDENTITY_USER_DATA_PREFIX "vexar.identity="

/* The filtered view of the request topic; %0 and %1 are this participant's
 * RTPS host and application ids. */
#define QTV_VX_COMMAND_REQUEST_FILTERED_TOPIC_NAME "CommandRequestContentFilteredTopic"
#define QTV_VX_COMMAND_REQUEST_FILTER_EXPRESSION \
    "targetHostAndAppId.rtps_host_id = %0 and targetHostAndAppId.rtps_app_id = %1"

/* Slots of QTV_VX_DDSEntities.locallyCreatedTopics. */
#define QTV_VX_LOG_TOPIC_SLOT 0
#define QTV_VX_STATE_TOPIC_SLOT 1
#define QTV_VX_COMMAND_REQUEST_TOPIC_SLOT 2
#define QTV_VX_COMMAND_RESPONSE_TOPIC_SLOT 3
#define QTV_VX_TOPIC_COUNT 4

struct QTV_VX_LogMessageDataWriter;
struct QTV_VX_ADMIN_StateDataWriter;
struct QTV_VX_ADMIN_CommandRequestDataReader;
struct QTV_VX_ADMIN_CommandResponseDataWriter;

/* Fields in their fixed order. A record is either fully built or does not
 * exist: create never returns a partial one. */
typedef struct QTV_VX_DDSEntities {
    DDS_Long participantCreatedLocally; /* 1: created here and deleted with the record */
    DDS_DomainParticipantFactory *factory;
    DDS_DomainParticipant *domainParticipant;
    DDS_Topic *logTopic;
    DDS_Publisher *publisher;
    DDS_Subscriber *subscriber; /* null when remote administration is off */
    struct QTV_VX_LogMessageDataWriter *logMessageWriter;
    DDS_Topic *stateTopic;
    struct QTV_VX_ADMIN_StateDataWriter *stateWriter;
    DDS_DataWriterListener stateWriterListener; /* on_publication_matched, data = the logger */
    DDS_Topic *commandRequestTopic;
    DDS_ContentFilteredTopic *commandRequestContentFilteredTopic;
    struct QTV_VX_ADMIN_CommandRequestDataReader *commandRequestReader;
    DDS_Topic *commandResponseTopic;
    struct QTV_VX_ADMIN_CommandResponseDataWriter *commandResponseWriter;
    /* Entry i holds topic i only if create made it; topics found on the
     * participant are never deleted here. */
    DDS_Topic *locallyCreatedTopics[QTV_VX_TOPIC_COUNT];
    DDS_Long rtpsHostId;
    DDS_Long rtpsAppId;
    const char *qosLibrary; /* borrowed from the options */
    const char *qosProfile; /* borrowed from the options */
} QTV_VX_DDSEntities;

/* 1 once the first State sample has been written; create clears it. Read
 * and written atomically inside the library. */
extern VEXAR_API volatile DDS_Long QTV_VX_DDSEntities_gInitialStateSent;

/* ---- lifecycle ------------------------------------------------------- */

/* Builds every entity for `logger` (reads its options; the logger becomes
 * the State writer listener's data). With remote administration off there
 * is no subscriber, command topic, reader or response writer. Null, with a
 * printed line, on failure; nothing is left behind then. */
VEXAR_API QTV_VX_DDSEntities *QTV_VX_DDSEntities_create(QTV_VX_Vexar *logger);
/* Sets every field to zero or null. */
VEXAR_API void QTV_VX_DDSEntities_initialize(QTV_VX_DDSEntities *self);
/* Deletes the contained entities and frees the record; accepts null and a
 * partly built record. */
VEXAR_API void QTV_VX_DDSEntities_destroy(QTV_VX_DDSEntities *self);
/* Deletes what create made (a borrowed participant and the topics found on
 * it stay). A failed step is printed as a warning and the next one runs.
 * Returns the code of the last delete of a subscriber, publisher, filtered
 * topic or participant (DDS_RETCODE_OK when none ran). Pointers are not
 * reset. */
VEXAR_API DDS_ReturnCode_t QTV_VX_DDSEntities_deleteContainedEntities(QTV_VX_DDSEntities *self);

/* ---- QoS --------------------------------------------------------------- */

/* 1 when both names are non-empty and the library lists the profile
 * (compared exactly), else 0. */
VEXAR_API DDS_Long QTV_VX_DDSEntities_doesQosLibraryAndProfileExist(QTV_VX_DDSEntities *self, const char *libraryName,
                                                                    const char *profileName);

/* Each fills `qos` (initialized here; the caller finalizes it) with the QoS
 * that the logger uses for that entity. DDS_RETCODE_OK, or the code of the
 * step that failed. Topic names are compared case-insensitively. */
VEXAR_API DDS_ReturnCode_t QTV_VX_DDSEntities_getDomainParticipantQos(QTV_VX_DDSEntities *self,
                                                                      DDS_DomainParticipantQos *qos,
                                                                      const QTV_VX_Options *options);
VEXAR_API DDS_ReturnCode_t QTV_VX_DDSEntities_getPublisherQos(QTV_VX_DDSEntities *self, DDS_PublisherQos *qos);
VEXAR_API DDS_ReturnCode_t QTV_VX_DDSEntities_getSubscriberQos(QTV_VX_DDSEntities *self, DDS_SubscriberQos *qos);
VEXAR_API DDS_ReturnCode_t QTV_VX_DDSEntities_getTopicQos(QTV_VX_DDSEntities *self, DDS_TopicQos *qos,
                                                          const char *topicName);
VEXAR_API DDS_ReturnCode_t QTV_VX_DDSEntities_getDataWriterQos(QTV_VX_DDSEntities *self, DDS_DataWriterQos *qos,
                                                               const char *topicName);
VEXAR_API DDS_ReturnCode_t QTV_VX_DDSEntities_getDataReaderQos(QTV_VX_DDSEntities *self, DDS_DataReaderQos *qos,
                                                               const char *topicName);

/* ---- getters: borrowed; 0 or null for a null record or an entity that
 * was not created. -------------------------------------------------------- */

VEXAR_API DDS_Long QTV_VX_DDSEntities_getRtpsHostId(const QTV_VX_DDSEntities *self);
VEXAR_API DDS_Long QTV_VX_DDSEntities_getRtpsAppId(const QTV_VX_DDSEntities *self);
VEXAR_API DDS_DomainParticipant *QTV_VX_DDSEntities_getDomainParticipant(const QTV_VX_DDSEntities *self);
VEXAR_API struct QTV_VX_LogMessageDataWriter *QTV_VX_DDSEntities_getLogMessageWriter(const QTV_VX_DDSEntities *self);
VEXAR_API struct QTV_VX_ADMIN_StateDataWriter *QTV_VX_DDSEntities_getStateWriter(const QTV_VX_DDSEntities *self);
VEXAR_API struct QTV_VX_ADMIN_CommandRequestDataReader *
QTV_VX_DDSEntities_getCommandRequestReader(const QTV_VX_DDSEntities *self);
VEXAR_API struct QTV_VX_ADMIN_CommandResponseDataWriter *
QTV_VX_DDSEntities_getCommandResponseWriter(const QTV_VX_DDSEntities *self);

VEXAR_END_DECLS

/* The State publishing and the remote commands that run on these entities. */
#include "vexar/AdminState.h"
#include "vexar/RemoteCommands.h"

#endif
