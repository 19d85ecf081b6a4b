// Times, durations and sizes as people write them on the command line:
// `--since 10m`, `--since yesterday`, `--until "2026-11-21 18:30"`,
// `--keep 7d`, `--max-size 2G`. Times are nanoseconds since the epoch.
#pragma once

#include <cstdint>
#include <string_view>

namespace vexar::cli {

// "90s", "10m", "2h", "7d", "1w" (a bare number is seconds). Throws
// UsageError naming `option`.
std::int64_t parseDuration(std::string_view option, std::string_view text);

// A point in time: a duration ago ("10m"), "now", "today", "yesterday"
// (local midnight), or "YYYY-MM-DD[ HH:MM[:SS[.fff]]]" (also with 'T'), in
// local time unless it ends with 'Z' or +HH:MM. Throws UsageError.
std::int64_t parseTimePoint(std::string_view option, std::string_view text, std::int64_t now);

// "500000", "64k", "10M", "2G" (powers of 1024). Throws UsageError.
std::int64_t parseSize(std::string_view option, std::string_view text);

// The wall clock in nanoseconds since the epoch.
std::int64_t wallClockNow();

}  // namespace vexar::cli
