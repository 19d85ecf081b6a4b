// QoS records: ownership of names, and the mapping onto Cyclone,
// checked both on bare dds_qos_t and through real Cyclone entities.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <tuple>

#include "platform/runtime/dds_string.h"
#include "platform/dds/qos.h"
#include "platform/dds/qos_cyclone.hpp"
#include "support/domains.h"
#include "support/log_capture.h"

using namespace vexar::dds;
using vexar_test::LogCapture;

namespace {

constexpr const char *kContext = "qos_test";

auto fields(const DDS_Duration_t &d) { return std::tuple{d.sec, d.nanosec}; }

template <typename Qos>
auto endpointFields(const Qos &q) {
    return std::tuple{q.reliability.kind,        fields(q.reliability.max_blocking_time),
                      q.durability.kind,         q.history.kind,
                      q.history.depth,           q.ownership.kind,
                      fields(q.deadline.period), fields(q.latency_budget.duration),
                      q.liveliness.kind,         fields(q.liveliness.lease_duration),
                      q.destination_order.kind,  q.protocol.vendor_specific_entity};
}

// Every policy away from its default, with values that Cyclone honours.
template <typename Qos>
Qos distinctEndpointQos() {
    Qos qos;
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

// The names are owned: copies and read-backs replace and free what was
// there (LeakSanitizer), and the source can go before the copy.
TEST(QosRecord, NamesAreOwnedByEachCopyAndTravelThroughCyclone) {
    DDS_DomainParticipantQos src = DDS_DomainParticipantQos_INITIALIZER;
    DDS_DomainParticipantQos dst = DDS_DomainParticipantQos_INITIALIZER;
    src.participant_name = {DDS_String_dup("logger"), DDS_String_dup("observer")};
    src.protocol.vendor_specific_entity = DDS_BOOLEAN_TRUE;
    dst.participant_name.name = DDS_String_dup("replaced");

    const CycloneQos cyclone = toCyclone(src, kContext);
    ASSERT_NE(cyclone, nullptr);
    char *name = nullptr;
    ASSERT_TRUE(dds_qget_entity_name(cyclone.get(), &name));
    EXPECT_STREQ(name, "logger");
    dds_free(name);

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

    DDS_DomainParticipantQos back = DDS_DomainParticipantQos_INITIALIZER;
    back.participant_name.name = DDS_String_dup("overwritten");
    ASSERT_EQ(fromCyclone(*cyclone, back, kContext), DDS_RETCODE_OK);
    EXPECT_STREQ(back.participant_name.name, "logger");
    EXPECT_STREQ(back.participant_name.role_name, "observer");
    EXPECT_TRUE(back.protocol.vendor_specific_entity);
    DDS_DomainParticipantQos_finalize(&back);
}

TEST(QosCycloneMapping, OutOfRangeValuesAreRefusedNamingTheField) {
    const struct {
        const char *field;
        void (*spoil)(DDS_DataReaderQos &);
    } cases[] = {
        // What C code may store in an enum field; C++ cannot assign it.
        {"reliability.kind",
         [](DDS_DataReaderQos &q) {
             int c = 7;
             std::memcpy(&q.reliability.kind, &c, sizeof c);
         }},
        {"history.depth", [](DDS_DataReaderQos &q) { q.history.depth = 0; }},
        {"deadline.period",
         [](DDS_DataReaderQos &q) {
             q.deadline.period = {-1, 0};
         }},
        {"latency_budget.duration",
         [](DDS_DataReaderQos &q) {
             q.latency_budget.duration = {0, 1000000000};
         }},
    };
    for (const auto &c : cases) {
        LogCapture log(OBLX_CONFIG_LOG_VERBOSITY_ERROR);
        DDS_DataReaderQos reader = DDS_DataReaderQos_INITIALIZER;
        c.spoil(reader);
        EXPECT_EQ(toCyclone(reader, kContext), nullptr) << c.field;
        EXPECT_TRUE(log.contains(c.field)) << log.text();
    }
}

TEST(QosCycloneMapping, UnhonouredValuesAreReportedAndStillMapped) {
    LogCapture log(OBLX_CONFIG_LOG_VERBOSITY_ERROR);
    DDS_PublisherQos publisher = DDS_PublisherQos_INITIALIZER;
    publisher.presentation = {DDS_GROUP_PRESENTATION_QOS, DDS_BOOLEAN_TRUE, DDS_BOOLEAN_TRUE};
    DDS_TopicQos topic = DDS_TopicQos_INITIALIZER;
    topic.durability.kind = DDS_TRANSIENT_DURABILITY_QOS;
    DDS_DomainParticipantQos participant = DDS_DomainParticipantQos_INITIALIZER;
    participant.wire_protocol.rtps_app_id = 42;

    const CycloneQos cyclone = toCyclone(publisher, kContext);
    ASSERT_NE(cyclone, nullptr);
    EXPECT_NE(toCyclone(topic, kContext), nullptr);
    EXPECT_NE(toCyclone(participant, kContext), nullptr);
    for (const char *field : {"coherent_access", "ordered_access", "TRANSIENT", "wire_protocol"})
        EXPECT_TRUE(log.contains(field)) << field << " in " << log.text();

    DDS_PublisherQos back = DDS_PublisherQos_INITIALIZER;
    ASSERT_EQ(fromCyclone(*cyclone, back, kContext), DDS_RETCODE_OK);
    EXPECT_EQ(std::tuple(back.presentation.access_scope, back.presentation.coherent_access),
              std::tuple(DDS_GROUP_PRESENTATION_QOS, DDS_BOOLEAN_TRUE));
}

TEST(QosCycloneMapping, DurationsKeepInfinityAndSaturate) {
    EXPECT_EQ(toCycloneDuration({DDS_DURATION_INFINITE_SEC, DDS_DURATION_INFINITE_NSEC}), DDS_INFINITY);
    EXPECT_EQ(toCycloneDuration({1, 5}), DDS_SECS(1) + 5);
    EXPECT_EQ(fields(fromCycloneDuration(DDS_INFINITY)),
              std::tuple(DDS_DURATION_INFINITE_SEC, DDS_DURATION_INFINITE_NSEC));
    EXPECT_EQ(fields(fromCycloneDuration(DDS_SECS(0x7fffffffLL) + 1)), fields(fromCycloneDuration(DDS_INFINITY)));
    EXPECT_EQ(fields(fromCycloneDuration(-5)), std::tuple(0, 0u));
}

// A keyless struct { int32 value; } described to Cyclone by hand: enough to
// create writers and readers without a type plugin.
struct Sample {
    int32_t value;
};
const uint32_t kSampleOps[] = {uint32_t{DDS_OP_ADR} | uint32_t{DDS_OP_TYPE_4BY} | uint32_t{DDS_OP_FLAG_SGN},
                               offsetof(Sample, value), DDS_OP_RTS};
const dds_topic_descriptor_t kSampleDescriptor = {
    sizeof(Sample), alignof(Sample), 0u, 0u, "vexar_test::Sample", nullptr, 2u, kSampleOps, "", {}, {}, 0u};

class QosCycloneEntities : public testing::Test {
protected:
    void SetUp() override {
        participant_ = dds_create_participant(vexar_test::domains::kBridgeBase + 0, nullptr, nullptr);
        ASSERT_GT(participant_, 0);
        topic_ = dds_create_topic(participant_, &kSampleDescriptor, "qos_test", nullptr, nullptr);
        ASSERT_GT(topic_, 0);
    }
    void TearDown() override { dds_delete(participant_); }

    // What a Cyclone entity holds, read back into a record preset to `start`.
    template <typename Qos>
    Qos readBack(dds_entity_t entity, const Qos &start) {
        CycloneQos cyclone{dds_create_qos()};
        EXPECT_EQ(dds_get_qos(entity, cyclone.get()), 0);
        Qos qos = start;
        EXPECT_EQ(fromCyclone(*cyclone, qos, kContext), DDS_RETCODE_OK);
        return qos;
    }

    dds_entity_t participant_ = 0;
    dds_entity_t topic_ = 0;
};

TEST_F(QosCycloneEntities, WireProtocolIdsAreTheGuidPrefixWords) {
    const dds_entity_t other = dds_create_participant(vexar_test::domains::kBridgeBase + 0, nullptr, nullptr);
    DDS_WireProtocolQosPolicy first, second;
    ASSERT_EQ(wireProtocolFromParticipant(participant_, first, kContext), DDS_RETCODE_OK);
    ASSERT_EQ(wireProtocolFromParticipant(other, second, kContext), DDS_RETCODE_OK);

    dds_guid_t guid;
    ASSERT_EQ(dds_get_guid(participant_, &guid), 0);
    auto word = [&](int i) {
        return DDS_Long(uint32_t(guid.v[4 * i]) << 24 | guid.v[4 * i + 1] << 16 | guid.v[4 * i + 2] << 8 |
                        guid.v[4 * i + 3]);
    };
    EXPECT_EQ(std::tuple(first.rtps_host_id, first.rtps_app_id, first.rtps_instance_id),
              std::tuple(word(0), word(1), word(2)));
    EXPECT_NE(second.rtps_app_id, first.rtps_app_id);

    LogCapture log(OBLX_CONFIG_LOG_VERBOSITY_ERROR);
    EXPECT_EQ(wireProtocolFromParticipant(topic_, first, kContext), DDS_RETCODE_BAD_PARAMETER);
    EXPECT_TRUE(log.contains("participant")) << log.text();
    dds_delete(other);
}

// Read-backs start away from what they expect, which shows that Cyclone
// holds each policy.
TEST_F(QosCycloneEntities, EntitiesHoldOurDefaultsAndWhatTheRecordsAsk) {
    const auto writerQos = distinctEndpointQos<DDS_DataWriterQos>();
    const auto readerQos = distinctEndpointQos<DDS_DataReaderQos>();
    const dds_entity_t defaultWriter = dds_create_writer(participant_, topic_, nullptr, nullptr);
    const dds_entity_t defaultReader = dds_create_reader(participant_, topic_, nullptr, nullptr);
    const dds_entity_t writer = dds_create_writer(participant_, topic_, toCyclone(writerQos, kContext).get(), nullptr);
    const dds_entity_t reader = dds_create_reader(participant_, topic_, toCyclone(readerQos, kContext).get(), nullptr);
    ASSERT_TRUE(defaultWriter > 0 && defaultReader > 0 && writer > 0 && reader > 0);

    auto start = writerQos;
    start.protocol.vendor_specific_entity = DDS_BOOLEAN_FALSE;
    const DDS_DataWriterQos writerDefaults = DDS_DataWriterQos_INITIALIZER;
    EXPECT_EQ(endpointFields(readBack(defaultWriter, start)), endpointFields(writerDefaults));
    // Only best-effort blocking time differs, and nothing uses it: Cyclone says 0, OMG 100 ms.
    DDS_DataReaderQos readerDefaults = DDS_DataReaderQos_INITIALIZER;
    readerDefaults.reliability.max_blocking_time = {0, 0};
    EXPECT_EQ(endpointFields(readBack(defaultReader, start)), endpointFields(readerDefaults));

    EXPECT_EQ(endpointFields(readBack(writer, writerDefaults)), endpointFields(writerQos));
    EXPECT_EQ(endpointFields(readBack(reader, DDS_DataReaderQos DDS_DataReaderQos_INITIALIZER)),
              endpointFields(readerQos));
}

}  // namespace
