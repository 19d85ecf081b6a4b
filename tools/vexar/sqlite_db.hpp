// A thin C++ hold on SQLite: a connection and prepared statements that
// finalize themselves, and failures as StoreError carrying SQLite's own
// words, so that each caller can print them as one line.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace vexar::cli {

// A database operation failed; `code` is SQLite's primary result code.
struct StoreError : std::runtime_error {
    StoreError(const std::string &what, int code) : std::runtime_error(what), code(code) {}
    int code;
    // The disk (or the file size limit) is full: worth retrying later.
    bool diskFull() const { return code == SQLITE_FULL || code == SQLITE_IOERR; }
};

class Statement {
public:
    Statement(sqlite3 *db, std::string_view sql);
    ~Statement();
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;

    // Parameters count from 1, as in SQLite.
    Statement &bind(int index, std::int64_t value);
    Statement &bind(int index, std::string_view text);
    Statement &bindNull(int index);
    // True while a row is there; throws on failure.
    bool step();
    // Runs to the end and resets, for statements without rows.
    void run();
    void reset();

    std::int64_t integer(int column) const { return sqlite3_column_int64(statement_, column); }
    bool isNull(int column) const { return sqlite3_column_type(statement_, column) == SQLITE_NULL; }
    std::string_view text(int column) const;

private:
    sqlite3 *db_;
    sqlite3_stmt *statement_ = nullptr;
};

class Database {
public:
    enum class Access { ReadOnly, ReadWrite };
    Database(const std::string &path, Access access);
    ~Database();
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

    sqlite3 *get() const { return db_; }
    // Runs statements without parameters or rows.
    void execute(std::string_view sql);
    // The first column of the first row of a statement without parameters.
    std::int64_t integer(std::string_view sql);
    bool inTransaction() const { return sqlite3_get_autocommit(db_) == 0; }

private:
    sqlite3 *db_ = nullptr;
};

// Throws StoreError with the connection's message when `code` is a failure.
void checkSqlite(sqlite3 *db, int code, std::string_view doing);

}  // namespace vexar::cli
