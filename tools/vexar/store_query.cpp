#include "store_query.hpp"

#include <algorithm>
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

// The rows of any of the applications, each named by its ids or its kind.
void addApps(QuerySql &sql, const std::vector<AppSelector> &apps) {
    std::string either;
    for (const AppSelector &app : apps) {
        if (!either.empty()) either += " OR ";
        if (const auto *id = std::get_if<AppId>(&app.target)) {
            either += "(host = ? AND app = ?)";
            sql.values.emplace_back(std::int64_t{id->host});
            sql.values.emplace_back(std::int64_t{id->app});
        } else {
            either += "kind = ?";
            sql.values.emplace_back(std::get<std::string>(app.target));
        }
    }
    sql.add("m.app IN (SELECT id FROM apps WHERE " + either + ")");
}

QuerySql sqlOf(const StoreQuery &query, bool newestFirst, bool limited) {
    QuerySql sql;
    sql.text = "SELECT m.source_time, a.host, a.app, a.kind, m.level, m.category, m.text ";
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
    if (!filter.apps.empty()) addApps(sql, filter.apps);
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

void selectMessages(Database &db, const StoreQuery &query, const std::function<void(const LogLine &)> &use) {
    const MessageFilter &filter = query.filter;
    // The SQL decides level, application, time and text; only a category
    // glob or a regular expression is left for the filter (whose level and
    // application tests then hold already).
    bool filteredAfter = filter.looksAtTexts();
    bool newestFirst = query.last.has_value();
    QuerySql sql = sqlOf(query, newestFirst, newestFirst && !filteredAfter);
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

}  // namespace vexar::cli
