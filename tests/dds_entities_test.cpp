// The DDS entity layer on Cyclone: participants (created and adopted),
// type registration, topics, content-filtered topics and deletion.
#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/dds/cyclone.hpp"
#include "support/dds_bridge.hpp"
#include "support/domains.h"
#include "support/log_capture.h"

namespace {

using namespace vexar_test;
using Request = QTV_VX_ADMIN_CommandRequest;

constexpr const char *kLogTypeName = TopicType<QTV_VX_LogMessage>::registeredTypeName;

constexpr int kDomain = vexar_test::domains::kBridgeBase + 20;  // .. + 29

DDS_DomainParticipantFactory *factory() { return DDS_DomainParticipantFactory_get_instance(); }

TEST(DdsParticipant, MisuseIsReportedWithTheOmgCode) {
    LogCapture log;
    DDS_DomainParticipantListener listener{nullptr};
    EXPECT_EQ(DDS_DomainParticipantFactory_create_participant(factory(), -1, nullptr, nullptr, 0), nullptr);
    EXPECT_EQ(DDS_DomainParticipantFactory_create_participant(factory(), kDomain, nullptr, &listener,
                                                              DDS_DATA_AVAILABLE_STATUS),
              nullptr);
    EXPECT_TRUE(log.contains("not supported by this middleware"));
    // A record of another kind is refused, not misread.
    BridgeParticipant participant(kDomain + 2);
    auto *publisherAsParticipant = reinterpret_cast<DDS_DomainParticipant *>(participant.publisher());
    EXPECT_EQ(DDS_DomainParticipant_create_subscriber(publisherAsParticipant, nullptr, nullptr, 0), nullptr);
    EXPECT_TRUE(log.contains("DDS_DomainParticipant_create_subscriber: bad parameter: self"));
    EXPECT_EQ(DDS_DomainParticipantFactory_delete_participant(factory(), participant.get()),
              DDS_RETCODE_PRECONDITION_NOT_MET)
        << "it still contains its publisher and subscriber";
    EXPECT_EQ(OBLX_DomainParticipant_adoptCyclone(123456), nullptr);
    EXPECT_TRUE(log.contains("OBLX_DomainParticipant_adoptCyclone: bad parameter: cyclone_participant"));
}

TEST(DdsParticipant, AdoptedCycloneParticipantOutlivesItsRecordAndIsLeftClean) {
    ASSERT_NE(std::getenv("CYCLONEDDS_URI"), nullptr) << "run under ctest or source scripts/env.sh";
    const dds_entity_t cyclone = dds_create_participant(kDomain + 4, nullptr, nullptr);
    ASSERT_GT(cyclone, 0) << dds_strretcode(cyclone);
    DDS_DomainParticipant *adopted = OBLX_DomainParticipant_adoptCyclone(cyclone);
    ASSERT_NE(adopted, nullptr);
    EXPECT_TRUE(OBLX_DomainParticipant_is_adopted(adopted));
    EXPECT_EQ(DDS_DomainParticipant_get_domain_id(adopted), kDomain + 4);

    // Everything the bridge makes in it, then deletes, leaves no Cyclone child.
    ASSERT_EQ(TopicType<Request>::registerType(adopted, "requests"), DDS_RETCODE_OK);
    DDS_Topic *topic = DDS_DomainParticipant_create_topic(adopted, "requests", "requests", nullptr, nullptr, 0);
    ASSERT_NE(topic, nullptr);
    DDS_ContentFilteredTopic *filtered =
        DDS_DomainParticipant_create_contentfilteredtopic(adopted, "filtered", topic, "invocation > 3", nullptr);
    ASSERT_NE(filtered, nullptr);
    DDS_Publisher *publisher = DDS_DomainParticipant_create_publisher(adopted, nullptr, nullptr, 0);
    DDS_Subscriber *subscriber = DDS_DomainParticipant_create_subscriber(adopted, nullptr, nullptr, 0);
    ASSERT_NE(DDS_Publisher_create_datawriter(publisher, topic, nullptr, nullptr, 0), nullptr);
    DDS_DataReader *reader = DDS_Subscriber_create_datareader(
        subscriber, DDS_ContentFilteredTopic_as_topicdescription(filtered), nullptr, nullptr, 0);
    ASSERT_NE(
        DDS_DataReader_create_readcondition(reader, DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE),
        nullptr);
    EXPECT_GT(dds_get_children(cyclone, nullptr, 0), 0);

    EXPECT_EQ(DDS_DomainParticipant_delete_contained_entities(adopted), DDS_RETCODE_OK);
    EXPECT_EQ(dds_get_children(cyclone, nullptr, 0), 0);
    EXPECT_EQ(DDS_DomainParticipantFactory_delete_participant(factory(), adopted), DDS_RETCODE_OK);
    EXPECT_EQ(dds_get_participant(cyclone), cyclone) << "the application's participant must survive";
    EXPECT_EQ(dds_delete(cyclone), 0);
}

TEST(DdsTypes, RegistrationKeepsItsOwnPluginAndGuardsItsTopics) {
    BridgeParticipant participant(kDomain + 5);
    LogCapture log;
    OBLX_TypePlugin *logPlugin = QTV_VX_LogMessagePlugin_new();
    OBLX_TypePlugin *statePlugin = QTV_VX_ADMIN_StatePlugin_new();
    EXPECT_EQ(DDS_DomainParticipant_register_type(participant.get(), kLogTypeName, logPlugin, nullptr), DDS_RETCODE_OK);
    EXPECT_EQ(DDS_DomainParticipant_register_type(participant.get(), kLogTypeName, logPlugin, nullptr), DDS_RETCODE_OK);
    EXPECT_EQ(DDS_DomainParticipant_register_type(participant.get(), kLogTypeName, statePlugin, nullptr),
              DDS_RETCODE_PRECONDITION_NOT_MET);
    QTV_VX_LogMessagePlugin_delete(logPlugin);  // the participant has its own copy
    QTV_VX_ADMIN_StatePlugin_delete(statePlugin);

    EXPECT_EQ(DDS_DomainParticipant_create_topic(participant.get(), "t", "never::Registered", nullptr, nullptr, 0),
              nullptr);
    DDS_Topic *topic = DDS_DomainParticipant_create_topic(participant.get(), "t", kLogTypeName, nullptr, nullptr, 0);
    ASSERT_NE(topic, nullptr);
    EXPECT_STREQ(DDS_TopicDescription_get_type_name(DDS_Topic_as_topicdescription(topic)), kLogTypeName);
    EXPECT_EQ(DDS_DomainParticipant_unregister_type(participant.get(), kLogTypeName), DDS_RETCODE_PRECONDITION_NOT_MET);
    EXPECT_EQ(DDS_DomainParticipant_delete_topic(participant.get(), topic), DDS_RETCODE_OK);
    EXPECT_EQ(DDS_DomainParticipant_unregister_type(participant.get(), kLogTypeName), DDS_RETCODE_OK);
    EXPECT_EQ(DDS_DomainParticipant_unregister_type(participant.get(), kLogTypeName), DDS_RETCODE_BAD_PARAMETER);
}

TEST(DdsTopics, AreFoundByNameNarrowedByKindAndBadFiltersRefused) {
    BridgeParticipant participant(kDomain + 6);
    EXPECT_EQ(DDS_DomainParticipant_lookup_topicdescription(participant.get(), "qtv/vexar"), nullptr);
    DDS_Topic *topic = participant.logTopic();
    ASSERT_NE(topic, nullptr);
    DDS_TopicDescription *found = DDS_DomainParticipant_lookup_topicdescription(participant.get(), "qtv/vexar");
    EXPECT_EQ(DDS_Topic_narrow(found), topic);
    EXPECT_EQ(DDS_ContentFilteredTopic_narrow(found), nullptr);

    LogCapture log;
    EXPECT_EQ(DDS_DomainParticipant_create_topic(participant.get(), "qtv/vexar", kLogTypeName, nullptr, nullptr, 0),
              nullptr);
    EXPECT_TRUE(log.contains("exists already"));

    DDS_ContentFilteredTopic *filtered =
        DDS_DomainParticipant_create_contentfilteredtopic(participant.get(), "loud", topic, "level <= 300", nullptr);
    ASSERT_NE(filtered, nullptr);
    DDS_TopicDescription *filteredFound = DDS_DomainParticipant_lookup_topicdescription(participant.get(), "loud");
    EXPECT_EQ(DDS_ContentFilteredTopic_narrow(filteredFound), filtered);
    EXPECT_EQ(DDS_Topic_narrow(filteredFound), nullptr);
    EXPECT_EQ(DDS_DomainParticipant_delete_topic(participant.get(), topic), DDS_RETCODE_PRECONDITION_NOT_MET);

    EXPECT_EQ(DDS_DomainParticipant_create_contentfilteredtopic(participant.get(), "bad", topic, "levle = 1", nullptr),
              nullptr);
    EXPECT_TRUE(log.contains("DDS_DomainParticipant_create_contentfilteredtopic: failure: filter expression"));
    EXPECT_TRUE(log.contains("column 1: unknown member 'levle'")) << log.text();
    EXPECT_EQ(DDS_DomainParticipant_lookup_topicdescription(participant.get(), "bad"), nullptr);
}

// The logger's own filter: a reader on the filtered topic receives exactly
// the requests addressed to it, over the network from another participant;
// a reader of the plain topic receives all of them.
TEST(DdsContentFilteredTopic, PassesExactlyTheRequestsAddressedToIt) {
    BridgeParticipant administrator(kDomain + 8);
    BridgeParticipant logger(kDomain + 8);
    DDS_Topic *requests = logger.topic<Request>();
    ASSERT_NE(requests, nullptr);
    char host[] = "-7";
    char app[] = "9";
    char *parameterBuffers[2] = {host, app};
    DDS_StringSeq parameters = DDS_SEQUENCE_INITIALIZER;
    ASSERT_TRUE(DDS_StringSeq_loan_contiguous(&parameters, parameterBuffers, 2, 2));
    DDS_ContentFilteredTopic *filtered = DDS_DomainParticipant_create_contentfilteredtopic(
        logger.get(), "CommandRequestContentFilteredTopic", requests,
        "targetHostAndAppId.rtps_host_id = %0 and targetHostAndAppId.rtps_app_id = %1", &parameters);
    DDS_StringSeq_unloan(&parameters);
    ASSERT_NE(filtered, nullptr);

    DDS_DataReader *mine = logger.reader(DDS_ContentFilteredTopic_as_topicdescription(filtered));
    DDS_DataReader *everything = logger.reader(DDS_Topic_as_topicdescription(requests));
    DDS_DataWriter *writer = administrator.writer(administrator.topic<Request>());
    ASSERT_TRUE(mine && everything && writer);
    ASSERT_TRUE(eventually([&] { return hasMatchedReaders(writer, 2); }));

    const QTV_VX_HostAndAppId targets[] = {{-7, 9}, {-7, 8}, {6, 9}, {-7, 9}};
    for (int invocation = 0; invocation < 4; ++invocation) {
        Sample<Request> request(invocation);
        request->targetHostAndAppId = targets[invocation];
        EXPECT_EQ(DDS_DataWriter_write_untypedI(writer, request.get(), DDS_HANDLE_NIL), DDS_RETCODE_OK);
    }
    // Both readers hear each sample at once, so the filtered one holds all it will get.
    auto take = [](DDS_DataReader *reader, size_t count) {
        return takeMarkers<Request>(TopicType<Request>::narrowReader(reader), count);
    };
    EXPECT_EQ(take(everything, 4), (std::vector<int>{0, 1, 2, 3}));
    EXPECT_EQ(take(mine, 2), (std::vector<int>{0, 3}));
}

}  // namespace
