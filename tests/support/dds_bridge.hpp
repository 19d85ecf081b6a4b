// Helpers for tests of the DDS entity layer: a participant with topics and
// endpoints, and untyped read or take the way the typed readers do it.
#pragma once

#include <gtest/gtest.h>

#include "platform/dds/data_reader.h"
#include "platform/dds/data_writer.h"
#include "support/typed_topic.hpp"

namespace vexar_test {

// A participant that must delete cleanly, with topics registered through
// the type plugins and reliable keep-all endpoints.
class BridgeParticipant : public Participant {
public:
    using Participant::Participant;
    ~BridgeParticipant() { EXPECT_EQ(deleteAll(), DDS_RETCODE_OK); }

    // Registers T's plugin (deleted again: the participant keeps its own
    // copy) and makes T's topic.
    template <typename T>
    DDS_Topic *topic() const {
        using Type = TopicType<T>;
        OBLX_TypePlugin *plugin = Type::pluginNew();
        DDS_ReturnCode_t registered =
            DDS_DomainParticipant_register_type(get(), Type::registeredTypeName, plugin, nullptr);
        Type::pluginDelete(plugin);
        if (registered != DDS_RETCODE_OK) return nullptr;
        return DDS_DomainParticipant_create_topic(get(), Type::topicName, Type::registeredTypeName, nullptr, nullptr,
                                                  0);
    }
    DDS_Topic *logTopic() const { return topic<QTV_VX_LogMessage>(); }

    DDS_DataWriter *writer(DDS_Topic *topic) const {
        DDS_DataWriterQos qos = DDS_DataWriterQos_INITIALIZER;
        qos.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
        return DDS_Publisher_create_datawriter(publisher(), topic, &qos, nullptr, 0);
    }
    DDS_DataReader *reader(DDS_TopicDescription *topic) const {
        DDS_DataReaderQos qos = DDS_DataReaderQos_INITIALIZER;
        qos.reliability.kind = DDS_RELIABLE_RELIABILITY_QOS;
        qos.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
        return DDS_Subscriber_create_datareader(subscriber(), topic, &qos, nullptr, 0);
    }
};

// Log messages and their infos, read or taken on loan through the untyped
// reader as the typed readers do it.
struct ReceivedLogMessages {
    QTV_VX_LogMessageSeq data = DDS_SEQUENCE_INITIALIZER;
    DDS_SampleInfoSeq infos = DDS_SEQUENCE_INITIALIZER;

    ReceivedLogMessages() = default;
    ~ReceivedLogMessages() {
        if (data._owned) QTV_VX_LogMessageSeq_finalize(&data);
        if (infos._owned) DDS_SampleInfoSeq_finalize(&infos);
    }
    ReceivedLogMessages(const ReceivedLogMessages &) = delete;
    ReceivedLogMessages &operator=(const ReceivedLogMessages &) = delete;

    DDS_ReturnCode_t readOrTake(DDS_DataReader *reader, DDS_Long maxSamples, bool take,
                                DDS_SampleStateMask sampleStates = DDS_ANY_SAMPLE_STATE) {
        DDS_Boolean isLoan = DDS_BOOLEAN_TRUE;
        void **lent = nullptr;
        DDS_Long count = 0;
        DDS_ReturnCode_t result = DDS_DataReader_read_or_take_untypedI(
            reader, &isLoan, &lent, &count, &infos, data._length, data._maximum, data._owned, data._contiguous_buffer,
            sizeof(QTV_VX_LogMessage), maxSamples, sampleStates, DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE,
            take ? DDS_BOOLEAN_TRUE : DDS_BOOLEAN_FALSE);
        data._length = 0;
        if (result == DDS_RETCODE_OK) {
            EXPECT_TRUE(isLoan) << "only an empty sequence is used";
            EXPECT_TRUE(QTV_VX_LogMessageSeq_loan_discontiguous(&data, reinterpret_cast<QTV_VX_LogMessage **>(lent),
                                                                count, count));
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
        if (result == DDS_RETCODE_OK) QTV_VX_LogMessageSeq_unloan(&data);
        return result;
    }
    DDS_Long length() const { return static_cast<DDS_Long>(data._length); }
    const QTV_VX_LogMessage &at(DDS_Long i) const {
        return data._discontiguous_buffer != nullptr ? *data._discontiguous_buffer[i] : data._contiguous_buffer[i];
    }
    const DDS_SampleInfo &info(DDS_Long i) const { return infos._contiguous_buffer[i]; }
};

// How many samples `reader` holds, read (not taken) on loan.
template <typename ReceivedSamples>
DDS_Long countReadable(DDS_DataReader *reader) {
    ReceivedSamples peek;
    if (peek.readOrTake(reader, DDS_LENGTH_UNLIMITED, false) != DDS_RETCODE_OK) return 0;
    DDS_Long count = peek.length();
    EXPECT_EQ(peek.returnLoan(reader), DDS_RETCODE_OK);
    return count;
}

}  // namespace vexar_test
