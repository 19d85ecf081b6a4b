// The message counts that a logger publishes for remote tools: a subscriber
// gets what the process counted, after a flush and after finalization, and
// samples come at most once a second, and only when a count changed.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <vector>

#include "support/captured_stdout.h"
#include "support/domains.h"
#include "support/running_logger.hpp"
#include "support/typed_topic.hpp"
#include "vexar/Statistics.h"

using namespace vexar_test;
using namespace std::chrono_literals;

namespace {

constexpr int kFlushDomain = domains::kLoggerBase + 66;
constexpr int kFinalizeDomain = domains::kLoggerBase + 67;
constexpr int kPaceDomain = domains::kLoggerBase + 68;
constexpr DDS_Duration_t kFlushTimeout{10, 0};

// Writes that take their time, so that a short queue overflows in a burst
// and still holds messages when the logger is finalized.
std::chrono::milliseconds gWriteDelay{0};
vexar::LogMessagePublisher gRealPublish = nullptr;

DDS_ReturnCode_t publishSlowly(QTV_VX_LogMessageDataWriter *writer, const QTV_VX_LogMessagePlusTime &item) {
    std::this_thread::sleep_for(gWriteDelay);
    return gRealPublish(writer, item);
}

class SlowWrites {
public:
    explicit SlowWrites(std::chrono::milliseconds delay) {
        gWriteDelay = delay;
        gRealPublish = vexar::replaceLogMessagePublisher(publishSlowly);
    }
    ~SlowWrites() { vexar::replaceLogMessagePublisher(gRealPublish); }
    SlowWrites(const SlowWrites &) = delete;
    SlowWrites &operator=(const SlowWrites &) = delete;
};

QTV_VX_Statistics processStatistics() {
    QTV_VX_Statistics figures{};
    EXPECT_EQ(QTV_VX_Vexar_getStatistics(&figures), DDS_RETCODE_OK);
    return figures;
}

bool sameCounts(const QTV_VX_ADMIN_Statistics &sample, const QTV_VX_Statistics &figures) {
    return sample.accepted == figures.accepted && sample.refused == figures.refused &&
           sample.dropped == figures.dropped && sample.published == figures.published &&
           sample.failed == figures.failed && sample.discarded == figures.discarded;
}

// The statistics topic as a remote tool reads it, in a participant of its
// own; it keeps every sample of the one application, oldest first.
class StatisticsReader {
public:
    using Type = TopicType<QTV_VX_ADMIN_Statistics>;

    explicit StatisticsReader(int domain)
        : participant_(domain, QTV_VX_STATISTICS_TOPIC_NAME, 100), reader_(participant_.reader()) {}

    const std::vector<QTV_VX_ADMIN_Statistics> &samples() {
        takeAvailable();
        return samples_;
    }
    bool lastHasWithin(std::chrono::milliseconds timeout, const QTV_VX_Statistics &figures) {
        return eventuallyWithin(timeout, [&] { return !samples().empty() && sameCounts(samples_.back(), figures); });
    }

private:
    void takeAvailable() {
        Type::Seq taken = DDS_SEQUENCE_INITIALIZER;
        DDS_SampleInfoSeq infos = DDS_SEQUENCE_INITIALIZER;
        if (Type::take(reader_, &taken, &infos, DDS_LENGTH_UNLIMITED, DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE,
                       DDS_ANY_INSTANCE_STATE) != DDS_RETCODE_OK) {
            return;
        }
        for (DDS_Long i = 0; i < Type::length(&taken); ++i) {
            if (DDS_SampleInfoSeq_get_reference(&infos, i)->valid_data) samples_.push_back(*Type::element(&taken, i));
        }
        EXPECT_EQ(Type::returnLoan(reader_, &taken, &infos), DDS_RETCODE_OK);
    }

    TypedParticipant<QTV_VX_ADMIN_Statistics> participant_;
    Type::DataReader *reader_;
    std::vector<QTV_VX_ADMIN_Statistics> samples_;
};

OptionsPtr optionsWithQueue(int domain, DDS_Long queueSize) {
    OptionsPtr options = loggerOptions(domain);
    QTV_VX_Options_setQueueSize(options.get(), queueSize);
    return options;
}

// One warning line per dropped message: not shown.
void logQuietly(QTV_VX_Vexar *logger, int count) {
    capturedStdout([&] {
        for (int i = 0; i < count; ++i) QTV_VX_Vexar_info(logger, "burst");
    });
}

}  // namespace

TEST(PublishedStatistics, AfterAFlushTheSubscriberHasWhatTheProcessCounted) {
    StatisticsReader remote(kFlushDomain);
    SlowWrites slow(1ms);
    LoggerSession session(optionsWithQueue(kFlushDomain, 2));
    logQuietly(session.logger(), 50);
    ASSERT_EQ(QTV_VX_Vexar_flush(session.logger(), &kFlushTimeout), DDS_RETCODE_OK);
    const QTV_VX_Statistics figures = processStatistics();
    ASSERT_GT(figures.dropped, 0u) << "a burst into a queue of two loses some";
    ASSERT_TRUE(remote.lastHasWithin(5s, figures))
        << "dropped " << figures.dropped << ", published " << figures.published;
    const QTV_VX_ADMIN_Statistics &sample = remote.samples().back();
    EXPECT_EQ(sample.hostAndAppId.rtps_host_id, QTV_VX_DDSEntities_getRtpsHostId(session.logger()->_ddsEntities));
    EXPECT_EQ(sample.hostAndAppId.rtps_app_id, QTV_VX_DDSEntities_getRtpsAppId(session.logger()->_ddsEntities));
}

TEST(PublishedStatistics, FinalizationPublishesWhatItDiscarded) {
    StatisticsReader remote(kFinalizeDomain);
    SlowWrites slow(50ms);
    OptionsPtr options = optionsWithQueue(kFinalizeDomain, 8);
    ASSERT_EQ(QTV_VX_Vexar_setOptions(options.get()), 1);
    QTV_VX_Vexar *logger = QTV_VX_Vexar_getInstance();
    ASSERT_NE(logger, nullptr);
    logQuietly(logger, 8);
    QTV_VX_Vexar_finalizeInstance();
    const QTV_VX_Statistics figures = processStatistics();
    ASSERT_GT(figures.discarded, 0u) << "finalized with writes still to come";
    EXPECT_TRUE(remote.lastHasWithin(5s, figures)) << "discarded " << figures.discarded;
}

TEST(PublishedStatistics, AtMostOneSampleASecondAndNoneWhileNothingChanges) {
    StatisticsReader remote(kPaceDomain);
    OptionsPtr options = loggerOptions(kPaceDomain);
    QTV_VX_Options_setLogInfrastructureMessages(options.get(), 0);  // nothing counted but what the test logs
    LoggerSession session(std::move(options));
    ASSERT_TRUE(eventually([&] { return !remote.samples().empty(); })) << "the first sample comes at start";

    const auto start = std::chrono::steady_clock::now();
    while (std::chrono::steady_clock::now() < start + 2500ms) {
        QTV_VX_Vexar_info(session.logger(), "tick");
        std::this_thread::sleep_for(20ms);
    }
    const size_t whileChanging = remote.samples().size();
    EXPECT_GE(whileChanging, 2u) << "changes are published";
    EXPECT_LE(whileChanging, 4u) << "2.5 s of changes after the first sample";

    std::this_thread::sleep_for(1500ms);  // the last change goes out
    const size_t settled = remote.samples().size();
    std::this_thread::sleep_for(2s);
    EXPECT_EQ(remote.samples().size(), settled) << "nothing changed, nothing is published";
}
