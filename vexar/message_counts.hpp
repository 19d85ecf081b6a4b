// What became of logged messages, counted so that benchmarks and tests can
// account for every message without trusting the log stream alone.
//
// Each logging call ends in exactly one outcome, counted on the calling
// thread (a thread-local count costs no shared cache line, so even a call
// refused by the level gate can be counted) and summed over the threads on
// request (QTV_VX_Vexar_getStatistics). What the queues then do with
// the messages they took is counted process-wide, over every logger the
// process has had.
#pragma once

#include <atomic>
#include <cstdint>

#include "platform/runtime/hot_thread_local.hpp"

namespace vexar {

enum class CallOutcome {
    refused,  // never offered to a queue: no logger, not OPERATIONAL, above the filter level, invalid
    queued,   // copied into the queue
    dropped,  // offered, but the queue was full or the copy failed
};

struct CallOutcomes {
    std::uint64_t refused = 0;
    std::uint64_t queued = 0;
    std::uint64_t dropped = 0;
};

// One thread's call counts. Only the owning thread writes them (a relaxed
// load and store: a plain increment), and any thread may sum them: a
// thread's first call lists its counts in a registry, and a thread that
// ends folds them into the registry's total first. Constant-initialized and
// trivially destructible, so a call reaches them without a guard; counted
// inline, because a call refused at the level gate costs about a
// nanosecond and a function call would double it.
struct ThreadCallCounts {
    std::atomic<std::uint64_t> refused{0};
    std::atomic<std::uint64_t> queued{0};
    std::atomic<std::uint64_t> dropped{0};
    bool registered = false;  // written by the owning thread, under the registry's mutex
};

// constinit: other files then reach it without a call to its TLS init function.
extern constinit VEXAR_HOT_THREAD_LOCAL ThreadCallCounts tCallCounts;

[[gnu::cold]] void registerThisThread() noexcept;

// A thread registers when one of its counts leaves 0: the test reuses the
// value just loaded instead of loading a flag.
inline void countCall(CallOutcome outcome) noexcept {
    std::atomic<std::uint64_t> &count = outcome == CallOutcome::refused  ? tCallCounts.refused
                                        : outcome == CallOutcome::queued ? tCallCounts.queued
                                                                         : tCallCounts.dropped;
    const std::uint64_t before = count.load(std::memory_order_relaxed);
    count.store(before + 1, std::memory_order_relaxed);
    if (before == 0) [[unlikely]]
        registerThisThread();
}
// The calls made so far on the calling thread.
CallOutcomes callOutcomesOfThisThread() noexcept;
// The calls made so far on every thread, ended ones too: the sum of the
// per-thread counts, taken under a registry lock that the logging calls
// never take (only a thread's first call does).
CallOutcomes callOutcomesOfProcess() noexcept;

// Every queued message ends published, failed (the write failed and it was
// dropped) or discarded (still queued when its logger was destroyed); the
// rest are still queued.
struct QueueOutcomes {
    std::uint64_t queued = 0;
    std::uint64_t published = 0;
    std::uint64_t failed = 0;
    std::uint64_t discarded = 0;

    std::uint64_t settled() const noexcept { return published + failed + discarded; }
};

enum class QueueOutcome { queued, published, failed, discarded };

void countInQueues(QueueOutcome outcome, std::uint64_t count = 1) noexcept;
QueueOutcomes queueOutcomes() noexcept;

}  // namespace vexar
