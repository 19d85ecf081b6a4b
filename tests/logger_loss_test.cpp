// Nothing lost without a trace: a subscriber in another process counts what
// arrives, the logger's statistics count what it dropped, and the two must
// add up to what was logged. Under VexarQosLibrary::Lossless nothing may go
// missing beyond the counted drops; under the default QoS the figures are
// printed and what the application can know must still add up.
#include <gtest/gtest.h>

#include <signal.h>

#include <chrono>
#include <cstring>
#include <cstdio>
#include <string>
#include <thread>

#include "support/captured_stdout.h"
#include "support/domains.h"
#include "support/remote_log_counter.hpp"
#include "support/running_logger.hpp"
#include "vexar/QosLibrary.h"
#include "vexar/Statistics.h"

using namespace vexar_test;

namespace {

constexpr DDS_Duration_t kFlushTimeout{30, 0};
constexpr auto kQuiet = std::chrono::seconds(3);

QTV_VX_Statistics statistics() {
    QTV_VX_Statistics figures{};
    EXPECT_EQ(QTV_VX_Vexar_getStatistics(&figures), DDS_RETCODE_OK);
    return figures;
}

struct Figures {
    long logged = 0;
    long arrived = 0;
    DDS_UnsignedLongLong accepted = 0, dropped = 0, published = 0, failed = 0, discarded = 0;
};

// One application logging to one remote subscriber, on its own domain.
class Scenario {
public:
    // `profile`: one of the built-in library's, or null for the defaults.
    Scenario(int domain, const char *profile, long logged, DDS_Long queueSize)
        : counter_(domain, logged, kQuiet), logged_(logged), options_(loggerOptions(domain)) {
        QTV_VX_Options_setQueueSize(options_.get(), queueSize);
        if (profile != nullptr) {
            QTV_VX_Options_setQosLibrary(options_.get(), QTV_VX_QOS_LIBRARY_NAME);
            QTV_VX_Options_setQosProfile(options_.get(), profile);
        }
    }

    bool signalSubscriber(int signal) const { return counter_.signal(signal); }

    // Starts the logger once the subscriber runs; the writer has yet to
    // discover it.
    bool start() {
        if (!counter_.waitUntilReady()) return false;
        before_ = statistics();
        EXPECT_EQ(QTV_VX_Vexar_setOptions(options_.get()), 1);
        logger_ = QTV_VX_Vexar_getInstance();
        return logger_ != nullptr;
    }
    bool matched() const { return logWriterMatched(logger_); }
    bool startMatched() { return start() && matched(); }

    // The queue's warnings, one per dropped message, are not shown.
    void log(std::chrono::microseconds pause = {}) {
        capturedStdout([&] {
            for (long i = 0; i < logged_; ++i) {
                QTV_VX_Vexar_info(logger_, ("message " + std::to_string(i)).c_str());
                if (pause.count() > 0) std::this_thread::sleep_for(pause);
            }
        });
    }

