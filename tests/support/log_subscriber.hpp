// A subscriber of the logger's messages, as a collecting application has it:
// its own participant in the logger's domain and a LogMessage reader that
// loses nothing the logger's writer sends. Free of GoogleTest, so that
// benchmarks can use it too.
//
// The logger's writer is reliable and transient-local, by default with a
// keep-last history of 10 per instance, which replaces samples that a reader
// has not acknowledged yet: a reader that falls behind loses some
// (tests/logger_loss_test.cpp measures how many); under
// VexarQosLibrary::Lossless the writer keeps them all. The reader itself is
// reliable (a best-effort one loses whatever the socket drops) and keeps all
// it has not taken yet (a keep-last reader would overwrite samples between
// two takes).
#pragma once

#include "platform/dds/subscriber.h"
#include "platform/dds/topic.h"
#include "support/participant.hpp"
#include "type/vexarSupport.h"
#include "vexar/DDSEntities.h"

namespace vexar_test {

class LogSubscriber {
public:
    // A transient-local reader also gets what the logger's writer keeps for
    // late readers, as `vexar tail` does.
    explicit LogSubscriber(int domain, bool transientLocal = false) : participant_(domain) {
        DDS_DomainParticipant *participant = participant_.get();
        if (participant == nullptr || participant_.subscriber() == nullptr ||
            QTV_VX_LogMessageTypeSupport_register_type(participant, QTV_VX_LOG_MESSAGE_REGISTERED_TYPE_NAME) !=
                DDS_RETCODE_OK) {
            return;
        }
        DDS_Topic *topic = DDS_DomainParticipant_create_topic(
            participant, QTV_VX_LOG_TOPIC_NAME, QTV_VX_LOG_MESSAGE_REGISTERED_TYPE_NAME, nullptr, nullptr, 0);
        if (topic == nullptr) return;
        DDS_DataReaderQos qos = DDS_DataReaderQos_INITIALIZER;
        qos.reliability.kind = DDS_RELIABLE_RELIABILITY_QOS;
        qos.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
        if (transientLocal) qos.durability.kind = DDS_TRANSIENT_LOCAL_DURABILITY_QOS;
        reader_ = QTV_VX_LogMessageDataReader_narrow(DDS_Subscriber_create_datareader(
            participant_.subscriber(), DDS_Topic_as_topicdescription(topic), &qos, nullptr, 0));
    }
    LogSubscriber(const LogSubscriber &) = delete;
    LogSubscriber &operator=(const LogSubscriber &) = delete;

    bool ready() const { return reader_ != nullptr; }

    // Whether the reader has found a logger's writer.
    bool matched() const {
        DDS_SubscriptionMatchedStatus status = DDS_SubscriptionMatchedStatus_INITIALIZER;
        return DDS_DataReader_get_subscription_matched_status(QTV_VX_LogMessageDataReader_as_datareader(reader_),
                                                              &status) == DDS_RETCODE_OK &&
               status.current_count > 0;
    }

    // Takes on loan, a batch at a time, until nothing is left; calls
    // `each(const QTV_VX_LogMessage &)` for every valid sample. Returns how
    // many that was.
    template <typename Each>
    long takeEach(Each each) {
        long taken = 0;
        for (;;) {
            QTV_VX_LogMessageSeq samples = DDS_SEQUENCE_INITIALIZER;
            DDS_SampleInfoSeq infos = DDS_SEQUENCE_INITIALIZER;
            if (QTV_VX_LogMessageDataReader_take(reader_, &samples, &infos, kBatch, DDS_ANY_SAMPLE_STATE,
                                                 DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE) != DDS_RETCODE_OK) {
                return taken;
            }
            for (DDS_Long i = 0; i < QTV_VX_LogMessageSeq_get_length(&samples); ++i) {
                if (!DDS_SampleInfoSeq_get_reference(&infos, i)->valid_data) continue;
                each(*QTV_VX_LogMessageSeq_get_reference(&samples, i));
                ++taken;
            }
            QTV_VX_LogMessageDataReader_return_loan(reader_, &samples, &infos);
        }
    }

private:
    // Always the same batch: Cyclone 0.10.2 writes as many pointers as the
    // largest batch ever taken on a reader into later loans.
    static constexpr DDS_Long kBatch = 256;

    Participant participant_;
    QTV_VX_LogMessageDataReader *reader_ = nullptr;
};

}  // namespace vexar_test
