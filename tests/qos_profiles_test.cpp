// QoS profiles in loaded documents: every policy of every record read from
// XML, inheritance, topic filters, the factory's look-ups, and documents
// refused with the line of each mistake.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "platform/dds/data_reader.h"
#include "platform/dds/data_writer.h"
#include "platform/dds/domain_participant.h"
#include "platform/dds/domain_participant_factory.h"
#include "platform/dds/qos_records.hpp"
#include "platform/runtime/dds_string.h"
#include "support/domains.h"
#include "support/log_capture.h"
#include "support/qos_fields.hpp"
#include "support/saved_xml.hpp"
#include "support/temp_file.hpp"
#include "support/typed_topic.hpp"

namespace {

using vexar::dds::OwnedQos;
using vexar_test::fields;
using vexar_test::LogCapture;
using vexar_test::savedXml;

constexpr int kParticipantDefaultsDomain = vexar_test::domains::kBridgeBase + 14;
constexpr int kFactoryDefaultDomain = vexar_test::domains::kBridgeBase + 15;

DDS_DomainParticipantFactory *factory() { return DDS_DomainParticipantFactory_get_instance(); }

constexpr DDS_Duration_t kInfinite = DDS_DURATION_INFINITE_INITIALIZER;

std::vector<std::string> profilesOf(const char *library) {
    DDS_StringSeq names = DDS_SEQUENCE_INITIALIZER;
    char stale[] = "stale";  // a listing replaces what the sequence held
    char *held[] = {stale};
    EXPECT_TRUE(DDS_StringSeq_from_array(&names, held, 1));
    EXPECT_EQ(DDS_DomainParticipantFactory_get_qos_profiles(factory(), &names, library), DDS_RETCODE_OK);
    std::vector<std::string> listed = vexar_test::strings(names);
    DDS_StringSeq_finalize(&names);
    return listed;
}

// Every document is unloaded when the test ends.
class QosProfiles : public testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(DDS_DomainParticipantFactory_unload_xml(factory()), DDS_RETCODE_OK); }
    static DDS_ReturnCode_t load(const std::string &document) {
        return DDS_DomainParticipantFactory_load_xml_string(factory(), document.c_str());
    }
};

// ---------------------------------------------------------------------------
// Every policy of every record, each field away from its default

// Topics, writers and readers share these; reliability is each record's own,
// since the writers' default kind is not the others'.
const std::string kEndpointPolicies =
    "<durability><kind>DDS_TRANSIENT_LOCAL_DURABILITY_QOS</kind></durability>"
    "<history><kind>KEEP_ALL_HISTORY_QOS</kind><depth>7</depth></history>"
    "<resource_limits><max_samples>100</max_samples><max_instances>10</max_instances>"
    "<max_samples_per_instance>20</max_samples_per_instance></resource_limits>"
    "<ownership><kind>EXCLUSIVE_OWNERSHIP_QOS</kind></ownership>"
    "<deadline><period><sec>3</sec><nanosec>4</nanosec></period></deadline>"
    "<latency_budget><duration><sec>DURATION_INFINITY</sec></duration></latency_budget>"
    "<liveliness><kind>MANUAL_BY_TOPIC_LIVELINESS_QOS</kind>"
    "<lease_duration><sec>5</sec><nanosec>6</nanosec></lease_duration></liveliness>"
    "<destination_order><kind>BY_SOURCE_TIMESTAMP_DESTINATIONORDER_QOS</kind></destination_order>"
    "<protocol><vendor_specific_entity>yes</vendor_specific_entity></protocol>\n";
const std::string kStoredDataPolicies =
    "<durability_service><service_cleanup_delay><sec>8</sec><nanosec>9</nanosec></service_cleanup_delay>"
    "<history_kind>KEEP_ALL_HISTORY_QOS</history_kind><history_depth>11</history_depth>"
    "<max_samples>110</max_samples><max_instances>12</max_instances>"
    "<max_samples_per_instance>13</max_samples_per_instance></durability_service>"
    "<lifespan><duration><sec>14</sec><nanosec>15</nanosec></duration></lifespan>"
    "<transport_priority><value>16</value></transport_priority>\n";
const std::string kGroupPolicies =
    "<partition><name><element>north</element><element>south</element></name></partition>"
    "<group_data><value>03 04</value></group_data>"
    "<protocol><vendor_specific_entity>1</vendor_specific_entity></protocol>\n";

