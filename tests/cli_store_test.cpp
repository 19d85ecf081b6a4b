// The log database without DDS: times and sizes as the options read them,
// the full-text words, what a restarted recorder skips, deleting by age and
// size, the queries' SQL and post-filters, and tail's seam.
#include <gtest/gtest.h>

#include <unistd.h>

#include <string>
#include <vector>

#include "filter_options.hpp"
#include "history_seam.hpp"
#include "log_store.hpp"
#include "store_query.hpp"
#include "store_retention.hpp"
#include "time_text.hpp"
#include "usage_error.hpp"

namespace {

using namespace vexar::cli;

constexpr std::int64_t kSecond = 1000000000;
constexpr std::int64_t kNow = 1795600000 * kSecond;  // 2026-11-25T...Z

TEST(CliTimeText, DurationsTimePointsAndSizes) {
    struct Case {
        const char *text;
        std::int64_t expected;
    };
    for (Case c : {Case{"90", 90 * kSecond},
                   {"90s", 90 * kSecond},
                   {"10m", 600 * kSecond},
                   {"2H", 7200 * kSecond},
                   {"7d", 7 * 86400 * kSecond},
                   {"1w", 7 * 86400 * kSecond}}) {
        EXPECT_EQ(parseDuration("keep", c.text), c.expected) << c.text;
        EXPECT_EQ(parseTimePoint("since", c.text, kNow), kNow - c.expected) << c.text;
    }
    for (Case c : {Case{"2026-11-21T17:30:05Z", 1795282205 * kSecond},
                   {"2026-11-21T17:30:05.25Z", 1795282205 * kSecond + kSecond / 4},
                   {"2026-11-21 19:30:05+02:00", 1795282205 * kSecond},
                   {"2026-11-21T12:30-0500", 1795282200 * kSecond},
                   {"now", kNow}}) {
        EXPECT_EQ(parseTimePoint("since", c.text, kNow), c.expected) << c.text;
    }
    // Local forms: whatever the zone, yesterday is a day before today, at midnight.
    std::int64_t today = parseTimePoint("since", "today", kNow);
    std::int64_t yesterday = parseTimePoint("since", "Yesterday", kNow);
    EXPECT_LE(today, kNow);
    EXPECT_GT(today, kNow - 86400 * kSecond);
    EXPECT_NEAR(double(today - yesterday), 86400e9, 3600e9);
    EXPECT_EQ(parseTimePoint("until", "2026-11-25", kNow), parseTimePoint("until", "2026-11-25 00:00:00", kNow));
    for (const char *bad :
         {"", "soon", "-5m", "10x", "2026-13-01", "2026-11-21 25:00", "2026-11-21Z5", "2026-11-21 10:61"}) {
        EXPECT_THROW(parseTimePoint("since", bad, kNow), UsageError) << bad;
    }
    EXPECT_EQ(parseSize("max-size", "64k"), 64 << 10);
    EXPECT_EQ(parseSize("max-size", "2G"), std::int64_t{2} << 30);
    EXPECT_EQ(parseSize("max-size", "500000"), 500000);
    for (const char *bad : {"0", "2GB", "-1M", "M", "99999999999T"}) {
        EXPECT_THROW(parseSize("max-size", bad), UsageError) << bad;
    }
}

TEST(CliTimeText, FullTextWordsAreQuotedAndAllRequired) {
    EXPECT_EQ(fullTextQuery("retry timeout"), R"("retry" "timeout")");
    EXPECT_EQ(fullTextQuery("  net*  \t"), R"("net"*)");
    EXPECT_EQ(fullTextQuery(R"(say "hi" OR -x)"), R"("say" """hi""" "OR" "-x")");
    EXPECT_THROW(fullTextQuery(" \t"), UsageError);
}

// A database in a temporary directory, removed with its WAL files.
class StoreTest : public ::testing::Test {
protected:
    ~StoreTest() override { std::system(("rm -rf " + directory_).c_str()); }

    std::string path() const { return directory_ + "/log.db"; }

    static StoredMessage message(AppId app, std::int64_t time, std::int32_t level, std::string text,
                                 std::string category = "net") {
        return {time, time, app, level, std::move(category), std::move(text)};
    }

    std::vector<std::string> texts(const StoreQuery &query) {
        LogDatabase db(path(), Database::Access::ReadOnly);
        std::vector<std::string> found;
        selectMessages(db, query, [&](const LogLine &line) { found.emplace_back(line.message); });
        return found;
    }

    const AppId alpha{1, 10};
    const AppId beta{2, 20};

private:
    std::string directory_ = [] {
        char name[] = "/tmp/vexar_store_XXXXXX";
        return std::string(mkdtemp(name));
    }();
};

TEST_F(StoreTest, ReplayedMessagesAreSkippedAfterARestart) {
    {
        LogStore store(path());
        std::vector<StoredMessage> batch = {message(alpha, 10, 300, "one"), message(alpha, 20, 300, "two")};
        EXPECT_EQ(store.write(batch, {}), 2u);
    }
    LogStore restarted(path());
    // The logger replays its recent messages, then goes on; two messages
    // may share a time and differ in text.
    std::vector<StoredMessage> replay = {message(alpha, 10, 300, "one"), message(alpha, 20, 300, "two"),
                                         message(alpha, 20, 300, "two again"), message(alpha, 30, 300, "three"),
                                         message(beta, 5, 300, "other app")};
    EXPECT_EQ(restarted.write(replay, {}), 3u);
    EXPECT_EQ(texts({}), (std::vector<std::string>{"other app", "one", "two", "two again", "three"}));
}

TEST_F(StoreTest, QueriesSelectByEveryKindOfFilter) {
    {
        LogStore store(path());
        StoredState named;
        named.record.id = beta;
        named.record.kind = "web";
        std::vector<StoredMessage> batch = {message(alpha, 1 * kSecond, 100, "disk failed", "db"),
                                            message(beta, 2 * kSecond, 600, "request served", "ui"),
                                            message(alpha, 3 * kSecond, 300, "retry after timeout", "net"),
                                            message(beta, 4 * kSecond, 300, "timeout on upstream", "net.http"),
                                            message(alpha, 5 * kSecond, 800, "trace detail", "")};
        store.write(batch, std::vector<StoredState>{named});
    }
    auto query = [](auto &&change) {
        StoreQuery q;
        change(q);
        return q;
    };
    using Texts = std::vector<std::string>;
    EXPECT_EQ(texts(query([](StoreQuery &q) { q.filter.mostVerboseLevel = 300; })),
              (Texts{"disk failed", "retry after timeout", "timeout on upstream"}));
    EXPECT_EQ(texts(query([](StoreQuery &q) { q.filter.apps = {AppSelector::parse("web")}; })),
              (Texts{"request served", "timeout on upstream"}));
    EXPECT_EQ(texts(query([](StoreQuery &q) { q.filter.apps = {AppSelector::parse("0x1:0xa")}; })),
              (Texts{"disk failed", "retry after timeout", "trace detail"}));
    EXPECT_EQ(texts(query([](StoreQuery &q) { q.filter.categoryPatterns = {"net*"}; })),
              (Texts{"retry after timeout", "timeout on upstream"}));
    EXPECT_EQ(texts(query([](StoreQuery &q) { q.filter.textPatterns.emplace_back("^t"); })),
              (Texts{"timeout on upstream", "trace detail"}));
    // One kind given twice: either holds, in the SQL as after it.
    EXPECT_EQ(texts(query([](StoreQuery &q) {
                  q.filter.apps = {AppSelector::parse("web"), AppSelector::parse("0x1:0xa")};
              })),
              (Texts{"disk failed", "request served", "retry after timeout", "timeout on upstream", "trace detail"}));
    EXPECT_EQ(texts(query([](StoreQuery &q) {
                  q.filter.textPatterns.emplace_back("^t");
                  q.filter.textPatterns.emplace_back("served");
              })),
              (Texts{"request served", "timeout on upstream", "trace detail"}));
    EXPECT_EQ(texts(query([](StoreQuery &q) { q.terms = "timeout"; })),
              (Texts{"retry after timeout", "timeout on upstream"}));
    EXPECT_EQ(texts(query([](StoreQuery &q) { q.terms = "time*"; })),
              (Texts{"retry after timeout", "timeout on upstream"}));
    EXPECT_EQ(texts(query([](StoreQuery &q) {
                  q.since = 2 * kSecond;
                  q.until = 4 * kSecond;
              })),
              (Texts{"request served", "retry after timeout"}));
    // The last N, printed oldest first; with a post-filter, N of those that pass it.
    EXPECT_EQ(texts(query([](StoreQuery &q) { q.last = 2; })), (Texts{"timeout on upstream", "trace detail"}));
    EXPECT_EQ(texts(query([](StoreQuery &q) {
                  q.last = 2;
                  q.filter.categoryPatterns = {"net*"};
              })),
              (Texts{"retry after timeout", "timeout on upstream"}));
}

// A database written by the first release, in its layout: read as it
// stands (identities unknown), then brought forward by the next recorder
// without losing rows, its indices still serving.
TEST_F(StoreTest, AFirstVersionDatabaseIsReadAsItIsAndBroughtForward) {
    {
        Database old(path(), Database::Access::ReadWrite);
        old.execute(R"sql(
PRAGMA journal_mode = WAL;
CREATE TABLE apps(id INTEGER PRIMARY KEY, host INTEGER NOT NULL, app INTEGER NOT NULL, kind TEXT, UNIQUE(host, app));
CREATE INDEX apps_kind ON apps(kind);
CREATE TABLE states(app INTEGER NOT NULL REFERENCES apps(id), received_time INTEGER NOT NULL, kind TEXT NOT NULL,
  domain INTEGER NOT NULL, state INTEGER NOT NULL, filter_level INTEGER NOT NULL, print_format INTEGER NOT NULL,
  gone INTEGER NOT NULL);
CREATE TABLE messages(id INTEGER PRIMARY KEY, source_time INTEGER NOT NULL, received_time INTEGER NOT NULL,
  app INTEGER NOT NULL REFERENCES apps(id), level INTEGER NOT NULL, category TEXT NOT NULL, text TEXT NOT NULL);
CREATE INDEX messages_time ON messages(source_time);
CREATE INDEX messages_app ON messages(app, source_time);
CREATE INDEX messages_level ON messages(level, source_time);
CREATE VIRTUAL TABLE messages_text USING fts5(text, content='messages', content_rowid='id');
CREATE TRIGGER messages_text_delete AFTER DELETE ON messages BEGIN
  INSERT INTO messages_text(messages_text, rowid, text) VALUES ('delete', old.id, old.text);
END;
INSERT INTO apps VALUES (1, 1, 10, 'web');
INSERT INTO messages VALUES (1, 1000000000, 1000000000, 1, 300, 'net', 'old timeout'),
                            (2, 2000000000, 2000000000, 1, 600, 'net', 'old request');
INSERT INTO messages_text(rowid, text) SELECT id, text FROM messages;
PRAGMA application_id = 1448627271;
PRAGMA user_version = 1;
)sql");
    }
    auto lines = [&](const StoreQuery &query) {
        LogDatabase db(path(), Database::Access::ReadOnly);
        std::vector<std::string> found;
        selectMessages(db, query, [&](const LogLine &line) {
            found.push_back(std::string(line.kind) + " " + std::string(line.identity) + " " +
                            std::string(line.message));
        });
        return found;
    };
    StoreQuery byKind;
    byKind.filter.apps = {AppSelector::parse("we*")};
    EXPECT_EQ(lines(byKind), (std::vector<std::string>{"web  old timeout", "web  old request"})) << "read only";
    {
        LogStore store(path());
        EXPECT_EQ(store.database().integer("PRAGMA user_version"), kSchemaVersion);
        StoredState identified;
        identified.record.id = alpha;
        identified.record.kind = "web";
        identified.record.identity = "webd@rover[42]";
        store.write(std::vector<StoredMessage>{message(alpha, 3 * kSecond, 300, "new timeout")},
                    std::vector<StoredState>{identified});
        StoredState laterWithout = identified;  // a State read before discovery named it
        laterWithout.record.identity.clear();
        store.write({}, std::vector<StoredState>{laterWithout});
        EXPECT_EQ(deleteBeyondAge(store.database(), 2 * kSecond, 4 * kSecond), 1) << "the oldest, through the trigger";
    }
    StoreQuery byIdentity;
    byIdentity.filter.apps = {AppSelector::parse("webd")};
    EXPECT_EQ(lines(byIdentity),
              (std::vector<std::string>{"web webd@rover[42] old request", "web webd@rover[42] new timeout"}));
    StoreQuery words;
    words.terms = "timeout";
    EXPECT_EQ(texts(words), (std::vector<std::string>{"new timeout"}));
    StoreQuery severe;
    severe.filter.mostVerboseLevel = 400;
    severe.filter.apps = {AppSelector::parse("web")};
    EXPECT_EQ(texts(severe), (std::vector<std::string>{"new timeout"}));
}

TEST_F(StoreTest, RetentionDeletesTheOldestByAgeAndBySize) {
    LogStore store(path());
    std::vector<StoredMessage> batch;
    for (int i = 0; i < 20000; ++i) {
        batch.push_back(message(alpha, kNow - (20000 - i) * kSecond, 600, "message " + std::to_string(i)));
    }
    store.write(batch, {});
    EXPECT_EQ(deleteBeyondAge(store.database(), 10000 * kSecond, kNow), 10000);
    EXPECT_EQ(texts({}).front(), "message 10000");
    std::int64_t used = usedBytes(store.database());
    EXPECT_GT(deleteBeyondSize(store.database(), used / 2), 0);
    std::vector<std::string> left = texts({});
    EXPECT_EQ(left.back(), "message 19999");
    EXPECT_LT(left.size(), 7000u);
    EXPECT_EQ(deleteBeyondSize(store.database(), used * 2), 0);
}

TEST(CliHistorySeam, DropsWhatTheHistoryPrintedOrPrecedes) {
    HistorySeam seam;
    auto line = [](AppId app, std::int64_t second, std::string_view text) {
        LogLine l;
        l.app = app;
        l.seconds = second;
        l.level = 600;
        l.message = text;
        return l;
    };
    const AppId a{1, 1};
    const AppId b{2, 2};
    seam.startsAt(100 * kSecond);
    seam.printed(line(a, 100, "x"));
    seam.printed(line(a, 105, "y"));
    EXPECT_TRUE(seam.covers(line(a, 99, "before the history's start")));
    EXPECT_TRUE(seam.covers(line(a, 105, "y")));
    EXPECT_FALSE(seam.covers(line(a, 105, "same time, other text")));
    EXPECT_FALSE(seam.covers(line(a, 103, "missed by the recorder")));
    EXPECT_FALSE(seam.covers(line(a, 106, "new")));
    EXPECT_FALSE(seam.covers(line(b, 105, "y"))) << "another application";
}

}  // namespace
