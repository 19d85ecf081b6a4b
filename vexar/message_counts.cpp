#include "vexar/message_counts.hpp"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <vector>

namespace vexar {

constinit VEXAR_HOT_THREAD_LOCAL ThreadCallCounts tCallCounts;

namespace {

// Every thread that has logged, and what threads that ended had counted.
struct CallRegistry {
    std::mutex mutex;
    std::vector<const ThreadCallCounts *> threads;
    CallOutcomes retired;
};

// Never destroyed: threads may end after static destruction began.
CallRegistry &registry() noexcept {
    static auto *registry = new CallRegistry;
    return *registry;
}

std::uint64_t read(const std::atomic<std::uint64_t> &count) noexcept { return count.load(std::memory_order_relaxed); }

CallOutcomes snapshot(const ThreadCallCounts &counts) noexcept {
    return {read(counts.refused), read(counts.queued), read(counts.dropped)};
}

void add(CallOutcomes &total, const CallOutcomes &more) noexcept {
    total.refused += more.refused;
    total.queued += more.queued;
    total.dropped += more.dropped;
}

// Folds the thread's counts into the retired total when the thread ends.
struct CallCountsRetirement {
    ~CallCountsRetirement() {
        CallRegistry &calls = registry();
        std::lock_guard lock(calls.mutex);
        add(calls.retired, snapshot(tCallCounts));
        std::erase(calls.threads, &tCallCounts);
    }
};

}  // namespace

void registerThisThread() noexcept {
    if (tCallCounts.registered) return;
    static thread_local CallCountsRetirement retirement;
    (void)retirement;
    CallRegistry &calls = registry();
    std::lock_guard lock(calls.mutex);
    try {
        calls.threads.push_back(&tCallCounts);
        tCallCounts.registered = true;
    } catch (...) {
        // Without memory the thread's calls are still counted, on the
        // thread; process totals miss them until the next try.
    }
}

namespace {

// Apart, so that the logging threads bumping `queued` and the write thread
// bumping `published` do not share a cache line.
struct alignas(64) Counter {
    std::atomic<std::uint64_t> value{0};
};

Counter gQueued, gPublished, gFailed, gDiscarded;

Counter &counterOf(QueueOutcome outcome) noexcept {
    switch (outcome) {
    case QueueOutcome::queued:
        return gQueued;
    case QueueOutcome::published:
        return gPublished;
    case QueueOutcome::failed:
        return gFailed;
    case QueueOutcome::discarded:
        break;
    }
    return gDiscarded;
}

std::uint64_t read(const Counter &counter) noexcept { return read(counter.value); }

}  // namespace

CallOutcomes callOutcomesOfThisThread() noexcept { return snapshot(tCallCounts); }

CallOutcomes callOutcomesOfProcess() noexcept {
    CallRegistry &calls = registry();
    std::lock_guard lock(calls.mutex);
    CallOutcomes total = calls.retired;
    for (const ThreadCallCounts *thread : calls.threads) add(total, snapshot(*thread));
    return total;
}

void countInQueues(QueueOutcome outcome, std::uint64_t count) noexcept {
    counterOf(outcome).value.fetch_add(count, std::memory_order_relaxed);
}

// Exact once messages stop flowing; while they flow, only a snapshot.
QueueOutcomes queueOutcomes() noexcept {
    // Settled before queued: every message settled was queued first, so the
    // snapshot never shows more settled than queued.
    QueueOutcomes outcomes;
    outcomes.published = read(gPublished);
    outcomes.failed = read(gFailed);
    outcomes.discarded = read(gDiscarded);
    outcomes.queued = read(gQueued);
    return outcomes;
}

}  // namespace vexar
