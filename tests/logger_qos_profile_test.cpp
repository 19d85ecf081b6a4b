// The logger on a QoS profile from a loaded document: its log writer takes
// the history that the profile names, and keeps its own reliability and
// durability whatever the profile says; a profile that is not loaded is
// reported once and the defaults hold.
#include "platform/dds/entity.hpp"  // first (see there): Cyclone's QoS of the writer

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <tuple>

#include "platform/dds/data_writer.h"
#include "platform/dds/domain_participant_factory.h"
#include "support/captured_stdout.h"
#include "support/domains.h"
#include "support/running_logger.hpp"
#include "type/vexarSupport.h"
#include "vexar/DDSEntities.h"

namespace {

using vexar_test::LoggerSession;

constexpr int kProfileDomain = vexar_test::domains::kLoggerBase + 35;
constexpr int kMissingProfileDomain = vexar_test::domains::kLoggerBase + 36;
constexpr const char *kMissingWarning = "QoS Library and Profile cannot be found, using default QoS";

// Both profiles ask for what the logger does not give up.
const char *const kLogProfiles = R"(<qos_library name="Logs">
  <qos_profile name="KeepAll">
    <datawriter_qos topic_filter="qtv/vexar">
      <history><kind>KEEP_ALL_HISTORY_QOS</kind></history>
      <reliability><kind>BEST_EFFORT_RELIABILITY_QOS</kind></reliability>
      <durability><kind>VOLATILE_DURABILITY_QOS</kind></durability>
    </datawriter_qos>
  </qos_profile>
  <qos_profile name="Last50">
    <datawriter_qos>
      <history><kind>KEEP_LAST_HISTORY_QOS</kind><depth>50</depth></history>
      <reliability><kind>BEST_EFFORT_RELIABILITY_QOS</kind></reliability>
      <durability><kind>VOLATILE_DURABILITY_QOS</kind></durability>
    </datawriter_qos>
  </qos_profile>
</qos_library>)";

// History kind, depth (0 for KEEP_ALL, which has none), reliability kind and
// durability kind; OMG and Cyclone number these kinds alike.
using WriterPolicies = std::tuple<int, int, int, int>;

WriterPolicies policiesOf(const DDS_DataWriterQos &qos) {
    const bool keepAll = qos.history.kind == DDS_KEEP_ALL_HISTORY_QOS;
    return {qos.history.kind, keepAll ? 0 : qos.history.depth, qos.reliability.kind, qos.durability.kind};
}

WriterPolicies cyclonePoliciesOf(const DDS_DataWriter *writer) {
    dds_qos_t *qos = dds_create_qos();
    EXPECT_EQ(dds_get_qos(writer->handle, qos), 0);
    dds_history_kind_t history = DDS_HISTORY_KEEP_LAST;
    int32_t depth = 0;
    dds_reliability_kind_t reliability = DDS_RELIABILITY_BEST_EFFORT;
    dds_duration_t blocking = 0;
    dds_durability_kind_t durability = DDS_DURABILITY_VOLATILE;
    EXPECT_TRUE(dds_qget_history(qos, &history, &depth));
    EXPECT_TRUE(dds_qget_reliability(qos, &reliability, &blocking));
    EXPECT_TRUE(dds_qget_durability(qos, &durability));
    dds_delete_qos(qos);
    return {history, history == DDS_HISTORY_KEEP_ALL ? 0 : depth, reliability, durability};
}

// What the logger asks for its log writer, what our writer reports and what
// Cyclone's writer holds.
void expectLogWriter(const QTV_VX_Vexar &logger, const WriterPolicies &expected) {
    QTV_VX_DDSEntities *entities = logger._ddsEntities;
    DDS_DataWriterQos qos = DDS_DataWriterQos_INITIALIZER;
    ASSERT_EQ(QTV_VX_DDSEntities_getDataWriterQos(entities, &qos, QTV_VX_LOG_TOPIC_NAME), DDS_RETCODE_OK);
    EXPECT_EQ(policiesOf(qos), expected) << "asked for";
    DDS_DataWriter *writer =
        QTV_VX_LogMessageDataWriter_as_datawriter(QTV_VX_DDSEntities_getLogMessageWriter(entities));
    ASSERT_EQ(DDS_DataWriter_get_qos(writer, &qos), DDS_RETCODE_OK);
    EXPECT_EQ(policiesOf(qos), expected) << "the writer's";
    DDS_DataWriterQos_finalize(&qos);
    EXPECT_EQ(cyclonePoliciesOf(writer), expected) << "Cyclone's";
}

std::size_t countOf(const std::string &text, const std::string &fragment) {
    std::size_t count = 0;
    for (std::size_t at = text.find(fragment); at != std::string::npos; at = text.find(fragment, at + 1)) ++count;
    return count;
}

// Starts the logger on `profile` of the library "Logs" and checks its log
// writer; returns what the start printed.
std::string startOnProfile(int domainId, const char *profile, const WriterPolicies &expected) {
    vexar_test::OptionsPtr options = vexar_test::loggerOptions(domainId);
    QTV_VX_Options_setQosLibrary(options.get(), "Logs");
    QTV_VX_Options_setQosProfile(options.get(), profile);
    std::optional<LoggerSession> session;
    const std::string printed = vexar_test::capturedStdout([&] { session.emplace(std::move(options)); });
    if (session->logger() != nullptr) expectLogWriter(*session->logger(), expected);
    return printed;
}

class LoggerQosProfile : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(
            DDS_DomainParticipantFactory_load_xml_string(DDS_DomainParticipantFactory_get_instance(), kLogProfiles),
            DDS_RETCODE_OK);
    }
    void TearDown() override {
        EXPECT_EQ(DDS_DomainParticipantFactory_unload_xml(DDS_DomainParticipantFactory_get_instance()), DDS_RETCODE_OK);
    }
};

TEST_F(LoggerQosProfile, TheLogWriterTakesTheProfilesHistoryAndKeepsItsReliabilityAndDurability) {
    const struct {
        const char *profile;
        WriterPolicies expected;
    } cases[] = {
        {"KeepAll", {DDS_KEEP_ALL_HISTORY_QOS, 0, DDS_RELIABLE_RELIABILITY_QOS, DDS_TRANSIENT_LOCAL_DURABILITY_QOS}},
        {"Last50", {DDS_KEEP_LAST_HISTORY_QOS, 50, DDS_RELIABLE_RELIABILITY_QOS, DDS_TRANSIENT_LOCAL_DURABILITY_QOS}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.profile);
        EXPECT_EQ(countOf(startOnProfile(kProfileDomain, c.profile, c.expected), kMissingWarning), 0u);
    }
}

TEST_F(LoggerQosProfile, AMissingProfileIsReportedOnceAndTheDefaultsHold) {
    const WriterPolicies defaults{DDS_KEEP_LAST_HISTORY_QOS, 10, DDS_RELIABLE_RELIABILITY_QOS,
                                  DDS_TRANSIENT_LOCAL_DURABILITY_QOS};
    const std::string printed = startOnProfile(kMissingProfileDomain, "Missing", defaults);
    EXPECT_EQ(countOf(printed, kMissingWarning), 1u) << printed;
}

}  // namespace
