// The options that select log messages and choose how they print, shared
// by `vexar tail` and `vexar query` so that both read them alike.
#pragma once

#include <string>

#include "arguments.hpp"
#include "line_format.hpp"
#include "message_filter.hpp"
#include "store_query.hpp"

namespace vexar::cli {

inline constexpr OptionDescription kLevelOption{"level", "LEVEL",
                                                "show LEVEL and more severe ones (FATAL .. TRACE, or a number)", 'l'};
inline constexpr OptionDescription kAppOption{
    "app", "APP", "only this application (HOST:APP, kind, executable, exe@host[pid], host:*, glob); repeat for either",
    'a'};
inline constexpr OptionDescription kCategoryOption{
    "category", "TEXT", "only this category: exact text, or a glob such as 'net*'; repeat for either", 'c'};
inline constexpr OptionDescription kGrepOption{
    "grep", "REGEX", "only messages whose text matches REGEX (POSIX extended); repeat for either", 'g'};
inline constexpr OptionDescription kExcludeCategoryOption{
    "exclude-category", "TEXT", "hide this category (exact text or a glob); repeat to hide more"};
inline constexpr OptionDescription kExcludeGrepOption{"exclude-grep", "REGEX",
                                                      "hide messages whose text matches REGEX; repeat to hide more"};
inline constexpr OptionDescription kJsonOption{"json", "", "print one JSON object per line"};
inline constexpr OptionDescription kOutputOption{"output", "FORMAT", "json (as --json) or short (lines, the default)",
                                                 'o'};
inline constexpr OptionDescription kNoColourOption{"no-color", "",
                                                   "never colour the levels (colour is used on a terminal)"};
inline constexpr OptionDescription kDbOption{"db", "PATH", "the log database that `vexar record` writes"};
inline constexpr OptionDescription kLastOption{"n", "N", "only the last N recorded messages that match"};
inline constexpr OptionDescription kSinceOption{
    "since", "TIME", "messages from TIME on: 10m, 2h, 7d, today, yesterday, or YYYY-MM-DD[ HH:MM[:SS]][Z]"};

// The value of --db; throws UsageError when it is missing.
std::string requiredDatabase(const ParsedArguments &arguments);

MessageFilter filterFrom(const ParsedArguments &arguments);
LineStyle styleFrom(const ParsedArguments &arguments);
// Whether --json or -o json was given; throws UsageError for another -o.
bool jsonRequested(const ParsedArguments &arguments);

// What --since, --until, --text and -n ask of a log database, with the
// filter; missing options leave their part open.
StoreQuery storeQueryFrom(const ParsedArguments &arguments);

}  // namespace vexar::cli
