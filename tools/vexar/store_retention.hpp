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

// Deletes the messages older than `keep` at `now` (nanoseconds since the
// epoch); returns how many went.
std::int64_t deleteBeyondAge(Database &db, std::int64_t keep, std::int64_t now);

// When the data passes `maxBytes`, deletes the oldest messages by the share
// of the excess (down to 90%), and returns how many went. The text index
// frees its pages only as it merges, so a caller checks again later.
std::int64_t deleteBeyondSize(Database &db, std::int64_t maxBytes);

}  // namespace vexar::cli
