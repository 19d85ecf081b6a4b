#include "vexar/message_counts.hpp"

#include <atomic>

#include "platform/runtime/hot_thread_local.hpp"

namespace vexar {
namespace {

VEXAR_HOT_THREAD_LOCAL CallOutcomes tCallOutcomes;

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

std::uint64_t read(const Counter &counter) noexcept { return counter.value.load(std::memory_order_relaxed); }

}  // namespace

void countCall(CallOutcome outcome) noexcept {
    switch (outcome) {
    case CallOutcome::refused:
        ++tCallOutcomes.refused;
        return;
    case CallOutcome::queued:
        ++tCallOutcomes.queued;
        return;
    case CallOutcome::dropped:
        ++tCallOutcomes.dropped;
        return;
    }
}

CallOutcomes callOutcomesOfThisThread() noexcept { return tCallOutcomes; }

void countInQueues(QueueOutcome outcome, std::uint64_t count) noexcept {
    counterOf(outcome).value.fetch_add(count, std::memory_order_relaxed);
}

// Exact once messages stop flowing; while they flow, only a snapshot.
QueueOutcomes queueOutcomes() noexcept {
    QueueOutcomes outcomes;
    outcomes.queued = read(gQueued);
    outcomes.published = read(gPublished);
    outcomes.failed = read(gFailed);
    outcomes.discarded = read(gDiscarded);
    return outcomes;
}

}  // namespace vexar
