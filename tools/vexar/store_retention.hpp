// How long and how large a log database may grow: the oldest messages (by
// source time) go first, in bounded transactions so that the recorder's
// batches are never held up for long.
#pragma once

#include <cstdint>
#include <optional>

#include "sqlite_db.hpp"

namespace vexar::cli {

struct RetentionLimits {
    std::optional<std::int64_t> keepNanoseconds;  // --keep
    std::optional<std::int64_t> maxBytes;         // --max-size
};

// The database file's size, and the part of it that holds data (a file
// does not shrink: deleted pages are reused).
std::int64_t databaseBytes(Database &db);
std::int64_t usedBytes(Database &db);

// Deletes what is beyond the limits at `now` (nanoseconds since the epoch)
// and returns how many messages went. Beyond the size, a share of the oldest
// goes per call (the text index frees its pages only as it merges), so a
// caller checks again later.
std::int64_t applyRetention(Database &db, const RetentionLimits &limits, std::int64_t now);

}  // namespace vexar::cli