const std::string kEveryPolicy =
    "<dds><qos_library name=\"All\"><qos_profile name=\"Every\">\n"
    "<domain_participant_qos><user_data><value>00</value></user_data>"
    "<participant_name><name>plant</name><role_name>sensor</role_name></participant_name>"
    "<wire_protocol><rtps_host_id>21</rtps_host_id><rtps_app_id>22</rtps_app_id>"
    "<rtps_instance_id>23</rtps_instance_id></wire_protocol>"
    "<protocol><vendor_specific_entity>TRUE</vendor_specific_entity></protocol></domain_participant_qos>\n"
    "<publisher_qos><presentation><access_scope>GROUP_PRESENTATION_QOS</access_scope>"
    "<coherent_access>true</coherent_access><ordered_access>true</ordered_access></presentation>" +
    kGroupPolicies +
    "</publisher_qos>\n"
    "<subscriber_qos><presentation><access_scope>DDS_TOPIC_PRESENTATION_QOS</access_scope>"
    "<coherent_access>true</coherent_access></presentation>" +
    kGroupPolicies +
    "</subscriber_qos>\n"
    "<topic_qos><reliability><kind>RELIABLE_RELIABILITY_QOS</kind>"
    "<max_blocking_time><sec>0</sec><nanosec>17</nanosec></max_blocking_time></reliability>" +
    kEndpointPolicies + kStoredDataPolicies +
    "<topic_data><value>0102 ff</value></topic_data></topic_qos>\n"
    "<datawriter_qos><reliability><kind>BEST_EFFORT_RELIABILITY_QOS</kind>"
    "<max_blocking_time><sec>1</sec><nanosec>2</nanosec></max_blocking_time></reliability>" +
    kEndpointPolicies + kStoredDataPolicies +
    "<ownership_strength><value>18</value></ownership_strength>"
    "<writer_data_lifecycle><autodispose_unregistered_instances>false</autodispose_unregistered_instances>"
    "</writer_data_lifecycle><user_data><value>a0B1</value></user_data><batch><enable>1</enable></batch>"
    "</datawriter_qos>\n"
    "<datareader_qos><reliability><kind>RELIABLE_RELIABILITY_QOS</kind>"
    "<max_blocking_time><sec>0</sec><nanosec>19</nanosec></max_blocking_time></reliability>" +
    kEndpointPolicies +
    "<time_based_filter><minimum_separation><sec>DURATION_INFINITE_SEC</sec>"
    "<nanosec>DURATION_INFINITE_NSEC</nanosec></minimum_separation></time_based_filter>"
    "<reader_data_lifecycle><autopurge_nowriter_samples_delay><sec>20</sec><nanosec>0</nanosec>"
    "</autopurge_nowriter_samples_delay><autopurge_disposed_samples_delay><sec>DURATION_ZERO_SEC</sec>"
    "<nanosec>DURATION_ZERO_NSEC</nanosec></autopurge_disposed_samples_delay></reader_data_lifecycle>"
    "<user_data><value>c2</value></user_data></datareader_qos>\n"
    "</qos_profile></qos_library></dds>\n";

void setBytes(DDS_OctetSeq &octets, std::vector<DDS_Octet> bytes) {
    ASSERT_TRUE(DDS_OctetSeq_from_array(&octets, bytes.data(), DDS_Long(bytes.size())));
}

template <typename Qos>
void setEndpointPolicies(Qos &q) {
    q.durability.kind = DDS_TRANSIENT_LOCAL_DURABILITY_QOS;
    q.history = {DDS_KEEP_ALL_HISTORY_QOS, 7};
    q.resource_limits = {100, 10, 20};
    q.ownership.kind = DDS_EXCLUSIVE_OWNERSHIP_QOS;
    q.deadline.period = {3, 4};
    q.latency_budget.duration = kInfinite;
    q.liveliness = {DDS_MANUAL_BY_TOPIC_LIVELINESS_QOS, {5, 6}};
    q.destination_order.kind = DDS_BY_SOURCE_TIMESTAMP_DESTINATIONORDER_QOS;
    q.protocol.vendor_specific_entity = DDS_BOOLEAN_TRUE;
}

template <typename Qos>
void setStoredDataPolicies(Qos &q) {
    q.durability_service = {{8, 9}, DDS_KEEP_ALL_HISTORY_QOS, 11, 110, 12, 13};
    q.lifespan.duration = {14, 15};
    q.transport_priority.value = 16;
}

template <typename Qos>
void setGroupPolicies(Qos &q, DDS_PresentationQosPolicy presentation) {
    q.presentation = presentation;
    char north[] = "north", south[] = "south";
    char *names[] = {north, south};
    ASSERT_TRUE(DDS_StringSeq_from_array(&q.partition.name, names, 2));
    setBytes(q.group_data.value, {3, 4});
    q.protocol.vendor_specific_entity = DDS_BOOLEAN_TRUE;
}

// What "All::Every" holds, record by record.
struct EveryPolicy {
    OwnedQos<DDS_DomainParticipantQos> participant;
    OwnedQos<DDS_PublisherQos> publisher;
    OwnedQos<DDS_SubscriberQos> subscriber;
    OwnedQos<DDS_TopicQos> topic;
    OwnedQos<DDS_DataWriterQos> writer;
    OwnedQos<DDS_DataReaderQos> reader;

