// The JSON that `vexar web` serves: URL query parameters read as the
// options of `vexar tail` and `vexar query`, so that the page filters
// exactly as the terminal does, and log messages, loggers and rates as
// JSON objects.
#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>

#include "apps_table.hpp"
#include "arguments.hpp"
#include "line_format.hpp"
#include "store_query.hpp"
#include "web_hub.hpp"

namespace vexar::cli {

using QueryParameters = std::multimap<std::string, std::string>;

// The filter of /api/stream: level, app, category, grep, exclude-category,
// exclude-grep (each may repeat), and since (history first). Empty values
// count as absent. Throws UsageError for an unknown parameter or a bad value.
ParsedArguments streamArguments(const QueryParameters &parameters);

// The query of /api/logs: the stream's parameters, until, text and limit
// (the newest that many; default and most kLogsLimitMost).
StoreQuery logsQuery(const QueryParameters &parameters);
inline constexpr std::int32_t kLogsLimitMost = 10000;

// tail's JSON object of a message with the application's "label".
void appendMessageJson(std::string &out, LineFormatter &json, const LogLine &line);

// `vexar apps --json`'s object with "label" and "lastMessageAgo" (seconds
// since its last live message, null before one).
std::string appJson(const AppRecord &record, std::optional<double> lastMessageAgo);

// {"FATAL":n,...,"TRACE":n,"other":n}
std::string levelCountsJson(const LevelCounts &counts);

}  // namespace vexar::cli
