// The QoS of the logger's entities: a named profile when it exists, else the
// middleware's defaults, then the values that the logger always imposes.
#include <strings.h>

#include <cstring>

#include "platform/runtime/dds_string.h"
#include "vexar/DDSEntities.h"
#include "vexar/Statistics.h"
#include "vexar/report_line.hpp"

namespace {

using vexar::present;

constexpr const char *kEntitiesNull = "QTV_VX_DDSEntities is NULL";

// What the logger imposes per topic. Topics get reliability and durability
// only on defaults; the logger's own writers and reader get them always,
// and their history depth on defaults only. A depth of 0: the logger has no
// such endpoint on the topic, so nothing is imposed on one.
struct TopicRule {
    const char *topicName;
    bool transientLocal;
    DDS_Long writerHistoryDepth;
    DDS_Long readerHistoryDepth;
};

constexpr TopicRule kTopicRules[] = {
    {QTV_VX_LOG_TOPIC_NAME, true, 10, 0},
    {QTV_VX_STATE_TOPIC_NAME, true, 1, 0},
    {QTV_VX_COMMAND_REQUEST_TOPIC_NAME, false, 0, 10},
    {QTV_VX_COMMAND_RESPONSE_TOPIC_NAME, false, 10, 0},
    {QTV_VX_STATISTICS_TOPIC_NAME, true, 1, 0},
};

const TopicRule *topicRuleFor(const char *topicName) noexcept {
    if (topicName == nullptr) return nullptr;
    for (const TopicRule &rule : kTopicRules) {
        if (strcasecmp(rule.topicName, topicName) == 0) return &rule;
    }
    return nullptr;
}

bool isBlank(const char *text) noexcept { return text == nullptr || text[0] == '\0'; }

bool profileListed(DDS_DomainParticipantFactory *factory, const char *libraryName, const char *profileName) noexcept {
    DDS_StringSeq names = DDS_SEQUENCE_INITIALIZER;
    (void)DDS_DomainParticipantFactory_get_qos_profiles(factory, &names, libraryName);
    bool found = false;
    for (DDS_Long i = 0; i < DDS_StringSeq_get_length(&names) && !found; ++i) {
        const char *name = *DDS_StringSeq_get_reference(&names, i);
        found = name != nullptr && std::strcmp(name, profileName) == 0;
    }
    DDS_StringSeq_finalize(&names);
    return found;
}

bool usesProfile(QTV_VX_DDSEntities &self) noexcept {
    return QTV_VX_DDSEntities_doesQosLibraryAndProfileExist(&self, self.qosLibrary, self.qosProfile) == 1;
}

// Where each kind of QoS comes from: the factory's profile operation or the
// participant's defaults, in their per-topic forms where those exist.
template <typename Qos>
struct QosSource;

// Publishers and subscribers have no per-topic forms: the topic name is
// not used.
template <typename Qos, auto initializeQos, auto profileQos, auto defaultQos>
struct GroupQosSource {
    static constexpr auto initialize = initializeQos;
    static DDS_ReturnCode_t fromProfile(DDS_DomainParticipantFactory *factory, Qos *qos, const char *library,
                                        const char *profile, const char *) {
        return profileQos(factory, qos, library, profile);
    }
    static DDS_ReturnCode_t fromDefaults(DDS_DomainParticipant *participant, Qos *qos, const char *) {
        return defaultQos(participant, qos);
    }
};

template <>
struct QosSource<DDS_PublisherQos> : GroupQosSource<DDS_PublisherQos, DDS_PublisherQos_initialize,
                                                    DDS_DomainParticipantFactory_get_publisher_qos_from_profile,
                                                    DDS_DomainParticipant_get_default_publisher_qos> {};

template <>
struct QosSource<DDS_SubscriberQos> : GroupQosSource<DDS_SubscriberQos, DDS_SubscriberQos_initialize,
                                                     DDS_DomainParticipantFactory_get_subscriber_qos_from_profile,
                                                     DDS_DomainParticipant_get_default_subscriber_qos> {};

template <>
struct QosSource<DDS_TopicQos> {
    static constexpr auto initialize = DDS_TopicQos_initialize;
    static constexpr auto fromProfile = DDS_DomainParticipantFactory_get_topic_qos_from_profile_w_topic_name;
    static constexpr auto fromDefaults = DDS_DomainParticipant_get_default_topic_qos_w_topic_name;
};

template <>
struct QosSource<DDS_DataWriterQos> {
    static constexpr auto initialize = DDS_DataWriterQos_initialize;
    static constexpr auto fromProfile = DDS_DomainParticipantFactory_get_datawriter_qos_from_profile_w_topic_name;
    static constexpr auto fromDefaults = DDS_DomainParticipant_get_default_datawriter_qos_w_topic_name;
};

template <>
struct QosSource<DDS_DataReaderQos> {
    static constexpr auto initialize = DDS_DataReaderQos_initialize;
    static constexpr auto fromProfile = DDS_DomainParticipantFactory_get_datareader_qos_from_profile_w_topic_name;
    static constexpr auto fromDefaults = DDS_DomainParticipant_get_default_datareader_qos_w_topic_name;
};

template <typename Qos>
DDS_ReturnCode_t loadQos(QTV_VX_DDSEntities &self, Qos &qos, const char *topicName, bool fromProfile) noexcept {
    if (fromProfile) {
        return QosSource<Qos>::fromProfile(self.factory, &qos, self.qosLibrary, self.qosProfile, topicName);
    }
    return QosSource<Qos>::fromDefaults(self.domainParticipant, &qos, topicName);
}

bool argumentsPresent(const QTV_VX_DDSEntities *self, const void *qos, const char *source) noexcept {
    return present(self, source, kEntitiesNull) && present(qos, source, "QoS record is NULL");
}

template <typename Qos>
void markVendorSpecific(Qos &qos) noexcept {
    qos.protocol.vendor_specific_entity = DDS_BOOLEAN_TRUE;
}

// Publisher and subscriber: instance-scoped presentation, no coherent or
// ordered access, from a profile or not.
template <typename Qos>
DDS_ReturnCode_t getGroupQos(QTV_VX_DDSEntities *self, Qos *qos, const char *source) noexcept {
    if (!argumentsPresent(self, qos, source)) return DDS_RETCODE_BAD_PARAMETER;
    DDS_ReturnCode_t result = QosSource<Qos>::initialize(qos);
    if (result == DDS_RETCODE_OK) result = loadQos(*self, *qos, nullptr, usesProfile(*self));
    if (result != DDS_RETCODE_OK) return result;
    qos->presentation.access_scope = DDS_INSTANCE_PRESENTATION_QOS;
    qos->presentation.coherent_access = DDS_BOOLEAN_FALSE;
    qos->presentation.ordered_access = DDS_BOOLEAN_FALSE;
    markVendorSpecific(*qos);
    return DDS_RETCODE_OK;
}

template <typename Qos>
void imposeReliabilityAndDurability(Qos &qos, const TopicRule &rule) noexcept {
    qos.reliability.kind = DDS_RELIABLE_RELIABILITY_QOS;
    if (rule.transientLocal) qos.durability.kind = DDS_TRANSIENT_LOCAL_DURABILITY_QOS;
}

// The topic's rule on the logger's own endpoint: reliability and durability
// over a profile too, the history depth on defaults only.
template <typename Qos>
void imposeEndpointRule(Qos &qos, const TopicRule &rule, DDS_Long depth, bool fromProfile) noexcept {
    if (depth == 0) return;
    imposeReliabilityAndDurability(qos, rule);
    if (fromProfile) return;
    qos.history.kind = DDS_KEEP_LAST_HISTORY_QOS;
    qos.history.depth = depth;
}

template <typename Qos>
void imposeSharedAutomaticByReception(Qos &qos) noexcept {
    qos.ownership.kind = DDS_SHARED_OWNERSHIP_QOS;
    qos.liveliness.kind = DDS_AUTOMATIC_LIVELINESS_QOS;
    qos.destination_order.kind = DDS_BY_RECEPTION_TIMESTAMP_DESTINATIONORDER_QOS;
}

// Writers and readers go on even when initializing the record failed: the
// source below fills it anyway.
template <typename Qos, typename ImposeOwnValues>
DDS_ReturnCode_t getEndpointQos(QTV_VX_DDSEntities *self, Qos *qos, const char *topicName,
                                DDS_Long TopicRule::*depthOfThisEndpoint, ImposeOwnValues imposeOwnValues,
                                const char *source) noexcept {
    if (!argumentsPresent(self, qos, source)) return DDS_RETCODE_BAD_PARAMETER;
    (void)QosSource<Qos>::initialize(qos);
    const bool fromProfile = usesProfile(*self);
    DDS_ReturnCode_t result = loadQos(*self, *qos, topicName, fromProfile);
    if (result != DDS_RETCODE_OK) return result;
    imposeSharedAutomaticByReception(*qos);
    imposeOwnValues(*qos);
    if (const TopicRule *rule = topicRuleFor(topicName)) {
        imposeEndpointRule(*qos, *rule, rule->*depthOfThisEndpoint, fromProfile);
    }
    markVendorSpecific(*qos);
    return DDS_RETCODE_OK;
}

DDS_ReturnCode_t replaceParticipantName(DDS_DomainParticipantQos &qos, const QTV_VX_Options *options) noexcept {
    const char *applicationKind = options != nullptr ? options->applicationKind : nullptr;
    if (isBlank(applicationKind)) return DDS_RETCODE_OK;
    char *name = DDS_String_dup(applicationKind);
    if (name == nullptr) return DDS_RETCODE_OUT_OF_RESOURCES;
    DDS_String_free(qos.participant_name.name);
    qos.participant_name.name = name;
    return DDS_RETCODE_OK;
}

}  // namespace

