// The web console's parts without DDS or HTTP: the hub that hands each
// page's stream what its filter passes, with a bounded backlog whose
// overflow is counted, and the JSON and query parameters of the API.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

#include "apps_board.hpp"
#include "filter_options.hpp"
#include "usage_error.hpp"
#include "web_hub.hpp"
#include "web_json.hpp"

namespace {

using namespace vexar::cli;
using namespace std::chrono_literals;

LogLine lineAt(std::int32_t level, std::string_view message, AppId app = {1, 2}) {
    LogLine line;
    line.seconds = 1795600000;
    line.app = app;
    line.kind = "demo";
    line.level = level;
    line.message = message;
    return line;
}

MessageFilter filterOf(const QueryParameters &parameters) { return filterFrom(streamArguments(parameters)); }

TEST(CliWebHub, EachStreamGetsWhatItsFilterPassesAndIsToldOfLoss) {
    LiveHub hub;
    auto warnings = hub.subscribe(filterOf({{"level", "WARNING"}}));
    auto everything = hub.subscribe({});
    std::vector<LogLine> batch{lineAt(300, "bad"), lineAt(600, "fine"), lineAt(400, "odd")};
    hub.publish(batch);
    hub.reportLost(7);

    StreamTurn turn = warnings->next(0ms);
    ASSERT_EQ(turn.lines.size(), 2u);
    EXPECT_EQ(turn.lines[0].message, "bad");
    EXPECT_EQ(turn.lines[1].message, "odd");
    EXPECT_EQ(turn.lost, 7u);  // what the reader lost may have matched any filter
    EXPECT_EQ(everything->next(0ms).lines.size(), 3u);
    EXPECT_TRUE(warnings->next(0ms).lines.empty());

    // A page that was closed leaves the hub with its last owner.
    everything.reset();
    hub.publish(batch);
    EXPECT_EQ(warnings->next(0ms).lines.size(), 2u);
}

TEST(CliWebHub, ABacklogThatIsFullCountsTheRestAndCloseEndsEveryStream) {
    LiveHub hub;
    auto slow = hub.subscribe({});
    std::vector<LogLine> batch(LiveStream::kBacklogMost + 5, lineAt(600, "x"));
    hub.publish(batch);
    StreamTurn turn = slow->next(0ms);
    EXPECT_EQ(turn.lines.size(), LiveStream::kBacklogMost);
    EXPECT_EQ(turn.lost, 5u);

    hub.close();
    auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(slow->next(10s).closed);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
    EXPECT_TRUE(hub.subscribe({})->next(0ms).closed);
}

TEST(CliWebHub, RatesCountEveryMessagePerLevel) {
    EXPECT_EQ(rateSlotOf(100), 0u);
    EXPECT_EQ(rateSlotOf(800), 7u);
    for (std::int32_t odd : {0, 50, 450, 900, -100}) EXPECT_EQ(rateSlotOf(odd), kRateSlots - 1) << odd;
    LevelCounts counts{};
    counts[3] = 12;
    counts[8] = 1;
    auto json = nlohmann::json::parse(levelCountsJson(counts));
    EXPECT_EQ(json["WARNING"], 12);
    EXPECT_EQ(json["other"], 1);
    EXPECT_EQ(json.size(), kRateSlots);
}

TEST(CliWebJson, QueryParametersReadAsTheCommandLineOptions) {
    MessageFilter filter = filterOf({{"level", "error"},
                                     {"level", "WARNING"},
                                     {"app", "alpha"},
                                     {"grep", "cache"},
                                     {"category", ""},
                                     {"exclude-grep", "x+"}});
    EXPECT_EQ(filter.mostVerboseLevel, 400);  // given twice: the more verbose shows both
    ASSERT_EQ(filter.apps.size(), 1u);
    EXPECT_TRUE(filter.categoryPatterns.empty());  // an empty form field is no filter
    EXPECT_EQ(filter.textPatterns.size(), 1u);
    EXPECT_EQ(filter.excludedTextPatterns.size(), 1u);

    EXPECT_EQ(logsQuery({}).last, kLogsLimitMost);
    EXPECT_EQ(logsQuery({{"limit", "5"}, {"until", "2026-11-21T17:30:05Z"}}).last, 5);
    // Each is a mistake the API answers with 400 and this text.
    for (QueryParameters bad : std::vector<QueryParameters>{{{"colour", "red"}},
                                                            {{"level", "LOUD"}},
                                                            {{"grep", "("}},
                                                            {{"app", "1:2:3"}},
                                                            {{"until", "1m"}},
                                                            {{"limit", "5"}}}) {
        EXPECT_THROW(streamArguments(bad), UsageError) << bad.begin()->first;
    }
    for (std::string limit : {"0", "10001", "many"}) {
        EXPECT_THROW(logsQuery({{"limit", limit}}), UsageError) << limit;
    }
}

TEST(CliWebJson, MessagesAndLoggersCarryTheirLabel) {
    std::string out;
    LineFormatter json(LineStyle::Json);
    appendMessageJson(out, json, lineAt(400, "<script>alert(\"x\")</script>\n"));
    auto message = nlohmann::json::parse(out);
    EXPECT_EQ(message["label"], "00000001:00000002 demo");
    EXPECT_EQ(message["message"], "<script>alert(\"x\")</script>\n");
    EXPECT_EQ(message["levelName"], "WARNING");

    AppsBoard board;
    AppRecord named;
    named.id = {1, 2};
    named.kind = "demo";
    named.identity = "demo@rover[42]";
    AppRecord unnamed;
    unnamed.id = {3, 4};
    board.replace({{named.id, named}, {unnamed.id, unnamed}});
    auto now = AppsBoard::Clock::now();
    std::vector<LogLine> lines{lineAt(600, "hi")};
    board.messagesFrom(lines, now - 2s);
    auto apps = nlohmann::json::parse(board.json(now));
    ASSERT_EQ(apps.size(), 2u);
    EXPECT_EQ(apps[0]["label"], "00000001:00000002 demo demo@rover[42]");
    EXPECT_NEAR(apps[0]["lastMessageAgo"].get<double>(), 2.0, 0.05);
    EXPECT_EQ(apps[1]["label"], "00000003:00000004");
    EXPECT_TRUE(apps[1]["lastMessageAgo"].is_null());
    EXPECT_TRUE(board.find({3, 4}));
    EXPECT_FALSE(board.find({5, 6}));
}

}  // namespace
