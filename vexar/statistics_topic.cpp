#include "vexar/statistics_topic.hpp"

#include <chrono>
#include <mutex>
#include <new>
#include <tuple>

#include "platform/dds/data_writer.h"
#include "platform/dds/publisher.h"
#include "type/vexarSupport.h"
#include "vexar/Statistics.h"
#include "vexar/report_line.hpp"
#include "vexar/scoped_qos.hpp"

namespace vexar {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kLookEvery = std::chrono::seconds(1);
constexpr const char *kTopicName = QTV_VX_STATISTICS_TOPIC_NAME;

// The six counts of a sample or of a QTV_VX_Statistics record (same
// names), to compare and to copy.
template <typename Sample>
auto counts(Sample &sample) noexcept {
    return std::tie(sample.accepted, sample.refused, sample.dropped, sample.published, sample.failed, sample.discarded);
}

// A topic that the participant already has is used as it is; only one made
// here is deleted again.
DDS_Topic *findOrCreateTopic(QTV_VX_DDSEntities &entities, DDS_Topic *&createdHere) noexcept {
    DDS_DomainParticipant *participant = entities.domainParticipant;
    if (DDS_TopicDescription *found = DDS_DomainParticipant_lookup_topicdescription(participant, kTopicName)) {
        return DDS_Topic_narrow(found);
    }
    if (QTV_VX_ADMIN_StatisticsTypeSupport_register_type(participant, QTV_VX_STATISTICS_REGISTERED_TYPE_NAME) !=
        DDS_RETCODE_OK) {
        return nullptr;
    }
    ScopedQos<DDS_TopicQos, DDS_TopicQos_finalize> qos{DDS_TopicQos_INITIALIZER};
    if (QTV_VX_DDSEntities_getTopicQos(&entities, &qos.value, kTopicName) != DDS_RETCODE_OK) return nullptr;
    createdHere = DDS_DomainParticipant_create_topic(participant, kTopicName, QTV_VX_STATISTICS_REGISTERED_TYPE_NAME,
                                                     &qos.value, nullptr, DDS_STATUS_MASK_NONE);
    return createdHere;
}

QTV_VX_ADMIN_StatisticsDataWriter *createWriter(QTV_VX_DDSEntities &entities, DDS_Topic *topic) noexcept {
    ScopedQos<DDS_DataWriterQos, DDS_DataWriterQos_finalize> qos{DDS_DataWriterQos_INITIALIZER};
    if (QTV_VX_DDSEntities_getDataWriterQos(&entities, &qos.value, kTopicName) != DDS_RETCODE_OK) return nullptr;
    // The last sample is all a reader needs, whatever a profile says; and a
    // writer that kept all would stall the write thread behind a reader that
    // stops acknowledging.
    qos.value.history = {DDS_KEEP_LAST_HISTORY_QOS, 1};
    DDS_DataWriter *writer =
        DDS_Publisher_create_datawriter(entities.publisher, topic, &qos.value, nullptr, DDS_STATUS_MASK_NONE);
    return writer != nullptr ? QTV_VX_ADMIN_StatisticsDataWriter_narrow(writer) : nullptr;
}

class StatisticsPublisher {
public:
    explicit StatisticsPublisher(const QTV_VX_DDSEntities &entities) noexcept
        : participant_(entities.domainParticipant), publisher_(entities.publisher) {
        sample_.hostAndAppId = {entities.rtpsHostId, entities.rtpsAppId};
    }
    ~StatisticsPublisher() {
        if (writer_ != nullptr) {
            (void)DDS_Publisher_delete_datawriter(publisher_, QTV_VX_ADMIN_StatisticsDataWriter_as_datawriter(writer_));
        }
        if (createdTopic_ != nullptr) (void)DDS_DomainParticipant_delete_topic(participant_, createdTopic_);
    }
    StatisticsPublisher(const StatisticsPublisher &) = delete;
    StatisticsPublisher &operator=(const StatisticsPublisher &) = delete;

    bool open(QTV_VX_DDSEntities &entities) noexcept {
        DDS_Topic *topic = findOrCreateTopic(entities, createdTopic_);
        writer_ = topic != nullptr ? createWriter(entities, topic) : nullptr;
        return writer_ != nullptr;
    }

    void publishWhenDue(Clock::time_point now) noexcept {
        if (now < nextLook_) return;
        nextLook_ = now + kLookEvery;
        publishWhenChanged("LogMessageWriteThread_run");
    }

    void publishWhenChanged(const char *source) noexcept {
        QTV_VX_ADMIN_Statistics next = sample_;
        QTV_VX_Statistics figures{};
        (void)QTV_VX_Vexar_getStatistics(&figures);
        counts(next) = counts(figures);
        if (written_ && counts(next) == counts(sample_)) return;
        if (QTV_VX_ADMIN_StatisticsDataWriter_write(writer_, &next, DDS_HANDLE_NIL) != DDS_RETCODE_OK) {
            // Once: a writer that fails tends to fail every second.
            if (!failureReported_) reportWarning("Unable to write Statistics", source);
            failureReported_ = true;
            return;
        }
        sample_ = next;
        written_ = true;
    }

private:
    DDS_DomainParticipant *participant_;
    DDS_Publisher *publisher_;
    DDS_Topic *createdTopic_ = nullptr;
    QTV_VX_ADMIN_StatisticsDataWriter *writer_ = nullptr;
    QTV_VX_ADMIN_Statistics sample_{};  // the last one written
    bool written_ = false;
    bool failureReported_ = false;
    Clock::time_point nextLook_{};  // the first look publishes at once
};

// The write thread is the only one to publish while the logger runs; the
// lock keeps it so should another write thread be started by hand. Held
// across reading the counts (their registry's mutex) and Cyclone's write.
std::mutex gMutex;
StatisticsPublisher *gPublisher = nullptr;

}  // namespace

void startPublishingStatistics(QTV_VX_Vexar &logger) noexcept {
    auto *publisher = new (std::nothrow) StatisticsPublisher(*logger._ddsEntities);
    if (publisher == nullptr || !publisher->open(*logger._ddsEntities)) {
        delete publisher;
        reportWarning("Unable to create the Statistics DataWriter: message counts are not published",
                      "QTV_VX_Vexar_createInstance");
        return;
    }
    std::lock_guard lock(gMutex);
    gPublisher = publisher;
}

void publishStatisticsWhenDue() noexcept {
    std::lock_guard lock(gMutex);
    if (gPublisher != nullptr) gPublisher->publishWhenDue(Clock::now());
}

void stopPublishingStatistics() noexcept {
    std::lock_guard lock(gMutex);
    if (gPublisher == nullptr) return;
    gPublisher->publishWhenChanged("QTV_VX_Vexar_finalizeInstance");
    delete gPublisher;
    gPublisher = nullptr;
}

}  // namespace vexar
