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

#include <cstdint>

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

void countCall(CallOutcome outcome) noexcept;
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