    // Flush, finalize, and collect what arrived.
    Figures finish(const char *name) {
        EXPECT_EQ(QTV_VX_Vexar_flush(logger_, &kFlushTimeout), DDS_RETCODE_OK);
        QTV_VX_Vexar_finalizeInstance();
        const QTV_VX_Statistics after = statistics();
        Figures figures{logged_,
                        counter_.received(),
                        after.accepted - before_.accepted,
                        after.dropped - before_.dropped,
                        after.published - before_.published,
                        after.failed - before_.failed,
                        after.discarded - before_.discarded};
        std::printf("%s: logged %ld accepted %llu dropped %llu published %llu failed %llu discarded %llu arrived %ld\n",
                    name, figures.logged, static_cast<unsigned long long>(figures.accepted),
                    static_cast<unsigned long long>(figures.dropped),
                    static_cast<unsigned long long>(figures.published), static_cast<unsigned long long>(figures.failed),
                    static_cast<unsigned long long>(figures.discarded), figures.arrived);
        return figures;
    }

private:
    RemoteLogCounter counter_;
    long logged_;
    OptionsPtr options_;
    QTV_VX_Vexar *logger_ = nullptr;
    QTV_VX_Statistics before_{};
};

// What the application can know adds up whatever the QoS: every call was
// accepted or dropped, every accepted message published (the flush waited),
// and no more arrived than was published.
void expectAccountedFor(const Figures &figures) {
    EXPECT_EQ(figures.accepted + figures.dropped, static_cast<DDS_UnsignedLongLong>(figures.logged));
    EXPECT_EQ(figures.published, figures.accepted);
    EXPECT_EQ(figures.failed + figures.discarded, 0u);
    EXPECT_GE(figures.arrived, 0) << "the subscriber failed";
    EXPECT_LE(static_cast<DDS_UnsignedLongLong>(figures.arrived), figures.published);
}

// Under Lossless, whatever was not counted as dropped arrived.
void expectNothingLostUncounted(const Figures &figures) {
    expectAccountedFor(figures);
    EXPECT_EQ(static_cast<DDS_UnsignedLongLong>(figures.arrived) + figures.dropped,
              static_cast<DDS_UnsignedLongLong>(figures.logged));
}

// The defaults, then the built-in profiles.
constexpr const char *kProfiles[] = {nullptr, QTV_VX_QOS_PROFILE_LOSSLESS, QTV_VX_QOS_PROFILE_BOUNDED};

class LossScenarios : public ::testing::TestWithParam<int> {
protected:
    const char *profile() const { return kProfiles[GetParam()]; }
    bool lossless() const { return profile() != nullptr && std::strcmp(profile(), QTV_VX_QOS_PROFILE_LOSSLESS) == 0; }
    // kLoggerBase + 50 .. + 61: four scenarios, three QoS choices.
    int domain(int scenario) const { return domains::kLoggerBase + 50 + 3 * scenario + GetParam(); }
    void expectOutcome(const Figures &figures) const {
        if (lossless()) {
            expectNothingLostUncounted(figures);
        } else {
            expectAccountedFor(figures);
        }
    }
};

// Logged before discovery has found the subscriber: only what the writer's
// history keeps for late readers reaches it.
TEST_P(LossScenarios, BurstRightAfterStart) {
    Scenario scenario(domain(0), profile(), 100, 128);
    ASSERT_TRUE(scenario.start());
    scenario.log();
    ASSERT_TRUE(scenario.matched());
    Figures figures = scenario.finish("burst right after start");
    expectOutcome(figures);
    EXPECT_EQ(figures.dropped, 0u);
}

TEST_P(LossScenarios, LogThenFlushThenFinalize) {
    Scenario scenario(domain(1), profile(), 100, 128);
    ASSERT_TRUE(scenario.startMatched());
    scenario.log();
    Figures figures = scenario.finish("log, flush, finalize");
    expectOutcome(figures);
    EXPECT_EQ(figures.dropped, 0u);
}

TEST_P(LossScenarios, BurstLargerThanTheQueue) {
    Scenario scenario(domain(2), profile(), 20000, 128);
    ASSERT_TRUE(scenario.startMatched());
    scenario.log();
    expectOutcome(scenario.finish("burst larger than the queue"));
}

// The subscriber stops acknowledging for 2 s while the application logs.
TEST_P(LossScenarios, SubscriberStoppedForTwoSeconds) {
    Scenario scenario(domain(3), profile(), 4000, 1024);
    ASSERT_TRUE(scenario.startMatched());
    ASSERT_TRUE(scenario.signalSubscriber(SIGSTOP));
    auto stopped = std::chrono::steady_clock::now();
    scenario.log(std::chrono::microseconds(250));
    std::this_thread::sleep_until(stopped + std::chrono::seconds(2));
    ASSERT_TRUE(scenario.signalSubscriber(SIGCONT));
    expectOutcome(scenario.finish("subscriber stopped for 2 s"));
}

INSTANTIATE_TEST_SUITE_P(Qos, LossScenarios, ::testing::Range(0, 3), [](const ::testing::TestParamInfo<int> &info) {
    const char *profile = kProfiles[info.param];
    return std::string(profile != nullptr ? profile : "Default");
});

}  // namespace
