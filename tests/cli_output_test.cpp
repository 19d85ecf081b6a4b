// What the command-line tool prints: tail lines (plain, coloured, JSON),
// the escaping of remote texts, the apps table, and the message filter.
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include "apps_table.hpp"
#include "line_format.hpp"
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

    static LogLine line(std::int32_t level, std::string_view kind, std::string_view category,
                        std::string_view message) {
        return {kSeconds, kNanoseconds, {0x01100f3a, static_cast<std::int32_t>(0x8b2c4d1eu)}, kind, level, category,
                message};
    }

    static std::string format(LineStyle style, const LogLine &logLine) {
        std::string out;
        LineFormatter(style).append(out, logLine);
        return out;
    }
};

TEST_F(CliOutput, PlainLinesKeepTheirColumnsWhateverTheirContents) {
    EXPECT_EQ(format(LineStyle::Plain, line(600, "demo", "net", "hello")),
              "2026-11-21 18:30:05.123  01100f3a:8b2c4d1e demo          INFO     net         hello\n");
    std::string unnamedLevel = format(LineStyle::Plain, line(650, "", "", "x"));
    EXPECT_EQ(unnamedLevel,
              "2026-11-21 18:30:05.123  01100f3a:8b2c4d1e               650                  x\n");
    EXPECT_EQ(format(LineStyle::Plain, line(400, "a-very-long-application-kind", "category-longer", "x")),
              "2026-11-21 18:30:05.123  01100f3a:8b2c4d1e a-very-long~  WARNING  category-longer  x\n");
}

TEST_F(CliOutput, ColourWrapsOnlyTheLevelNameSoColumnsStayInPlace) {
    std::string coloured = format(LineStyle::Colour, line(300, "demo", "net", "boom"));
    EXPECT_NE(coloured.find("\x1b[31mERROR\x1b[0m    net"), std::string::npos) << coloured;
    EXPECT_NE(format(LineStyle::Colour, line(100, "", "", "")).find("\x1b[1;31mFATAL"), std::string::npos);
    EXPECT_NE(format(LineStyle::Colour, line(800, "", "", "")).find("\x1b[2mTRACE"), std::string::npos);
    EXPECT_EQ(format(LineStyle::Plain, line(300, "", "", "")).find('\x1b'), std::string::npos);
}

TEST_F(CliOutput, RemoteTextCanNeitherBreakTheLineNorDriveTheTerminal) {
    std::string printable;
    appendPrintable(printable, "one\ntwo\tthree\x1b[2J\r caf\xc3\xa9 \xff \xc2\x9b end\n\n");
    EXPECT_EQ(printable, "one\\ntwo\\tthree\\x1b[2J\\r caf\xc3\xa9 \\xff \\x9b end");
    std::string category = format(LineStyle::Plain, line(600, "", "a\nb", "m"));
    EXPECT_EQ(category.find('\n'), category.size() - 1);
}

TEST_F(CliOutput, JsonLinesAreValidWhateverTheBytes) {
    std::string json = format(LineStyle::Json, line(650, "", "net", "say \"hi\"\\\n\x01 \xe2\x82\xac \xc3\x28"));
    EXPECT_EQ(json,
              "{\"time\":\"2026-11-21T18:30:05.123456789Z\",\"host\":17829690,\"app\":-1960030946,"
              "\"id\":\"01100f3a:8b2c4d1e\",\"kind\":null,\"level\":650,\"levelName\":null,\"category\":\"net\","
              "\"message\":\"say \\\"hi\\\"\\\\\\n\\u0001 \xe2\x82\xac \\ufffd(\"}\n");
    std::string named = format(LineStyle::Json, line(700, "demo", "", ""));
    EXPECT_NE(named.find("\"kind\":\"demo\",\"level\":700,\"levelName\":\"DEBUG\""), std::string::npos) << named;
    // Overlong and surrogate encodings are refused, a 4-byte character kept.
    std::string out;
    appendJsonString(out, "\xc0\xaf|\xed\xa0\x80|\xf4\x90\x80\x80|\xf0\x9f\x98\x80");
    EXPECT_EQ(out, "\"\\ufffd\\ufffd|\\ufffd\\ufffd\\ufffd|\\ufffd\\ufffd\\ufffd\\ufffd|\xf0\x9f\x98\x80\"");
}

