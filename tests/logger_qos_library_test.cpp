// The built-in QoS library: a logger whose options name it gets its
// profiles without any file, with the logger's own values still imposed,
// also after the application unloaded every XML document.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "platform/dds/data_writer.h"
#include "platform/dds/domain_participant_factory.h"
#include "platform/dds/xml_configuration.h"
#include "support/captured_stdout.h"
#include "support/domains.h"
#include "support/log_subscriber.hpp"
#include "support/running_logger.hpp"
#include "type/vexarSupport.h"
#include "vexar/QosLibrary.h"

using namespace vexar_test;

namespace {

constexpr int kLosslessDomain = domains::kLoggerBase + 44;
constexpr int kBoundedDomain = domains::kLoggerBase + 45;
constexpr int kLosslessLateReaderDomain = domains::kLoggerBase + 47;
constexpr DDS_Long kLosslessLateJoinerDepth = 1000;

OptionsPtr optionsWithProfile(int domain, const char *profile) {
    OptionsPtr options = loggerOptions(domain);
    QTV_VX_Options_setQosLibrary(options.get(), QTV_VX_QOS_LIBRARY_NAME);
    QTV_VX_Options_setQosProfile(options.get(), profile);
    return options;
}

// The log writer's QoS as the getter computes it and as the writer has it.
struct LogWriterQos {
    DDS_DataWriterQos computed = DDS_DataWriterQos_INITIALIZER;
    DDS_DataWriterQos created = DDS_DataWriterQos_INITIALIZER;

