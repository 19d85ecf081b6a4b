// The far end of a logger's administration, as a remote tool has it: a
// participant in the logger's domain that reads State samples and command
// responses and sends command requests.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/running_logger.hpp"
#include "support/typed_topic.hpp"
#include "vexar/DDSEntities.h"

namespace vexar_test {

// A running logger with remote administration on.
class AdministeredLogger : public LoggerSession {
public:
    explicit AdministeredLogger(int domain) : LoggerSession(loggerOptions(domain, 0, 1)) {}
    QTV_VX_HostAndAppId id() const {
        return {QTV_VX_DDSEntities_getRtpsHostId(logger()->_ddsEntities),
                QTV_VX_DDSEntities_getRtpsAppId(logger()->_ddsEntities)};
    }
};

// A State sample as taken, without its text (whose loan ends), and when it
// was written.
struct StateSeen : QTV_VX_ADMIN_State {
    DDS_Time_t written;
};

// A response as taken, its message copied into `text` (the loan ends).
struct ResponseSeen : QTV_VX_ADMIN_CommandResponse {
    std::string text;
};

inline StateSeen seen(const QTV_VX_ADMIN_State &state, const DDS_SampleInfo &info) {
    StateSeen result{state, info.source_timestamp};
    result.applicationKind = nullptr;
    return result;
}

inline ResponseSeen seen(const QTV_VX_ADMIN_CommandResponse &response, const DDS_SampleInfo &) {
    ResponseSeen result{response, response.message};
    result.message = nullptr;
    return result;
}

// A reader of T that keeps what it took, so a test can wait for a count.
template <typename T, typename Seen>
class Collected {
public:
    using Type = TopicType<T>;
    explicit Collected(typename Type::DataReader *reader) : reader_(reader) {}

    // All received so far, after waiting up to five seconds for `count`.
    const std::vector<Seen> &atLeast(size_t count) {
        eventuallyWithin(std::chrono::seconds(5), [&] {
            takeAvailable();
            return all_.size() >= count;
        });
        return all_;
    }
    const std::vector<Seen> &now() { return atLeast(0); }

private:
    void takeAvailable() {
        typename Type::Seq samples = DDS_SEQUENCE_INITIALIZER;
        DDS_SampleInfoSeq infos = DDS_SEQUENCE_INITIALIZER;
        if (Type::take(reader_, &samples, &infos, DDS_LENGTH_UNLIMITED, DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE,
                       DDS_ANY_INSTANCE_STATE) != DDS_RETCODE_OK) {
            return;
        }
        for (DDS_Long i = 0; i < Type::length(&samples); ++i) {
            const DDS_SampleInfo &info = *DDS_SampleInfoSeq_get_reference(&infos, i);
            if (info.valid_data) all_.push_back(seen(*Type::element(&samples, i), info));
        }
        EXPECT_EQ(Type::returnLoan(reader_, &samples, &infos), DDS_RETCODE_OK);
    }

    typename Type::DataReader *reader_;
    std::vector<Seen> all_;
};

using CollectedStates = Collected<QTV_VX_ADMIN_State, StateSeen>;
using CollectedResponses = Collected<QTV_VX_ADMIN_CommandResponse, ResponseSeen>;

// A request of `kind` for `target` from originator {7, 8}, with
// `filterLevel` in its branch; the caller sets the other branches.
struct Request {
    QTV_VX_ADMIN_CommandRequest sample{};
    Request(QTV_VX_HostAndAppId target, DDS_Long invocation, QTV_VX_ADMIN_CommandKind kind, DDS_Long filterLevel = 0) {
        QTV_VX_ADMIN_CommandRequest_initialize(&sample);
        sample.targetHostAndAppId = target;
        sample.originatorHostAndAppId = {7, 8};
        sample.invocation = invocation;
        sample.command._d = kind;
        sample.command._u.filterLevel = filterLevel;
    }
    ~Request() { QTV_VX_ADMIN_CommandRequest_finalize(&sample); }
    Request(const Request &) = delete;
    Request &operator=(const Request &) = delete;
};

class Administrator {
public:
    explicit Administrator(int domain)
        : participant_(DDS_DomainParticipantFactory_create_participant(factory(), domain, nullptr, nullptr, 0)),
          publisher_(DDS_DomainParticipant_create_publisher(participant_, nullptr, nullptr, 0)),
          subscriber_(DDS_DomainParticipant_create_subscriber(participant_, nullptr, nullptr, 0)),
          stateTopic_(topic<QTV_VX_ADMIN_State>(QTV_VX_STATE_TOPIC_NAME)),
          requestTopic_(topic<QTV_VX_ADMIN_CommandRequest>(QTV_VX_COMMAND_REQUEST_TOPIC_NAME)),
          responseTopic_(topic<QTV_VX_ADMIN_CommandResponse>(QTV_VX_COMMAND_RESPONSE_TOPIC_NAME)) {}
    ~Administrator() {
        EXPECT_EQ(DDS_DomainParticipant_delete_contained_entities(participant_), DDS_RETCODE_OK);
        EXPECT_EQ(DDS_DomainParticipantFactory_delete_participant(factory(), participant_), DDS_RETCODE_OK);
    }
    Administrator(const Administrator &) = delete;
    Administrator &operator=(const Administrator &) = delete;

