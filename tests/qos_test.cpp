// QoS records: defaults, ownership of names and sequences, and the mapping
// onto Cyclone, checked both on bare dds_qos_t and through real entities.
#include "platform/dds/entity.hpp"  // first (see there): the Cyclone entity behind each of ours

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <functional>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/runtime/dds_string.h"
#include "platform/dds/qos.h"
#include "platform/dds/qos_cyclone.hpp"
#include "platform/dds/qos_records.hpp"
#include "support/domains.h"
#include "support/log_capture.h"
#include "support/qos_fields.hpp"
#include "support/typed_topic.hpp"

using namespace vexar::dds;
using vexar_test::bytes;
using vexar_test::fields;
using vexar_test::LogCapture;
using vexar_test::names;

namespace {

constexpr const char *kContext = "qos_test";
constexpr int kRoundTripDomain = vexar_test::domains::kBridgeBase + 11;
constexpr int kOwnDurabilityServiceDomain = vexar_test::domains::kBridgeBase + 47;
constexpr int kDefaultDurabilityServiceDomain = vexar_test::domains::kBridgeBase + 48;

// ---------------------------------------------------------------------------
// Records as comparable tuples

const auto kZero = fields(DDS_Duration_t{0, 0});
const auto kInfinite = fields(DDS_Duration_t{DDS_DURATION_INFINITE_SEC, DDS_DURATION_INFINITE_NSEC});

void setNames(DDS_PartitionQosPolicy &p, std::vector<const char *> names) {
    ASSERT_TRUE(DDS_StringSeq_from_array(&p.name, const_cast<char **>(names.data()), DDS_Long(names.size())));
}
void setBytes(DDS_OctetSeq &octets, std::vector<DDS_Octet> bytes) {
    ASSERT_TRUE(DDS_OctetSeq_from_array(&octets, bytes.data(), DDS_Long(bytes.size())));
}

// The policies that each record gained with resource limits, lifespan,
// partitions, data, lifecycles and friends.
auto newPolicies(const DDS_DomainParticipantQos &q) { return std::tuple{bytes(q.user_data.value)}; }
template <typename GroupQos>
auto newPolicies(const GroupQos &q) {
    return std::tuple{names(q.partition), bytes(q.group_data.value)};
}
auto newPolicies(const DDS_TopicQos &q) {
    return std::tuple{fields(q.resource_limits), fields(q.durability_service), fields(q.lifespan.duration),
                      q.transport_priority.value, bytes(q.topic_data.value)};
}
auto newPolicies(const DDS_DataWriterQos &q) {
    return std::tuple{fields(q.resource_limits),   fields(q.durability_service),
                      fields(q.lifespan.duration), q.transport_priority.value,
                      q.ownership_strength.value,  q.writer_data_lifecycle.autodispose_unregistered_instances,
                      bytes(q.user_data.value)};
}
auto newPolicies(const DDS_DataReaderQos &q) {
    return std::tuple{fields(q.resource_limits), fields(q.time_based_filter.minimum_separation),
                      fields(q.reader_data_lifecycle), bytes(q.user_data.value)};
}

// A record initialized over garbage, as in fresh memory.
template <typename Qos>
Qos initialized(DDS_ReturnCode_t (*initialize)(Qos *)) {
    Qos qos;
    std::memset(static_cast<void *>(&qos), 0x5a, sizeof qos);
    EXPECT_EQ(initialize(&qos), DDS_RETCODE_OK);
    return qos;
}

// One row per record: the OMG defaults of its new policies.
TEST(QosRecord, NewPoliciesStartAtTheOmgDefaults) {
    const auto unlimited = std::tuple{-1, -1, -1};
    const auto durabilityService = std::tuple{kZero, DDS_KEEP_LAST_HISTORY_QOS, 1, -1, -1, -1};
    const std::vector<int> noBytes;
    const std::vector<std::string> noNames;

    EXPECT_EQ(newPolicies(initialized(DDS_DomainParticipantQos_initialize)), std::tuple{noBytes});
    EXPECT_EQ(newPolicies(initialized(DDS_PublisherQos_initialize)), std::tuple(noNames, noBytes));
    EXPECT_EQ(newPolicies(initialized(DDS_SubscriberQos_initialize)), std::tuple(noNames, noBytes));
    EXPECT_EQ(newPolicies(initialized(DDS_TopicQos_initialize)),
              std::tuple(unlimited, durabilityService, kInfinite, 0, noBytes));
    EXPECT_EQ(newPolicies(initialized(DDS_DataWriterQos_initialize)),
              std::tuple(unlimited, durabilityService, kInfinite, 0, 0, DDS_BOOLEAN_TRUE, noBytes));
    EXPECT_EQ(newPolicies(initialized(DDS_DataReaderQos_initialize)),
              std::tuple(unlimited, kZero, std::tuple{kInfinite, kInfinite}, noBytes));
}

// ---------------------------------------------------------------------------
// Owned members: copies and read-backs replace and free what was there
// (LeakSanitizer), and the source can go before the copy.

TEST(QosRecord, NamesAreOwnedByEachCopy) {
    DDS_DomainParticipantQos src = DDS_DomainParticipantQos_INITIALIZER;
    DDS_DomainParticipantQos dst = DDS_DomainParticipantQos_INITIALIZER;
    src.participant_name = {DDS_String_dup("logger"), DDS_String_dup("observer")};
    src.protocol.vendor_specific_entity = DDS_BOOLEAN_TRUE;
    dst.participant_name.name = DDS_String_dup("replaced");

    ASSERT_EQ(DDS_DomainParticipantQos_copy(&dst, &src), DDS_RETCODE_OK);
    ASSERT_EQ(DDS_DomainParticipantQos_copy(&dst, &dst), DDS_RETCODE_OK);
    EXPECT_NE(dst.participant_name.name, src.participant_name.name);
    ASSERT_EQ(DDS_DomainParticipantQos_finalize(&src), DDS_RETCODE_OK);
    EXPECT_STREQ(dst.participant_name.name, "logger");
    EXPECT_STREQ(dst.participant_name.role_name, "observer");
    EXPECT_TRUE(dst.protocol.vendor_specific_entity);
    ASSERT_EQ(DDS_DomainParticipantQos_finalize(&dst), DDS_RETCODE_OK);
    EXPECT_EQ(dst.participant_name.name, nullptr);
    EXPECT_EQ(DDS_DomainParticipantQos_finalize(&dst), DDS_RETCODE_OK);
}

// A sequence on loan is the lender's: copied deeply, given back untouched
// and without complaint by finalize (freeing the stack array would be fatal).
TEST(QosRecord, SequencesAreOwnedByEachCopyAndLoansGoBack) {
    LogCapture log(OBLX_CONFIG_LOG_VERBOSITY_WARNING);
    DDS_PublisherQos src = DDS_PublisherQos_INITIALIZER;
    DDS_PublisherQos dst = DDS_PublisherQos_INITIALIZER;
    setNames(src.partition, {"logs", "admin*"});
    setBytes(src.group_data.value, {1, 0, 255});
    setNames(dst.partition, {"replaced"});

    ASSERT_EQ(DDS_PublisherQos_copy(&dst, &src), DDS_RETCODE_OK);
    ASSERT_EQ(DDS_PublisherQos_copy(&dst, &dst), DDS_RETCODE_OK);
    ASSERT_EQ(DDS_PublisherQos_finalize(&src), DDS_RETCODE_OK);
    EXPECT_EQ(newPolicies(src), newPolicies(DDS_PublisherQos DDS_PublisherQos_INITIALIZER));
    EXPECT_EQ(newPolicies(dst), std::tuple(std::vector<std::string>{"logs", "admin*"}, std::vector<int>{1, 0, 255}));
    ASSERT_EQ(DDS_PublisherQos_finalize(&dst), DDS_RETCODE_OK);

    char lentName[] = "lent";
    char *lent[] = {lentName};
    DDS_SubscriberQos loaned = DDS_SubscriberQos_INITIALIZER;
    DDS_SubscriberQos copy = DDS_SubscriberQos_INITIALIZER;
    ASSERT_TRUE(DDS_StringSeq_loan_contiguous(&loaned.partition.name, lent, 1, 1));
    ASSERT_EQ(DDS_SubscriberQos_copy(&copy, &loaned), DDS_RETCODE_OK);
    ASSERT_EQ(DDS_SubscriberQos_finalize(&loaned), DDS_RETCODE_OK);
    EXPECT_EQ(lent[0], lentName);
    EXPECT_EQ(names(copy.partition), std::vector<std::string>{"lent"});
    EXPECT_TRUE(copy.partition.name._owned);
    DDS_SubscriberQos_finalize(&copy);
    EXPECT_EQ(log.text(), "");
}

// ---------------------------------------------------------------------------
// The mapping on bare dds_qos_t

template <typename Qos>
struct Refusal {
    const char *field;
    void (*spoil)(Qos &);
};

template <typename Qos>
void expectRefused(std::initializer_list<Refusal<Qos>> refusals) {
    for (const auto &refusal : refusals) {
        LogCapture log(OBLX_CONFIG_LOG_VERBOSITY_ERROR);
        Qos qos = kDefaults<Qos>;
        refusal.spoil(qos);
        EXPECT_EQ(toCyclone(qos, kContext), nullptr) << refusal.field;
        EXPECT_TRUE(log.contains(refusal.field)) << log.text();
    }
}

TEST(QosCycloneMapping, OutOfRangeValuesAreRefusedNamingTheField) {
    using W = DDS_DataWriterQos;
    using R = DDS_DataReaderQos;
    expectRefused<W>({
        // What C code may store in an enum field; C++ cannot assign it.
        {"reliability.kind",
         [](W &q) {
             int c = 7;
             std::memcpy(&q.reliability.kind, &c, sizeof c);
         }},
        {"history.depth", [](W &q) { q.history.depth = 0; }},
        {"deadline.period",
         [](W &q) {
             q.deadline.period = {-1, 0};
         }},
        {"latency_budget.duration",
         [](W &q) {
             q.latency_budget.duration = {0, 1000000000};
         }},
        {"lifespan.duration",
         [](W &q) {
             q.lifespan.duration = {-3, 0};
         }},
        {"resource_limits.max_instances", [](W &q) { q.resource_limits.max_instances = 0; }},
        {"resource_limits.max_samples_per_instance (above max_samples)",
         [](W &q) {
             q.resource_limits = {4, DDS_LENGTH_UNLIMITED, 5};
         }},
        {"history.depth (above resource_limits.max_samples_per_instance)",
         [](W &q) {
             q.history.depth = 6;
             q.resource_limits.max_samples_per_instance = 5;
         }},
        {"durability_service.history_depth", [](W &q) { q.durability_service.history_depth = 0; }},
        {"durability_service.max_samples", [](W &q) { q.durability_service.max_samples = -7; }},
    });
    expectRefused<R>({
        {"time_based_filter.minimum_separation",
         [](R &q) {
             q.time_based_filter.minimum_separation = {0, 2000000000};
         }},
        {"time_based_filter.minimum_separation (above deadline.period)",
         [](R &q) {
             q.deadline.period = {1, 0};
             q.time_based_filter.minimum_separation = {2, 0};
         }},
        {"reader_data_lifecycle.autopurge_disposed_samples_delay",
         [](R &q) {
             q.reader_data_lifecycle.autopurge_disposed_samples_delay = {-1, 0};
         }},
    });

    LogCapture log(OBLX_CONFIG_LOG_VERBOSITY_ERROR);
    DDS_PublisherQos publisher = DDS_PublisherQos_INITIALIZER;
    setNames(publisher.partition, {"logs", nullptr});
    EXPECT_EQ(toCyclone(publisher, kContext), nullptr);
    EXPECT_TRUE(log.contains("partition.name")) << log.text();
    DDS_PublisherQos_finalize(&publisher);
}

TEST(QosCycloneMapping, UnhonouredValuesAreReportedAndStillMapped) {
    LogCapture log(OBLX_CONFIG_LOG_VERBOSITY_ERROR);
    DDS_PublisherQos publisher = DDS_PublisherQos_INITIALIZER;
    publisher.presentation = {DDS_GROUP_PRESENTATION_QOS, DDS_BOOLEAN_TRUE, DDS_BOOLEAN_TRUE};
    DDS_TopicQos topic = DDS_TopicQos_INITIALIZER;
    topic.durability.kind = DDS_TRANSIENT_DURABILITY_QOS;
    DDS_DomainParticipantQos participant = DDS_DomainParticipantQos_INITIALIZER;
    participant.wire_protocol.rtps_app_id = 42;
    DDS_DataWriterQos writer = DDS_DataWriterQos_INITIALIZER;
    writer.resource_limits.max_samples = 100;
    writer.transport_priority.value = 3;
    DDS_DataReaderQos reader = DDS_DataReaderQos_INITIALIZER;
    reader.time_based_filter.minimum_separation = {0, 1000};
    reader.reader_data_lifecycle.autopurge_nowriter_samples_delay = {5, 0};

    // What they keep is read back by QosRoundTrip.
    EXPECT_NE(toCyclone(publisher, kContext), nullptr);
    EXPECT_NE(toCyclone(reader, kContext), nullptr);
    EXPECT_NE(toCyclone(topic, kContext), nullptr);
    EXPECT_NE(toCyclone(participant, kContext), nullptr);
    EXPECT_NE(toCyclone(writer, kContext), nullptr);
    for (const char *field :
         {"coherent_access", "ordered_access", "TRANSIENT", "wire_protocol", "resource_limits of a writer",
          "transport_priority", "time_based_filter", "reader_data_lifecycle"})
        EXPECT_TRUE(log.contains(field)) << field << " in " << log.text();
}

TEST(QosCycloneMapping, DurationsKeepInfinityAndSaturate) {
    EXPECT_EQ(toCycloneDuration({DDS_DURATION_INFINITE_SEC, DDS_DURATION_INFINITE_NSEC}), DDS_INFINITY);
    EXPECT_EQ(toCycloneDuration({1, 5}), DDS_SECS(1) + 5);
    EXPECT_EQ(fields(fromCycloneDuration(DDS_INFINITY)), kInfinite);
    EXPECT_EQ(fields(fromCycloneDuration(DDS_SECS(0x7fffffffLL) + 1)), kInfinite);
    EXPECT_EQ(fields(fromCycloneDuration(-5)), kZero);
}

// ---------------------------------------------------------------------------
// Our entities: what each was created with, read back through our get_qos
// and through Cyclone's own getters on the Cyclone entity behind it

TEST(QosWireProtocol, IdsAreTheGuidPrefixWordsOfAParticipant) {
    const dds_entity_t participant = dds_create_participant(vexar_test::domains::kBridgeBase + 0, nullptr, nullptr);
    const dds_entity_t other = dds_create_participant(vexar_test::domains::kBridgeBase + 0, nullptr, nullptr);
    ASSERT_TRUE(participant > 0 && other > 0);
    DDS_WireProtocolQosPolicy first, second;
    ASSERT_EQ(wireProtocolFromParticipant(participant, first, kContext), DDS_RETCODE_OK);
    ASSERT_EQ(wireProtocolFromParticipant(other, second, kContext), DDS_RETCODE_OK);

    dds_guid_t guid;
    ASSERT_EQ(dds_get_guid(participant, &guid), 0);
    auto word = [&](int i) {
        return DDS_Long(uint32_t(guid.v[4 * i]) << 24 | guid.v[4 * i + 1] << 16 | guid.v[4 * i + 2] << 8 |
                        guid.v[4 * i + 3]);
    };
    EXPECT_EQ(std::tuple(first.rtps_host_id, first.rtps_app_id, first.rtps_instance_id),
              std::tuple(word(0), word(1), word(2)));
    EXPECT_NE(second.rtps_app_id, first.rtps_app_id);

    LogCapture log(OBLX_CONFIG_LOG_VERBOSITY_ERROR);
    EXPECT_EQ(wireProtocolFromParticipant(dds_create_publisher(participant, nullptr, nullptr), first, kContext),
              DDS_RETCODE_BAD_PARAMETER);
    EXPECT_TRUE(log.contains("participant")) << log.text();
    dds_delete(other);
    dds_delete(participant);
}

// Every policy that endpoints share away from its default, with values that
// Cyclone honours.
template <typename Qos>
Qos distinctEndpointQos() {
    Qos qos = kDefaults<Qos>;
    qos.reliability = {DDS_RELIABLE_RELIABILITY_QOS, {2, 500000000}};
    qos.durability.kind = DDS_TRANSIENT_LOCAL_DURABILITY_QOS;
    qos.history = {DDS_KEEP_LAST_HISTORY_QOS, 7};
    qos.ownership.kind = DDS_EXCLUSIVE_OWNERSHIP_QOS;
    qos.deadline.period = {3, 0};
    qos.latency_budget.duration = {0, 1000};
    qos.liveliness = {DDS_MANUAL_BY_TOPIC_LIVELINESS_QOS, {4, 250}};
    qos.destination_order.kind = DDS_BY_SOURCE_TIMESTAMP_DESTINATIONORDER_QOS;
    qos.protocol.vendor_specific_entity = DDS_BOOLEAN_TRUE;
    return qos;
}

// What Cyclone holds for an entity, through its own getters, in the shapes
// of newPolicies.
class CycloneHeld {
public:
    explicit CycloneHeld(const DDS_EntityImpl *entity) : qos_(dds_create_qos()) {
        EXPECT_EQ(dds_get_qos(entity->handle, qos_.get()), 0);
    }

