// Creation and deletion of the logger's DDS entities, in a fixed order:
// participant, its RTPS ids, log and State topics, publisher, the two
// writers and the State listener, then (with remote administration) the
// subscriber, the command topics, the filtered view and the command
// endpoints. A failure at any step deletes what was made.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include "platform/dds/data_writer.h"
#include "platform/dds/publisher.h"
#include "platform/dds/subscriber.h"
#include "platform/log/failure_causes.hpp"
#include "type/vexarSupport.h"
#include "vexar/DDSEntities.h"
#include "vexar/QosLibrary.h"
#include "vexar/admin_state.hpp"
#include "vexar/process_identity.hpp"
#include "vexar/report_line.hpp"
#include "vexar/scoped_qos.hpp"

namespace {

using vexar::present;
using vexar::reportError;
using vexar::reportWarning;
using vexar::ScopedQos;

constexpr const char *kCreate = "QTV_VX_DDSEntities_create";
constexpr const char *kDelete = "QTV_VX_DDSEntities_deleteContainedEntities";

// One topic: its names, how its type is registered, its slot and what is
// printed when a step fails.
struct TopicPlan {
    const char *topicName;
    const char *registeredTypeName;
    DDS_ReturnCode_t (*registerType)(DDS_DomainParticipant *, const char *);
    int slot;
    const char *registerFailure;
    const char *qosFailure;
    const char *createFailure;
};

constexpr TopicPlan kLogTopic{
    QTV_VX_LOG_TOPIC_NAME,      QTV_VX_LOG_MESSAGE_REGISTERED_TYPE_NAME,  QTV_VX_LogMessageTypeSupport_register_type,
    QTV_VX_LOG_TOPIC_SLOT,      "Unable to register type for LogMessage", "Unable to create QoS for LogMessage Topic",
    "Unable to create logTopic"};
constexpr TopicPlan kStateTopic{
    QTV_VX_STATE_TOPIC_NAME,      QTV_VX_STATE_REGISTERED_TYPE_NAME, QTV_VX_ADMIN_StateTypeSupport_register_type,
    QTV_VX_STATE_TOPIC_SLOT,      "Unable to register State type",   "Unable to get QoS of State's Topic",
    "Unable to create stateTopic"};
constexpr TopicPlan kCommandRequestTopic{QTV_VX_COMMAND_REQUEST_TOPIC_NAME,
                                         QTV_VX_COMMAND_REQUEST_REGISTERED_TYPE_NAME,
                                         QTV_VX_ADMIN_CommandRequestTypeSupport_register_type,
                                         QTV_VX_COMMAND_REQUEST_TOPIC_SLOT,
                                         "Unable to register CommandRequest type",
                                         "Unable to get QoS for CommandRequest's Topic",
                                         "Unable to create CommandRequest Topic"};
// "CommandResponse Type" in capitals is deliberate: the published report text.
constexpr TopicPlan kCommandResponseTopic{QTV_VX_COMMAND_RESPONSE_TOPIC_NAME,
                                          QTV_VX_COMMAND_RESPONSE_REGISTERED_TYPE_NAME,
                                          QTV_VX_ADMIN_CommandResponseTypeSupport_register_type,
                                          QTV_VX_COMMAND_RESPONSE_TOPIC_SLOT,
                                          "Unable to register CommandResponse Type",
                                          "Unable to get QoS for CommandResponse Topic",
                                          "Unable to create commandResponse Topic"};

struct WriterPlan {
    const char *topicName;
    const char *qosFailure;
    const char *createFailure;
    bool batched = false;
};

// The log writer batches: its write thread writes many small samples in a
// row and flushes whenever it finds its queue empty, so a packet carries many
// messages and none waits for a later one.
constexpr WriterPlan kLogMessageWriter{QTV_VX_LOG_TOPIC_NAME, "Unable to get QoS for LogMessage DataWriter",
                                       "Unable to create logMessage DataWriter", true};
constexpr WriterPlan kStateWriter{QTV_VX_STATE_TOPIC_NAME, "Unable to get QoS of State's DataWriter",
                                  "Unable to create State DataWriter"};
constexpr WriterPlan kCommandResponseWriter{QTV_VX_COMMAND_RESPONSE_TOPIC_NAME,
                                            "Unable to get QoS for CommandResponse DataWriter",
                                            "Unable to create CommandResponse DataWriter"};

bool fail(const char *text) noexcept {
    reportError(text, kCreate);
    return false;
}

// The published line, then each line the middleware raised about it: the
// middleware logger is silenced while the logger is created, and a
// participant, topic or endpoint that DDS Security refuses is told only there.
bool failBecause(const char *text, const vexar::log::FailureCauses &causes) noexcept {
    fail(text);
    try {
        for (const std::string &cause : causes.lines()) reportError(("caused by: " + cause).c_str(), kCreate);
        if (causes.omitted() > 0) {
            reportError(("caused by " + std::to_string(causes.omitted()) + " more lines").c_str(), kCreate);
        }
    } catch (const std::bad_alloc &) {
        reportError("caused by what could not be told: out of memory", kCreate);
    }
    return false;
}

// The built-in library needs no file; it is loaded only when named, so that
// applications that never ask for it do not find it in their XML tree.
void loadBuiltinLibraryWhenNamed(const QTV_VX_DDSEntities &self) noexcept {
    if (self.qosLibrary != nullptr && std::strcmp(self.qosLibrary, QTV_VX_QOS_LIBRARY_NAME) == 0) {
        (void)QTV_VX_QosLibrary_load();  // a failure leaves the profile missing, which is warned about next
    }
}

void warnWhenProfileMissing(QTV_VX_DDSEntities &self) noexcept {
    if (self.qosLibrary == nullptr || self.qosProfile == nullptr) return;
    if (QTV_VX_DDSEntities_doesQosLibraryAndProfileExist(&self, self.qosLibrary, self.qosProfile) == 0) {
        reportWarning("QoS Library and Profile cannot be found, using default QoS", kCreate);
    }
}

// A participant the logger creates announces its process in its user data
// (when the options' QoS left that empty), so that tools can tell apart
// applications of one kind; its name stays the kind. A participant the
// application lends is left as it is.
bool announceProcess(DDS_DomainParticipantQos &qos) noexcept {
    if (DDS_OctetSeq_get_length(&qos.user_data.value) > 0) return true;
    try {
        std::string announced = std::string(QTV_VX_IDENTITY_USER_DATA_PREFIX) + vexar::processIdentity();
        return DDS_OctetSeq_from_array(&qos.user_data.value, reinterpret_cast<const DDS_Octet *>(announced.data()),
                                       static_cast<DDS_Long>(announced.size()));
    } catch (const std::bad_alloc &) {
        return false;
    }
}

bool attachParticipant(QTV_VX_DDSEntities &self, const QTV_VX_Options &options) noexcept {
    if (options.domainParticipant != nullptr) {
        self.domainParticipant = options.domainParticipant;
        return true;
    }
    ScopedQos<DDS_DomainParticipantQos, DDS_DomainParticipantQos_finalize> qos{DDS_DomainParticipantQos_INITIALIZER};
    if (QTV_VX_DDSEntities_getDomainParticipantQos(&self, &qos.value, &options) != DDS_RETCODE_OK ||
        !announceProcess(qos.value)) {
        return fail("Unable to get Domain Participant QoS");
    }
    // The middleware logger is silenced while the logger is created, so what
    // Cyclone says about a failure is kept here to be shown with it.
    vexar::log::FailureCauses causes;
    self.domainParticipant = DDS_DomainParticipantFactory_create_participant(
        self.factory, static_cast<DDS_DomainId_t>(options.domainId), &qos.value, nullptr, DDS_STATUS_MASK_NONE);
    if (self.domainParticipant == nullptr) return failBecause("Unable to create Domain Participant", causes);
    self.participantCreatedLocally = 1;
    return true;
}

// The ids also key the logger's State instance. They go into the sample at
// once, because a State reader that is already there is matched while the
// State writer's listener is being installed, before creation finishes.
bool learnRtpsIds(QTV_VX_DDSEntities &self, QTV_VX_Vexar &logger) noexcept {
    ScopedQos<DDS_DomainParticipantQos, DDS_DomainParticipantQos_finalize> qos{DDS_DomainParticipantQos_INITIALIZER};
    const DDS_ReturnCode_t result = DDS_DomainParticipant_get_qos(self.domainParticipant, &qos.value);
    self.rtpsHostId = qos.value.wire_protocol.rtps_host_id;
    self.rtpsAppId = qos.value.wire_protocol.rtps_app_id;
    if (result != DDS_RETCODE_OK) {
        // "to create update" is deliberate: the published report text.
        return fail("Unable to get Domain Participant QoS to create update HostId and AppId:");
    }
    if (logger.state != nullptr) {
        auto stateLock = vexar::lockState();
        logger.state->hostAndAppId = QTV_VX_HostAndAppId{self.rtpsHostId, self.rtpsAppId};
    }
    return true;
}

// A topic that the participant already has is reused as it is; only a
// topic made here takes its slot, and so is deleted with the entities.
DDS_Topic *findOrCreateTopic(QTV_VX_DDSEntities &self, const TopicPlan &plan) noexcept {
    DDS_TopicDescription *found = DDS_DomainParticipant_lookup_topicdescription(self.domainParticipant, plan.topicName);
    if (DDS_Topic *existing = found != nullptr ? DDS_Topic_narrow(found) : nullptr) return existing;
    if (plan.registerType(self.domainParticipant, plan.registeredTypeName) != DDS_RETCODE_OK) {
        fail(plan.registerFailure);
        return nullptr;
    }
    ScopedQos<DDS_TopicQos, DDS_TopicQos_finalize> qos{DDS_TopicQos_INITIALIZER};
    if (QTV_VX_DDSEntities_getTopicQos(&self, &qos.value, plan.topicName) != DDS_RETCODE_OK) {
        fail(plan.qosFailure);
        return nullptr;
    }
    vexar::log::FailureCauses causes;
    DDS_Topic *topic = DDS_DomainParticipant_create_topic(
        self.domainParticipant, plan.topicName, plan.registeredTypeName, &qos.value, nullptr, DDS_STATUS_MASK_NONE);
    if (topic == nullptr) failBecause(plan.createFailure, causes);
    self.locallyCreatedTopics[plan.slot] = topic;
    return topic;
}

template <typename TypedWriter>
TypedWriter *createWriter(QTV_VX_DDSEntities &self, DDS_Topic *topic, const WriterPlan &plan,
                          TypedWriter *(*narrow)(DDS_DataWriter *)) noexcept {
    ScopedQos<DDS_DataWriterQos, DDS_DataWriterQos_finalize> qos{DDS_DataWriterQos_INITIALIZER};
    if (QTV_VX_DDSEntities_getDataWriterQos(&self, &qos.value, plan.topicName) != DDS_RETCODE_OK) {
        fail(plan.qosFailure);
        return nullptr;
    }
    // Cyclone's batching is one switch for the whole process: an application
    // that hands over its own participant writes with Cyclone itself, and its
    // writers must not start holding samples back because it logs.
    if (plan.batched && self.participantCreatedLocally) qos.value.batch.enable = DDS_BOOLEAN_TRUE;
    vexar::log::FailureCauses causes;
    DDS_DataWriter *writer =
        DDS_Publisher_create_datawriter(self.publisher, topic, &qos.value, nullptr, DDS_STATUS_MASK_NONE);
    TypedWriter *typed = writer != nullptr ? narrow(writer) : nullptr;
    if (typed == nullptr) failBecause(plan.createFailure, causes);
    return typed;
}

// A publisher or subscriber: its QoS, then the entity, each failure with
// its own line.
template <typename Qos, DDS_ReturnCode_t (*finalize)(Qos *), typename Group, typename Listener>
bool createGroup(QTV_VX_DDSEntities &self, Qos initial, DDS_ReturnCode_t (*getQos)(QTV_VX_DDSEntities *, Qos *),
                 Group *(*create)(DDS_DomainParticipant *, const Qos *, const Listener *, DDS_StatusMask),
                 Group *&group, const char *qosFailure, const char *createFailure) noexcept {
    ScopedQos<Qos, finalize> qos{initial};
    if (getQos(&self, &qos.value) != DDS_RETCODE_OK) return fail(qosFailure);
    group = create(self.domainParticipant, &qos.value, nullptr, DDS_STATUS_MASK_NONE);
    return group != nullptr || fail(createFailure);
}

bool createPublisher(QTV_VX_DDSEntities &self) noexcept {
    return createGroup<DDS_PublisherQos, DDS_PublisherQos_finalize>(
        self, DDS_PublisherQos_INITIALIZER, QTV_VX_DDSEntities_getPublisherQos, DDS_DomainParticipant_create_publisher,
        self.publisher, "Unable to get publisher QoS", "Unable to create publisher");
}

bool createSubscriber(QTV_VX_DDSEntities &self) noexcept {
    return createGroup<DDS_SubscriberQos, DDS_SubscriberQos_finalize>(
        self, DDS_SubscriberQos_INITIALIZER, QTV_VX_DDSEntities_getSubscriberQos,
        DDS_DomainParticipant_create_subscriber, self.subscriber, "Unable to get Subscriber QoS",
        "Unable to create Subscriber");
}

// The first State sample is written when a State reader is matched.
bool listenForStateReaders(QTV_VX_DDSEntities &self, QTV_VX_Vexar &logger) noexcept {
    self.stateWriterListener = DDS_DataWriterListener{&logger, QTV_VX_DDSEntities_stateWriterOnPublicationMatched};
    DDS_ReturnCode_t result = DDS_DataWriter_set_listener(QTV_VX_ADMIN_StateDataWriter_as_datawriter(self.stateWriter),
                                                          &self.stateWriterListener, DDS_PUBLICATION_MATCHED_STATUS);
    // "DataWrite" is deliberate: the published report text.
    return result == DDS_RETCODE_OK || fail("Unable to set listener in State DataWrite");
}

bool createLogAndStateEntities(QTV_VX_DDSEntities &self, QTV_VX_Vexar &logger) noexcept {
    self.logTopic = findOrCreateTopic(self, kLogTopic);
    if (self.logTopic == nullptr) return false;
    self.stateTopic = findOrCreateTopic(self, kStateTopic);
    if (self.stateTopic == nullptr || !createPublisher(self)) return false;
    self.logMessageWriter = createWriter(self, self.logTopic, kLogMessageWriter, QTV_VX_LogMessageDataWriter_narrow);
    if (self.logMessageWriter == nullptr) return false;
    self.stateWriter = createWriter(self, self.stateTopic, kStateWriter, QTV_VX_ADMIN_StateDataWriter_narrow);
    return self.stateWriter != nullptr && listenForStateReaders(self, logger);
}

// Only requests whose target is this participant pass: the filter's two
// parameters are its RTPS host and application ids.
bool createCommandRequestFilter(QTV_VX_DDSEntities &self) noexcept {
    char hostId[16];
    char appId[16];
    std::snprintf(hostId, sizeof hostId, "%d", static_cast<int>(self.rtpsHostId));
    std::snprintf(appId, sizeof appId, "%d", static_cast<int>(self.rtpsAppId));
    char *buffers[] = {hostId, appId};
    DDS_StringSeq parameters = DDS_SEQUENCE_INITIALIZER;
    if (!DDS_StringSeq_loan_contiguous(&parameters, buffers, 2, 2)) {
        return fail("Unable to initialize the parameters of commandRequest's Content Filtered Topic");
    }
    self.commandRequestContentFilteredTopic = DDS_DomainParticipant_create_contentfilteredtopic(
        self.domainParticipant, QTV_VX_COMMAND_REQUEST_FILTERED_TOPIC_NAME, self.commandRequestTopic,
        QTV_VX_COMMAND_REQUEST_FILTER_EXPRESSION, &parameters);
    DDS_StringSeq_unloan(&parameters);
    return self.commandRequestContentFilteredTopic != nullptr ||
           fail("Unable to create commandRequest Content Filtered Topic");
}

bool createCommandRequestReader(QTV_VX_DDSEntities &self) noexcept {
    ScopedQos<DDS_DataReaderQos, DDS_DataReaderQos_finalize> qos{DDS_DataReaderQos_INITIALIZER};
    if (QTV_VX_DDSEntities_getDataReaderQos(&self, &qos.value, QTV_VX_COMMAND_REQUEST_TOPIC_NAME) != DDS_RETCODE_OK) {
        return fail("Unable to get QoS for CommandRequest Reader");
    }
    vexar::log::FailureCauses causes;
    DDS_DataReader *reader = DDS_Subscriber_create_datareader(
        self.subscriber, DDS_ContentFilteredTopic_as_topicdescription(self.commandRequestContentFilteredTopic),
        &qos.value, nullptr, DDS_STATUS_MASK_NONE);
    self.commandRequestReader = reader != nullptr ? QTV_VX_ADMIN_CommandRequestDataReader_narrow(reader) : nullptr;
    return self.commandRequestReader != nullptr || failBecause("Unable to create CommandRequest DataReader", causes);
}

bool createCommandEntities(QTV_VX_DDSEntities &self) noexcept {
    if (!createSubscriber(self)) return false;
    self.commandRequestTopic = findOrCreateTopic(self, kCommandRequestTopic);
    if (self.commandRequestTopic == nullptr || !createCommandRequestFilter(self)) return false;
    self.commandResponseTopic = findOrCreateTopic(self, kCommandResponseTopic);
    if (self.commandResponseTopic == nullptr || !createCommandRequestReader(self)) return false;
    self.commandResponseWriter = createWriter(self, self.commandResponseTopic, kCommandResponseWriter,
                                              QTV_VX_ADMIN_CommandResponseDataWriter_narrow);
    return self.commandResponseWriter != nullptr;
}

bool buildEntities(QTV_VX_DDSEntities &self, QTV_VX_Vexar &logger) noexcept {
    const QTV_VX_Options &options = *logger.options;
    QTV_VX_DDSEntities_initialize(&self);
    self.qosLibrary = options.qosLibrary;
    self.qosProfile = options.qosProfile;
    self.factory = options.domainParticipant != nullptr
                       ? DDS_DomainParticipant_get_participant_factoryI(options.domainParticipant)
                       : DDS_DomainParticipantFactory_get_instance();
    loadBuiltinLibraryWhenNamed(self);
    warnWhenProfileMissing(self);
    vexar::setInitialStateSent(false);
    if (!attachParticipant(self, options) || !learnRtpsIds(self, logger)) return false;
    if (!createLogAndStateEntities(self, logger)) return false;
    return options.remoteAdministrationEnabled == 0 || createCommandEntities(self);
}

// Deletion goes on after a failed step; the failure is a warning.
DDS_ReturnCode_t warnOnFailure(DDS_ReturnCode_t result, const char *text) noexcept {
    if (result != DDS_RETCODE_OK) reportWarning(text, kDelete);
    return result;
}

}  // namespace