    // Transient-local: it also gets the last State from the writer's history.
    CollectedStates stateReader() {
        DDS_DataReaderQos qos = reliableKeepAll();
        qos.durability.kind = DDS_TRANSIENT_LOCAL_DURABILITY_QOS;
        return CollectedStates(QTV_VX_ADMIN_StateDataReader_narrow(reader(stateTopic_, qos)));
    }

    // A response reader and a request writer, both matched with the logger's
    // before it returns, so that nothing sent is lost to discovery.
    CollectedResponses connect() {
        DDS_DataReader *responses = reader(responseTopic_, reliableKeepAll());
        DDS_DataWriterQos qos = DDS_DataWriterQos_INITIALIZER;
        qos.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
        requestWriter_ = DDS_Publisher_create_datawriter(publisher_, requestTopic_, &qos, nullptr, 0);
        EXPECT_TRUE(eventuallyWithin(std::chrono::seconds(5), [&] {
            DDS_SubscriptionMatchedStatus matched = DDS_SubscriptionMatchedStatus_INITIALIZER;
            DDS_DataReader_get_subscription_matched_status(responses, &matched);
            return matched.current_count > 0 && hasMatchedReaders(requestWriter_, 1);
        })) << "the logger's command endpoints were not matched";
        return CollectedResponses(QTV_VX_ADMIN_CommandResponseDataReader_narrow(responses));
    }

    void send(const Request &request) {
        EXPECT_EQ(QTV_VX_ADMIN_CommandRequestDataWriter_write(
                      QTV_VX_ADMIN_CommandRequestDataWriter_narrow(requestWriter_), &request.sample, DDS_HANDLE_NIL),
                  DDS_RETCODE_OK);
    }

private:
    static DDS_DomainParticipantFactory *factory() { return DDS_DomainParticipantFactory_get_instance(); }
    static DDS_DataReaderQos reliableKeepAll() {
        DDS_DataReaderQos qos = DDS_DataReaderQos_INITIALIZER;
        qos.reliability.kind = DDS_RELIABLE_RELIABILITY_QOS;
        qos.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
        return qos;
    }
    template <typename T>
    DDS_Topic *topic(const char *name) {
        EXPECT_EQ(TopicType<T>::registerType(participant_, TopicType<T>::registeredTypeName), DDS_RETCODE_OK);
        return DDS_DomainParticipant_create_topic(participant_, name, TopicType<T>::registeredTypeName, nullptr,
                                                  nullptr, 0);
    }
    DDS_DataReader *reader(DDS_Topic *topic, const DDS_DataReaderQos &qos) {
        return DDS_Subscriber_create_datareader(subscriber_, DDS_Topic_as_topicdescription(topic), &qos, nullptr, 0);
    }

    DDS_DomainParticipant *participant_;
    DDS_Publisher *publisher_;
    DDS_Subscriber *subscriber_;
    DDS_Topic *stateTopic_;
    DDS_Topic *requestTopic_;
    DDS_Topic *responseTopic_;
    DDS_DataWriter *requestWriter_ = nullptr;
};

}  // namespace vexar_test
