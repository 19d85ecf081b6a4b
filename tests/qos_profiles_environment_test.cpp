// Files named in DDS_QOS_PROFILES are loaded before the factory's first
// profile look-up, once per process. A program of its own, so that its test
// sets the variable before any look-up of the process.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "platform/dds/domain_participant_factory.h"
#include "platform/dds/qos_records.hpp"
#include "support/log_capture.h"
#include "support/qos_fields.hpp"
#include "support/temp_file.hpp"

namespace {

using vexar::dds::OwnedQos;
using vexar_test::TempFile;

// The missing file and the refused one are reported; the good one loads.
// The first look-up here is of a default, which the good file's default
// profile gives.
TEST(QosProfilesFromEnvironment, NamedFilesAreLoadedBeforeTheFirstLookUp) {
    const TempFile good(
        "<qos_library name=\"Env\">\n<qos_profile name=\"A\" is_default_qos=\"true\">\n"
        "<domain_participant_qos><participant_name><name>env</name></participant_name></domain_participant_qos>\n"
        "<datawriter_qos><history><depth>9</depth></history></datawriter_qos>\n</qos_profile>\n"
        "<qos_profile name=\"B\"/>\n</qos_library>\n");
    const TempFile refused(
        "<qos_library name=\"Bad\">\n<qos_profile name=\"X\" base_name=\"Nope\"/>\n</qos_library>\n");
    const std::string list =
        std::string(" /nonexistent/vexar-profiles.xml;") + refused.path() + "; " + good.path() + ";";
    ASSERT_EQ(setenv("DDS_QOS_PROFILES", list.c_str(), 1), 0);
    const vexar_test::LogCapture log;
    DDS_DomainParticipantFactory *factory = DDS_DomainParticipantFactory_get_instance();

    OwnedQos<DDS_DomainParticipantQos> participant;
    ASSERT_EQ(DDS_DomainParticipantFactory_get_default_participant_qos(factory, &participant.qos), DDS_RETCODE_OK);
    EXPECT_STREQ(participant.qos.participant_name.name, "env");
    OwnedQos<DDS_DataWriterQos> writer;
    ASSERT_EQ(DDS_DomainParticipantFactory_get_datawriter_qos_from_profile(factory, &writer.qos, "Env", "A"),
              DDS_RETCODE_OK);
    EXPECT_EQ(writer.qos.history.depth, 9);
    EXPECT_TRUE(log.contains("fopen /nonexistent/vexar-profiles.xml: No such file or directory")) << log.text();
    EXPECT_TRUE(log.contains(std::string(refused.path()) + ":2: unknown base profile \"Nope\" of \"Bad::X\""))
        << log.text();

    DDS_StringSeq names = DDS_SEQUENCE_INITIALIZER;
    ASSERT_EQ(DDS_DomainParticipantFactory_get_qos_profiles(factory, &names, "Env"), DDS_RETCODE_OK);
    EXPECT_EQ(vexar_test::strings(names), (std::vector<std::string>{"A", "B"}));
    ASSERT_EQ(DDS_DomainParticipantFactory_get_qos_profiles(factory, &names, "Bad"), DDS_RETCODE_OK);
    EXPECT_EQ(DDS_StringSeq_get_length(&names), 0);

    // Once per process: what is unloaded stays unloaded.
    ASSERT_EQ(DDS_DomainParticipantFactory_unload_xml(factory), DDS_RETCODE_OK);
    ASSERT_EQ(DDS_DomainParticipantFactory_get_qos_profiles(factory, &names, "Env"), DDS_RETCODE_OK);
    EXPECT_EQ(DDS_StringSeq_get_length(&names), 0);
    DDS_StringSeq_finalize(&names);
}

}  // namespace
