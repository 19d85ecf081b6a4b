// Reading a log database: the messages that a filter, a time range and
// full-text terms select, in source-time order. What SQL can decide (level,
// application, time, text terms) is asked of SQLite, where the indices
// make it fast; category globs and regular expressions are applied after.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "line_format.hpp"
#include "message_filter.hpp"
#include "store_schema.hpp"

namespace vexar::cli {

struct StoreQuery {
    MessageFilter filter;
    std::optional<std::int64_t> since;  // nanoseconds since the epoch, inclusive
    std::optional<std::int64_t> until;  // exclusive
    std::optional<std::string> terms;   // words that must all be in the text
    std::optional<std::int64_t> last;   // only the last N that match (with terms: the last N recorded)
};

// Calls `use` for each selected message in source-time order (ties in the
// order recorded). The line's views live until `use` returns.
void selectMessages(LogDatabase &db, const StoreQuery &query, const std::function<void(const LogLine &)> &use);

// For each --app that names no application the database holds, a line
// such as "no logger of kind 'nosuch' in log.db (seen: alpha, beta)".
std::vector<std::string> unmatchedApps(LogDatabase &db, const std::string &path, const MessageFilter &filter);

// The full-text query for words typed by a user: each word quoted (so that
// punctuation is plain text), all required; a trailing '*' keeps a prefix.
std::string fullTextQuery(std::string_view words);

}  // namespace vexar::cli
