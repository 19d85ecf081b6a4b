// The logging calls: echo, filter, queue, validation, the clock conversion
// and the messages that must never reach the queue.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/runtime/thread.h"
#include "support/captured_stdout.h"
#include "support/domains.h"
#include "support/running_logger.hpp"
#include "vexar/Statistics.h"
#include "vexar/message_counts.hpp"

using namespace vexar_test;

namespace {

// A running logger whose write thread is held, so the queue keeps all.
class HeldLogger : public ::testing::Test {
protected:
    HeldLogger() : session_(loggerOptions(domains::kLoggerBase + 3)) {}
    void SetUp() override {
        ASSERT_NE(logger(), nullptr);
        ASSERT_TRUE(holdWriteThread(QTV_VX_Vexar_getLogMessageWriteThread()));
    }
    QTV_VX_Vexar *logger() const { return session_.logger(); }
    QTV_VX_Options *options() const { return session_.options(); }
    std::vector<QueuedMessage> queued() const { return drainQueue(QTV_VX_Vexar_getMessageQueue()); }

private:
    LoggerSession session_;
};

TEST(LoggerClock, FractionBecomesNanosecondsRoundedUpExceptWhenExact) {
    const struct {
        OBLX_Time_t clock;
        DDS_Time_t expected;
    } cases[] = {
        {{5, 0u}, {5, 0u}},
        {{5, 1u}, {5, 1u}},
        {{5, 2305843009u}, {5, 536870912u}},                     // exact: not rounded up
        {{5, 0x80000000u}, {5, 500000001u}},                     // the divisor is truncated: halves come out just above
        {{5, 0xFFFFFFFFu}, {6, 0u}},                             // rounded up to a whole second, carried
        {{2147483647, 0xFFFFFFFFu}, {2147483647, 1000000000u}},  // no second left to carry into
    };
    for (const auto &c : cases) {
        const DDS_Time_t converted = vexar::ddsTimeFromClockTime(c.clock);
        EXPECT_EQ(std::pair(converted.sec, converted.nanosec), std::pair(c.expected.sec, c.expected.nanosec))
            << "fraction " << c.clock.frac;
    }
}

// Invalid params are printed; a record that is not the singleton, a null one
// and messages raised on the write thread are dropped silently.
TEST_F(HeldLogger, OnlyValidMessagesOfTheSingletonFromOtherThreadsAreQueued) {
    QTV_VX_Vexar_MessageParams noMessage{600, nullptr, "", {1, 0u}};
    QTV_VX_Vexar_MessageParams noCategory{600, "m", nullptr, {1, 0u}};
    QTV_VX_Vexar_MessageParams negativeTime{600, "m", "", {-1, 0u}};
    QTV_VX_Vexar stranger;
    QTV_VX_Vexar_initialize(&stranger);
    LogMessageWriteThread *thread = QTV_VX_Vexar_getLogMessageWriteThread();
    std::string printed = capturedStdout([&] {
        QTV_VX_Vexar_logMessageWithParams(logger(), nullptr);
        QTV_VX_Vexar_logMessageWithParams(logger(), &noMessage);
        QTV_VX_Vexar_logMessageWithParams(logger(), &noCategory);
        QTV_VX_Vexar_logMessageWithParams(logger(), &negativeTime);
        QTV_VX_Vexar_error(&stranger, "lost");
        QTV_VX_Vexar_error(nullptr, "lost");
        vexar::shared(thread->threadId).store(OBLX_Thread_currentId());  // pose as the write thread
        QTV_VX_Vexar_error(logger(), "raised while writing");
        vexar::shared(thread->threadId).store(0);
    });
    const std::string prefix = "VX Error: QTV_VX_Vexar_logMessageWithParams: ";
    EXPECT_EQ(printed, prefix + "Message params is NULL\n" + prefix + "Message to be logged is NULL\n" + prefix +
                           "Message category is NULL\n" + prefix + "Invalid message timestamp\n");
    QTV_VX_Vexar_error(logger(), "raised elsewhere");
    std::vector<QueuedMessage> messages = queued();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].message, "raised elsewhere");
}

