// The bridge to the middleware logger: capturing its lines into the log
// stream, and changing its verbosity and print format. Silencing it while
// the logger is created is seen by the lifecycle test of a failed creation.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/captured_stdout.h"
#include "support/domains.h"
#include "support/running_logger.hpp"

using namespace vexar_test;

namespace {

void writeLine(const char *text, int level) {
    OBLX_Config_LogMessage line{text, static_cast<OBLX_Config_LogLevel>(level)};
    QTV_VX_Vexar_writeDevice(&QTV_VX_Vexar_localDevice, &line);
}

TEST(LoggerBridge, MiddlewareLinesAreCapturedWhileTheLoggerRuns) {
    LoggerSession session(loggerOptions(domains::kLoggerBase + 6));
    ASSERT_TRUE(holdWriteThread(QTV_VX_Vexar_getLogMessageWriteThread()));
    OBLX_Config_Logger *middleware = OBLX_Config_Logger_get_instance();
    EXPECT_EQ(OBLX_Config_Logger_get_output_device(middleware), &QTV_VX_Vexar_localDevice);
    OBLX_Config_Logger_set_verbosity(middleware, OBLX_CONFIG_LOG_VERBOSITY_WARNING);
    std::string printed = capturedStdout([] {
        OBLX_Config_Logger_log(OBLX_CONFIG_LOG_CATEGORY_API, OBLX_CONFIG_LOG_LEVEL_WARNING, "fn", nullptr, 0,
                               "disk %d%% full", 93);
        writeLine("level zero", 0);
        writeLine("level six", 6);
    });
    EXPECT_EQ(printed, "");  // echo is off
    std::vector<QueuedMessage> messages = drainQueue(QTV_VX_Vexar_getMessageQueue());
    ASSERT_EQ(messages.size(), 3u);
    EXPECT_EQ(messages[0].level, QTV_VX_LOG_LEVEL_WARNING);
    EXPECT_EQ(messages[0].category, QTV_VX_VEXAR_INFRASTRUCTURE_CATEGORY);
    EXPECT_NE(messages[0].message.find("disk 93% full\n"), std::string::npos);  // passed on as it came
    EXPECT_EQ(messages[1].level, QTV_VX_LOG_LEVEL_INFO);
    EXPECT_EQ(messages[2].level, QTV_VX_LOG_LEVEL_INFO);

    QTV_VX_Vexar_finalizeInstance();
    EXPECT_EQ(OBLX_Config_Logger_get_output_device(middleware), nullptr);
    // A line still in flight to the old device is printed, not captured,
    // ending in exactly one newline.
    EXPECT_EQ(capturedStdout([] {
                  writeLine("", OBLX_CONFIG_LOG_LEVEL_ERROR);
                  writeLine("late line", OBLX_CONFIG_LOG_LEVEL_ERROR);
                  writeLine("one newline\n", OBLX_CONFIG_LOG_LEVEL_ERROR);
              }),
              "late line\none newline\n");
}

// Each setter's effect on the middleware and the State is seen through the
// remote commands that use them; here what only a direct call shows.
TEST(LoggerBridge, OnlyCommunicationReachesTheWriteThreadAndARefusedFormatChangesNothing) {
    LoggerSession session(loggerOptions(domains::kLoggerBase + 7));
    QTV_VX_Vexar *logger = session.logger();
    QTV_VX_Vexar_setQTVLoggerVerbosityByCategory(logger, OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION,
                                                 OBLX_CONFIG_LOG_VERBOSITY_STATUS_ALL);
    QTV_VX_Vexar_setQTVLoggerVerbosityByCategory(logger, OBLX_CONFIG_LOG_CATEGORY_PLATFORM,
                                                 OBLX_CONFIG_LOG_VERBOSITY_ERROR);
    EXPECT_EQ(logger->logMessageWriteThread->logVerbosity, OBLX_CONFIG_LOG_VERBOSITY_STATUS_ALL);

    EXPECT_EQ(QTV_VX_Vexar_setQTVLoggerPrintFormat(logger, OBLX_CONFIG_LOG_PRINT_FORMAT_VERBOSE), 1);
    // The State shows the format read back: one the middleware refuses changes nothing.
    QTV_VX_Vexar_setQTVLoggerPrintFormat(logger, static_cast<OBLX_Config_LogPrintFormat>(0x1000));
    EXPECT_EQ(logger->state->qtvLoggerPrintFormat, QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_VERBOSE);
}

}  // namespace
