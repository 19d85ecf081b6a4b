// The plugin records of the topic types: what their slots do, the endpoint
// data built on attach, and the printed form of a sample.
#include <gtest/gtest.h>

#include <string>

#include "support/captured_stdout.h"
#include "support/cdr_test_support.hpp"

namespace {

using namespace vexar_test;

using LogPlugin = std::unique_ptr<OBLX_TypePlugin, Releaser<QTV_VX_LogMessagePlugin_delete>>;

TEST(TypePluginRecord, SlotsReachTheTypesFunctionsThroughVoidPointers) {
    LogPlugin plugin(QTV_VX_LogMessagePlugin_new());
    ASSERT_NE(plugin, nullptr);
    EXPECT_EQ(plugin->get_key_kind(), OBLX_TYPEPLUGIN_USER_KEY);
    OBLX_TypePlugin *unkeyed = QTV_VX_ADMIN_CommandRequestPlugin_new();
    EXPECT_EQ(unkeyed->get_key_kind(), OBLX_TYPEPLUGIN_NO_KEY);
    QTV_VX_ADMIN_CommandRequestPlugin_delete(unkeyed);

    // Serialize through the record, read back through deserialize (whose
    // sample travels by address) and compare.
    Filled<QTV_VX_LogMessage> sent;
    Owned<QTV_VX_LogMessage> received;
    Bytes buffer(plugin->get_serialized_sample_size(nullptr, DDS_BOOLEAN_TRUE, 1, 0, sent.get()));
    OBLX_CdrStream stream;
    OBLX_CdrStream_init(&stream, buffer.data(), static_cast<DDS_UnsignedLong>(buffer.size()));
    ASSERT_TRUE(plugin->serialize(nullptr, sent.get(), &stream, DDS_BOOLEAN_TRUE, 1, DDS_BOOLEAN_TRUE, nullptr));
    EXPECT_EQ(buffer, serialized(sent.sample, 1));
    OBLX_CdrStream_init(&stream, buffer.data(), static_cast<DDS_UnsignedLong>(buffer.size()));
    void *target = received.get();
    ASSERT_TRUE(plugin->deserialize(nullptr, &target, nullptr, &stream, DDS_BOOLEAN_TRUE, DDS_BOOLEAN_TRUE, nullptr));
    EXPECT_EQ(target, received.get());
    EXPECT_EQ(serialized(received.sample, 1), buffer);
}

TEST(TypePluginRecord, WriterEndpointOfAKeyedTypeHasStreamAndMaxSize) {
    LogPlugin plugin(QTV_VX_LogMessagePlugin_new());
    OBLX_TypePluginParticipantData *participant = plugin->on_participant_attached(nullptr);
    ASSERT_NE(participant, nullptr);
    OBLX_TypePluginEndpointData *writer = plugin->on_endpoint_attached(participant, OBLX_TYPEPLUGIN_ENDPOINT_WRITER);
    OBLX_TypePluginEndpointData *reader = plugin->on_endpoint_attached(participant, OBLX_TYPEPLUGIN_ENDPOINT_READER);
    ASSERT_NE(writer, nullptr);
    ASSERT_NE(reader, nullptr);

    EXPECT_EQ(OBLX_TypePluginDefaultEndpointData_getKind(writer), OBLX_TYPEPLUGIN_ENDPOINT_WRITER);
    EXPECT_EQ(OBLX_TypePluginDefaultEndpointData_getMaxSerializedSampleSize(writer), 4696u);
    EXPECT_EQ(OBLX_TypePluginDefaultEndpointData_getMaxSerializedSampleSize(reader), 0u);
    OBLX_CdrStream *keyStream = OBLX_TypePluginDefaultEndpointData_getKeyHashStream(writer);
    ASSERT_NE(keyStream, nullptr);
    EXPECT_EQ(OBLX_CdrStream_getLength(keyStream), plugin->get_serialized_key_max_size(writer, 0, 0, 0));

    // Samples come from the support functions and go back to a pool.
    auto *sample = static_cast<QTV_VX_LogMessage *>(plugin->get_sample(writer));
    ASSERT_NE(sample, nullptr);
    setText(sample->message, std::string(QTV_VX_LOG_MESSAGE_MESSAGE_MAX_LENGTH, 'm'));
    plugin->return_sample(writer, sample);
    EXPECT_EQ(plugin->get_sample(writer), sample);
    plugin->return_sample(writer, sample);
    void *created = plugin->create_sample(reader);
    plugin->destroy_sample(reader, created);
    plugin->return_key(reader, plugin->get_key(reader));

    plugin->on_endpoint_detached(writer);
    plugin->on_endpoint_detached(reader);
    plugin->on_participant_detached(participant);
}

TEST(TypePluginSupport, PrintDataShowsOneMemberALine) {
    Filled<QTV_VX_LogMessage> message;
    std::string printed = capturedStdout([&] { QTV_VX_LogMessagePluginSupport_print_data(message.get(), "log", 1); });
    EXPECT_EQ(printed, "   log:\n"
                       "      hostAndAppId:\n"
                       "         rtps_host_id: 16909060\n"
                       "         rtps_app_id: -2\n"
                       "      level: 300\n"
                       "      category: \"com.example\"\n"
                       "      message: \"disk almost full\"\n");

    // Unions show the discriminator and the branch it selects; sequences
    // and arrays name their elements.
    Filled<QTV_VX_ADMIN_CommandRequest> request;
    printed = capturedStdout([&] { QTV_VX_ADMIN_CommandRequestPluginSupport_print_data(request.get(), nullptr, 0); });
    EXPECT_NE(printed.find("command:\n"
                           "   _d: QTV_VX_SET_QTV_LOGGER_LEVEL\n"
                           "   categoryAndVerbosity[0]:\n"
                           "      category: QTV_VX_OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION\n"),
              std::string::npos)
        << printed;
    EXPECT_EQ(printed.find("filterLevel"), std::string::npos);
}

}  // namespace
