// What the command-line tool prints: tail lines (plain, JSON), the escaping
// of remote texts, the apps table, and the message filter. Colours, the
// State's JSON and the filter options are run end to end by tests/scripts.
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <map>

#include "apps_table.hpp"
#include "demo_messages.hpp"
#include "line_format.hpp"
#include "loss_report.hpp"
#include "message_filter.hpp"
#include "usage_error.hpp"

namespace {

using namespace vexar::cli;

// 2026-11-21 18:30:05.123456789 UTC
constexpr std::int64_t kSeconds = 1795285805;
constexpr std::uint32_t kNanoseconds = 123456789;

class CliOutput : public ::testing::Test {
protected:
    void SetUp() override {
        setenv("TZ", "UTC", 1);
        tzset();
    }

    static LogLine line(std::int32_t level, std::string_view kind, std::string_view category, std::string_view message,
                        std::string_view identity = "") {
        return {kSeconds, kNanoseconds, {0x01100f3a, static_cast<std::int32_t>(0x8b2c4d1eu)}, kind, identity, level,
                category, message};
    }

    static std::string format(LineStyle style, const LogLine &logLine) {
        std::string out;
        LineFormatter(style).append(out, logLine);
        return out;
    }
};

// The columns of ordinary lines are checked end to end by the tail script.
TEST_F(CliOutput, PlainLinesKeepTheirColumnsAndEscapeRemoteText) {
    EXPECT_EQ(
        format(LineStyle::Plain, line(650, "", "", "x")),
        "2026-11-21 18:30:05.123  01100f3a:8b2c4d1e                                     650                  x\n");
    EXPECT_EQ(format(LineStyle::Plain, line(400, "a-very-long-application-kind", "category-longer", "x",
                                            "a-long-program@a-long-host[4194304]")),
              "2026-11-21 18:30:05.123  01100f3a:8b2c4d1e a-very-long~  a-long-program@a-long-host[4194304]  WARNING  "
              "category-longer  x\n");
    // Remote text can neither break the line nor drive the terminal.
    std::string printable;
    appendPrintable(printable, "one\ntwo\tthree\x1b[2J\r caf\xc3\xa9 \xff \xc2\x9b end\n\n");
    EXPECT_EQ(printable, "one\\ntwo\\tthree\\x1b[2J\\r caf\xc3\xa9 \\xff \\x9b end");
    std::string category = format(LineStyle::Plain, line(600, "", "a\nb", "m"));
    EXPECT_EQ(category.find('\n'), category.size() - 1);
}

TEST_F(CliOutput, JsonLinesAreValidWhateverTheBytes) {
    std::string json = format(LineStyle::Json, line(650, "", "net", "say \"hi\"\\\n\x01 \xe2\x82\xac \xc3\x28"));
    EXPECT_EQ(json, "{\"time\":\"2026-11-21T18:30:05.123456789Z\",\"host\":17829690,\"app\":-1960030946,"
                    "\"id\":\"01100f3a:8b2c4d1e\",\"kind\":null,\"identity\":null,\"level\":650,\"levelName\":null,"
                    "\"category\":\"net\","
                    "\"message\":\"say \\\"hi\\\"\\\\\\n\\u0001 \xe2\x82\xac \\ufffd(\"}\n");
    // Overlong and surrogate encodings are refused, a 4-byte character kept.
    std::string out;
    appendJsonString(out, "\xc0\xaf|\xed\xa0\x80|\xf4\x90\x80\x80|\xf0\x9f\x98\x80");
    EXPECT_EQ(out, "\"\\ufffd\\ufffd|\\ufffd\\ufffd\\ufffd|\\ufffd\\ufffd\\ufffd\\ufffd|\xf0\x9f\x98\x80\"");
}

// What counts as a location at the end of a text: the C++ API's form, and
// nothing that only looks a little like it.
TEST_F(CliOutput, ASourceLocationEndingTheTextIsAColumnAndTwoJsonFields) {
    const struct {
        std::string_view message, text, file;
        std::uint32_t line;
    } cases[] = {
        {"retry 1 [@net.cpp:42]", "retry 1", "net.cpp", 42},
        {"up [@C:/src/a b.cpp:7]", "up", "C:/src/a b.cpp", 7},  // the last colon ends the file
        {"[@x.c:1] [@y.c:2]", "[@x.c:1]", "y.c", 2},
        {"port [@host:8080] open", "port [@host:8080] open", "", 0},  // not at the end
        {"odd [@net.cpp:4x]", "odd [@net.cpp:4x]", "", 0},
        {"odd [@net.cpp:]", "odd [@net.cpp:]", "", 0},
        {"odd [@:12]", "odd [@:12]", "", 0},
        {"odd [net.cpp:12]", "odd [net.cpp:12]", "", 0},
    };
    for (const auto &c : cases) {
        LocatedText located = splitLocation(c.message);
        EXPECT_EQ(located.text, c.text) << c.message;
        EXPECT_EQ(located.file, c.file) << c.message;
        EXPECT_EQ(located.line, c.line) << c.message;
    }
    EXPECT_EQ(format(LineStyle::Plain, line(600, "", "net", "retry 1 [@net.cpp:42]")),
              "2026-11-21 18:30:05.123  01100f3a:8b2c4d1e                                     INFO     net         "
              "net.cpp:42        retry 1\n");
    EXPECT_EQ(format(LineStyle::Json, line(600, "", "", "retry 1 [@net.cpp:42]")),
              "{\"time\":\"2026-11-21T18:30:05.123456789Z\",\"host\":17829690,\"app\":-1960030946,"
              "\"id\":\"01100f3a:8b2c4d1e\",\"kind\":null,\"identity\":null,\"level\":600,\"levelName\":\"INFO\","
              "\"category\":\"\","
              "\"message\":\"retry 1\",\"file\":\"net.cpp\",\"line\":42}\n");
}

TEST_F(CliOutput, AppsTableAlignsColumnsAndMarksLoggersThatWentAway) {
    const std::vector<AppRecord> records{{{0x01100f3a, 1},
                                          "demo",
                                          "demo@box[42]",
                                          0,
                                          1,
                                          600,
                                          {1, 2, 3, 4, 5},
                                          1,
                                          false,
                                          MessageCounts{10, 2, 1234, 9, 1, 0}},
                                         {{0x01100f3a, 2}, "", "", 0, 2, 650, {1, 2, 3, 4, 9}, 1, true, std::nullopt}};
    EXPECT_EQ(renderAppsTable(records), "HOST:APP           KIND  IDENTITY      STATE                  LEVEL  DROPPED\n"
                                        "01100f3a:00000001  demo  demo@box[42]  OPERATIONAL            INFO   1234\n"
                                        "01100f3a:00000002  -     -             NONOPERATIONAL (gone)  650    -\n");
    // The middleware logger's five verbosities read as one group, not as five outcomes.
    EXPECT_EQ(
        renderAppsTable(records, true),
        std::string(78, ' ') +
            "MIDDLEWARE LOGGER: VERBOSITY PER CATEGORY, PRINT FORMAT\n"
            "HOST:APP           KIND  IDENTITY      STATE                  LEVEL  DROPPED  PLATFORM  COMMUNICATION  "
            "DATABASE      ENTITIES       API         FORMAT\n"
            "01100f3a:00000001  demo  demo@box[42]  OPERATIONAL            INFO   1234     ERROR     WARNING        "
            "STATUS_LOCAL  STATUS_REMOTE  STATUS_ALL  TIMESTAMPED\n"
            "01100f3a:00000002  -     -             NONOPERATIONAL (gone)  650    -        ERROR     WARNING        "
            "STATUS_LOCAL  STATUS_REMOTE  9           TIMESTAMPED\n");
    EXPECT_TRUE(renderAppJson(records[0])
                    .ends_with(",\"counts\":{\"accepted\":10,\"refused\":2,\"dropped\":1234,\"published\":9,\"failed\":"
                               "1,\"discarded\":0}}\n"));
    EXPECT_TRUE(renderAppJson(records[1]).ends_with(",\"counts\":null}\n")) << "a logger that publishes no counts";
}

// Each filter option alone and together is run end to end by the tail
// script; here the edges it does not reach.
TEST_F(CliOutput, FilterEdgesAndARegexSearchingOnlyTheView) {
    MessageFilter filter;
    filter.mostVerboseLevel = 400;
    EXPECT_TRUE(filter.matches(line(400, "", "", "")));
    EXPECT_FALSE(filter.matches(line(401, "", "", ""))) << "less severe than the level";
    MessageFilter exact;
    exact.categoryPatterns = {""};
    EXPECT_TRUE(exact.matches(line(600, "", "", "x"))) << "the empty category is a category too";
    EXPECT_FALSE(exact.matches(line(600, "", "net", "x")));
    MessageFilter either;  // of one kind, either; of two kinds, both
    either.categoryPatterns = {"net", "db*"};
    either.textPatterns.emplace_back("^x");
    EXPECT_TRUE(either.matches(line(600, "", "net", "x")));
    EXPECT_TRUE(either.matches(line(600, "", "dbase", "xy")));
    EXPECT_FALSE(either.matches(line(600, "", "ui", "x")));
    EXPECT_FALSE(either.matches(line(600, "", "net", "y")));
    MessageFilter hiding;  // an exclusion wins over what holds
    hiding.categoryPatterns = {"net", "db*"};
    hiding.excludedCategoryPatterns = {"db*"};
    hiding.excludedTextPatterns.emplace_back("secret");
    EXPECT_TRUE(hiding.matches(line(600, "", "net", "x")));
    EXPECT_FALSE(hiding.matches(line(600, "", "dbase", "xy")));
    EXPECT_FALSE(hiding.matches(line(600, "", "net", "x secret")));
    MessageFilter onlyHiding;
    onlyHiding.excludedCategoryPatterns = {""};
    EXPECT_FALSE(onlyHiding.matches(line(600, "", "", "x")));
    EXPECT_TRUE(onlyHiding.matches(line(600, "", "ui", "x")));
    const std::string text = "abc";
    EXPECT_TRUE(Regex("b$").search(std::string_view(text).substr(0, 2))) << "the view ends before the c";
    // Patterns can come from a URL: those that make regcomp take memory or
    // time beyond any use are refused, the rest compile.
    for (const char *refused : {"a+++", "a*+", "x{2}{3}", "a{256}", "a{1,300}", "(a)\\1"}) {
        EXPECT_THROW(Regex{refused}, UsageError) << refused;
    }
    EXPECT_THROW(Regex(std::string(1025, 'a')), UsageError);
    for (const char *accepted : {"a+b*", "[+*]+", "x{2,5}", "\\++", "[[:digit:]]+", "[]+]?", "a{255}"}) {
        EXPECT_NO_THROW(Regex{accepted}) << accepted;
    }
    EXPECT_FALSE(Regex("b$").search(text));
}

// Loss is said at most once a second, everything counted in between at
// once, and what is left at the end is said regardless of time.
TEST_F(CliOutput, LossIsSummedIntoOneNoticeASecondAndFlushedAtTheEnd) {
    using std::chrono::milliseconds;
    const WallClock::time_point start{std::chrono::seconds(kSeconds)};
    LossCounter losses(start);
    EXPECT_FALSE(losses.add(0, start + milliseconds(100))) << "nothing lost, nothing said";
    std::optional<LossNotice> first = losses.add(3, start + milliseconds(200));
    ASSERT_TRUE(first);
    EXPECT_EQ(first->count, 3);
    EXPECT_EQ(lossLine(*first), "vexar tail: lost 3 messages since 18:30:05\n");
    EXPECT_EQ(lossJson(*first), "{\"lost\":3,\"since\":\"2026-11-21T18:30:05.000000000Z\"}\n");
    EXPECT_FALSE(losses.add(4, start + milliseconds(700)));
    EXPECT_FALSE(losses.add(5, start + milliseconds(1100)));
    std::optional<LossNotice> second = losses.add(0, start + milliseconds(1200));
    ASSERT_TRUE(second);
    EXPECT_EQ(second->count, 9);
    EXPECT_EQ(second->since, start + milliseconds(200));
    EXPECT_FALSE(losses.add(1, start + milliseconds(1300)));
    std::optional<LossNotice> last = losses.flush(start + milliseconds(1400));
    ASSERT_TRUE(last);
    EXPECT_EQ(lossLine(*last), "vexar tail: lost 1 message since 18:30:06\n");
    EXPECT_FALSE(losses.flush(start + milliseconds(1500)));
}

// The demo is what a new user sees first: it must look like a healthy
// service, not like one failing.
TEST(CliDemo, LooksHealthyMostlyInfoAndDebugRarelyAnErrorAndShortTexts) {
    std::map<std::int32_t, int> perLevel;
    int longOnes = 0;
    constexpr int kMessages = 10000;
    for (std::uint64_t index = 0; index < kMessages; ++index) {
        DemoMessage message = healthyDemoMessage(index);
        ++perLevel[message.level];
        if (message.text.size() > 200) ++longOnes;
        EXPECT_GE(message.level, 300) << "never FATAL or SEVERE: " << index;
        EXPECT_FALSE(std::string(message.category).empty());
    }
    DemoMessage first = healthyDemoMessage(0);
    EXPECT_GE(first.level, 500) << first.text;
    EXPECT_LT(first.text.size(), 80u);
    EXPECT_GT(perLevel[600] + perLevel[700], kMessages * 9 / 10);
    EXPECT_GT(perLevel[400], 0);
    EXPECT_LT(perLevel[400], kMessages / 20);
    EXPECT_GT(perLevel[300], 0);
    EXPECT_LT(perLevel[300], kMessages / 200);
    EXPECT_GT(longOnes, 0);
    EXPECT_LT(longOnes, kMessages / 100);
}

}  // namespace
