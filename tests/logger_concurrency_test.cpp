// Threads that log, a thread that finalizes and re-creates the logger, and
// middleware diagnostics arriving meanwhile: nothing may deadlock, crash or
// race (this suite also runs under ThreadSanitizer).
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <thread>
#include <vector>

#include "support/domains.h"
#include "support/running_logger.hpp"

using namespace vexar_test;

namespace {

// An application thread holding a logger pointer, which may go stale
// between two calls: the logger must drop such calls, not follow them.
void logUntil(const std::atomic<bool> &stop) {
    QTV_VX_Vexar *remembered = nullptr;
    for (long round = 0; !stop.load(); ++round) {
        if (QTV_VX_Vexar *current = vexar::shared(QTV_VX_Vexar_instance).load()) remembered = current;
        QTV_VX_Vexar_log(remembered, 100 * (1 + round % 8), "concurrent message");
        QTV_VX_Vexar_logMessageWithLevelCategory(remembered, 300, "with a category", "concurrency");
    }
}

void emitDiagnosticsUntil(const std::atomic<bool> &stop) {
    while (!stop.load()) {
        OBLX_Config_Logger_log(OBLX_CONFIG_LOG_CATEGORY_API, OBLX_CONFIG_LOG_LEVEL_WARNING, "emitter", nullptr, 0,
                               "diagnostic from another thread");
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
}

void cycleLogger(QTV_VX_Options *options, int cycles) {
    for (int cycle = 0; cycle < cycles; ++cycle) {
        ASSERT_EQ(QTV_VX_Vexar_setOptions(options), 1);
        QTV_VX_Vexar *logger = QTV_VX_Vexar_getInstance();
        ASSERT_NE(logger, nullptr);
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        QTV_VX_Vexar_setFilterLevel(logger, cycle % 2 ? 800 : 300);
        QTV_VX_Vexar_setQTVLoggerVerbosityByCategory(logger, OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION,
                                                     OBLX_CONFIG_LOG_VERBOSITY_STATUS_ALL);
        ASSERT_EQ(QTV_VX_Vexar_finalizeInstance(), 0);
    }
}

TEST(LoggerConcurrency, LoggingAndDiagnosticsDuringRepeatedFinalizationAndCreation) {
    // A deadlock would otherwise hang the suite until ctest's own time-out.
    std::promise<void> finished;
    std::thread watchdog([done = finished.get_future()] {
        if (done.wait_for(std::chrono::seconds(90)) == std::future_status::ready) return;
        std::fprintf(stderr, "LoggerConcurrency: no end within 90 s, deadlock?\n");
        std::_Exit(3);
    });
    OptionsPtr options = loggerOptions(domains::kLoggerBase + 9);
    QTV_VX_Options_setRemoteAdministrationEnabled(options.get(), 1);
    OBLX_Config_Logger_set_verbosity(OBLX_Config_Logger_get_instance(), OBLX_CONFIG_LOG_VERBOSITY_STATUS_ALL);
    std::fflush(stdout);
    testing::internal::CaptureStdout();  // lines captured between two loggers are printed

    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    for (int id = 0; id < 4; ++id) threads.emplace_back(logUntil, std::cref(stop));
    threads.emplace_back(emitDiagnosticsUntil, std::cref(stop));
    cycleLogger(options.get(), 15);
    stop.store(true);
    for (std::thread &thread : threads) thread.join();

    std::fflush(stdout);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(QTV_VX_Vexar_isVexarRunning(), 0);
    finished.set_value();
    watchdog.join();
}

}  // namespace