    EveryPolicy() {
        setBytes(participant.qos.user_data.value, {0});
        participant.qos.participant_name = {DDS_String_dup("plant"), DDS_String_dup("sensor")};
        participant.qos.wire_protocol = {21, 22, 23};
        participant.qos.protocol.vendor_specific_entity = DDS_BOOLEAN_TRUE;
        setGroupPolicies(publisher.qos, {DDS_GROUP_PRESENTATION_QOS, DDS_BOOLEAN_TRUE, DDS_BOOLEAN_TRUE});
        setGroupPolicies(subscriber.qos, {DDS_TOPIC_PRESENTATION_QOS, DDS_BOOLEAN_TRUE, DDS_BOOLEAN_FALSE});

        topic.qos.reliability = {DDS_RELIABLE_RELIABILITY_QOS, {0, 17}};
        setEndpointPolicies(topic.qos);
        setStoredDataPolicies(topic.qos);
        setBytes(topic.qos.topic_data.value, {1, 2, 0xff});

        writer.qos.reliability = {DDS_BEST_EFFORT_RELIABILITY_QOS, {1, 2}};
        setEndpointPolicies(writer.qos);
        setStoredDataPolicies(writer.qos);
        writer.qos.ownership_strength.value = 18;
        writer.qos.writer_data_lifecycle.autodispose_unregistered_instances = DDS_BOOLEAN_FALSE;
        setBytes(writer.qos.user_data.value, {0xa0, 0xb1});
        writer.qos.batch.enable = DDS_BOOLEAN_TRUE;

        reader.qos.reliability = {DDS_RELIABLE_RELIABILITY_QOS, {0, 19}};
        setEndpointPolicies(reader.qos);
        reader.qos.time_based_filter.minimum_separation = kInfinite;
        reader.qos.reader_data_lifecycle = {{20, 0}, {0, 0}};
        setBytes(reader.qos.user_data.value, {0xc2});
    }
};

template <typename Qos>
void expectProfileHolds(DDS_ReturnCode_t (*get)(DDS_DomainParticipantFactory *, Qos *, const char *, const char *),
                        const Qos &expected) {
    OwnedQos<Qos> read;
    ASSERT_EQ(get(factory(), &read.qos, "All", "Every"), DDS_RETCODE_OK);
    vexar_test::expectSameQos(read.qos, expected);
}

TEST_F(QosProfiles, EveryPolicyOfEveryRecordIsReadFromItsElement) {
    ASSERT_EQ(load(kEveryPolicy), DDS_RETCODE_OK);
    const EveryPolicy expected;
    expectProfileHolds(DDS_DomainParticipantFactory_get_participant_qos_from_profile, expected.participant.qos);
    expectProfileHolds(DDS_DomainParticipantFactory_get_publisher_qos_from_profile, expected.publisher.qos);
    expectProfileHolds(DDS_DomainParticipantFactory_get_subscriber_qos_from_profile, expected.subscriber.qos);
    expectProfileHolds(DDS_DomainParticipantFactory_get_topic_qos_from_profile, expected.topic.qos);
    expectProfileHolds(DDS_DomainParticipantFactory_get_datawriter_qos_from_profile, expected.writer.qos);
    expectProfileHolds(DDS_DomainParticipantFactory_get_datareader_qos_from_profile, expected.reader.qos);
}

// A duration element gives the whole duration: a part it leaves out is 0,
// and either part infinite makes it infinite. Read over the reader's
// infinite default lease. (The named zero and infinite pairs are in
// kEveryPolicy.)
TEST_F(QosProfiles, DurationsAreReadWhole) {
    const struct {
        const char *parts;
        DDS_Duration_t expected;
    } cases[] = {
        {"<sec>5</sec>", {5, 0}},
        {"<nanosec>7</nanosec>", {0, 7}},
        {"<sec>2147483646</sec><nanosec>999999999</nanosec>", {2147483646, 999999999}},
        {"<sec>DDS_DURATION_INFINITY</sec>", kInfinite},
        {"<sec>1</sec><nanosec>DURATION_INFINITE_NSEC</nanosec>", kInfinite},
    };
    std::string document = "<qos_library name=\"D\">\n";
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        document += "<qos_profile name=\"" + std::to_string(i) + "\"><datareader_qos><liveliness><lease_duration>" +
                    cases[i].parts + "</lease_duration></liveliness></datareader_qos></qos_profile>\n";
    }
    ASSERT_EQ(load(document + "</qos_library>"), DDS_RETCODE_OK);
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        OwnedQos<DDS_DataReaderQos> read;
        ASSERT_EQ(DDS_DomainParticipantFactory_get_datareader_qos_from_profile(factory(), &read.qos, "D",
                                                                               std::to_string(i).c_str()),
                  DDS_RETCODE_OK);
        EXPECT_EQ(fields(read.qos.liveliness.lease_duration), fields(cases[i].expected)) << cases[i].parts;
    }
}

