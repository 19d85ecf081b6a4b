// Commits the recorder's batches on a thread of its own, so that taking
// from DDS never waits for the disk: a reader whose backlog fills while a
// transaction is written refuses samples, and the writer resends those
// slowly. The writer thread also applies the retention, and holds and
// retries a batch that the disk refuses; a checkpointer thread copies the
// write-ahead log into the database behind it.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "log_store.hpp"
#include "store_retention.hpp"
#include "wal_checkpointer.hpp"

namespace vexar::cli {

struct StoreBatch {
    std::vector<StoredMessage> messages;
    std::vector<StoredState> states;
    bool empty() const { return messages.empty() && states.empty(); }
};

class BatchWriter {
public:
    // Batches that may wait while one is written (about 16 s at 64k
    // messages a second, some 200 MB); then the recorder stops taking and
    // the backlog stays in DDS. Only a refusing disk should get there: a
    // reader whose backlog is full refuses samples, and those come again
    // only after the writer's next heartbeat, seconds later.
    static constexpr std::size_t kQueuedMost = 16;

    BatchWriter(const std::string &path, RetentionLimits limits);
    ~BatchWriter();
    BatchWriter(const BatchWriter &) = delete;
    BatchWriter &operator=(const BatchWriter &) = delete;

    bool hasRoom() const;
    void submit(StoreBatch batch);
    // Writes what is queued (one more try if the disk refuses it) and stops
    // the thread; returns how many messages were left unwritten.
    std::size_t finish();

    std::int64_t stored() const { return stored_.load(); }
    // A failure other than a full disk, which ends the recorder.
    std::optional<std::string> failure() const;

private:
    void run();
    // Writes the batch, retrying once a second while the disk is full;
    // false when stopping before it could be written.
    bool writeWhole(const StoreBatch &batch);
    void retain();
    void say(const std::string &line);

    LogStore store_;
    WalCheckpointer checkpointer_;
    RetentionLimits limits_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<StoreBatch> queue_;
    bool stopping_ = false;
    std::optional<std::string> failure_;
    std::size_t unwritten_ = 0;
    std::atomic<std::int64_t> stored_{0};
    std::chrono::steady_clock::time_point nextAgeCheck_;
    std::thread thread_;
};

}  // namespace vexar::cli