    auto limits() const {
        int32_t samples = 0, instances = 0, perInstance = 0;
        EXPECT_TRUE(dds_qget_resource_limits(qos_.get(), &samples, &instances, &perInstance));
        return std::tuple{samples, instances, perInstance};
    }
    auto durabilityService() const {
        dds_duration_t delay = 0;
        dds_history_kind_t kind = DDS_HISTORY_KEEP_LAST;
        int32_t depth = 0, samples = 0, instances = 0, perInstance = 0;
        EXPECT_TRUE(dds_qget_durability_service(qos_.get(), &delay, &kind, &depth, &samples, &instances, &perInstance));
        return std::tuple{
            fields(fromCycloneDuration(delay)), DDS_HistoryQosPolicyKind(kind), depth, samples, instances, perInstance};
    }
    auto duration(bool (*get)(const dds_qos_t *, dds_duration_t *)) const {
        dds_duration_t duration = 0;
        EXPECT_TRUE(get(qos_.get(), &duration));
        return fields(fromCycloneDuration(duration));
    }
    auto readerDataLifecycle() const {
        dds_duration_t noWriters = 0, disposed = 0;
        EXPECT_TRUE(dds_qget_reader_data_lifecycle(qos_.get(), &noWriters, &disposed));
        return std::tuple{fields(fromCycloneDuration(noWriters)), fields(fromCycloneDuration(disposed))};
    }
    DDS_Long number(bool (*get)(const dds_qos_t *, int32_t *)) const {
        int32_t value = -12345;
        EXPECT_TRUE(get(qos_.get(), &value));
        return value;
    }
    DDS_Boolean autodispose() const {
        bool autodispose = true;
        EXPECT_TRUE(dds_qget_writer_data_lifecycle(qos_.get(), &autodispose));
        return autodispose ? DDS_BOOLEAN_TRUE : DDS_BOOLEAN_FALSE;
    }
    std::vector<int> octets(bool (*get)(const dds_qos_t *, void **, size_t *)) const {
        void *data = nullptr;
        size_t size = 0;
        EXPECT_TRUE(get(qos_.get(), &data, &size));
        const auto *first = static_cast<const unsigned char *>(data);
        std::vector<int> octets(first, first + size);
        dds_free(data);
        return octets;
    }
    std::vector<std::string> partition() const {
        uint32_t count = 0;
        char **names = nullptr;
        EXPECT_TRUE(dds_qget_partition(qos_.get(), &count, &names));
        std::vector<std::string> partition(names, names + count);
        for (uint32_t i = 0; i < count; ++i) dds_free(names[i]);
        dds_free(names);
        return partition;
    }

