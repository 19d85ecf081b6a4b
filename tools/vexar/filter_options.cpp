#include "filter_options.hpp"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "names.hpp"
#include "time_text.hpp"
#include "usage_error.hpp"

namespace vexar::cli {

std::string requiredDatabase(const ParsedArguments &arguments) {
    std::optional<std::string> path = arguments.value("db");
    if (!path || path->empty()) throw UsageError("--db PATH is required");
    return *path;
}

MessageFilter filterFrom(const ParsedArguments &arguments) {
    MessageFilter filter;
    // Levels given several times: the most verbose of them shows the others.
    for (const std::string &level : arguments.values("level")) {
        std::int32_t parsed = parseNameOrThrow(kLevelNames, level);
        filter.mostVerboseLevel = std::max(filter.mostVerboseLevel.value_or(parsed), parsed);
    }
    for (const std::string &app : arguments.values("app")) filter.apps.push_back(AppSelector::parse(app));
    filter.categoryPatterns = arguments.values("category");
    for (const std::string &pattern : arguments.values("grep")) filter.textPatterns.emplace_back(pattern);
    filter.excludedCategoryPatterns = arguments.values("exclude-category");
    for (const std::string &pattern : arguments.values("exclude-grep")) {
        filter.excludedTextPatterns.emplace_back(pattern);
    }
    return filter;
}

bool jsonRequested(const ParsedArguments &arguments) {
    std::optional<std::string> output = arguments.value("output");
    if (output && *output != "json" && *output != "short") {
        throw UsageError("bad --output '" + *output + "' (expected json or short)");
    }
    return arguments.has("json") || output == "json";
}

LineStyle styleFrom(const ParsedArguments &arguments) {
    if (jsonRequested(arguments)) return LineStyle::Json;
    const char *noColour = std::getenv("NO_COLOR");
    bool colourWanted = !arguments.has("no-color") && (noColour == nullptr || *noColour == '\0');
    return colourWanted && isatty(STDOUT_FILENO) ? LineStyle::Colour : LineStyle::Plain;
}

StoreQuery storeQueryFrom(const ParsedArguments &arguments) {
    StoreQuery query;
    query.filter = filterFrom(arguments);
    std::int64_t now = wallClockNow();
    if (auto since = arguments.value("since")) query.since = parseTimePoint("since", *since, now);
    if (auto until = arguments.value("until")) query.until = parseTimePoint("until", *until, now);
    query.terms = arguments.value("text");
    if (query.terms) fullTextQuery(*query.terms);  // refuses an empty one now
    if (arguments.has("n")) query.last = arguments.integer("n", 0, 1, std::numeric_limits<std::int32_t>::max());
    return query;
}

}  // namespace vexar::cli