extern "C" {

DDS_Long QTV_VX_DDSEntities_doesQosLibraryAndProfileExist(QTV_VX_DDSEntities *self, const char *libraryName,
                                                          const char *profileName) {
    if (isBlank(libraryName) || isBlank(profileName)) return 0;
    DDS_DomainParticipantFactory *factory =
        self != nullptr && self->factory != nullptr ? self->factory : DDS_DomainParticipantFactory_get_instance();
    return profileListed(factory, libraryName, profileName) ? 1 : 0;
}

DDS_ReturnCode_t QTV_VX_DDSEntities_getDomainParticipantQos(QTV_VX_DDSEntities *self, DDS_DomainParticipantQos *qos,
                                                            const QTV_VX_Options *options) {
    constexpr const char *kSource = "QTV_VX_DDSEntities_getDomainParticipantQos";
    if (!argumentsPresent(self, qos, kSource)) return DDS_RETCODE_BAD_PARAMETER;
    DDS_ReturnCode_t result = DDS_DomainParticipantQos_initialize(qos);
    if (result != DDS_RETCODE_OK) return result;
    result = usesProfile(*self) ? DDS_DomainParticipantFactory_get_participant_qos_from_profile(
                                      self->factory, qos, self->qosLibrary, self->qosProfile)
                                : DDS_DomainParticipantFactory_get_default_participant_qos(self->factory, qos);
    if (result == DDS_RETCODE_OK) result = replaceParticipantName(*qos, options);
    if (result != DDS_RETCODE_OK) return result;
    markVendorSpecific(*qos);
    return DDS_RETCODE_OK;
}

DDS_ReturnCode_t QTV_VX_DDSEntities_getPublisherQos(QTV_VX_DDSEntities *self, DDS_PublisherQos *qos) {
    return getGroupQos(self, qos, "QTV_VX_DDSEntities_getPublisherQos");
}

DDS_ReturnCode_t QTV_VX_DDSEntities_getSubscriberQos(QTV_VX_DDSEntities *self, DDS_SubscriberQos *qos) {
    return getGroupQos(self, qos, "QTV_VX_DDSEntities_getSubscriberQos");
}

DDS_ReturnCode_t QTV_VX_DDSEntities_getTopicQos(QTV_VX_DDSEntities *self, DDS_TopicQos *qos, const char *topicName) {
    constexpr const char *kSource = "QTV_VX_DDSEntities_getTopicQos";
    if (!argumentsPresent(self, qos, kSource)) return DDS_RETCODE_BAD_PARAMETER;
    DDS_ReturnCode_t result = QosSource<DDS_TopicQos>::initialize(qos);
    if (result != DDS_RETCODE_OK) return result;
    const bool fromProfile = usesProfile(*self);
    result = loadQos(*self, *qos, topicName, fromProfile);
    if (result != DDS_RETCODE_OK) return result;
    const TopicRule *rule = topicRuleFor(topicName);
    if (rule != nullptr && !fromProfile) imposeReliabilityAndDurability(*qos, *rule);
    markVendorSpecific(*qos);
    return DDS_RETCODE_OK;
}

DDS_ReturnCode_t QTV_VX_DDSEntities_getDataWriterQos(QTV_VX_DDSEntities *self, DDS_DataWriterQos *qos,
                                                     const char *topicName) {
    return getEndpointQos(
        self, qos, topicName, &TopicRule::writerHistoryDepth,
        [](DDS_DataWriterQos &writerQos) {
            writerQos.latency_budget.duration = DDS_Duration_t{0, 0};
        },
        "QTV_VX_DDSEntities_getDataWriterQos");
}

DDS_ReturnCode_t QTV_VX_DDSEntities_getDataReaderQos(QTV_VX_DDSEntities *self, DDS_DataReaderQos *qos,
                                                     const char *topicName) {
    return getEndpointQos(
        self, qos, topicName, &TopicRule::readerHistoryDepth,
        [](DDS_DataReaderQos &readerQos) {
            constexpr DDS_Duration_t kInfinite = DDS_DURATION_INFINITE_INITIALIZER;
            readerQos.deadline.period = kInfinite;
            readerQos.latency_budget.duration = kInfinite;
        },
        "QTV_VX_DDSEntities_getDataReaderQos");
}

}  // extern "C"
