// The logger's DDS entities, built for a logger record made by hand: what
// exists after creation and with which QoS; unwinding after a failed step;
// a lent participant and its topics left alone.
#include <gtest/gtest.h>

#include <errno.h>
#include <unistd.h>

#include <string>

#include "platform/dds/cyclone.hpp"
#include "platform/dds/data_reader.h"
#include "platform/dds/data_writer.h"
#include "support/captured_stdout.h"
#include "support/domains.h"
#include "type/vexarPlugin.h"
#include "type/vexarSupport.h"
#include "vexar/DDSEntities.h"

namespace {

using vexar_test::capturedStdout;

constexpr int kDomain = vexar_test::domains::kLoggerBase + 15;
constexpr int kLentParticipantDomain = vexar_test::domains::kLoggerBase + 16;

// What creating the entities reads of a logger: its options and State.
class HandBuiltLogger {
public:
    explicit HandBuiltLogger(DDS_Long remoteAdministration = 1, DDS_DomainParticipant *participant = nullptr) {
        QTV_VX_ADMIN_State_initialize(&state_);
        QTV_VX_Options_setDomainId(options_, kDomain);
        QTV_VX_Options_setRemoteAdministrationEnabled(options_, remoteAdministration);
        if (participant != nullptr) QTV_VX_Options_setDomainParticipant(options_, participant);
        logger_.options = options_;
        logger_.state = &state_;
    }
    ~HandBuiltLogger() {
        QTV_VX_DDSEntities_destroy(logger_._ddsEntities);
        QTV_VX_ADMIN_State_finalize(&state_);
        QTV_VX_Options_delete(options_);
    }
    HandBuiltLogger(const HandBuiltLogger &) = delete;
    HandBuiltLogger &operator=(const HandBuiltLogger &) = delete;

