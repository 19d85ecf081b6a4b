#include "web_json.hpp"

#include <algorithm>
#include <cstdio>

#include "app_label.hpp"
#include "filter_options.hpp"
#include "names.hpp"
#include "usage_error.hpp"

namespace vexar::cli {
namespace {

constexpr std::string_view kStreamParameters[] = {"level",        "app",  "category", "grep", "exclude-category",
                                                  "exclude-grep", "since"};
constexpr std::string_view kLogsParameters[] = {"until", "text", "limit"};

ParsedArguments argumentsOf(const QueryParameters &parameters, bool logs) {
    ParsedArguments arguments;
    for (const auto &[name, value] : parameters) {
        bool known = std::ranges::find(kStreamParameters, name) != std::end(kStreamParameters) ||
                     (logs && std::ranges::find(kLogsParameters, name) != std::end(kLogsParameters));
        if (!known) throw UsageError("unknown parameter '" + name + "'");
        if (!value.empty()) arguments.add(name == "limit" ? "n" : name, value);
    }
    return arguments;
}

// Replaces the closing brace of the JSON object that `text` ends with (and
// a newline after it) by more members.
void extendObject(std::string &text, std::string_view members) {
    while (!text.empty() && text.back() != '}') text.pop_back();
    text.pop_back();
    text += members;
    text += '}';
}

}  // namespace

ParsedArguments streamArguments(const QueryParameters &parameters) {
    ParsedArguments arguments = argumentsOf(parameters, false);
    filterFrom(arguments);  // refuses a bad filter before the stream starts
    return arguments;
}

StoreQuery logsQuery(const QueryParameters &parameters) {
    ParsedArguments arguments = argumentsOf(parameters, true);
    std::int32_t limit = arguments.integer("n", kLogsLimitMost, 1, kLogsLimitMost);
    StoreQuery query = storeQueryFrom(arguments);
    query.last = limit;
    return query;
}

void appendMessageJson(std::string &out, LineFormatter &json, const LogLine &line) {
    json.append(out, line);
    std::string members = ",\"label\":";
    appendJsonString(members, appLabel(line.app, line.kind, line.identity));
    extendObject(out, members);
}

std::string appJson(const AppRecord &record, std::optional<double> lastMessageAgo) {
    std::string object = renderAppJson(record);
    std::string members = ",\"label\":";
    appendJsonString(members, appLabel(record.id, record.kind, record.identity));
    members += ",\"lastMessageAgo\":";
    if (lastMessageAgo) {
        char seconds[32];
        std::snprintf(seconds, sizeof seconds, "%.1f", *lastMessageAgo);
        members += seconds;
    } else {
        members += "null";
    }
    extendObject(object, members);
    return object;
}

std::string levelCountsJson(const LevelCounts &counts) {
    std::string out = "{";
    for (std::size_t slot = 0; slot < counts.size(); ++slot) {
        if (slot > 0) out += ',';
        bool named = slot + 1 < counts.size();
        appendJsonString(out, named ? nameOf(kLevelNames, static_cast<std::int32_t>(100 * (slot + 1))) : "other");
        out += ':' + std::to_string(counts[slot]);
    }
    return out + "}";
}

}  // namespace vexar::cli
