#include "store_retention.hpp"

#include <algorithm>

namespace vexar::cli {
namespace {

constexpr std::int64_t kChunk = 20000;

// Deletes at most `most` of the oldest messages, older than `before`, one
// chunk per transaction; returns how many went.
std::int64_t deleteOldest(Database &db, std::int64_t before, std::int64_t most) {
    Statement remove(db.get(), "DELETE FROM messages WHERE id IN "
                               "(SELECT id FROM messages WHERE source_time < ? ORDER BY source_time LIMIT ?)");
    std::int64_t deleted = 0;
    while (deleted < most) {
        std::int64_t chunk = std::min(kChunk, most - deleted);
        db.execute("BEGIN IMMEDIATE");
        try {
            remove.bind(1, before).bind(2, chunk).run();
            db.execute("COMMIT");
        } catch (...) {
            if (db.inTransaction()) db.execute("ROLLBACK");
            throw;
        }
        std::int64_t changes = sqlite3_changes64(db.get());
        deleted += changes;
        if (changes < chunk) break;
    }
    return deleted;
}

}  // namespace

std::int64_t databaseBytes(Database &db) { return db.integer("PRAGMA page_count") * db.integer("PRAGMA page_size"); }

std::int64_t usedBytes(Database &db) {
    return (db.integer("PRAGMA page_count") - db.integer("PRAGMA freelist_count")) * db.integer("PRAGMA page_size");
}

std::int64_t deleteBeyondAge(Database &db, std::int64_t keep, std::int64_t now) {
    return deleteOldest(db, now - keep, INT64_MAX);
}

std::int64_t deleteBeyondSize(Database &db, std::int64_t maxBytes) {
    std::int64_t used = usedBytes(db);
    if (used <= maxBytes) return 0;
    std::int64_t rows = db.integer("SELECT max(id) - min(id) + 1 FROM messages");
    double share = double(used - maxBytes * 9 / 10) / double(used);
    std::int64_t deleted =
        deleteOldest(db, INT64_MAX, std::max<std::int64_t>(1000, std::int64_t(double(rows) * share)));
    // Deleted texts leave marks in the text index until its segments merge.
    db.execute("INSERT INTO messages_text(messages_text, rank) VALUES ('merge', 500)");
    return deleted;
}

}  // namespace vexar::cli
