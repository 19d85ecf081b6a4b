#include "store_query.hpp"

#include <algorithm>
#include <set>
#include <variant>
#include <vector>

#include "store_schema.hpp"
#include "usage_error.hpp"

namespace vexar::cli {
namespace {

constexpr std::int64_t kSecond = 1000000000;

// The SQL of a query and the values of its parameters, in order.
struct QuerySql {
    std::string text;
    std::vector<std::variant<std::int64_t, std::string>> values;

    void add(std::string_view condition) { text += std::string(" AND ") + std::string(condition); }
};

// The last N with words are read from the text index newest first (in the
// order recorded), which stops after N: ordering all the matches of a
// common word by source time would read every one of them.
bool fromTextIndex(const StoreQuery &query) { return query.terms && query.last; }

// One application as the database knows it.
struct StoredApp {
    std::int64_t row;
    AppId id;
    std::string kind;
    std::string identity;
};

// What the apps table holds; few rows, so names and globs are matched here
// exactly as tail matches them.
std::vector<StoredApp> storedApps(LogDatabase &db) {
    bool hasIdentity = db.schemaVersion() >= kSchemaWithIdentity;
    Statement statement(db.get(), std::string("SELECT id, host, app, coalesce(kind, ''), ") +
                                      (hasIdentity ? "coalesce(identity, '')" : "''") + " FROM apps");
    std::vector<StoredApp> apps;
    while (statement.step()) {
        apps.push_back(
            {statement.integer(0),
             {static_cast<std::int32_t>(statement.integer(1)), static_cast<std::int32_t>(statement.integer(2))},
             std::string(statement.text(3)),
             std::string(statement.text(4))});
    }
    return apps;
}

bool selects(const AppSelector &selector, const StoredApp &app) {
    return selector.matches(app.id, app.kind, app.identity);
}

// The rows of any of the applications.
void addApps(QuerySql &sql, const std::vector<AppSelector> &selectors, const std::vector<StoredApp> &apps) {
    std::string rows;
    for (const StoredApp &app : apps) {
        if (!std::ranges::any_of(selectors, [&](const AppSelector &selector) { return selects(selector, app); })) {
            continue;
        }
        rows += rows.empty() ? "?" : ", ?";
        sql.values.emplace_back(app.row);
    }
    sql.add("m.app IN (" + rows + ")");
}

QuerySql sqlOf(const StoreQuery &query, bool newestFirst, bool limited, const std::vector<StoredApp> &apps,
               bool hasIdentity) {
    QuerySql sql;
    sql.text = "SELECT m.source_time, a.host, a.app, a.kind, m.level, m.category, m.text, ";
    sql.text += hasIdentity ? "a.identity " : "NULL ";
    sql.text += fromTextIndex(query) ? "FROM messages_text t CROSS JOIN messages m ON m.id = t.rowid "
                                       "CROSS JOIN apps a ON a.id = m.app WHERE messages_text MATCH ?"
                                     : "FROM messages m JOIN apps a ON a.id = m.app WHERE 1";
    if (fromTextIndex(query)) sql.values.emplace_back(fullTextQuery(*query.terms));
    const MessageFilter &filter = query.filter;
    if (filter.mostVerboseLevel) {
        sql.add("m.level <= ?");
        sql.values.emplace_back(std::int64_t{*filter.mostVerboseLevel});
        // SQLite uses a partial index only for a query that names its
        // condition word for word.
        if (*filter.mostVerboseLevel <= kIndexedLevelMost) {
            sql.add("m.level <= " + std::to_string(kIndexedLevelMost));
        }
    }
    if (!filter.apps.empty()) addApps(sql, filter.apps, apps);
    if (query.since) {
        sql.add("m.source_time >= ?");
        sql.values.emplace_back(*query.since);
    }
    if (query.until) {
        sql.add("m.source_time < ?");
        sql.values.emplace_back(*query.until);
    }
    if (query.terms && !fromTextIndex(query)) {
        sql.add("m.id IN (SELECT rowid FROM messages_text WHERE messages_text MATCH ?)");
        sql.values.emplace_back(fullTextQuery(*query.terms));
    }
    if (fromTextIndex(query)) sql.text += " ORDER BY t.rowid DESC";
    else sql.text += newestFirst ? " ORDER BY m.source_time DESC, m.id DESC" : " ORDER BY m.source_time, m.id";
    if (limited) {
        sql.text += " LIMIT ?";
        sql.values.emplace_back(*query.last);
    }
    return sql;
}

LogLine lineOf(const Statement &row) {
    LogLine line;
    std::int64_t time = row.integer(0);
    line.seconds = time >= 0 ? time / kSecond : (time - kSecond + 1) / kSecond;
    line.nanoseconds = static_cast<std::uint32_t>(time - line.seconds * kSecond);
    line.app = {static_cast<std::int32_t>(row.integer(1)), static_cast<std::int32_t>(row.integer(2))};
    line.kind = row.text(3);
    line.level = static_cast<std::int32_t>(row.integer(4));
    line.category = row.text(5);
    line.message = row.text(6);
    line.identity = row.text(7);
    return line;
}

}  // namespace

std::string fullTextQuery(std::string_view words) {
    std::string query;
    std::size_t at = 0;
    while (at < words.size()) {
        std::size_t start = words.find_first_not_of(" \t", at);
        if (start == std::string_view::npos) break;
        std::size_t end = std::min(words.find_first_of(" \t", start), words.size());
        std::string_view word = words.substr(start, end - start);
        bool prefix = word.size() > 1 && word.back() == '*';
        if (prefix) word.remove_suffix(1);
        if (!query.empty()) query += ' ';
        query += '"';
        for (char c : word) query += c == '"' ? std::string("\"\"") : std::string(1, c);
        query += prefix ? "\"*" : "\"";
        at = end;
    }
    if (query.empty()) throw UsageError("--text needs at least one word");
    return query;
}

void selectMessages(LogDatabase &db, const StoreQuery &query, const std::function<void(const LogLine &)> &use) {
    const MessageFilter &filter = query.filter;
    // The SQL decides level, application, time and text; only a category
    // glob or a regular expression is left for the filter (whose level and
    // application tests then hold already).
    bool filteredAfter = filter.looksAtTexts();
    bool newestFirst = query.last.has_value();
    std::vector<StoredApp> apps = filter.apps.empty() ? std::vector<StoredApp>{} : storedApps(db);
    QuerySql sql =
        sqlOf(query, newestFirst, newestFirst && !filteredAfter, apps, db.schemaVersion() >= kSchemaWithIdentity);
    Statement statement(db.get(), sql.text);
    for (std::size_t i = 0; i < sql.values.size(); ++i) {
        int index = static_cast<int>(i + 1);
        std::visit([&](const auto &value) { statement.bind(index, value); }, sql.values[i]);
    }
    std::vector<OwnedLine> newest;
    while (statement.step()) {
        LogLine line = lineOf(statement);
        if (filteredAfter && !filter.matches(line)) continue;
        if (!newestFirst) {
            use(line);
            continue;
        }
        newest.emplace_back(line);
        if (static_cast<std::int64_t>(newest.size()) >= *query.last) break;
    }
    // Oldest first; from the text index they come in the order recorded.
    std::reverse(newest.begin(), newest.end());
    std::stable_sort(newest.begin(), newest.end(), [](const OwnedLine &a, const OwnedLine &b) {
        return a.line.seconds != b.line.seconds ? a.line.seconds < b.line.seconds
                                                : a.line.nanoseconds < b.line.nanoseconds;
    });
    for (const OwnedLine &owned : newest) use(owned.view());
}

std::vector<std::string> unmatchedApps(LogDatabase &db, const std::string &path, const MessageFilter &filter) {
    if (filter.apps.empty()) return {};
    std::vector<StoredApp> apps = storedApps(db);
    std::set<std::string> seen;
    for (const StoredApp &app : apps) seen.insert(app.kind.empty() ? formatAppId(app.id) : app.kind);
    std::vector<std::string> lines;
    for (const AppSelector &selector : filter.apps) {
        if (std::ranges::any_of(apps, [&](const StoredApp &app) { return selects(selector, app); })) continue;
        lines.push_back("no logger of " + selector.describe() + " in " + path + " (seen: " + seenNames(seen) + ")");
    }
    return lines;
}

}  // namespace vexar::cli
