// The four topic types behind one template for tests of the typed endpoints:
// each type's typed operations, a value to tell samples apart, and a
// participant with one topic of the type and reliable, transient-local
// endpoints. Free of GoogleTest, so helper programs can use it too.
#pragma once

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "platform/dds/publisher.h"
#include "platform/dds/subscriber.h"
#include "platform/dds/topic.h"
#include "support/participant.hpp"
#include "vexar/topic_traits.hpp"

namespace vexar_test {

// One topic type's C operations and the names it goes by.
template <typename T>
using TopicType = vexar::TopicTraits<T>;

// A number carried in a sample, so a test can tell which one arrived. It
// lands in a string where the type has one, so strings cross the wire too.
inline void setText(char *buffer, size_t bound, const std::string &text) {
    std::snprintf(buffer, bound + 1, "%s", text.c_str());
}

inline void mark(QTV_VX_LogMessage &sample, int marker) {
    sample.hostAndAppId = {7, 8};
    sample.level = 600;
    setText(sample.message, QTV_VX_LOG_MESSAGE_MESSAGE_MAX_LENGTH, "message " + std::to_string(marker));
}
inline int markerOf(const QTV_VX_LogMessage &sample) { return std::atoi(sample.message + sizeof "message"); }

inline void mark(QTV_VX_ADMIN_State &sample, int marker) {
    sample.hostAndAppId = {7, 8};
    sample.state = QTV_VX_STATE_OPERATIONAL;
    setText(sample.applicationKind, QTV_VX_ADMIN_STATE_APPLICATION_KIND_MAX_LENGTH, std::to_string(marker));
}
inline int markerOf(const QTV_VX_ADMIN_State &sample) { return std::atoi(sample.applicationKind); }

inline void mark(QTV_VX_ADMIN_CommandRequest &sample, int marker) {
    sample.targetHostAndAppId = {7, 8};
    sample.invocation = marker;
    sample.command._d = QTV_VX_SET_LOG_LEVEL;
    sample.command._u.filterLevel = 700;
}
inline int markerOf(const QTV_VX_ADMIN_CommandRequest &sample) { return sample.invocation; }

inline void mark(QTV_VX_ADMIN_CommandResponse &sample, int marker) {
    sample.hostAndAppId = {7, 8};
    sample.commandResult = QTV_VX_COMMAND_RESULT_OK;
    setText(sample.message, QTV_VX_ADMIN_COMMAND_RESPONSE_MESSAGE_MAX_LENGTH, std::to_string(marker));
}
inline int markerOf(const QTV_VX_ADMIN_CommandResponse &sample) { return std::atoi(sample.message); }

// A heap sample of the type support, deleted with it.
template <typename T>
class Sample {
public:
    explicit Sample(int marker = 0) : sample_(TopicType<T>::createData()) { mark(*sample_, marker); }
    ~Sample() { TopicType<T>::deleteData(sample_); }
    Sample(const Sample &) = delete;
    Sample &operator=(const Sample &) = delete;
    T *get() const { return sample_; }
    T *operator->() const { return sample_; }

private:
    T *sample_;
};

// Polls `condition` until it holds or `timeout` passed.
inline bool eventuallyWithin(std::chrono::milliseconds timeout, const std::function<bool()> &condition) {
    auto deadline = std::chrono::steady_clock::now() + timeout;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}
inline bool eventually(const std::function<bool()> &condition) {
    return eventuallyWithin(std::chrono::seconds(5), condition);
}

// Reliable and transient-local, keeping `depth` samples per instance: a
// late reader gets the writer's history.
template <typename Qos>
Qos historyQos(Qos qos, DDS_Long depth) {
    qos.reliability.kind = DDS_RELIABLE_RELIABILITY_QOS;
    qos.reliability.max_blocking_time = {1, 0};
    qos.durability.kind = DDS_TRANSIENT_LOCAL_DURABILITY_QOS;
    qos.history = {DDS_KEEP_LAST_HISTORY_QOS, depth};
    return qos;
}

// A participant with one topic of T, registered through the type support.
template <typename T>
class TypedParticipant : public Participant {
public:
    using Type = TopicType<T>;

    TypedParticipant(int domain, const std::string &topicName, DDS_Long depth = 16)
        : Participant(domain), depth_(depth) {
        if (get() == nullptr || Type::registerType(get(), Type::registeredTypeName) != DDS_RETCODE_OK) return;
        topic_ =
            DDS_DomainParticipant_create_topic(get(), topicName.c_str(), Type::registeredTypeName, nullptr, nullptr, 0);
    }

    DDS_Topic *topic() const { return topic_; }

    DDS_DataWriter *untypedWriter() const {
        DDS_DataWriterQos qos = historyQos(DDS_DataWriterQos(DDS_DataWriterQos_INITIALIZER), depth_);
        return topic_ == nullptr ? nullptr : DDS_Publisher_create_datawriter(publisher(), topic_, &qos, nullptr, 0);
    }
    DDS_DataReader *untypedReader() const {
        return createReader(historyQos(DDS_DataReaderQos(DDS_DataReaderQos_INITIALIZER), depth_));
    }
    typename Type::DataWriter *writer() const { return Type::narrowWriter(untypedWriter()); }
    typename Type::DataReader *reader() const { return Type::narrowReader(untypedReader()); }
    // Best effort and volatile: a sample not sent when written never arrives.
    typename Type::DataReader *bestEffortReader() const {
        DDS_DataReaderQos qos = DDS_DataReaderQos_INITIALIZER;
        qos.history = {DDS_KEEP_LAST_HISTORY_QOS, depth_};
        return Type::narrowReader(createReader(qos));
    }

private:
    DDS_DataReader *createReader(const DDS_DataReaderQos &qos) const {
        return topic_ == nullptr ? nullptr
                                 : DDS_Subscriber_create_datareader(subscriber(), DDS_Topic_as_topicdescription(topic_),
                                                                    &qos, nullptr, 0);
    }

    DDS_Long depth_;
    DDS_Topic *topic_ = nullptr;
};

// Whether the writer has found at least `count` readers.
inline bool hasMatchedReaders(DDS_DataWriter *writer, DDS_Long count) {
    DDS_PublicationMatchedStatus status{};
    return DDS_DataWriter_get_publication_matched_status(writer, &status) == DDS_RETCODE_OK &&
           status.current_count >= count;
}

// Takes on loan until `count` valid samples arrived or `timeout` passed;
// their markers in arrival order.
template <typename T>
std::vector<int> takeMarkers(typename TopicType<T>::DataReader *reader, size_t count,
                             std::chrono::milliseconds timeout = std::chrono::seconds(10)) {
    using Type = TopicType<T>;
    std::vector<int> markers;
    eventuallyWithin(timeout, [&] {
        typename Type::Seq samples = DDS_SEQUENCE_INITIALIZER;
        DDS_SampleInfoSeq infos = DDS_SEQUENCE_INITIALIZER;
        if (Type::take(reader, &samples, &infos, DDS_LENGTH_UNLIMITED, DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE,
                       DDS_ANY_INSTANCE_STATE) == DDS_RETCODE_OK) {
            for (DDS_Long i = 0; i < Type::length(&samples); ++i) {
                if (DDS_SampleInfoSeq_get_reference(&infos, i)->valid_data) {
                    markers.push_back(markerOf(*Type::element(&samples, i)));
                }
            }
            Type::returnLoan(reader, &samples, &infos);
        }
        return markers.size() >= count;
    });
    return markers;
}

}  // namespace vexar_test
