// The write thread: what it publishes and with which time stamp, how it
// treats time-outs and errors of the writer, and how it stops.
#include <gtest/gtest.h>

#include <chrono>
#include <deque>
#include <mutex>
#include <string>
#include <vector>

#include "support/captured_stdout.h"
#include "support/dds_bridge.hpp"
#include "support/domains.h"
#include "support/running_logger.hpp"

using namespace vexar_test;

namespace {

// A writer double: answers the writes with the scripted codes (then OK)
// and records the messages it was given.
std::mutex gMutex;
std::deque<DDS_ReturnCode_t> gScript;
std::vector<std::string> gWritten;

DDS_ReturnCode_t scriptedWrite(QTV_VX_LogMessageDataWriter *, const QTV_VX_LogMessagePlusTime &item) {
    std::lock_guard lock(gMutex);
    gWritten.emplace_back(item.message.message);
    if (gScript.empty()) return DDS_RETCODE_OK;
    DDS_ReturnCode_t next = gScript.front();
    gScript.pop_front();
    return next;
}

std::vector<std::string> written() {
    std::lock_guard lock(gMutex);
    return gWritten;
}

// A write thread of its own, without a logger around it, on the double.
class ScriptedWriteThread {
public:
    explicit ScriptedWriteThread(std::deque<DDS_ReturnCode_t> script) {
        std::lock_guard lock(gMutex);
        gScript = std::move(script);
        gWritten.clear();
        previous_ = vexar::replaceLogMessagePublisher(&scriptedWrite);
        thread_ = LogMessageWriteThread_create(nullptr, 8, nullptr);
    }
    ~ScriptedWriteThread() {
        vexar::stopWriteThread(thread_);
        LogMessageWriteThread_delete(thread_);
        vexar::replaceLogMessagePublisher(previous_);
    }
    ScriptedWriteThread(const ScriptedWriteThread &) = delete;
    ScriptedWriteThread &operator=(const ScriptedWriteThread &) = delete;

    bool pushAndWaitForWrites(const char *text, std::size_t writes) const {
        QTV_VX_LogMessagePlusTime item{};
        item.message.category = const_cast<char *>("");
        item.message.message = const_cast<char *>(text);
        QTV_VX_MessageQueue_push(thread_->q, &item);
        return eventually([&] { return written().size() >= writes; });
    }

private:
    vexar::LogMessagePublisher previous_;
    LogMessageWriteThread *thread_;
};

// A timed-out head is written again after the next push, without a report:
// each turn consumes one push, so "first" is retried on the push of
// "second", which then waits for the push of "third". A failed write drops
// the message with one line.
TEST(LogMessageWriteThread, ATimedOutHeadIsRetriedSilentlyAFailedOneDroppedWithALine) {
    EXPECT_EQ(capturedStdout([] {
                  ScriptedWriteThread thread({DDS_RETCODE_TIMEOUT});
                  EXPECT_TRUE(thread.pushAndWaitForWrites("first", 1));
                  EXPECT_TRUE(thread.pushAndWaitForWrites("second", 2));
                  EXPECT_TRUE(thread.pushAndWaitForWrites("third", 3));
              }),
              "");
    EXPECT_EQ(written(), (std::vector<std::string>{"first", "first", "second"}));
    EXPECT_EQ(capturedStdout([] {
                  ScriptedWriteThread thread({DDS_RETCODE_ERROR});
                  EXPECT_TRUE(thread.pushAndWaitForWrites("lost", 1));
                  EXPECT_TRUE(thread.pushAndWaitForWrites("kept", 2));
              }),
              "VX Error: LogMessageWriteThread_run: Unable to write LogMessage in DataWriter\n");
    EXPECT_EQ(written(), (std::vector<std::string>{"lost", "kept"}));
}

// End to end over DDS, with the real writer.
TEST(LogMessageWriteThread, SubscriberReceivesMessagesStampedWithTheirLoggingTime) {
    const int domain = domains::kLoggerBase + 8;
    BridgeParticipant subscriber(domain);
    DDS_DataReader *reader = subscriber.reader(DDS_Topic_as_topicdescription(subscriber.logTopic()));
    ASSERT_NE(reader, nullptr);
    LoggerSession session(loggerOptions(domain));
    ASSERT_TRUE(eventually([&] {
        DDS_SubscriptionMatchedStatus status = DDS_SubscriptionMatchedStatus_INITIALIZER;
        DDS_DataReader_get_subscription_matched_status(reader, &status);
        return status.current_count > 0;
    }));
    QTV_VX_Vexar_MessageParams params{QTV_VX_LOG_LEVEL_WARNING, "pressure is rising", "pumps", {1700000000, 5000u}};
    QTV_VX_Vexar_logMessageWithParams(session.logger(), &params);

    ReceivedLogMessages received;
    ASSERT_TRUE(eventually([&] { return countReadable<ReceivedLogMessages>(reader) > 0; }));
    ASSERT_EQ(received.take(reader), DDS_RETCODE_OK);
    ASSERT_EQ(received.length(), 1);
    EXPECT_STREQ(received.at(0).message, "pressure is rising");
    EXPECT_STREQ(received.at(0).category, "pumps");
    EXPECT_EQ(received.at(0).level, QTV_VX_LOG_LEVEL_WARNING);
    EXPECT_EQ(received.at(0).hostAndAppId.rtps_app_id, session.logger()->state->hostAndAppId.rtps_app_id);
    EXPECT_EQ(received.info(0).source_timestamp.sec, 1700000000);
    EXPECT_EQ(received.info(0).source_timestamp.nanosec, 5000u);
    EXPECT_EQ(received.returnLoan(reader), DDS_RETCODE_OK);
}

}  // namespace