    explicit LogWriterQos(QTV_VX_Vexar *logger) {
        EXPECT_EQ(QTV_VX_DDSEntities_getDataWriterQos(logger->_ddsEntities, &computed, QTV_VX_LOG_TOPIC_NAME),
                  DDS_RETCODE_OK);
        DDS_DataWriter *writer =
            QTV_VX_LogMessageDataWriter_as_datawriter(QTV_VX_DDSEntities_getLogMessageWriter(logger->_ddsEntities));
        EXPECT_EQ(DDS_DataWriter_get_qos(writer, &created), DDS_RETCODE_OK);
    }
    ~LogWriterQos() {
        DDS_DataWriterQos_finalize(&computed);
        DDS_DataWriterQos_finalize(&created);
    }
};

void expectForcedValues(const DDS_DataWriterQos &qos) {
    EXPECT_EQ(qos.reliability.kind, DDS_RELIABLE_RELIABILITY_QOS);
    EXPECT_EQ(qos.durability.kind, DDS_TRANSIENT_LOCAL_DURABILITY_QOS);
    EXPECT_EQ(qos.ownership.kind, DDS_SHARED_OWNERSHIP_QOS);
}

TEST(BuiltinQosLibrary, LosslessKeepsEveryLogSampleWithoutAFile) {
    for (int round = 0; round < 2; ++round) {
        SCOPED_TRACE(round == 0 ? "first load" : "after the application unloaded every document");
        std::string out = capturedStdout([&] {
            LoggerSession session(optionsWithProfile(kLosslessDomain, QTV_VX_QOS_PROFILE_LOSSLESS));
            LogWriterQos qos(session.logger());
            for (const DDS_DataWriterQos *each : {&qos.computed, &qos.created}) {
                EXPECT_EQ(each->history.kind, DDS_KEEP_ALL_HISTORY_QOS);
                EXPECT_EQ(each->durability_service.history_kind, DDS_KEEP_LAST_HISTORY_QOS);
                EXPECT_EQ(each->durability_service.history_depth, kLosslessLateJoinerDepth);
                expectForcedValues(*each);
            }
            DDS_DataWriterQos stateWriter = DDS_DataWriterQos_INITIALIZER;
            ASSERT_EQ(QTV_VX_DDSEntities_getDataWriterQos(session.logger()->_ddsEntities, &stateWriter,
                                                          QTV_VX_STATE_TOPIC_NAME),
                      DDS_RETCODE_OK);
            EXPECT_EQ(stateWriter.history.kind, DDS_KEEP_LAST_HISTORY_QOS) << "the filter names the log topic only";
            DDS_DataWriterQos_finalize(&stateWriter);
            DDS_DataReaderQos reader = DDS_DataReaderQos_INITIALIZER;
            ASSERT_EQ(DDS_DomainParticipantFactory_get_datareader_qos_from_profile_w_topic_name(
                          DDS_DomainParticipantFactory_get_instance(), &reader, QTV_VX_QOS_LIBRARY_NAME,
                          QTV_VX_QOS_PROFILE_LOSSLESS, QTV_VX_LOG_TOPIC_NAME),
                      DDS_RETCODE_OK);
            EXPECT_EQ(reader.history.kind, DDS_KEEP_ALL_HISTORY_QOS);
            DDS_DataReaderQos_finalize(&reader);
        });
        EXPECT_EQ(out.find("cannot be found"), std::string::npos) << out;
        EXPECT_EQ(out.find("not supported"), std::string::npos) << out;
        ASSERT_EQ(DDS_DomainParticipantFactory_unload_xml(DDS_DomainParticipantFactory_get_instance()), DDS_RETCODE_OK);
    }
}

// Takes what the late reader gets until `count` of the messages that start
// with `prefix` arrived, or 10 s passed, and a little longer for any extra;
// their numbers in arrival order.
std::vector<long> numbersArriving(LogSubscriber &reader, const std::string &prefix, size_t count) {
    std::vector<long> numbers;
    const auto collect = [&] {
        reader.takeEach([&](const QTV_VX_LogMessage &sample) {
            const std::string text = sample.message;
            if (text.starts_with(prefix)) numbers.push_back(std::stol(text.substr(prefix.size())));
        });
    };
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (numbers.size() < count && std::chrono::steady_clock::now() < deadline) {
        collect();
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    collect();
    return numbers;
}

// A late `vexar tail` gets the last 1000 per level, not all ever logged.
TEST(BuiltinQosLibrary, LosslessServesLateReadersABoundedHistory) {
    OptionsPtr options = optionsWithProfile(kLosslessLateReaderDomain, QTV_VX_QOS_PROFILE_LOSSLESS);
    QTV_VX_Options_setQueueSize(options.get(), 2 * kLosslessLateJoinerDepth);
    LoggerSession session(std::move(options));
    constexpr long kLogged = kLosslessLateJoinerDepth + 200;
    capturedStdout([&] {
        for (long i = 0; i < kLogged; ++i)
            QTV_VX_Vexar_warning(session.logger(), ("late " + std::to_string(i)).c_str());
    });
    const DDS_Duration_t tenSeconds = {10, 0};
    ASSERT_EQ(QTV_VX_Vexar_flush(session.logger(), &tenSeconds), DDS_RETCODE_OK);

    LogSubscriber late(kLosslessLateReaderDomain, true);
    ASSERT_TRUE(late.ready());
    const std::vector<long> numbers = numbersArriving(late, "late ", kLosslessLateJoinerDepth);
    ASSERT_EQ(numbers.size(), size_t{kLosslessLateJoinerDepth});
    EXPECT_EQ(numbers.front(), kLogged - kLosslessLateJoinerDepth);
    EXPECT_EQ(numbers.back(), kLogged - 1);
}

TEST(BuiltinQosLibrary, BoundedKeepsTheLastThousandForTenSeconds) {
    LoggerSession session(optionsWithProfile(kBoundedDomain, QTV_VX_QOS_PROFILE_BOUNDED));
    LogWriterQos qos(session.logger());
    for (const DDS_DataWriterQos *each : {&qos.computed, &qos.created}) {
        EXPECT_EQ(each->history.kind, DDS_KEEP_LAST_HISTORY_QOS);
        EXPECT_EQ(each->history.depth, 1000);
        EXPECT_EQ(each->lifespan.duration.sec, 10);
        expectForcedValues(*each);
    }
}

TEST(BuiltinQosLibrary, LoadsOnceAndKeepsTheApplicationsDocuments) {
    DDS_DomainParticipantFactory *factory = DDS_DomainParticipantFactory_get_instance();
    ASSERT_EQ(DDS_DomainParticipantFactory_load_xml_string(
                  factory, "<dds><qos_library name=\"Application\"><qos_profile name=\"P\"/></qos_library></dds>"),
              DDS_RETCODE_OK);
    EXPECT_EQ(QTV_VX_QosLibrary_load(), DDS_RETCODE_OK);
    EXPECT_EQ(QTV_VX_QosLibrary_load(), DDS_RETCODE_OK) << "a second load must not add a duplicate";
    for (const char *library : {"Application", QTV_VX_QOS_LIBRARY_NAME}) {
        DDS_StringSeq names = DDS_SEQUENCE_INITIALIZER;
        EXPECT_EQ(DDS_DomainParticipantFactory_get_qos_profiles(factory, &names, library), DDS_RETCODE_OK);
        EXPECT_GT(DDS_StringSeq_get_length(&names), 0) << library;
        DDS_StringSeq_finalize(&names);
    }
    DDS_DomainParticipantFactory_unload_xml(factory);
}

}  // namespace
