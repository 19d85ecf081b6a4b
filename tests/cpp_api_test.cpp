// The C++ API over the C one: what its calls and macros log, the source
// location at the end of the text, what a filtered call skips, and the
// Logger's life (one at a time; flushed, then finalized).
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/captured_stdout.h"
#include "support/domains.h"
#include "support/running_logger.hpp"
#include "vexar/Statistics.h"
#include "vexar/vexar.hpp"

using namespace vexar_test;

namespace {

// Counts how often it is formatted.
struct Counted {
    int *formats;
};

}  // namespace

template <>
struct fmt::formatter<Counted> : fmt::formatter<int> {
    auto format(const Counted &counted, fmt::format_context &context) const {
        return fmt::formatter<int>::format(++*counted.formats, context);
    }
};

namespace {

OptionsPtr optionsOn(int domain) { return loggerOptions(domain); }

vexar::Logger heldLogger(int domain, vexar::Location location) {
    vexar::Settings settings;
    settings.location = location;
    vexar::Logger logger(optionsOn(domain).get(), settings);  // the Logger keeps a copy
    EXPECT_TRUE(logger);
    EXPECT_TRUE(holdWriteThread(QTV_VX_Vexar_getLogMessageWriteThread()));
    return logger;
}

std::vector<QueuedMessage> queued() { return drainQueue(QTV_VX_Vexar_getMessageQueue()); }

std::string locationOf(int line, const std::string &file = "cpp_api_test.cpp") {
    return " [@" + file + ":" + std::to_string(line) + "]";
}

TEST(CppApi, CallsAndMacrosLogFormattedTextsInTheirCategories) {
    vexar::Logger logger = heldLogger(domains::kApiBase + 2, vexar::Location::fileName);
    auto net = logger.category("net");
    logger.info("retry {} of {} on {}", 2, 3, "eth0");
    net.warn("{:.1f} s", 2.5);
    VX_ERROR(net, "lost {} packets", 17);
    const int macroLine = __LINE__ - 1;
    VX_NOTICE(logger, "no arguments");
    const int noArgumentsLine = __LINE__ - 1;
    logger.info(fmt::runtime("{:d}"), "text");  // a bad format known only at run time
    std::vector<QueuedMessage> messages = queued();
    ASSERT_EQ(messages.size(), 5u);
    const struct {
        DDS_Long level;
        std::string category;
        std::string message;
    } expected[] = {
        {QTV_VX_LOG_LEVEL_INFO, "", "retry 2 of 3 on eth0"},
        {QTV_VX_LOG_LEVEL_WARNING, "net", "2.5 s"},
        {QTV_VX_LOG_LEVEL_ERROR, "net", "lost 17 packets" + locationOf(macroLine)},
        {QTV_VX_LOG_LEVEL_NOTICE, "", "no arguments" + locationOf(noArgumentsLine)},
        {QTV_VX_LOG_LEVEL_INFO, "", "{:d} [format error]"},
    };
    for (std::size_t i = 0; i < messages.size(); ++i) {
        EXPECT_EQ(messages[i].level, expected[i].level) << i;
        EXPECT_EQ(messages[i].category, expected[i].category) << i;
        EXPECT_EQ(messages[i].message, expected[i].message) << i;
    }
}

// The location is never cut: the text makes room for it.
TEST(CppApi, ALongTextIsCutBeforeItsFullPathLocation) {
    vexar::Logger logger = heldLogger(domains::kApiBase + 3, vexar::Location::path);
    VX_INFO(logger, "{}", std::string(5000, 'x'));
    const std::string location = locationOf(__LINE__ - 1, __FILE__);
    std::vector<QueuedMessage> messages = queued();
    ASSERT_EQ(messages.size(), 1u);
    const std::string marker = QTV_VX_VEXAR_CUT_MARKER;
    EXPECT_EQ(messages[0].message, std::string(4096 - marker.size() - location.size(), 'x') + marker + location);
}

TEST(CppApi, AFilteredCallNeitherFormatsNorEvaluatesMacroArguments) {
    vexar::Logger logger = heldLogger(domains::kApiBase + 4, vexar::Location::off);
    logger.setFilterLevel(QTV_VX_LOG_LEVEL_WARNING);
    auto net = logger.category("net");
    int formats = 0;
    int evaluated = 0;
    logger.debug("{}", Counted{&formats});
    net.info("{}", Counted{&formats});
    VX_INFO(net, "{}", ++evaluated);
    EXPECT_EQ(formats, 0);
    EXPECT_EQ(evaluated, 0);
    net.error("{}", Counted{&formats});
    VX_ERROR(net, "{}", ++evaluated);
    EXPECT_EQ(formats, 1);
    EXPECT_EQ(evaluated, 1);
    EXPECT_EQ(queued().size(), 2u);
}

QTV_VX_Statistics statistics() {
    QTV_VX_Statistics figures{};
    QTV_VX_Vexar_getStatistics(&figures);
    return figures;
}

// Finalizing alone would discard what is still queued.
TEST(CppApi, ALoggerIsFlushedThenFinalizedAndOnlyOneRunsAtATime) {
    const QTV_VX_Statistics before = statistics();
    {
        OptionsPtr options = optionsOn(domains::kApiBase + 5);
        QTV_VX_Options_setQueueSize(options.get(), 4096);  // the write thread need not keep up
        vexar::Logger logger(options.get());
        ASSERT_TRUE(logger);
        std::string printed = capturedStdout([] {
            vexar::Logger second(nullptr);
            EXPECT_FALSE(second);
        });
        EXPECT_EQ(printed, "VX Error: vexar::Logger: A logger already runs; this one was not created\n");
        EXPECT_EQ(QTV_VX_Vexar_isVexarRunning(), 1) << "the refused one must not take the first down";
        for (int i = 0; i < 3000; ++i) logger.info("message {}", i);
    }
    EXPECT_EQ(QTV_VX_Vexar_isVexarRunning(), 0);
    const QTV_VX_Statistics after = statistics();
    EXPECT_EQ(after.accepted - before.accepted, 3000u);
    EXPECT_EQ(after.published - before.published, 3000u);
    EXPECT_EQ(after.discarded, before.discarded);
}

// A write thread that stopped keeps the queue full past the time-out.
TEST(CppApi, AFlushThatTimesOutIsPrintedBeforeTheLossIsCounted) {
    const QTV_VX_Statistics before = statistics();
    std::string printed = capturedStdout([] {
        vexar::Settings settings;
        settings.flushTimeout = {0, 1000000};
        vexar::Logger logger(optionsOn(domains::kApiBase + 6).get(), settings);
        ASSERT_TRUE(holdWriteThread(QTV_VX_Vexar_getLogMessageWriteThread()));
        logger.info("never written");
    });
    EXPECT_EQ(printed, "VX Warning: vexar::Logger: Flush timed out: messages still queued are discarded\n");
    EXPECT_EQ(statistics().discarded - before.discarded, 1u);
}

}  // namespace
