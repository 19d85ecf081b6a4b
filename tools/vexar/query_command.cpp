// vexar query: the recorded log messages that match, from a database that
// `vexar record` writes, in tail's format.
#include <cstdio>
#include <limits>

#include "commands.hpp"
#include "filter_options.hpp"
#include "store_query.hpp"
#include "store_schema.hpp"

namespace vexar::cli {
namespace {

constexpr OptionDescription kQueryOptions[] = {
    kDbOption,
    kLevelOption,
    kAppOption,
    kCategoryOption,
    kGrepOption,
    kExcludeCategoryOption,
    kExcludeGrepOption,
    {"text", "WORDS", "only messages whose text holds all WORDS (full-text search; 'net*' for a prefix)"},
    kSinceOption,
    {"until", "TIME", "messages before TIME (the forms of --since)"},
    kLastOption,
    kJsonOption,
    kOutputOption,
    kNoColourOption,
};

constexpr std::string_view kQueryDetails =
    "Prints in source-time order, in the columns and colours of `vexar tail`. Times\n"
    "without a zone are local; a bare duration such as 10m means that long ago.";

}  // namespace

const CommandDescription kQueryCommand{"query",
                                       "",
                                       "Print recorded log messages from a database that 'vexar record' writes.",
                                       kQueryDetails,
                                       kQueryOptions,
                                       0,
                                       0};

int runQuery(const ParsedArguments &arguments) {
    std::string path = requiredDatabase(arguments);
    StoreQuery query = storeQueryFrom(arguments);
    LineFormatter formatter(styleFrom(arguments));
    LogDatabase db(path, Database::Access::ReadOnly);
    for (const std::string &line : unmatchedApps(db, path, query.filter)) {
        std::fprintf(stderr, "vexar query: %s\n", line.c_str());
    }
    std::string out;
    selectMessages(db, query, [&](const LogLine &line) {
        formatter.append(out, line);
        if (out.size() >= (1 << 16)) {
            std::fwrite(out.data(), 1, out.size(), stdout);
            out.clear();
        }
    });
    std::fwrite(out.data(), 1, out.size(), stdout);
    return 0;
}

}  // namespace vexar::cli