AppRecord record(std::int32_t app, std::string kind, std::int32_t state, bool gone) {
    AppRecord result;
    result.id = {0x01100f3a, app};
    result.kind = std::move(kind);
    result.state = state;
    result.filterLevel = 600;
    result.verbosities = {1, 2, 3, 4, 5};
    result.printFormat = 1;
    result.gone = gone;
    return result;
}

TEST_F(CliOutput, AppsTableAlignsColumnsAndMarksLoggersThatWentAway) {
    std::vector<AppRecord> records{record(1, "demo", 1, false), record(2, "", 2, true)};
    records[1].filterLevel = 650;
    records[1].verbosities[4] = 9;
    EXPECT_EQ(renderAppsTable(records),
              "HOST:APP           KIND  STATE                  LEVEL  PLATFORM  COMMUNICATION  DATABASE      "
              "ENTITIES       API         FORMAT\n"
              "01100f3a:00000001  demo  OPERATIONAL            INFO   ERROR     WARNING        STATUS_LOCAL  "
              "STATUS_REMOTE  STATUS_ALL  TIMESTAMPED\n"
              "01100f3a:00000002  -     NONOPERATIONAL (gone)  650    ERROR     WARNING        STATUS_LOCAL  "
              "STATUS_REMOTE  9           TIMESTAMPED\n");
}

TEST_F(CliOutput, AppRecordReadsTheStateSample) {
    char kind[] = "demo";
    QTV_VX_ADMIN_State state{};
    state.hostAndAppId = {7, -8};
    state.administrationDomainId = 3;
    state.state = QTV_VX_STATE_OPERATIONAL;
    state.applicationKind = kind;
    state.filterLevel = 800;
    for (int i = 0; i < 5; ++i) {  // listed out of order: the category of each entry decides
        state.qtvLoggerVerbosities[i] = {static_cast<QTV_VX_ADMIN_QTVLoggerCategory>(4 - i),
                                         static_cast<QTV_VX_ADMIN_QTVLoggerVerbosity>(i)};
    }
    state.qtvLoggerPrintFormat = QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_MAXIMAL;
    AppRecord read = AppRecord::fromState(state);
    EXPECT_EQ(read.verbosities, (std::array<std::int32_t, 5>{4, 3, 2, 1, 0}));
    EXPECT_EQ(renderAppJson(read),
              "{\"id\":\"00000007:fffffff8\",\"host\":7,\"app\":-8,\"kind\":\"demo\",\"domain\":3,"
              "\"state\":\"OPERATIONAL\",\"gone\":false,\"filterLevel\":800,\"verbosities\":{\"PLATFORM\":"
              "\"STATUS_REMOTE\",\"COMMUNICATION\":\"STATUS_LOCAL\",\"DATABASE\":\"WARNING\",\"ENTITIES\":\"ERROR\","
              "\"API\":\"SILENT\"},\"printFormat\":\"MAXIMAL\"}\n");
}

TEST_F(CliOutput, FilterNeedsEveryConditionToHold) {
    MessageFilter filter;
    filter.mostVerboseLevel = 400;
    filter.app = AppSelector::parse("demo");
    filter.categoryPattern = "net*";
    filter.textPattern.emplace("^conn(ection)? [0-9]+$");
    EXPECT_TRUE(filter.matches(line(400, "demo", "network", "connection 42")));
    EXPECT_TRUE(filter.matches(line(100, "demo", "net", "conn 1")));
    EXPECT_FALSE(filter.matches(line(401, "demo", "net", "conn 1"))) << "less severe than the level";
    EXPECT_FALSE(filter.matches(line(400, "other", "net", "conn 1"))) << "another kind";
    EXPECT_FALSE(filter.matches(line(400, "demo", "db", "conn 1"))) << "category outside the glob";
    EXPECT_FALSE(filter.matches(line(400, "demo", "net", "connection x"))) << "text does not match";
    EXPECT_TRUE(MessageFilter{}.matches(line(999, "", "", "")));

    MessageFilter exact;
    exact.categoryPattern = "";
    EXPECT_TRUE(exact.matches(line(600, "", "", "x"))) << "the empty category is a category too";
    EXPECT_FALSE(exact.matches(line(600, "", "net", "x")));
}

TEST_F(CliOutput, RegexSearchesTheWholeViewOnly) {
    Regex regex("b$");
    std::string text = "abc";
    EXPECT_TRUE(regex.search(std::string_view(text).substr(0, 2))) << "the view ends before the c";
    EXPECT_FALSE(regex.search(text));
}

}  // namespace