    QTV_VX_Options *options() { return options_; }
    const QTV_VX_ADMIN_State &state() const { return state_; }
    QTV_VX_DDSEntities *createEntities() { return logger_._ddsEntities = QTV_VX_DDSEntities_create(&logger_); }

private:
    QTV_VX_Options *options_ = QTV_VX_Options_createDefault();
    QTV_VX_ADMIN_State state_{};
    QTV_VX_Vexar logger_{};
};

// A topic of log messages as an application makes it, under any name.
DDS_Topic *applicationLogTopic(DDS_DomainParticipant *participant, const char *topicName) {
    OBLX_TypePlugin *plugin = QTV_VX_LogMessagePlugin_new();
    EXPECT_EQ(DDS_DomainParticipant_register_type(participant, "com::qtv::vx::LogMessage", plugin, nullptr),
              DDS_RETCODE_OK);
    QTV_VX_LogMessagePlugin_delete(plugin);
    return DDS_DomainParticipant_create_topic(participant, topicName, "com::qtv::vx::LogMessage", nullptr, nullptr, 0);
}

DDS_Topic *lookupTopic(DDS_DomainParticipant *participant, const char *name) {
    DDS_TopicDescription *description = DDS_DomainParticipant_lookup_topicdescription(participant, name);
    return description != nullptr ? DDS_Topic_narrow(description) : nullptr;
}

TEST(LoggerEntities, CreatesEveryEntityOnItsTopicWithItsRegisteredTypeName) {
    HandBuiltLogger logger;
    QTV_VX_Options_setApplicationKind(logger.options(), "shipyard");
    QTV_VX_DDSEntities_gInitialStateSent = 1;
    QTV_VX_DDSEntities *entities = logger.createEntities();
    ASSERT_NE(entities, nullptr);
    EXPECT_EQ(QTV_VX_DDSEntities_hasInitialStateBeenSent(entities), 0) << "cleared by each creation";
    DDS_DomainParticipant *participant = QTV_VX_DDSEntities_getDomainParticipant(entities);

    const struct {
        const char *name, *typeName;
        const DDS_Topic *topic;
    } topics[] = {
        {"qtv/vexar", "com::qtv::vx::LogMessage", entities->logTopic},
        {"qtv/vexar/administration/state", "com::qtv::vx::admin::State", entities->stateTopic},
        {"qtv/vexar/administration/command_request", "com::qtv::vx::admin::CommandRequest",
         entities->commandRequestTopic},
        {"qtv/vexar/administration/command_response", "com::qtv::vx::admin::CommandResponse",
         entities->commandResponseTopic},
    };
    for (int slot = 0; slot < QTV_VX_TOPIC_COUNT; ++slot) {
        DDS_Topic *topic = lookupTopic(participant, topics[slot].name);
        ASSERT_EQ(topic, topics[slot].topic) << topics[slot].name;
        EXPECT_STREQ(DDS_TopicDescription_get_type_name(DDS_Topic_as_topicdescription(topic)), topics[slot].typeName);
    }

    DDS_DomainParticipantQos participantQos = DDS_DomainParticipantQos_INITIALIZER;
    ASSERT_EQ(DDS_DomainParticipant_get_qos(participant, &participantQos), DDS_RETCODE_OK);
    EXPECT_STREQ(participantQos.participant_name.name, "shipyard");
    // The process is announced in the user data, so that two applications
    // of one kind can be told apart.
    const std::string announced(
        reinterpret_cast<const char *>(DDS_OctetSeq_get_contiguous_buffer(&participantQos.user_data.value)),
        static_cast<std::size_t>(DDS_OctetSeq_get_length(&participantQos.user_data.value)));
    EXPECT_TRUE(
        announced.starts_with(std::string(QTV_VX_IDENTITY_USER_DATA_PREFIX) + program_invocation_short_name + "@"))
        << announced;
    EXPECT_TRUE(announced.ends_with("[" + std::to_string(getpid()) + "]")) << announced;
    EXPECT_EQ(entities->rtpsAppId, participantQos.wire_protocol.rtps_app_id);
    EXPECT_EQ(logger.state().hostAndAppId.rtps_app_id, entities->rtpsAppId) << "the State's key, known at once";

    // Discovery announces the kind and that identity under the same ids.
    struct Seen {
        DDS_Long host, app;
        std::string name, userData;
    } seen{entities->rtpsHostId, entities->rtpsAppId, "", ""};
    auto visit = [](void *context, const OBLX_DiscoveredParticipant *found) {
        auto *wanted = static_cast<Seen *>(context);
        if (found->rtps_host_id != wanted->host || found->rtps_app_id != wanted->app) return;
        if (found->name != nullptr) wanted->name = found->name;
        wanted->userData.assign(reinterpret_cast<const char *>(found->user_data),
                                static_cast<std::size_t>(found->user_data_length));
    };
    ASSERT_EQ(OBLX_DomainParticipant_visit_discovered_participants(participant, visit, &seen), DDS_RETCODE_OK);
    EXPECT_EQ(seen.name, "shipyard");
    EXPECT_EQ(seen.userData, announced);
    DDS_DomainParticipantQos_finalize(&participantQos);

    // Requests are read through the filter (what it passes is tested end to end).
    DDS_DataReader *reader = QTV_VX_ADMIN_CommandRequestDataReader_as_datareader(entities->commandRequestReader);
    EXPECT_EQ(DDS_DataReader_get_topicdescription(reader),
              DDS_ContentFilteredTopic_as_topicdescription(entities->commandRequestContentFilteredTopic));
    DDS_DataReaderQos readerQos = DDS_DataReaderQos_INITIALIZER;
    ASSERT_EQ(DDS_DataReader_get_qos(reader, &readerQos), DDS_RETCODE_OK);
    EXPECT_EQ(readerQos.reliability.kind, DDS_RELIABLE_RELIABILITY_QOS);
    EXPECT_EQ(readerQos.history.depth, 10);
    EXPECT_TRUE(readerQos.protocol.vendor_specific_entity);
}

// A missing profile is only a warning.
TEST(LoggerEntities, WithoutRemoteAdministrationHasNoCommandSideAndDefaultQos) {
    HandBuiltLogger logger(0);
    QTV_VX_Options_setQosLibrary(logger.options(), "VexarLibrary");
    QTV_VX_Options_setQosProfile(logger.options(), "Missing");
    QTV_VX_DDSEntities *entities = nullptr;
    std::string printed = capturedStdout([&] { entities = logger.createEntities(); });
    ASSERT_NE(entities, nullptr);
    EXPECT_EQ(printed,
              "VX Warning: QTV_VX_DDSEntities_create: QoS Library and Profile cannot be found, using default QoS\n");
    // No command reader or response writer can exist without their topics.
    for (const char *name : {QTV_VX_COMMAND_REQUEST_TOPIC_NAME, QTV_VX_COMMAND_REQUEST_FILTERED_TOPIC_NAME,
                             QTV_VX_COMMAND_RESPONSE_TOPIC_NAME}) {
        EXPECT_EQ(DDS_DomainParticipant_lookup_topicdescription(entities->domainParticipant, name), nullptr) << name;
    }
    // The per-topic values go by the topic's name in any case.
    DDS_DataWriterQos writer = DDS_DataWriterQos_INITIALIZER;
    ASSERT_EQ(QTV_VX_DDSEntities_getDataWriterQos(entities, &writer, "QTV/Vexar"), DDS_RETCODE_OK);
    EXPECT_EQ(writer.reliability.kind, DDS_RELIABLE_RELIABILITY_QOS);
    EXPECT_EQ(writer.durability.kind, DDS_TRANSIENT_LOCAL_DURABILITY_QOS);
    EXPECT_EQ(writer.history.depth, 10);
}

// An application lends its own Cyclone participant, with topics on it. A
// State topic of another type there makes the State writer fail: what was
// made before it goes, the application's topic stays. Without it, the
// logger reuses the application's log topic; it leaves that topic and the
// participant behind.
TEST(LoggerEntities, OnALentParticipantAFailedStepUnwindsAndTheApplicationsTopicsStay) {
    dds_entity_t cycloneParticipant = dds_create_participant(kLentParticipantDomain, nullptr, nullptr);
    DDS_DomainParticipant *participant = OBLX_DomainParticipant_adoptCyclone(cycloneParticipant);
    ASSERT_NE(participant, nullptr);
    DDS_Topic *wrongStateTopic = applicationLogTopic(participant, QTV_VX_STATE_TOPIC_NAME);
    ASSERT_NE(wrongStateTopic, nullptr);
    {
        HandBuiltLogger logger(1, participant);
        std::string printed = capturedStdout([&] { EXPECT_EQ(logger.createEntities(), nullptr); });
        EXPECT_NE(printed.find("VX Error: QTV_VX_DDSEntities_create: Unable to create State DataWriter\n"),
                  std::string::npos);
        EXPECT_EQ(DDS_DomainParticipant_lookup_topicdescription(participant, QTV_VX_LOG_TOPIC_NAME), nullptr);
    }
    EXPECT_EQ(DDS_DomainParticipant_delete_topic(participant, wrongStateTopic), DDS_RETCODE_OK);

    DDS_Topic *logTopic = applicationLogTopic(participant, QTV_VX_LOG_TOPIC_NAME);
    ASSERT_NE(logTopic, nullptr);
    {
        HandBuiltLogger logger(1, participant);
        QTV_VX_DDSEntities *entities = logger.createEntities();
        ASSERT_NE(entities, nullptr);
        EXPECT_EQ(entities->participantCreatedLocally, 0);
        EXPECT_EQ(entities->logTopic, logTopic);
        EXPECT_EQ(entities->locallyCreatedTopics[QTV_VX_LOG_TOPIC_SLOT], nullptr);
        EXPECT_NE(entities->locallyCreatedTopics[QTV_VX_STATE_TOPIC_SLOT], nullptr);
    }
    EXPECT_EQ(lookupTopic(participant, QTV_VX_LOG_TOPIC_NAME), logTopic);
    EXPECT_EQ(DDS_DomainParticipant_lookup_topicdescription(participant, QTV_VX_STATE_TOPIC_NAME), nullptr);
    EXPECT_EQ(DDS_DomainParticipant_lookup_topicdescription(participant, QTV_VX_COMMAND_REQUEST_FILTERED_TOPIC_NAME),
              nullptr);

    EXPECT_EQ(DDS_DomainParticipant_delete_topic(participant, logTopic), DDS_RETCODE_OK);
    // Only an empty participant can be deleted: no publisher was left behind.
    EXPECT_EQ(DDS_DomainParticipantFactory_delete_participant(DDS_DomainParticipantFactory_get_instance(), participant),
              DDS_RETCODE_OK);
    EXPECT_GE(dds_delete(cycloneParticipant), 0) << "the application's participant lived on";
}

}  // namespace