    auto of(const DDS_DomainParticipantQos *) const { return std::tuple{octets(dds_qget_userdata)}; }
    auto of(const DDS_PublisherQos *) const { return std::tuple{partition(), octets(dds_qget_groupdata)}; }
    auto of(const DDS_SubscriberQos *) const { return of(static_cast<const DDS_PublisherQos *>(nullptr)); }
    auto of(const DDS_TopicQos *) const {
        return std::tuple{limits(), durabilityService(), duration(dds_qget_lifespan),
                          number(dds_qget_transport_priority), octets(dds_qget_topicdata)};
    }
    auto of(const DDS_DataWriterQos *) const {
        return std::tuple{limits(),
                          durabilityService(),
                          duration(dds_qget_lifespan),
                          number(dds_qget_transport_priority),
                          number(dds_qget_ownership_strength),
                          autodispose(),
                          octets(dds_qget_userdata)};
    }
    auto of(const DDS_DataReaderQos *) const {
        return std::tuple{limits(), duration(dds_qget_time_based_filter), readerDataLifecycle(),
                          octets(dds_qget_userdata)};
    }

private:
    CycloneQos qos_;
};

// Every policy of every record away from its default, with values that
// Cyclone accepts (some it does not honour: reported, still kept); the
// writer is the lossless kind (reliable, KEEP_ALL, bounded) and keeps its
// history for late joiners. The wire-protocol ids are Cyclone's to choose:
// they read back as the participant's GUID words (see
// QosWireProtocol), whatever was asked.
struct AskedQos {
    DDS_DomainParticipantQos participant = DDS_DomainParticipantQos_INITIALIZER;
    DDS_TopicQos topic = DDS_TopicQos_INITIALIZER;
    DDS_PublisherQos publisher = DDS_PublisherQos_INITIALIZER;
    DDS_SubscriberQos subscriber = DDS_SubscriberQos_INITIALIZER;
    DDS_DataWriterQos writer = DDS_DataWriterQos_INITIALIZER;
    DDS_DataReaderQos reader = DDS_DataReaderQos_INITIALIZER;

