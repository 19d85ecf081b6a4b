// Helpers for tests of the DDS entity layer: a participant that cleans up
// after itself, registered topics, reliable keep-all endpoints, waiting, and
// read or take into a typed sequence the way the typed readers do it.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <thread>

#include "platform/data_reader.h"
#include "platform/dds_string.h"
#include "platform/data_writer.h"
#include "platform/domain_participant.h"
#include "platform/domain_participant_factory.h"
#include "platform/publisher.h"
#include "platform/subscriber.h"
#include "platform/topic.h"
#include "type/vexar.h"
#include "type/vexarPlugin.h"

namespace vexar_test {

inline constexpr const char *kLogTypeName = "com::qtv::vx::LogMessage";
inline constexpr const char *kRequestTypeName = "com::qtv::vx::admin::CommandRequest";

// Polls `condition` for up to five seconds.
inline bool eventually(const std::function<bool()> &condition) {
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

// One participant with a publisher and a subscriber; deletes all of it.
class BridgeParticipant {
public:
    explicit BridgeParticipant(int domain)
        : factory_(DDS_DomainParticipantFactory_get_instance()),
          participant_(DDS_DomainParticipantFactory_create_participant(factory_, domain, nullptr, nullptr, 0)) {
        if (participant_ != nullptr) {
            publisher_ = DDS_DomainParticipant_create_publisher(participant_, nullptr, nullptr, 0);
            subscriber_ = DDS_DomainParticipant_create_subscriber(participant_, nullptr, nullptr, 0);
        }
    }
    ~BridgeParticipant() {
        if (participant_ == nullptr) return;
        EXPECT_EQ(DDS_DomainParticipant_delete_contained_entities(participant_), DDS_RETCODE_OK);
        EXPECT_EQ(DDS_DomainParticipantFactory_delete_participant(factory_, participant_), DDS_RETCODE_OK);
    }
    BridgeParticipant(const BridgeParticipant &) = delete;
    BridgeParticipant &operator=(const BridgeParticipant &) = delete;

    DDS_DomainParticipant *get() const { return participant_; }
    DDS_Publisher *publisher() const { return publisher_; }
    DDS_Subscriber *subscriber() const { return subscriber_; }

    // Registers the type (its plugin is deleted again) and makes the topic.
    DDS_Topic *topic(const char *name, const char *typeName, OBLX_TypePlugin *(*newPlugin)(),
                     void (*deletePlugin)(OBLX_TypePlugin *)) const {
        OBLX_TypePlugin *plugin = newPlugin();
        DDS_ReturnCode_t registered = DDS_DomainParticipant_register_type(participant_, typeName, plugin, nullptr);
        deletePlugin(plugin);
        if (registered != DDS_RETCODE_OK) return nullptr;
        return DDS_DomainParticipant_create_topic(participant_, name, typeName, nullptr, nullptr, 0);
    }
    DDS_Topic *logTopic() const {
        return topic("qtv/vexar", kLogTypeName, QTV_VX_LogMessagePlugin_new, QTV_VX_LogMessagePlugin_delete);
    }
    DDS_Topic *requestTopic() const {
        return topic("qtv/vexar/administration/command_request", kRequestTypeName,
                     QTV_VX_ADMIN_CommandRequestPlugin_new, QTV_VX_ADMIN_CommandRequestPlugin_delete);
    }

    DDS_DataWriter *writer(DDS_Topic *topic, const DDS_DataWriterListener *listener = nullptr,
                           DDS_StatusMask mask = 0) const {
        DDS_DataWriterQos qos = DDS_DataWriterQos_INITIALIZER;
        qos.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
        return DDS_Publisher_create_datawriter(publisher_, topic, &qos, listener, mask);
    }
    DDS_DataReader *reader(DDS_TopicDescription *topic, const DDS_DataReaderListener *listener = nullptr,
                           DDS_StatusMask mask = 0) const {
        DDS_DataReaderQos qos = DDS_DataReaderQos_INITIALIZER;
        qos.reliability.kind = DDS_RELIABLE_RELIABILITY_QOS;
        qos.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
        return DDS_Subscriber_create_datareader(subscriber_, topic, &qos, listener, mask);
    }

private:
    DDS_DomainParticipantFactory *factory_;
    DDS_DomainParticipant *participant_;
    DDS_Publisher *publisher_ = nullptr;
    DDS_Subscriber *subscriber_ = nullptr;
};

// A sequence of samples and its infos, read or taken as the typed readers
// do it: on loan when the sequence is empty, else copied into it.
template <typename Seq, typename Sample, DDS_Boolean (*loan)(Seq *, Sample **, DDS_Long, DDS_Long),
          DDS_Boolean (*unloan)(Seq *), DDS_Boolean (*finalize)(Seq *)>
struct Received {
    Seq data = DDS_SEQUENCE_INITIALIZER;
    DDS_SampleInfoSeq infos = DDS_SEQUENCE_INITIALIZER;

    Received() = default;
    ~Received() {
        if (data._owned) finalize(&data);
        if (infos._owned) DDS_SampleInfoSeq_finalize(&infos);
    }
    Received(const Received &) = delete;
    Received &operator=(const Received &) = delete;

    DDS_ReturnCode_t readOrTake(DDS_DataReader *reader, DDS_Long maxSamples, bool take,
                                DDS_SampleStateMask sampleStates = DDS_ANY_SAMPLE_STATE) {
        DDS_Boolean isLoan = DDS_BOOLEAN_TRUE;
        void **lent = nullptr;
        DDS_Long count = 0;
        DDS_ReturnCode_t result = DDS_DataReader_read_or_take_untypedI(
            reader, &isLoan, &lent, &count, &infos, data._length, data._maximum, data._owned, data._contiguous_buffer,
            sizeof(Sample), maxSamples, sampleStates, DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE,
            take ? DDS_BOOLEAN_TRUE : DDS_BOOLEAN_FALSE);
        if (result == DDS_RETCODE_OK && isLoan) {
            EXPECT_TRUE(loan(&data, reinterpret_cast<Sample **>(lent), count, count));
        } else if (result == DDS_RETCODE_OK) {
            data._length = static_cast<DDS_UnsignedLong>(count);
        } else {
            data._length = 0;
        }
        return result;
    }
    DDS_ReturnCode_t take(DDS_DataReader *reader, DDS_Long maxSamples = DDS_LENGTH_UNLIMITED) {
        return readOrTake(reader, maxSamples, true);
    }
    DDS_ReturnCode_t returnLoan(DDS_DataReader *reader) {
        DDS_ReturnCode_t result =
            DDS_DataReader_return_loan_untypedI(reader, reinterpret_cast<void **>(data._discontiguous_buffer),
                                                static_cast<DDS_Long>(data._maximum), &infos);
        if (result == DDS_RETCODE_OK) unloan(&data);
        return result;
    }
    DDS_Long length() const { return static_cast<DDS_Long>(data._length); }
    const Sample &at(DDS_Long i) const {
        return data._discontiguous_buffer != nullptr ? *data._discontiguous_buffer[i] : data._contiguous_buffer[i];
    }
    const DDS_SampleInfo &info(DDS_Long i) const { return infos._contiguous_buffer[i]; }
};

using ReceivedLogMessages = Received<QTV_VX_LogMessageSeq, QTV_VX_LogMessage, QTV_VX_LogMessageSeq_loan_discontiguous,
                                     QTV_VX_LogMessageSeq_unloan, QTV_VX_LogMessageSeq_finalize>;
using ReceivedRequests =
    Received<QTV_VX_ADMIN_CommandRequestSeq, QTV_VX_ADMIN_CommandRequest,
             QTV_VX_ADMIN_CommandRequestSeq_loan_discontiguous, QTV_VX_ADMIN_CommandRequestSeq_unloan,
             QTV_VX_ADMIN_CommandRequestSeq_finalize>;

// How many samples `reader` holds, read (not taken) on loan.
template <typename ReceivedSamples>
DDS_Long countReadable(DDS_DataReader *reader) {
    ReceivedSamples peek;
    if (peek.readOrTake(reader, DDS_LENGTH_UNLIMITED, false) != DDS_RETCODE_OK) return 0;
    DDS_Long count = peek.length();
    EXPECT_EQ(peek.returnLoan(reader), DDS_RETCODE_OK);
    return count;
}

// A log message sample that finalizes itself.
struct LogMessage {
    QTV_VX_LogMessage sample{};
    LogMessage(DDS_Long level, const char *text) {
        QTV_VX_LogMessage_initialize(&sample);
        sample.hostAndAppId = {11, 22};
        sample.level = level;
        DDS_String_copy_bounded(sample.message, text, QTV_VX_LOG_MESSAGE_MESSAGE_MAX_LENGTH + 1);
    }
    ~LogMessage() { QTV_VX_LogMessage_finalize(&sample); }
    LogMessage(const LogMessage &) = delete;
    LogMessage &operator=(const LogMessage &) = delete;
};

}  // namespace vexar_test
