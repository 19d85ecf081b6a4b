// Copies the recorder's write-ahead log into the database on a thread and
// connection of its own. A checkpoint writes every page again and syncs the
// file; done by the writer thread it would stall the commits behind it.
// Checkpoints of this kind run beside a writer without locking it out, so
// the writer keeps only a far-off automatic checkpoint, for a checkpointer
// that cannot keep up.
#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "sqlite_db.hpp"

namespace vexar::cli {

class WalCheckpointer {
public:
    // The write-ahead log, in pages, at which the writer checkpoints itself.
    static constexpr int kWriterCheckpointPages = 16384;

    // Opens a second connection to `path`, a log database in WAL mode, and
    // sets the writer's connection `writer` to checkpoint only beyond
    // kWriterCheckpointPages.
    WalCheckpointer(const std::string &path, Database &writer);
    ~WalCheckpointer();
    WalCheckpointer(const WalCheckpointer &) = delete;
    WalCheckpointer &operator=(const WalCheckpointer &) = delete;

    // A commit happened: checkpoint when the thread is free.
    void nudge();

private:
    void run();

    Database db_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool nudged_ = false;
    bool stopping_ = false;
    std::thread thread_;
};

}  // namespace vexar::cli