// ---------------------------------------------------------------------------
// Inheritance

// Base::Root <- Base::Middle <- App::Leaf; App::Local names "Root", which is
// App's own Root, not Base's.
const char *const kInheritance = R"(<dds>
<qos_library name="Base">
  <qos_profile name="Root">
    <datawriter_qos>
      <history><kind>KEEP_LAST_HISTORY_QOS</kind><depth>5</depth></history>
      <resource_limits><max_samples>100</max_samples></resource_limits>
      <ownership_strength><value>3</value></ownership_strength>
      <user_data><value>0a0b0c</value></user_data>
    </datawriter_qos>
    <publisher_qos><partition><name><element>a</element><element>b</element><element>c</element></name></partition></publisher_qos>
  </qos_profile>
  <qos_profile name="Middle" base_name="Root">
    <datawriter_qos><history><depth>6</depth></history></datawriter_qos>
  </qos_profile>
</qos_library>
<qos_library name="App">
  <qos_profile name="Leaf" base_name="Base::Middle">
    <datawriter_qos>
      <resource_limits><max_samples>LENGTH_UNLIMITED</max_samples></resource_limits>
      <user_data><value>ff</value></user_data>
    </datawriter_qos>
    <publisher_qos><partition><name><element>d</element></name></partition></publisher_qos>
  </qos_profile>
  <qos_profile name="Root"><datawriter_qos><ownership_strength><value>99</value></ownership_strength></datawriter_qos></qos_profile>
  <qos_profile name="Local" base_name="Root"/>
</qos_library>
</dds>)";

TEST_F(QosProfiles, ADerivedProfileOverridesWhatItsBasesSet) {
    ASSERT_EQ(load(kInheritance), DDS_RETCODE_OK);
    const struct {
        const char *library, *profile;
        std::tuple<DDS_HistoryQosPolicyKind, DDS_Long> history;
        DDS_Long maxSamples, strength;
        std::vector<int> userData;
        std::vector<std::string> partitions;
    } cases[] = {
        {"Base", "Root", {DDS_KEEP_LAST_HISTORY_QOS, 5}, 100, 3, {10, 11, 12}, {"a", "b", "c"}},
        {"Base", "Middle", {DDS_KEEP_LAST_HISTORY_QOS, 6}, 100, 3, {10, 11, 12}, {"a", "b", "c"}},
        {"App", "Leaf", {DDS_KEEP_LAST_HISTORY_QOS, 6}, DDS_LENGTH_UNLIMITED, 3, {0xff}, {"d"}},
        {"App", "Local", {DDS_KEEP_LAST_HISTORY_QOS, 1}, DDS_LENGTH_UNLIMITED, 99, {}, {}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.library) + "::" + c.profile);
        OwnedQos<DDS_DataWriterQos> writer;
        ASSERT_EQ(
            DDS_DomainParticipantFactory_get_datawriter_qos_from_profile(factory(), &writer.qos, c.library, c.profile),
            DDS_RETCODE_OK);
        EXPECT_EQ(fields(writer.qos.history), c.history);
        EXPECT_EQ(writer.qos.resource_limits.max_samples, c.maxSamples);
        EXPECT_EQ(writer.qos.ownership_strength.value, c.strength);
        EXPECT_EQ(fields(writer.qos.user_data), c.userData);
        OwnedQos<DDS_PublisherQos> publisher;
        ASSERT_EQ(DDS_DomainParticipantFactory_get_publisher_qos_from_profile(factory(), &publisher.qos, c.library,
                                                                              c.profile),
                  DDS_RETCODE_OK);
        EXPECT_EQ(fields(publisher.qos.partition), c.partitions);
    }
}

// ---------------------------------------------------------------------------
// Topic filters

