// QTV_VX_Vexar_flush in one process: what it refuses, that it times out
// while messages cannot leave, that it gets a head whose write timed out
// written again, and that finalization ends a flush in progress.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>

#include "support/captured_stdout.h"
#include "support/domains.h"
#include "support/remote_log_counter.hpp"
#include "support/running_logger.hpp"
#include "vexar/QosLibrary.h"

using namespace vexar_test;

namespace {

constexpr int kMisuseDomain = domains::kLoggerBase + 40;
constexpr int kTimeoutDomain = domains::kLoggerBase + 41;
constexpr int kRetryDomain = domains::kLoggerBase + 42;
constexpr int kFinalizeDomain = domains::kLoggerBase + 43;
constexpr int kRemoteDomain = domains::kLoggerBase + 46;

constexpr DDS_Duration_t kFiveSeconds{5, 0};

TEST(LoggerFlush, RefusesMisuseWithAReportedCode) {
    DDS_ReturnCode_t nullLogger = 0, nullTimeout = 0, badTimeout = 0, stale = 0;
    QTV_VX_Vexar *finalized = nullptr;
    std::string out = capturedStdout([&] {
        nullLogger = QTV_VX_Vexar_flush(nullptr, &kFiveSeconds);
        {
            LoggerSession session(loggerOptions(kMisuseDomain));
            nullTimeout = QTV_VX_Vexar_flush(session.logger(), nullptr);
            const DDS_Duration_t negative{-1, 0};
            badTimeout = QTV_VX_Vexar_flush(session.logger(), &negative);
            finalized = session.logger();
        }
        stale = QTV_VX_Vexar_flush(finalized, &kFiveSeconds);
    });
    EXPECT_EQ(nullLogger, DDS_RETCODE_BAD_PARAMETER);
    EXPECT_EQ(nullTimeout, DDS_RETCODE_BAD_PARAMETER);
    EXPECT_EQ(badTimeout, DDS_RETCODE_BAD_PARAMETER);
    EXPECT_EQ(stale, DDS_RETCODE_PRECONDITION_NOT_MET);
    EXPECT_NE(out.find("VX Error: QTV_VX_Vexar_flush: Invalid flush timeout"), std::string::npos) << out;
    EXPECT_NE(out.find("VX Error: QTV_VX_Vexar_flush: Vexar is not running"), std::string::npos) << out;
}

TEST(LoggerFlush, EmptyQueueWithoutReadersFlushesAtOnce) {
    LoggerSession session(loggerOptions(kMisuseDomain));
    QTV_VX_Vexar_info(session.logger(), "nobody listens");
    EXPECT_EQ(QTV_VX_Vexar_flush(session.logger(), &kFiveSeconds), DDS_RETCODE_OK);
    EXPECT_EQ(vexar::queuedMessages(*session.logger()->q), 0);
}

TEST(LoggerFlush, TimesOutWhileTheWriteThreadCannotPublish) {
    LoggerSession session(loggerOptions(kTimeoutDomain));
    ASSERT_TRUE(holdWriteThread(session.logger()->logMessageWriteThread));
    QTV_VX_Vexar_info(session.logger(), "stays queued");
    const DDS_Duration_t shortWait{0, 200000000};
    auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(QTV_VX_Vexar_flush(session.logger(), &shortWait), DDS_RETCODE_TIMEOUT);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(200));
}

// A reliable writer whose reader stops acknowledging times out; the write
// thread keeps the head and, with no later push, waits for the flush.
std::atomic<int> gTimeoutsLeft{0};
vexar::LogMessagePublisher gRealPublisher = nullptr;

DDS_ReturnCode_t timingOutOnce(QTV_VX_LogMessageDataWriter *writer, const QTV_VX_LogMessagePlusTime &item) {
    if (gTimeoutsLeft.fetch_sub(1) > 0) return DDS_RETCODE_TIMEOUT;
    return gRealPublisher(writer, item);
}

TEST(LoggerFlush, GetsAHeadThatTimedOutWrittenAgain) {
    LoggerSession session(loggerOptions(kRetryDomain));
    gTimeoutsLeft = 1;
    gRealPublisher = vexar::replaceLogMessagePublisher(&timingOutOnce);
    QTV_VX_Vexar_info(session.logger(), "written on the second try");
    EXPECT_EQ(QTV_VX_Vexar_flush(session.logger(), &kFiveSeconds), DDS_RETCODE_OK);
    EXPECT_LE(gTimeoutsLeft.load(), 0);
    vexar::replaceLogMessagePublisher(gRealPublisher);
}

TEST(LoggerFlushConcurrency, FinalizationEndsAFlushInProgress) {
    OptionsPtr options = loggerOptions(kFinalizeDomain);
    ASSERT_EQ(QTV_VX_Vexar_setOptions(options.get()), 1);
    QTV_VX_Vexar *logger = QTV_VX_Vexar_getInstance();
    ASSERT_NE(logger, nullptr);
    ASSERT_TRUE(holdWriteThread(logger->logMessageWriteThread));
    QTV_VX_Vexar_info(logger, "never published");
    const DDS_Duration_t forever{DDS_DURATION_INFINITE_SEC, DDS_DURATION_INFINITE_NSEC};
    auto flushed = std::async(std::launch::async, [&] { return QTV_VX_Vexar_flush(logger, &forever); });
    ASSERT_EQ(flushed.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    // Logging goes on meanwhile: the flush holds no global lock.
    QTV_VX_Vexar_info(logger, "logged during the flush");
    EXPECT_EQ(QTV_VX_Vexar_finalizeInstance(), 0);
    ASSERT_EQ(flushed.wait_for(std::chrono::seconds(5)), std::future_status::ready);
    EXPECT_EQ(flushed.get(), DDS_RETCODE_PRECONDITION_NOT_MET);
}

// Without the flush, finalization right after logging discards most of it.
// Lossless: under the default history a subscriber that falls more than 10
// samples behind loses some whatever the flush does.
TEST(LoggerFlush, FlushThenFinalizeDeliversEveryLineToAnotherProcess) {
    constexpr long kLines = 200;
    RemoteLogCounter counter(kRemoteDomain, kLines, std::chrono::seconds(3));
    ASSERT_TRUE(counter.waitUntilReady());
    {
        OptionsPtr options = loggerOptions(kRemoteDomain);
        QTV_VX_Options_setQueueSize(options.get(), 2 * kLines);
        QTV_VX_Options_setQosLibrary(options.get(), QTV_VX_QOS_LIBRARY_NAME);
        QTV_VX_Options_setQosProfile(options.get(), QTV_VX_QOS_PROFILE_LOSSLESS);
        LoggerSession session(std::move(options));
        ASSERT_TRUE(logWriterMatched(session.logger()));
        for (long i = 0; i < kLines; ++i) QTV_VX_Vexar_info(session.logger(), ("line " + std::to_string(i)).c_str());
        EXPECT_EQ(QTV_VX_Vexar_flush(session.logger(), &kFiveSeconds), DDS_RETCODE_OK);
    }
    EXPECT_EQ(counter.received(), kLines);
}

}  // namespace
