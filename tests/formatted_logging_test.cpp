// The printf-style calls and the VX_LOG_ macros: what arrives, what is cut
// and where, and that a filtered macro call evaluates nothing.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/captured_stdout.h"
#include "support/domains.h"
#include "support/running_logger.hpp"
#include "vexar/FormattedLogging.h"
#include "vexar/message_counts.hpp"

using namespace vexar_test;

namespace {

const std::string kMarker = QTV_VX_VEXAR_CUT_MARKER;

// What a formatter leaves in a buffer of `size` bytes, ended by the call.
std::string ended(const std::string &text, std::size_t size) {
    std::vector<char> buffer(size, '#');
    text.copy(buffer.data(), std::min(text.size(), size - 1));
    std::size_t length = QTV_VX_Vexar_endFormattedText(buffer.data(), size, text.size());
    EXPECT_EQ(buffer[length], '\0');
    return std::string(buffer.data(), length);
}

// 16 bytes hold 15 of text: a cut text keeps 10 and the marker.
TEST(FormattedText, CutBeforeTheCharacterThatDoesNotFitWithTheMarker) {
    const struct {
        std::string text;
        std::string expected;
    } cases[] = {
        {"fifteen bytes..", "fifteen bytes.."},                        // fits exactly
        {"sixteen bytes...", "sixteen by" + kMarker},                  // one too many
        {"abcdefgh\xc3\xa9xyzuvw", "abcdefgh\xc3\xa9" + kMarker},      // é ends at the cut
        {"abcdefghi\xc3\xa9xyzuv", "abcdefghi" + kMarker},             // é across the cut
        {"abcdefgh\xe2\x82\xacxyzuv", "abcdefgh" + kMarker},           // € across the cut
        {"abcdefg\xf0\x9f\x98\x80xyzuv", "abcdefg" + kMarker},         // 4 bytes, the last at the cut
        {"abcdef" + std::string(10, '\x80'), "abcdef\x80" + kMarker},  // not UTF-8: at most 3 bytes back
    };
    for (const auto &c : cases) EXPECT_EQ(ended(c.text, 16), c.expected) << c.text;
    capturedStdout([] { EXPECT_EQ(QTV_VX_Vexar_endFormattedText(nullptr, 16, 3), 0u); });
}

class HeldFormattedLogger : public ::testing::Test {
protected:
    HeldFormattedLogger() : session_(loggerOptions(domains::kApiBase + 0)) {}
    void SetUp() override {
        ASSERT_NE(logger(), nullptr);
        ASSERT_TRUE(holdWriteThread(QTV_VX_Vexar_getLogMessageWriteThread()));
    }
    QTV_VX_Vexar *logger() const { return session_.logger(); }
    std::vector<QueuedMessage> queued() const { return drainQueue(QTV_VX_Vexar_getMessageQueue()); }

private:
    LoggerSession session_;
};

TEST_F(HeldFormattedLogger, MessagesArriveFormattedAndLongOnesCutAtTheBound) {
    const std::string longText(5000, 'x');
    const std::string euroAcrossTheCut = std::string(4089, 'a') + "\xe2\x82\xac\xe2\x82\xac\xe2\x82\xac";
    QTV_VX_Vexar_logf(logger(), QTV_VX_LOG_LEVEL_WARNING, "net", "retry %d of %d on %s", 2, 3, "eth0");
    QTV_VX_Vexar_logf(logger(), QTV_VX_LOG_LEVEL_NOTICE, "pump", "%.2f bar", 3.25);
    VX_LOG_ERROR("pump", "no arguments");
    VX_LOG_INFO("", "%s", longText.c_str());
    VX_LOG_INFO("", "%s", euroAcrossTheCut.c_str());
    std::vector<QueuedMessage> messages = queued();
    ASSERT_EQ(messages.size(), 5u);
    EXPECT_EQ(messages[0].level, QTV_VX_LOG_LEVEL_WARNING);
    EXPECT_EQ(messages[0].category, "net");
    EXPECT_EQ(messages[0].message, "retry 2 of 3 on eth0");
    EXPECT_EQ(messages[1].category + " " + messages[1].message, "pump 3.25 bar");
    EXPECT_EQ(messages[2].level, QTV_VX_LOG_LEVEL_ERROR);
    EXPECT_EQ(messages[2].category + " " + messages[2].message, "pump no arguments");
    EXPECT_EQ(messages[3].message, std::string(4096 - kMarker.size(), 'x') + kMarker);
    EXPECT_EQ(messages[4].message, std::string(4089, 'a') + kMarker);
}

TEST_F(HeldFormattedLogger, AFilteredMacroCallEvaluatesNothingAndCountsAsRefused) {
    QTV_VX_Vexar_setFilterLevel(logger(), QTV_VX_LOG_LEVEL_WARNING);
    int evaluated = 0;
    const vexar::CallOutcomes before = vexar::callOutcomesOfThisThread();
    VX_LOG_INFO("c", "%d", ++evaluated);
    VX_LOG_AT(QTV_VX_LOG_LEVEL_WARNING + 1, "c", "%d", ++evaluated);
    QTV_VX_Vexar_logf(logger(), QTV_VX_LOG_LEVEL_DEBUG, "c", "%d", 1);
    EXPECT_EQ(evaluated, 0);
    VX_LOG_WARNING("c", "%d", ++evaluated);
    const vexar::CallOutcomes after = vexar::callOutcomesOfThisThread();
    EXPECT_EQ(evaluated, 1);
    EXPECT_EQ(after.refused - before.refused, 3u);
    EXPECT_EQ(after.queued - before.queued, 1u);
    std::vector<QueuedMessage> messages = queued();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].message, "1");
}

// A null format is never handed to the formatter; its error is printed
// whatever the level, as a null message's is.
TEST_F(HeldFormattedLogger, NullFormatOrCategoryIsPrinted) {
    const char *noFormat = nullptr;
    QTV_VX_Vexar_setFilterLevel(logger(), QTV_VX_LOG_LEVEL_WARNING);
    std::string printed = capturedStdout([&] {
        QTV_VX_Vexar_logf(logger(), QTV_VX_LOG_LEVEL_TRACE, "c", noFormat);
        QTV_VX_Vexar_logf(logger(), QTV_VX_LOG_LEVEL_ERROR, nullptr, "%d", 1);
    });
    const std::string prefix = "VX Error: QTV_VX_Vexar_logMessageWithParams: ";
    EXPECT_EQ(printed, prefix + "Message to be logged is NULL\n" + prefix + "Message category is NULL\n");
    EXPECT_TRUE(queued().empty());
}

// Before any logger runs the gate is closed, yet the macros' first call must
// create the singleton, as getInstance would.
TEST(FormattedLogging, TheFirstMacroCallCreatesTheLogger) {
    OptionsPtr options = loggerOptions(domains::kApiBase + 1);
    ASSERT_EQ(QTV_VX_Vexar_setOptions(options.get()), 1);
    const vexar::CallOutcomes before = vexar::callOutcomesOfThisThread();
    VX_LOG_INFO("start", "first of %d", 1);
    EXPECT_EQ(QTV_VX_Vexar_isVexarRunning(), 1);
    EXPECT_EQ(vexar::callOutcomesOfThisThread().queued - before.queued, 1u);
    QTV_VX_Vexar_finalizeInstance();
}

}  // namespace
