#include "wal_checkpointer.hpp"

#include <cstdio>

namespace vexar::cli {

WalCheckpointer::WalCheckpointer(const std::string &path, Database &writer)
    : db_(path, Database::Access::ReadWrite), thread_([this] { run(); }) {
    writer.execute("PRAGMA wal_autocheckpoint = " + std::to_string(kWriterCheckpointPages));
}

WalCheckpointer::~WalCheckpointer() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
        changed_.notify_all();
    }
    thread_.join();
}

void WalCheckpointer::nudge() {
    std::lock_guard lock(mutex_);
    nudged_ = true;
    changed_.notify_all();
}

void WalCheckpointer::run() {
    bool said = false;
    for (;;) {
        {
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [&] { return nudged_ || stopping_; });
            if (stopping_) return;
            nudged_ = false;
        }
        // A busy or full disk is left to the writer, which reports it and
        // checkpoints itself past its limit; anything else is said once.
        int code = sqlite3_wal_checkpoint_v2(db_.get(), nullptr, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
        StoreError error(sqlite3_errmsg(db_.get()), code);
        if (code != SQLITE_OK && code != SQLITE_BUSY && !error.diskFull() && !said) {
            std::fprintf(stderr, "vexar record: checkpoint failed: %s (the writer checkpoints itself)\n", error.what());
            said = true;
        }
    }
}

}  // namespace vexar::cli