extern "C" {

QTV_VX_DDSEntities *QTV_VX_DDSEntities_create(QTV_VX_Vexar *logger) {
    if (!present(logger, kCreate, "QTV_VX_Vexar is NULL") ||
        !present(logger->options, kCreate, "QTV_VX_Options is NULL, expected initialized variable")) {
        return nullptr;
    }
    auto *self = static_cast<QTV_VX_DDSEntities *>(std::calloc(1, sizeof(QTV_VX_DDSEntities)));
    if (self == nullptr) {
        fail("Unable to allocate memory for QTV_VX_DDSEntities");
        return nullptr;
    }
    if (!buildEntities(*self, *logger)) {
        QTV_VX_DDSEntities_destroy(self);
        return nullptr;
    }
    return self;
}

void QTV_VX_DDSEntities_initialize(QTV_VX_DDSEntities *self) {
    if (present(self, "QTV_VX_DDSEntities_initialize", "QTV_VX_DDSEntities is NULL")) *self = QTV_VX_DDSEntities{};
}

void QTV_VX_DDSEntities_destroy(QTV_VX_DDSEntities *self) {
    if (self == nullptr) return;
    (void)QTV_VX_DDSEntities_deleteContainedEntities(self);
    std::free(self);
}

DDS_ReturnCode_t QTV_VX_DDSEntities_deleteContainedEntities(QTV_VX_DDSEntities *self) {
    if (self == nullptr) {
        reportWarning("QTV_VX_DDSEntities is NULL. Cannot delete it again", kDelete);
        return DDS_RETCODE_OK;
    }
    DDS_DomainParticipant *participant = self->domainParticipant;
    DDS_ReturnCode_t last = DDS_RETCODE_OK;
    if (participant == nullptr) return last;
    if (self->subscriber != nullptr) {
        warnOnFailure(DDS_Subscriber_delete_contained_entities(self->subscriber),
                      "Unable to delete subscriber's contained entities");
        last = warnOnFailure(DDS_DomainParticipant_delete_subscriber(participant, self->subscriber),
                             "Unable to delete subscriber");
    }
    if (self->publisher != nullptr) {
        warnOnFailure(DDS_Publisher_delete_contained_entities(self->publisher),
                      "Unable to delete publisher's contained entities");
        last = warnOnFailure(DDS_DomainParticipant_delete_publisher(participant, self->publisher),
                             "Unable to delete publisher");
    }
    if (self->commandRequestContentFilteredTopic != nullptr) {
        last = warnOnFailure(
            DDS_DomainParticipant_delete_contentfilteredtopic(participant, self->commandRequestContentFilteredTopic),
            "Unable to delete commandRequest Content Filtered Topic");
    }
    for (DDS_Topic *topic : self->locallyCreatedTopics) {
        if (topic != nullptr) (void)DDS_DomainParticipant_delete_topic(participant, topic);
    }
    if (self->participantCreatedLocally) {
        warnOnFailure(DDS_DomainParticipant_delete_contained_entities(participant),
                      "Unable to delete contained entities from Domain Participant");
        last = warnOnFailure(DDS_DomainParticipantFactory_delete_participant(self->factory, participant),
                             "Unable to delete participant");
    }
    return last;
}

DDS_Long QTV_VX_DDSEntities_getRtpsHostId(const QTV_VX_DDSEntities *self) {
    return self != nullptr ? self->rtpsHostId : 0;
}

DDS_Long QTV_VX_DDSEntities_getRtpsAppId(const QTV_VX_DDSEntities *self) {
    return self != nullptr ? self->rtpsAppId : 0;
}

DDS_DomainParticipant *QTV_VX_DDSEntities_getDomainParticipant(const QTV_VX_DDSEntities *self) {
    return self != nullptr ? self->domainParticipant : nullptr;
}

QTV_VX_LogMessageDataWriter *QTV_VX_DDSEntities_getLogMessageWriter(const QTV_VX_DDSEntities *self) {
    return self != nullptr ? self->logMessageWriter : nullptr;
}

QTV_VX_ADMIN_StateDataWriter *QTV_VX_DDSEntities_getStateWriter(const QTV_VX_DDSEntities *self) {
    return self != nullptr ? self->stateWriter : nullptr;
}

QTV_VX_ADMIN_CommandRequestDataReader *QTV_VX_DDSEntities_getCommandRequestReader(const QTV_VX_DDSEntities *self) {
    return self != nullptr ? self->commandRequestReader : nullptr;
}

QTV_VX_ADMIN_CommandResponseDataWriter *QTV_VX_DDSEntities_getCommandResponseWriter(const QTV_VX_DDSEntities *self) {
    return self != nullptr ? self->commandResponseWriter : nullptr;
}

}  // extern "C"
