#include "log_store.hpp"

#include <limits>

namespace vexar::cli {

LogStore::LogStore(const std::string &path)
    : db_(path, Database::Access::ReadWrite),
      insertMessage_(db_.get(), "INSERT INTO messages(source_time, received_time, app, level, category, text) "
                                "VALUES (?, ?, ?, ?, ?, ?)"),
      insertApp_(db_.get(), "INSERT INTO apps(host, app) VALUES (?, ?) RETURNING id"),
      findApp_(db_.get(), "SELECT id FROM apps WHERE host = ? AND app = ?"),
      insertState_(db_.get(),
                   "INSERT INTO states(app, received_time, kind, domain, state, filter_level, print_format, gone, "
                   "identity) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"),
      latestOfApp_(db_.get(), "SELECT max(source_time) FROM messages WHERE app = ?"),
      findMessage_(db_.get(),
                   "SELECT 1 FROM messages WHERE app = ? AND source_time = ? AND level = ? AND text = ? LIMIT 1"),
      lastMessage_(db_.get(), "SELECT coalesce(max(id), 0) FROM messages"),
      indexTexts_(db_.get(), "INSERT INTO messages_text(rowid, text) SELECT id, text FROM messages WHERE id > ?") {}

std::size_t LogStore::write(std::span<const StoredMessage> messages, std::span<const StoredState> states) {
    std::size_t added = 0;
    try {
        db_.execute("BEGIN IMMEDIATE");
        lastMessage_.step();
        std::int64_t lastBefore = lastMessage_.integer(0);
        lastMessage_.reset();
        for (const StoredState &state : states) writeState(state);
        for (const StoredMessage &message : messages) {
            std::int64_t app = appRow(message.app);
            if (alreadyStored(app, message)) continue;
            insertMessage_.bind(1, message.sourceTime).bind(2, message.receivedTime).bind(3, app);
            insertMessage_.bind(4, std::int64_t{message.level}).bind(5, message.category).bind(6, message.text);
            insertMessage_.run();
            ++added;
        }
        indexTexts_.bind(1, lastBefore).run();
        db_.execute("COMMIT");
    } catch (const StoreError &) {
        insertMessage_.reset();
        lastMessage_.reset();
        indexTexts_.reset();
        if (db_.inTransaction()) sqlite3_exec(db_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
        // Rows of applications added in the failed transaction are gone.
        appRows_.clear();
        throw;
    }
    return added;
}

std::int64_t LogStore::appRow(AppId id) {
    auto known = appRows_.find(id);
    if (known != appRows_.end()) return known->second;
    std::int64_t row = 0;
    findApp_.bind(1, std::int64_t{id.host}).bind(2, std::int64_t{id.app});
    if (findApp_.step()) {
        row = findApp_.integer(0);
        findApp_.reset();
    } else {
        findApp_.reset();
        insertApp_.bind(1, std::int64_t{id.host}).bind(2, std::int64_t{id.app});
        insertApp_.step();
        row = insertApp_.integer(0);
        insertApp_.run();
    }
    appRows_[id] = row;
    return row;
}

bool LogStore::alreadyStored(std::int64_t app, const StoredMessage &message) {
    auto latest = latestBeforeRun_.find(app);
    if (latest == latestBeforeRun_.end()) {
        latestOfApp_.bind(1, app);
        std::int64_t time = latestOfApp_.step() && !latestOfApp_.isNull(0) ? latestOfApp_.integer(0)
                                                                           : std::numeric_limits<std::int64_t>::min();
        latestOfApp_.reset();
        latest = latestBeforeRun_.emplace(app, time).first;
    }
    // A logger's messages reach the recorder in the order written, so only
    // those up to the latest stored can be a replay.
    if (message.sourceTime > latest->second) return false;
    findMessage_.bind(1, app).bind(2, message.sourceTime).bind(3, std::int64_t{message.level}).bind(4, message.text);
    bool found = findMessage_.step();
    findMessage_.reset();
    return found;
}

void LogStore::writeState(const StoredState &state) {
    const AppRecord &record = state.record;
    std::int64_t app = appRow(record.id);
    // An identity learnt once is kept when a later State comes before it.
    Statement setKind(db_.get(), "UPDATE apps SET kind = ?, identity = coalesce(?, identity) WHERE id = ?");
    setKind.bind(1, record.kind);
    if (record.identity.empty()) setKind.bindNull(2);
    else setKind.bind(2, record.identity);
    setKind.bind(3, app).run();
    insertState_.bind(1, app).bind(2, state.receivedTime).bind(3, record.kind).bind(4, std::int64_t{record.domain});
    insertState_.bind(5, std::int64_t{record.state}).bind(6, std::int64_t{record.filterLevel});
    insertState_.bind(7, std::int64_t{record.printFormat}).bind(8, std::int64_t{record.gone ? 1 : 0});
    if (record.identity.empty()) insertState_.bindNull(9);
    else insertState_.bind(9, record.identity);
    insertState_.run();
}

}  // namespace vexar::cli