// The level is checked before the global lock against a copy of what decides
// it: the filter level and the echo switch must reach that copy. Echo comes
// before the filter. (A message's fields through to a subscriber: the write
// thread's test; the echoed line's form: the console line's test.)
TEST_F(HeldLogger, FilterAndEchoChangesReachTheEarlyLevelCheck) {
    QTV_VX_Vexar_info(logger(), "at the filter");
    QTV_VX_Vexar_debug(logger(), "above the filter");
    EXPECT_EQ(QTV_VX_Vexar_setFilterLevel(logger(), -5), 1) << "negative levels are refused";
    EXPECT_EQ(logger()->filterLevel, 600);
    EXPECT_EQ(QTV_VX_Vexar_setFilterLevel(logger(), 300), 0);
    QTV_VX_Vexar_info(logger(), "filtered");
    QTV_VX_Vexar_setFilterLevel(logger(), 700);
    QTV_VX_Vexar_info(logger(), "let through again");
    QTV_VX_Vexar_setFilterLevel(logger(), 300);
    QTV_VX_Options_setEchoToStdout(options(), 1);
    EXPECT_EQ(capturedStdout([&] {
                  QTV_VX_Vexar_info(logger(), "echoed, not queued");
                  QTV_VX_Vexar_fatal(logger(), "");  // queued, not echoed
              }),
              "VX Info: : echoed, not queued\n");
    QTV_VX_Options_setEchoToStdout(options(), 0);
    EXPECT_EQ(capturedStdout([&] { QTV_VX_Vexar_info(logger(), "silent again"); }), "");
    EXPECT_EQ(QTV_VX_Vexar_setFilterLevel(logger(), 0), 0);
    EXPECT_EQ(logger()->state->filterLevel, 0);
    QTV_VX_Vexar_fatal(logger(), "above level 0");
    std::vector<QueuedMessage> messages = queued();
    ASSERT_EQ(messages.size(), 3u);
    EXPECT_EQ(messages[0].message, "at the filter");
    EXPECT_EQ(messages[1].message, "let through again");
    EXPECT_EQ(messages[2].message, "");
}

// Each call ends one way, counted on its thread; the queue counts what it took.
TEST_F(HeldLogger, EveryCallIsCountedAsRefusedQueuedOrDropped) {
    const vexar::CallOutcomes before = vexar::callOutcomesOfThisThread();
    const vexar::QueueOutcomes queuesBefore = vexar::queueOutcomes();
    const DDS_Long capacity = QTV_VX_MessageQueue_getMessageQueueProperty(QTV_VX_Vexar_getMessageQueue());
    capturedStdout([&] {  // the queue warns of each message it cannot take
        for (DDS_Long i = 0; i < capacity + 2; ++i) QTV_VX_Vexar_info(logger(), "fills the queue");
        QTV_VX_Vexar_debug(logger(), "above the filter");
        QTV_VX_Vexar_error(nullptr, "no logger");
    });
    const vexar::CallOutcomes after = vexar::callOutcomesOfThisThread();
    EXPECT_EQ(after.queued - before.queued, static_cast<std::uint64_t>(capacity));
    EXPECT_EQ(after.dropped - before.dropped, 2u);
    EXPECT_EQ(after.refused - before.refused, 2u);
    EXPECT_EQ(vexar::queueOutcomes().queued - queuesBefore.queued, static_cast<std::uint64_t>(capacity));
}

// The options promise that echoToStdout is read on every call: writing the
// field of the registered record, without the setter, takes effect at once,
// even for calls that the level gate would refuse.
TEST_F(HeldLogger, EchoWrittenStraightIntoTheRegisteredOptionsIsReadOnEveryCall) {
    QTV_VX_Vexar_setFilterLevel(logger(), 300);
    options()->echoToStdout = 1;
    EXPECT_EQ(capturedStdout([&] { QTV_VX_Vexar_debug(logger(), "echoed"); }), "VX Debug: : echoed\n");
    options()->echoToStdout = 0;
    EXPECT_EQ(capturedStdout([&] { QTV_VX_Vexar_debug(logger(), "silent"); }), "");
    EXPECT_TRUE(queued().empty());
}

QTV_VX_Statistics statistics() {
    QTV_VX_Statistics figures{};
    EXPECT_EQ(QTV_VX_Vexar_getStatistics(&figures), DDS_RETCODE_OK);
    return figures;
}

// The process totals sum every thread's calls, those of ended threads too.
TEST_F(HeldLogger, StatisticsSumTheCallsOfEveryThread) {
    const QTV_VX_Statistics before = statistics();
    const DDS_Long capacity = QTV_VX_MessageQueue_getMessageQueueProperty(QTV_VX_Vexar_getMessageQueue());
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 10; ++i) QTV_VX_Vexar_debug(logger(), "above the filter");
        });
    }
    for (std::thread &thread : threads) thread.join();
    capturedStdout([&] {
        for (DDS_Long i = 0; i < capacity + 2; ++i) QTV_VX_Vexar_info(logger(), "fills the queue");
    });
    const QTV_VX_Statistics after = statistics();
    EXPECT_EQ(after.refused - before.refused, 30u);
    EXPECT_EQ(after.accepted - before.accepted, static_cast<DDS_UnsignedLongLong>(capacity));
    EXPECT_EQ(after.dropped - before.dropped, 2u);
    EXPECT_EQ(after.published, before.published) << "the write thread is held";
    capturedStdout([] { EXPECT_EQ(QTV_VX_Vexar_getStatistics(nullptr), DDS_RETCODE_BAD_PARAMETER); });
}

}  // namespace