// Unfiltered elements first, then the matching filtered ones in document
// order; the forms without a topic name take no filtered element.
TEST_F(QosProfiles, TopicFilteredElementsApplyOnlyToMatchingTopics) {
    ASSERT_EQ(load(R"(<qos_library name="F"><qos_profile name="P">
      <datawriter_qos topic_filter="qtv/*"><history><depth>20</depth></history></datawriter_qos>
      <datawriter_qos><history><depth>2</depth></history><ownership_strength><value>4</value></ownership_strength></datawriter_qos>
      <datawriter_qos topic_filter="qtv/vexar"><ownership_strength><value>5</value></ownership_strength></datawriter_qos>
      <topic_qos topic_filter="qtv/?exar"><transport_priority><value>6</value></transport_priority></topic_qos>
      <datareader_qos topic_filter="*/vexar"><history><depth>7</depth></history></datareader_qos>
    </qos_profile></qos_library>)"),
              DDS_RETCODE_OK);
    const struct {
        const char *topicName;  // null: the form without a topic name
        DDS_Long depth, strength;
    } cases[] = {
        {nullptr, 2, 4}, {"qtv/vexar", 20, 5}, {"qtv/other", 20, 4}, {"elsewhere", 2, 4}, {"QTV/VEXAR", 2, 4},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.topicName != nullptr ? c.topicName : "(no topic name)");
        OwnedQos<DDS_DataWriterQos> writer;
        const DDS_ReturnCode_t read =
            c.topicName == nullptr
                ? DDS_DomainParticipantFactory_get_datawriter_qos_from_profile(factory(), &writer.qos, "F", "P")
                : DDS_DomainParticipantFactory_get_datawriter_qos_from_profile_w_topic_name(factory(), &writer.qos, "F",
                                                                                            "P", c.topicName);
        ASSERT_EQ(read, DDS_RETCODE_OK);
        EXPECT_EQ(writer.qos.history.depth, c.depth);
        EXPECT_EQ(writer.qos.ownership_strength.value, c.strength);
    }
    OwnedQos<DDS_TopicQos> topic;
    ASSERT_EQ(DDS_DomainParticipantFactory_get_topic_qos_from_profile_w_topic_name(factory(), &topic.qos, "F", "P",
                                                                                   "qtv/vexar"),
              DDS_RETCODE_OK);
    EXPECT_EQ(topic.qos.transport_priority.value, 6);
    ASSERT_EQ(DDS_DomainParticipantFactory_get_topic_qos_from_profile(factory(), &topic.qos, "F", "P"), DDS_RETCODE_OK);
    EXPECT_EQ(topic.qos.transport_priority.value, 0);
    OwnedQos<DDS_DataReaderQos> reader;
    ASSERT_EQ(DDS_DomainParticipantFactory_get_datareader_qos_from_profile_w_topic_name(factory(), &reader.qos, "F",
                                                                                        "P", "qtv/vexar"),
              DDS_RETCODE_OK);
    EXPECT_EQ(reader.qos.history.depth, 7);
    ASSERT_EQ(DDS_DomainParticipantFactory_get_datareader_qos_from_profile_w_topic_name(factory(), &reader.qos, "F",
                                                                                        "P", "qtv/state"),
              DDS_RETCODE_OK);
    EXPECT_EQ(reader.qos.history.depth, 1);
}

// ---------------------------------------------------------------------------
// The factory's look-ups

TEST_F(QosProfiles, ProfilesAreListedInDocumentOrderAcrossDocuments) {
    ASSERT_EQ(load("<dds><qos_library name=\"L\"><qos_profile name=\"b\"/><qos_profile name=\"a\"/></qos_library>"
                   "<qos_library name=\"M\"><qos_profile name=\"q\"/></qos_library></dds>"),
              DDS_RETCODE_OK);
    const vexar_test::TempFile file(
        "<qos_library name=\"L\"><qos_profile name=\"c\" base_name=\"M::q\"/></qos_library>");
    ASSERT_EQ(DDS_DomainParticipantFactory_load_xml_file(factory(), file.path()), DDS_RETCODE_OK);
    EXPECT_EQ(profilesOf("L"), (std::vector<std::string>{"b", "a", "c"}));
    EXPECT_EQ(profilesOf("M"), std::vector<std::string>{"q"});
    EXPECT_EQ(profilesOf("l"), std::vector<std::string>{}) << "library names are exact";
    EXPECT_EQ(profilesOf("Nope"), std::vector<std::string>{});
    ASSERT_EQ(DDS_DomainParticipantFactory_unload_xml(factory()), DDS_RETCODE_OK);
    EXPECT_EQ(profilesOf("L"), std::vector<std::string>{});
}

TEST_F(QosProfiles, AnUnknownProfileLeavesTheRecordAsItWas) {
    ASSERT_EQ(load("<qos_library name=\"L\"><qos_profile name=\"P\"><datawriter_qos><history><depth>3</depth>"
                   "</history></datawriter_qos></qos_profile></qos_library>"),
              DDS_RETCODE_OK);
    const struct {
        const char *library, *profile, *reported;
    } cases[] = {
        {"L", "Nope", "bad parameter: profile (no QoS profile \"L::Nope\" is loaded)"},
        {"Nope", "P", "bad parameter: profile (no QoS profile \"Nope::P\" is loaded)"},
        {nullptr, "P", "bad parameter: library_name"},
        {"L", nullptr, "bad parameter: profile_name"},
    };
    for (const auto &c : cases) {
        const LogCapture log;
        OwnedQos<DDS_DataWriterQos> writer;
        writer.qos.history.depth = 42;
        EXPECT_EQ(DDS_DomainParticipantFactory_get_datawriter_qos_from_profile_w_topic_name(factory(), &writer.qos,
                                                                                            c.library, c.profile, "t"),
                  DDS_RETCODE_BAD_PARAMETER);
        EXPECT_EQ(writer.qos.history.depth, 42);
        EXPECT_TRUE(log.contains(c.reported)) << log.text();
    }
    OwnedQos<DDS_DataWriterQos> writer;
    EXPECT_EQ(DDS_DomainParticipantFactory_get_datawriter_qos_from_profile(factory(), &writer.qos, "L", "P"),
              DDS_RETCODE_OK);
    EXPECT_EQ(writer.qos.history.depth, 3);
}

