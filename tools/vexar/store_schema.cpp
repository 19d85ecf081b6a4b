#include "store_schema.hpp"

#include <iterator>

namespace vexar::cli {
namespace {

// kMigrations[v] takes a database from version v to v + 1.
//
// Times are nanoseconds since the epoch. Applications are one row each so
// that a message carries a small number, and their kind (from the State)
// can be named in a query. The text index holds no copy of the texts
// (external content). The writer adds each batch's texts to it in one
// statement (a trigger per row would make the index write a segment per
// message); the trigger keeps it in step when messages are deleted.
constexpr const char *kMigrations[] = {
    R"sql(
CREATE TABLE apps(
  id INTEGER PRIMARY KEY,
  host INTEGER NOT NULL,
  app INTEGER NOT NULL,
  kind TEXT,
  UNIQUE(host, app));
CREATE INDEX apps_kind ON apps(kind);
CREATE TABLE states(
  app INTEGER NOT NULL REFERENCES apps(id),
  received_time INTEGER NOT NULL,
  kind TEXT NOT NULL,
  domain INTEGER NOT NULL,
  state INTEGER NOT NULL,
  filter_level INTEGER NOT NULL,
  print_format INTEGER NOT NULL,
  gone INTEGER NOT NULL);
CREATE TABLE messages(
  id INTEGER PRIMARY KEY,
  source_time INTEGER NOT NULL,
  received_time INTEGER NOT NULL,
  app INTEGER NOT NULL REFERENCES apps(id),
  level INTEGER NOT NULL,
  category TEXT NOT NULL,
  text TEXT NOT NULL);
CREATE INDEX messages_time ON messages(source_time);
CREATE INDEX messages_app ON messages(app, source_time);
CREATE INDEX messages_level ON messages(level, source_time);
CREATE VIRTUAL TABLE messages_text USING fts5(text, content='messages', content_rowid='id');
CREATE TRIGGER messages_text_delete AFTER DELETE ON messages BEGIN
  INSERT INTO messages_text(messages_text, rowid, text) VALUES ('delete', old.id, old.text);
END;
)sql",
    // Cheaper writes, for a recorder that keeps up with a fast logger. The
    // text index keeps no per-row sizes (they only serve ranking, and
    // results come in time order). The level index holds only WARNING and
    // more severe: the rare rows that a level query looks for, while INFO
    // and below, most of the traffic, cost it nothing. A query for those
    // reads by time anyway, since most rows pass.
    R"sql(
DROP INDEX messages_level;
CREATE INDEX messages_severe ON messages(level, source_time) WHERE level <= 400;
DROP TRIGGER messages_text_delete;
DROP TABLE messages_text;
CREATE VIRTUAL TABLE messages_text USING fts5(text, content='messages', content_rowid='id', columnsize=0);
INSERT INTO messages_text(messages_text) VALUES ('rebuild');
CREATE TRIGGER messages_text_delete AFTER DELETE ON messages BEGIN
  INSERT INTO messages_text(messages_text, rowid, text) VALUES ('delete', old.id, old.text);
END;
)sql",
    // The identity of each application's process, from discovery: two
    // applications of one kind can be told apart in a query. Older rows
    // keep it unknown (NULL).
    R"sql(
ALTER TABLE apps ADD COLUMN identity TEXT;
ALTER TABLE states ADD COLUMN identity TEXT;
)sql",
};
static_assert(std::size(kMigrations) == kSchemaVersion);

bool isEmpty(Database &db) { return db.integer("SELECT count(*) FROM sqlite_schema") == 0; }

void migrate(Database &db, std::int64_t from) {
    db.execute("BEGIN IMMEDIATE");
    try {
        for (std::int64_t version = from; version < kSchemaVersion; ++version) db.execute(kMigrations[version]);
        db.execute("PRAGMA application_id = " + std::to_string(kLogDatabaseId));
        db.execute("PRAGMA user_version = " + std::to_string(kSchemaVersion));
        db.execute("COMMIT");
    } catch (...) {
        if (db.inTransaction()) db.execute("ROLLBACK");
        throw;
    }
}

}  // namespace

LogDatabase::LogDatabase(const std::string &path, Access access) : Database(path, access) {
    schemaVersion_ = prepareSchema(*this, path, access);
}

std::int64_t prepareSchema(Database &db, const std::string &path, Database::Access access) {
    std::int64_t applicationId = 0;
    std::int64_t version = 0;
    bool empty = false;
    try {
        applicationId = db.integer("PRAGMA application_id");
        version = db.integer("PRAGMA user_version");
        empty = applicationId == 0 && isEmpty(db);
    } catch (const StoreError &error) {
        throw StoreError(path + " cannot be read: " + error.what(), error.code);
    }
    if (empty && access == Database::Access::ReadOnly) {
        throw StoreError(path + " holds no recorded logs", SQLITE_EMPTY);
    }
    if (!empty && applicationId != kLogDatabaseId) {
        throw StoreError(path + " is not a vexar log database", SQLITE_NOTADB);
    }
    if (version > kSchemaVersion) {
        throw StoreError(path + " has schema version " + std::to_string(version) + ", newer than this vexar reads (" +
                             std::to_string(kSchemaVersion) + ")",
                         SQLITE_NOTADB);
    }
    // A reader takes an older file as it stands (what it lacks reads as
    // unknown), so a database is never changed by looking at it.
    if (access == Database::Access::ReadOnly) return version;
    // Only a file found to be ours (or empty) is changed. Statement
    // journals (a delete's trigger) stay in memory. Larger pages than the
    // default make fewer, fuller writes of a stream of appended rows; a
    // page size is chosen once, before the file has any.
    try {
        if (empty) db.execute("PRAGMA page_size = 16384");
        db.execute("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL; PRAGMA cache_size = -32768; "
                   "PRAGMA temp_store = MEMORY");
    } catch (const StoreError &error) {
        throw StoreError(path + " cannot be written: " + error.what(), error.code);
    }
    if (version < kSchemaVersion) migrate(db, version);
    return kSchemaVersion;
}

}  // namespace vexar::cli
