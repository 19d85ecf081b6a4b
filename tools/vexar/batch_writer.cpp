#include "batch_writer.hpp"

#include <cstdio>

#include "time_text.hpp"

namespace vexar::cli {
namespace {

using SteadyClock = std::chrono::steady_clock;
constexpr auto kRetryPause = std::chrono::seconds(1);
constexpr auto kAgeCheckPeriod = std::chrono::seconds(1);

}  // namespace

BatchWriter::BatchWriter(const std::string &path, RetentionLimits limits)
    : store_(path), checkpointer_(path, store_.database()), limits_(limits), thread_([this] { run(); }) {}

BatchWriter::~BatchWriter() { finish(); }

bool BatchWriter::hasRoom() const {
    std::lock_guard lock(mutex_);
    return queue_.size() < kQueuedMost;
}

void BatchWriter::submit(StoreBatch batch) {
    if (batch.empty()) return;
    std::lock_guard lock(mutex_);
    queue_.push_back(std::move(batch));
    changed_.notify_all();
}

std::size_t BatchWriter::finish() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
        changed_.notify_all();
    }
    if (thread_.joinable()) thread_.join();
    return unwritten_;
}

std::optional<std::string> BatchWriter::failure() const {
    std::lock_guard lock(mutex_);
    return failure_;
}

void BatchWriter::say(const std::string &line) {
    std::fprintf(stderr, "vexar record: %s\n", line.c_str());
    std::fflush(stderr);
}

void BatchWriter::run() {
    try {
        for (;;) {
            std::unique_lock lock(mutex_);
            changed_.wait_for(lock, kAgeCheckPeriod, [&] { return stopping_ || !queue_.empty(); });
            if (queue_.empty()) {
                if (stopping_) return;
                lock.unlock();
                retain();
                continue;
            }
            lock.unlock();
            // The batch stays queued while it is written, so that it counts
            // against the room for more.
            if (!writeWhole(queue_.front())) break;
            lock.lock();
            queue_.pop_front();
            changed_.notify_all();
            lock.unlock();
            retain();
        }
        std::lock_guard lock(mutex_);
        for (const StoreBatch &batch : queue_) unwritten_ += batch.messages.size();
    } catch (const std::exception &error) {
        std::lock_guard lock(mutex_);
        failure_ = error.what();
        for (const StoreBatch &batch : queue_) unwritten_ += batch.messages.size();
    }
}

bool BatchWriter::writeWhole(const StoreBatch &batch) {
    std::optional<SteadyClock::time_point> refusedSince;
    for (;;) {
        try {
            stored_ += static_cast<std::int64_t>(store_.write(batch.messages, batch.states));
            checkpointer_.nudge();
            break;
        } catch (const StoreError &error) {
            if (!error.diskFull()) throw;
            if (!refusedSince) {
                say(error.what() + std::string(" (holding the batch, retrying every second)"));
                refusedSince = SteadyClock::now();
            }
        }
        std::unique_lock lock(mutex_);
        if (changed_.wait_for(lock, kRetryPause, [&] { return stopping_; })) {
            lock.unlock();
            // One last try at the stop.
            try {
                stored_ += static_cast<std::int64_t>(store_.write(batch.messages, batch.states));
                return true;
            } catch (const StoreError &error) {
                if (!error.diskFull()) throw;
                return false;
            }
        }
    }
    if (refusedSince) {
        auto seconds = std::chrono::duration_cast<std::chrono::seconds>(SteadyClock::now() - *refusedSince).count();
        say("writing again after " + std::to_string(seconds) + " s");
    }
    return true;
}

// The size after each batch, so that the file passes it by a batch at
// most; the age once a second.
void BatchWriter::retain() {
    try {
        if (limits_.maxBytes) deleteBeyondSize(store_.database(), *limits_.maxBytes);
        SteadyClock::time_point now = SteadyClock::now();
        if (limits_.keepNanoseconds && now >= nextAgeCheck_) {
            nextAgeCheck_ = now + kAgeCheckPeriod;
            deleteBeyondAge(store_.database(), *limits_.keepNanoseconds, wallClockNow());
        }
    } catch (const StoreError &error) {
        if (!error.diskFull()) throw;
    }
}

}  // namespace vexar::cli