// ---------------------------------------------------------------------------
// Refused documents

// Each document is refused with every mistake reported at its line; what
// was loaded before stays as it was.
TEST_F(QosProfiles, RefusedDocumentsReportEachMistakeAtItsLine) {
    const struct {
        const char *document;
        std::vector<std::string> errors;
    } cases[] = {
        {"<qos_library name=\"L\"><qos_profile name=\"A\">\n<datawriter_qos>\n<histroy/>\n</datawriter_qos>\n"
         "<publisher_qos><history/></publisher_qos>\n<writer_qos/>\n</qos_profile></qos_library>",
         {":3: unknown QoS policy <histroy> in <datawriter_qos>", ":5: unknown QoS policy <history> in <publisher_qos>",
          ":6: unknown element <writer_qos> in <qos_profile>"}},
        {"<qos_library name=\"L\"><qos_profile name=\"A\"><datawriter_qos><history>\n<deepth>1</deepth>\n"
         "<kind>KEEP_SOME_HISTORY_QOS</kind>\n<depth>ten</depth>\n</history>\n"
         "<ownership_strength><value>2147483648</value></ownership_strength>\n"
         "</datawriter_qos></qos_profile></qos_library>",
         {":2: unknown element <deepth> in <history>",
          ":3: <kind> expects one of KEEP_LAST_HISTORY_QOS KEEP_ALL_HISTORY_QOS, not \"KEEP_SOME_HISTORY_QOS\"",
          ":4: <depth> expects an integer or LENGTH_UNLIMITED, not \"ten\"",
          ":6: <value> expects an integer or LENGTH_UNLIMITED, not \"2147483648\""}},
        {"<qos_library name=\"L\"><qos_profile name=\"A\"><datareader_qos><deadline><period>\n<sec>-1</sec>\n"
         "<nanosec>1000000000</nanosec>\n<msec>1</msec>\n</period></deadline></datareader_qos></qos_profile>"
         "</qos_library>",
         {":2: <sec> expects a number or DURATION_INFINITY, not \"-1\"",
          ":3: <nanosec> expects a number or DURATION_INFINITY, not \"1000000000\"",
          ":4: unknown element <msec> in <period> (expected <sec>, <nanosec>)"}},
        {"<qos_library name=\"L\"><qos_profile name=\"A\"><datawriter_qos>\n<user_data><value>0g</value></user_data>\n"
         "<batch><enable>maybe</enable></batch>\n</datawriter_qos>\n<datareader_qos>\n"
         "<user_data><value>-1</value></user_data>\n<user_data><value>abc</value></user_data>\n"
         "</datareader_qos></qos_profile></qos_library>",
         {":2: <value> expects bytes as pairs of hexadecimal digits, not \"0g\"",
          ":3: <enable> expects true or false, not \"maybe\"",
          ":6: <value> expects bytes as pairs of hexadecimal digits, not \"-1\"",
          ":7: <value> expects bytes as pairs of hexadecimal digits, not \"abc\""}},
        {"<qos_library name=\"L\"><qos_profile name=\"A\">\n<publisher_qos topic_filter=\"qtv/*\"/>\n"
         "<domain_participant_qos topic_filter=\"qtv/*\"/>\n</qos_profile></qos_library>",
         {":2: <publisher_qos> takes no topic_filter", ":3: <domain_participant_qos> takes no topic_filter"}},
        {"<qos_library name=\"L\">\n<qos_profile name=\"A\" base_name=\"Nope\"/>\n"
         "<qos_profile name=\"B\" base_name=\"Other::A\"/>\n</qos_library>",
         {":2: unknown base profile \"Nope\" of \"L::A\"", ":3: unknown base profile \"Other::A\" of \"L::B\""}},
        {"<qos_library name=\"L\">\n<qos_profile name=\"A\" base_name=\"B\"/>\n<qos_profile name=\"B\" "
         "base_name=\"L::A\"/>\n<qos_profile name=\"C\" base_name=\"C\"/>\n</qos_library>",
         {":2: profile \"L::A\" is its own base through \"B\"", ":3: profile \"L::B\" is its own base through \"L::A\"",
          ":4: profile \"L::C\" is its own base through \"C\""}},
        {"<dds><qos_library name=\"L\">\n<qos_profile name=\"A\"/>\n<qos_profile name=\"A\"/>\n</qos_library>\n"
         "<qos_library name=\"Loaded\">\n<qos_profile name=\"P\"/>\n</qos_library></dds>",
         {":3: duplicate <qos_profile> named \"L::A\" (the first is at <string>:2)",
          ":6: duplicate <qos_profile> named \"Loaded::P\" (the first is at <string>:2)"}},
        {"<qos_library name=\"L\">\n<qos_profile name=\"D\" is_default_qos=\"true\"/>\n"
         "<qos_profile name=\"E\" is_default_qos=\"maybe\"/>\n</qos_library>",
         {":2: a second default profile \"L::D\" (the first is \"Loaded::P\")",
          ":3: is_default_qos expects true or false, not \"maybe\""}},
        {"<qos_library>\n<qos_profile/>\n</qos_library>",
         {":1: <qos_library> needs a name", ":2: <qos_profile> needs a name"}},
        {"<qos_library name=\"L\" version=\"2\">\n<qos_profile name=\"A\" base=\"B\">\n"
         "<datawriter_qos base_name=\"L::B\" topic_filter=\"*\"/>\n</qos_profile></qos_library>",
         {":1: unknown attribute \"version\" of <qos_library>", ":2: unknown attribute \"base\" of <qos_profile>",
          ":3: unknown attribute \"base_name\" of <datawriter_qos>"}},
    };
    ASSERT_EQ(load("<qos_library name=\"Loaded\">\n<qos_profile name=\"P\" is_default_qos=\"true\"/>\n</qos_library>"),
              DDS_RETCODE_OK);
    const std::string before = savedXml();
    for (const auto &c : cases) {
        SCOPED_TRACE(c.document);
        const LogCapture log;
        EXPECT_EQ(load(c.document), DDS_RETCODE_ERROR);
        const std::string text = log.text();
        for (const std::string &error : c.errors)
            EXPECT_TRUE(log.contains("<string>" + error)) << error << "\n" << text;
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), static_cast<long>(c.errors.size())) << text;
        EXPECT_EQ(savedXml(), before);
        EXPECT_EQ(profilesOf("L"), std::vector<std::string>{});
    }
}

