#include "sqlite_db.hpp"

namespace vexar::cli {

void checkSqlite(sqlite3 *db, int code, std::string_view doing) {
    if (code == SQLITE_OK || code == SQLITE_ROW || code == SQLITE_DONE) return;
    std::string reason = db != nullptr ? sqlite3_errmsg(db) : sqlite3_errstr(code);
    throw StoreError(std::string(doing) + ": " + reason, code & 0xff);
}

Statement::Statement(sqlite3 *db, std::string_view sql) : db_(db) {
    int code = sqlite3_prepare_v3(db, sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT, &statement_,
                                  nullptr);
    checkSqlite(db, code, "cannot prepare a statement");
}

Statement::~Statement() { sqlite3_finalize(statement_); }

Statement &Statement::bind(int index, std::int64_t value) {
    checkSqlite(db_, sqlite3_bind_int64(statement_, index, value), "cannot bind a value");
    return *this;
}

Statement &Statement::bind(int index, std::string_view text) {
    // SQLITE_STATIC: every caller keeps the text alive until the step.
    int code = sqlite3_bind_text(statement_, index, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
    checkSqlite(db_, code, "cannot bind a text");
    return *this;
}

Statement &Statement::bindNull(int index) {
    checkSqlite(db_, sqlite3_bind_null(statement_, index), "cannot bind a null");
    return *this;
}

bool Statement::step() {
    int code = sqlite3_step(statement_);
    if (code == SQLITE_ROW) return true;
    if (code == SQLITE_DONE) return false;
    sqlite3_reset(statement_);
    checkSqlite(db_, code, "database");
    return false;
}

void Statement::run() {
    while (step()) {}
    reset();
}

void Statement::reset() {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
}

std::string_view Statement::text(int column) const {
    const auto *bytes = reinterpret_cast<const char *>(sqlite3_column_text(statement_, column));
    if (bytes == nullptr) return {};
    return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
}

namespace {

// SQLite's memory statistics take a global lock around every allocation;
// nothing here reads them. Settable only before the first connection.
void configureOnce() {
    static const bool configured = [] { return sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0) == SQLITE_OK; }();
    (void)configured;
}

}  // namespace

Database::Database(const std::string &path, Access access) {
    configureOnce();
    int flags = access == Access::ReadOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    int code = sqlite3_open_v2(path.c_str(), &db_, flags | SQLITE_OPEN_NOMUTEX, nullptr);
    if (code != SQLITE_OK) {
        std::string reason = db_ != nullptr ? sqlite3_errmsg(db_) : sqlite3_errstr(code);
        sqlite3_close(db_);
        db_ = nullptr;
        throw StoreError("cannot open " + path + ": " + reason, code & 0xff);
    }
    // A writer holds the lock for one batch at most: readers wait that long.
    sqlite3_busy_timeout(db_, 5000);
    sqlite3_extended_result_codes(db_, 0);
}

Database::~Database() { sqlite3_close(db_); }

void Database::execute(std::string_view sql) {
    std::string text(sql);
    checkSqlite(db_, sqlite3_exec(db_, text.c_str(), nullptr, nullptr, nullptr), "database");
}

std::int64_t Database::integer(std::string_view sql) {
    Statement statement(db_, sql);
    return statement.step() ? statement.integer(0) : 0;
}

}  // namespace vexar::cli