    AskedQos() {
        setBytes(participant.user_data.value, {7, 8, 9});
        participant.participant_name = {DDS_String_dup("asked name"), DDS_String_dup("asked role")};
        participant.protocol.vendor_specific_entity = DDS_BOOLEAN_TRUE;

        topic = distinctEndpointQos<DDS_TopicQos>();
        topic.resource_limits = {100, 10, 10};
        topic.durability_service = {{1, 0}, DDS_KEEP_ALL_HISTORY_QOS, 1, 200, 20, 20};
        topic.lifespan.duration = {5, 0};
        topic.transport_priority.value = 2;
        setBytes(topic.topic_data.value, {1, 2});

        publisher.presentation = {DDS_TOPIC_PRESENTATION_QOS, DDS_BOOLEAN_TRUE, DDS_BOOLEAN_TRUE};
        setNames(publisher.partition, {"vexar", "logs*"});
        setBytes(publisher.group_data.value, {3});
        publisher.protocol.vendor_specific_entity = DDS_BOOLEAN_TRUE;
        subscriber.presentation = {DDS_GROUP_PRESENTATION_QOS, DDS_BOOLEAN_FALSE, DDS_BOOLEAN_TRUE};
        setNames(subscriber.partition, {"vexar"});
        setBytes(subscriber.group_data.value, {4, 5});
        subscriber.protocol.vendor_specific_entity = DDS_BOOLEAN_TRUE;

        writer = distinctEndpointQos<DDS_DataWriterQos>();
        writer.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
        writer.resource_limits = {50, 5, 10};
        writer.durability_service = {{2, 0}, DDS_KEEP_LAST_HISTORY_QOS, 3, 30, 3, 10};
        writer.lifespan.duration = {3, 500};
        writer.transport_priority.value = 9;
        writer.ownership_strength.value = 12;
        writer.writer_data_lifecycle.autodispose_unregistered_instances = DDS_BOOLEAN_FALSE;
        setBytes(writer.user_data.value, {0xde, 0xad});
        writer.batch.enable = DDS_BOOLEAN_TRUE;

        reader = distinctEndpointQos<DDS_DataReaderQos>();
        reader.resource_limits = {40, 4, 10};
        reader.time_based_filter.minimum_separation = {0, 1000};
        reader.reader_data_lifecycle = {{7, 0}, {8, 0}};
        setBytes(reader.user_data.value, {6});
    }
    ~AskedQos() {
        DDS_DomainParticipantQos_finalize(&participant);
        DDS_TopicQos_finalize(&topic);
        DDS_PublisherQos_finalize(&publisher);
        DDS_SubscriberQos_finalize(&subscriber);
        DDS_DataWriterQos_finalize(&writer);
        DDS_DataReaderQos_finalize(&reader);
    }
};

// Our get_qos of `entity`, read into a record that holds `start`: policy by
// policy what `expected` holds, whatever the record held before.
template <typename Entity, typename Qos>
void expectReadBack(Entity *entity, DDS_ReturnCode_t (*getQos)(Entity *, Qos *), const Qos &start,
                    const Qos &expected) {
    OwnedQos<Qos> read;
    ASSERT_EQ(copyQos(read.qos, start, kContext), DDS_RETCODE_OK);
    ASSERT_EQ(getQos(entity, &read.qos), DDS_RETCODE_OK);
    if constexpr (std::is_same_v<Qos, DDS_DomainParticipantQos>) read.qos.wire_protocol = expected.wire_protocol;
    vexar_test::expectSameQos(read.qos, expected);
}

// One entity of each kind made with the asked QoS, and one with the
// defaults; each reads back what it was made with, into a record that held
// the other's.
TEST(QosRoundTrip, EveryPolicyOfEveryEntityReachesCycloneAndReadsBack) {
    LogCapture log(OBLX_CONFIG_LOG_VERBOSITY_ERROR);  // the values Cyclone does not honour are reported
    const AskedQos asked;
    DDS_DomainParticipantFactory *factory = DDS_DomainParticipantFactory_get_instance();
    DDS_DomainParticipant *participant =
        DDS_DomainParticipantFactory_create_participant(factory, kRoundTripDomain, &asked.participant, nullptr, 0);
    DDS_DomainParticipant *defaultParticipant =
        DDS_DomainParticipantFactory_create_participant(factory, kRoundTripDomain, nullptr, nullptr, 0);
    ASSERT_TRUE(participant && defaultParticipant) << log.text();
    using Type = vexar_test::TopicType<QTV_VX_LogMessage>;
    ASSERT_EQ(Type::registerType(participant, Type::registeredTypeName), DDS_RETCODE_OK);
    DDS_Topic *topic = DDS_DomainParticipant_create_topic(participant, Type::topicName, Type::registeredTypeName,
                                                          &asked.topic, nullptr, 0);
    DDS_Topic *defaultTopic =
        DDS_DomainParticipant_create_topic(participant, "defaults", Type::registeredTypeName, nullptr, nullptr, 0);
    DDS_Publisher *publisher = DDS_DomainParticipant_create_publisher(participant, &asked.publisher, nullptr, 0);
    DDS_Publisher *defaultPublisher = DDS_DomainParticipant_create_publisher(participant, nullptr, nullptr, 0);
    DDS_Subscriber *subscriber = DDS_DomainParticipant_create_subscriber(participant, &asked.subscriber, nullptr, 0);
    DDS_Subscriber *defaultSubscriber = DDS_DomainParticipant_create_subscriber(participant, nullptr, nullptr, 0);
    ASSERT_TRUE(topic && defaultTopic && publisher && defaultPublisher && subscriber && defaultSubscriber)
        << log.text();
    DDS_DataWriter *writer = DDS_Publisher_create_datawriter(publisher, topic, &asked.writer, nullptr, 0);
    DDS_DataWriter *defaultWriter = DDS_Publisher_create_datawriter(defaultPublisher, topic, nullptr, nullptr, 0);
    DDS_DataReader *reader =
        DDS_Subscriber_create_datareader(subscriber, DDS_Topic_as_topicdescription(topic), &asked.reader, nullptr, 0);
    DDS_DataReader *defaultReader =
        DDS_Subscriber_create_datareader(defaultSubscriber, DDS_Topic_as_topicdescription(topic), nullptr, nullptr, 0);
    ASSERT_TRUE(writer && defaultWriter && reader && defaultReader) << log.text();

    auto both = [](auto *made, auto *madeWithDefaults, auto getQos, const auto &askedQos) {
        const auto defaults = kDefaults<std::remove_cvref_t<decltype(askedQos)>>;
        expectReadBack(made, getQos, defaults, askedQos);
        expectReadBack(madeWithDefaults, getQos, askedQos, defaults);
    };
    const std::pair<const char *, std::function<void()>> readBacks[] = {
        {"participant",
         [&] { both(participant, defaultParticipant, DDS_DomainParticipant_get_qos, asked.participant); }},
        {"topic", [&] { both(topic, defaultTopic, DDS_Topic_get_qos, asked.topic); }},
        {"publisher", [&] { both(publisher, defaultPublisher, DDS_Publisher_get_qos, asked.publisher); }},
        {"subscriber", [&] { both(subscriber, defaultSubscriber, DDS_Subscriber_get_qos, asked.subscriber); }},
        {"writer", [&] { both(writer, defaultWriter, DDS_DataWriter_get_qos, asked.writer); }},
        {"reader", [&] { both(reader, defaultReader, DDS_DataReader_get_qos, asked.reader); }},
    };
    for (const auto &[entity, expectBoth] : readBacks) {
        SCOPED_TRACE(entity);
        expectBoth();
    }

    EXPECT_EQ(CycloneHeld(participant).of(&asked.participant), newPolicies(asked.participant));
    EXPECT_EQ(CycloneHeld(topic).of(&asked.topic), newPolicies(asked.topic));
    EXPECT_EQ(CycloneHeld(publisher).of(&asked.publisher), newPolicies(asked.publisher));
    EXPECT_EQ(CycloneHeld(subscriber).of(&asked.subscriber), newPolicies(asked.subscriber));
    EXPECT_EQ(CycloneHeld(reader).of(&asked.reader), newPolicies(asked.reader));
    EXPECT_EQ(CycloneHeld(writer).of(&asked.writer), newPolicies(asked.writer)) << "its own durability service";

    EXPECT_EQ(DDS_DomainParticipant_delete_contained_entities(participant), DDS_RETCODE_OK);
    EXPECT_EQ(DDS_DomainParticipantFactory_delete_participant(factory, participant), DDS_RETCODE_OK);
    EXPECT_EQ(DDS_DomainParticipantFactory_delete_participant(factory, defaultParticipant), DDS_RETCODE_OK);
}

// A TRANSIENT_LOCAL writer serves late joiners from the durability service
// that it names, else from its own history; live readers get every sample.
TEST(QosLateJoiners, GetTheDurabilityServicesHistoryElseTheWriters) {
    using T = QTV_VX_LogMessage;
    using Type = vexar_test::TopicType<T>;
    constexpr int kWrites = 50;
    const DDS_DurabilityServiceQosPolicy defaults = DDS_DURABILITY_SERVICE_QOS_POLICY_DEFAULT;
    DDS_DurabilityServiceQosPolicy lastFive = defaults;
    lastFive.history_depth = 5;
    const struct {
        const char *name;
        int domain;
        DDS_HistoryQosPolicy history;
        DDS_DurabilityServiceQosPolicy durabilityService;
        int lateGets;
    } cases[] = {
        {"KEEP_ALL writer, durability service KEEP_LAST 5",
         kOwnDurabilityServiceDomain,
         {DDS_KEEP_ALL_HISTORY_QOS, 1},
         lastFive,
         5},
        {"KEEP_LAST 20 writer, default durability service",
         kDefaultDurabilityServiceDomain,
         {DDS_KEEP_LAST_HISTORY_QOS, 20},
         defaults,
         20},
    };
    for (const auto &each : cases) {
        SCOPED_TRACE(each.name);
        LogCapture log(OBLX_CONFIG_LOG_VERBOSITY_WARNING);
        vexar_test::TypedParticipant<T> participant(each.domain, "late_joiners", kWrites);
        ASSERT_NE(participant.topic(), nullptr) << log.text();
        Type::DataReader *live = participant.reader();
        DDS_DataWriterQos qos = vexar_test::historyQos(DDS_DataWriterQos(DDS_DataWriterQos_INITIALIZER), 1);
        qos.history = each.history;
        qos.durability_service = each.durabilityService;
        DDS_DataWriter *writer =
            DDS_Publisher_create_datawriter(participant.publisher(), participant.topic(), &qos, nullptr, 0);
        ASSERT_TRUE(live && writer) << log.text();
        ASSERT_TRUE(vexar_test::eventually([&] { return vexar_test::hasMatchedReaders(writer, 1); }));
        for (int i = 0; i < kWrites; ++i) {
            vexar_test::Sample<T> sample(i);  // one instance: same host, app and level
            ASSERT_EQ(Type::write(Type::narrowWriter(writer), sample.get(), DDS_HANDLE_NIL), DDS_RETCODE_OK);
        }
        const DDS_Duration_t fiveSeconds = {5, 0};
        ASSERT_EQ(DDS_DataWriter_wait_for_acknowledgments(writer, &fiveSeconds), DDS_RETCODE_OK);
        EXPECT_EQ(vexar_test::takeMarkers<T>(live, kWrites).size(), size_t{kWrites});

        std::vector<int> lastOnes;
        for (int i = kWrites - each.lateGets; i < kWrites; ++i) lastOnes.push_back(i);
        // Waits a while beyond the expected count, so that any extra arrives too.
        EXPECT_EQ(vexar_test::takeMarkers<T>(participant.reader(), kWrites, std::chrono::seconds(1)), lastOnes);
        EXPECT_EQ(log.text().find("not supported"), std::string::npos) << log.text();
    }
}

}  // namespace
