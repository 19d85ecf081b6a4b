// The recorder's writing side of a log database: batches of messages and
// States, each batch one transaction, so that a batch is stored whole or
// not at all.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>

#include "app_id.hpp"
#include "apps_table.hpp"
#include "store_schema.hpp"

namespace vexar::cli {

struct StoredMessage {
    std::int64_t sourceTime = 0;  // nanoseconds since the epoch
    std::int64_t receivedTime = 0;
    AppId app;
    std::int32_t level = 0;
    std::string category;
    std::string text;
};

struct StoredState {
    AppRecord record;
    std::int64_t receivedTime = 0;
};

class LogStore {
public:
    // Opens or creates the database; throws StoreError (one line) when it
    // cannot be used.
    explicit LogStore(const std::string &path);

    // Stores the batch in one transaction and returns how many messages were
    // new. A logger replays its recent messages to a restarted recorder:
    // those already stored are skipped. On failure the transaction is
    // rolled back and StoreError thrown; the caller may retry the batch.
    std::size_t write(std::span<const StoredMessage> messages, std::span<const StoredState> states);

    LogDatabase &database() { return db_; }

private:
    std::int64_t appRow(AppId id);
    bool alreadyStored(std::int64_t app, const StoredMessage &message);
    void writeState(const StoredState &state);

    LogDatabase db_;
    Statement insertMessage_;
    Statement insertApp_;
    Statement findApp_;
    Statement insertState_;
    Statement latestOfApp_;
    Statement findMessage_;
    Statement lastMessage_;
    Statement indexTexts_;
    std::map<AppId, std::int64_t> appRows_;
    // Per application row, its latest source time stored before this run.
    std::map<std::int64_t, std::int64_t> latestBeforeRun_;
};

}  // namespace vexar::cli