// ---------------------------------------------------------------------------
// The default profile

// Marked is_default_qos, on a base, with elements for log topics only.
const char *const kDefaultProfile = R"(<qos_library name="Defaults">
  <qos_profile name="Base"><datawriter_qos><ownership_strength><value>7</value></ownership_strength></datawriter_qos></qos_profile>
  <qos_profile name="Plant" base_name="Base" is_default_qos="true">
    <domain_participant_qos><participant_name><name>plant</name></participant_name></domain_participant_qos>
    <publisher_qos><partition><name><element>north</element></name></partition></publisher_qos>
    <subscriber_qos><partition><name><element>south</element></name></partition></subscriber_qos>
    <topic_qos topic_filter="logs/*"><durability><kind>TRANSIENT_LOCAL_DURABILITY_QOS</kind></durability></topic_qos>
    <datawriter_qos topic_filter="logs/*"><history><depth>8</depth></history></datawriter_qos>
    <datareader_qos><history><depth>9</depth></history></datareader_qos>
  </qos_profile>
</qos_library>)";

// What `pick` takes from the QoS that `get` reads of `entity`.
template <typename Qos, typename Entity, typename Pick>
auto qosOf(Entity *entity, DDS_ReturnCode_t (*get)(Entity *, Qos *), Pick pick) {
    OwnedQos<Qos> read;
    EXPECT_EQ(get(entity, &read.qos), DDS_RETCODE_OK);
    return pick(read.qos);
}
template <typename Qos, typename Pick>
auto qosOf(DDS_DomainParticipant *participant, const char *topicName,
           DDS_ReturnCode_t (*get)(DDS_DomainParticipant *, Qos *, const char *), Pick pick) {
    OwnedQos<Qos> read;
    EXPECT_EQ(get(participant, &read.qos, topicName), DDS_RETCODE_OK);
    return pick(read.qos);
}

const auto depth = [](const auto &qos) { return qos.history.depth; };
const auto durability = [](const auto &qos) { return qos.durability.kind; };
const auto partitions = [](const auto &qos) { return vexar_test::names(qos.partition); };
const auto strength = [](const auto &qos) { return qos.ownership_strength.value; };
const auto entityName = [](const auto &qos) { return std::get<0>(fields(qos.participant_name)); };

