// The layout of a log database and its version. A database is ours when its
// application id says so; its schema version (user_version) counts the
// migrations applied, each one explicit and run in order, so an older file
// is brought forward and a newer one is refused rather than misread.
#pragma once

#include <cstdint>
#include <string>

#include "sqlite_db.hpp"
#include "vexar/VexarUtility.h"

namespace vexar::cli {

inline constexpr std::int32_t kLogDatabaseId = 0x56584c47;  // "VXLG"
inline constexpr std::int32_t kSchemaVersion = 3;
// The most verbose level that the level index holds.
inline constexpr std::int32_t kIndexedLevelMost = QTV_VX_LOG_LEVEL_WARNING;  // as in schema 2's SQL
// The first version that stores applications' identities ("exe@host[pid]").
inline constexpr std::int32_t kSchemaWithIdentity = 3;

// A log database opened for reading or writing: a writer uses WAL (readers
// go on while it commits) and syncs at checkpoints only, so a killed
// recorder keeps every committed batch.
class LogDatabase : public Database {
public:
    LogDatabase(const std::string &path, Access access);

    // The file's version: a reader takes older files as they are.
    std::int64_t schemaVersion() const { return schemaVersion_; }

private:
    std::int64_t schemaVersion_ = 0;
};

// Checks that the database is ours and not newer than this program; with
// ReadWrite access, an empty file becomes a log database and an older one
// is migrated. Returns the version it then has. Throws StoreError with one
// line naming `path` otherwise.
std::int64_t prepareSchema(Database &db, const std::string &path, Database::Access access);

}  // namespace vexar::cli