// The participant's defaults and what it creates with a null QoS.
TEST_F(QosProfiles, TheDefaultProfileUnderliesTheParticipantsDefaults) {
    const OwnedQos<DDS_DomainParticipantQos> own;
    DDS_DomainParticipant *participant =
        DDS_DomainParticipantFactory_create_participant(factory(), kParticipantDefaultsDomain, &own.qos, nullptr, 0);
    ASSERT_NE(participant, nullptr);
    const char *logs = "logs/app";
    EXPECT_EQ(qosOf(participant, logs, DDS_DomainParticipant_get_default_datawriter_qos_w_topic_name, depth), 1);
    ASSERT_EQ(load(kDefaultProfile), DDS_RETCODE_OK);

    const std::vector<std::string> north{"north"}, south{"south"};
    EXPECT_EQ(qosOf(participant, DDS_DomainParticipant_get_default_publisher_qos, partitions), north);
    EXPECT_EQ(qosOf(participant, DDS_DomainParticipant_get_default_subscriber_qos, partitions), south);
    EXPECT_EQ(qosOf(participant, DDS_DomainParticipant_get_default_topic_qos, durability), DDS_VOLATILE_DURABILITY_QOS);
    EXPECT_EQ(qosOf(participant, logs, DDS_DomainParticipant_get_default_topic_qos_w_topic_name, durability),
              DDS_TRANSIENT_LOCAL_DURABILITY_QOS);
    EXPECT_EQ(qosOf(participant, DDS_DomainParticipant_get_default_datawriter_qos, depth), 1);
    EXPECT_EQ(qosOf(participant, DDS_DomainParticipant_get_default_datawriter_qos, strength), 7) << "from the base";
    EXPECT_EQ(qosOf(participant, logs, DDS_DomainParticipant_get_default_datawriter_qos_w_topic_name, depth), 8);
    EXPECT_EQ(qosOf(participant, "other", DDS_DomainParticipant_get_default_datawriter_qos_w_topic_name, depth), 1);
    EXPECT_EQ(qosOf(participant, DDS_DomainParticipant_get_default_datareader_qos, depth), 9);

    using Type = vexar_test::TopicType<QTV_VX_LogMessage>;
    ASSERT_EQ(Type::registerType(participant, Type::registeredTypeName), DDS_RETCODE_OK);
    DDS_Topic *topic =
        DDS_DomainParticipant_create_topic(participant, logs, Type::registeredTypeName, nullptr, nullptr, 0);
    DDS_Publisher *publisher = DDS_DomainParticipant_create_publisher(participant, nullptr, nullptr, 0);
    DDS_Subscriber *subscriber = DDS_DomainParticipant_create_subscriber(participant, nullptr, nullptr, 0);
    ASSERT_TRUE(topic && publisher && subscriber);
    DDS_DataWriter *writer = DDS_Publisher_create_datawriter(publisher, topic, nullptr, nullptr, 0);
    DDS_DataReader *reader =
        DDS_Subscriber_create_datareader(subscriber, DDS_Topic_as_topicdescription(topic), nullptr, nullptr, 0);
    ASSERT_TRUE(writer && reader);
    EXPECT_EQ(qosOf(topic, DDS_Topic_get_qos, durability), DDS_TRANSIENT_LOCAL_DURABILITY_QOS);
    EXPECT_EQ(qosOf(publisher, DDS_Publisher_get_qos, partitions), north);
    EXPECT_EQ(qosOf(subscriber, DDS_Subscriber_get_qos, partitions), south);
    EXPECT_EQ(qosOf(writer, DDS_DataWriter_get_qos, depth), 8);
    EXPECT_EQ(qosOf(reader, DDS_DataReader_get_qos, depth), 9);

    ASSERT_EQ(DDS_DomainParticipantFactory_unload_xml(factory()), DDS_RETCODE_OK);
    EXPECT_EQ(qosOf(participant, logs, DDS_DomainParticipant_get_default_datawriter_qos_w_topic_name, depth), 1);
    EXPECT_EQ(DDS_DomainParticipant_delete_contained_entities(participant), DDS_RETCODE_OK);
    EXPECT_EQ(DDS_DomainParticipantFactory_delete_participant(factory(), participant), DDS_RETCODE_OK);
}

// Last in this file: once the application sets a default participant QoS,
// it stays for the rest of the process.
TEST_F(QosProfiles, TheDefaultProfileGivesTheParticipantQosUntilTheApplicationSetsOne) {
    DDS_DomainParticipantFactory *self = factory();
    EXPECT_EQ(qosOf(self, DDS_DomainParticipantFactory_get_default_participant_qos, entityName), "(null)");
    ASSERT_EQ(load(kDefaultProfile), DDS_RETCODE_OK);
    EXPECT_EQ(qosOf(self, DDS_DomainParticipantFactory_get_default_participant_qos, entityName), "plant");
    DDS_DomainParticipant *participant =
        DDS_DomainParticipantFactory_create_participant(self, kFactoryDefaultDomain, nullptr, nullptr, 0);
    ASSERT_NE(participant, nullptr);
    EXPECT_EQ(qosOf(participant, DDS_DomainParticipant_get_qos, entityName), "plant");
    EXPECT_EQ(DDS_DomainParticipantFactory_delete_participant(self, participant), DDS_RETCODE_OK);

    OwnedQos<DDS_DomainParticipantQos> own;
    own.qos.participant_name.name = DDS_String_dup("own");
    ASSERT_EQ(DDS_DomainParticipantFactory_set_default_participant_qos(self, &own.qos), DDS_RETCODE_OK);
    EXPECT_EQ(qosOf(self, DDS_DomainParticipantFactory_get_default_participant_qos, entityName), "own");
}

}  // namespace
