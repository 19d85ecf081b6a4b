// A lock that knows which thread holds it, built on one atomic word.
//
// The logging path takes two locks per call, so their uncontended cost
// matters: taking and giving here is one compare-and-swap and one exchange,
// where glibc's error-checking and recursive mutexes spend about a hundred
// instructions. Knowing the holder still turns misuse (a second take of a
// non-recursive lock, a give by a thread that does not hold it) into a
// refusal the caller reports, rather than a hang.
#pragma once

#include <atomic>
#include <cstdint>

namespace vexar::runtime {

// Free, held, or held with a thread asleep on it. A holder that finds
// sleepers when it lets go wakes one.
class LockWord {
public:
    bool tryLock() noexcept {
        std::uint32_t expected = kFree;
        return word_.compare_exchange_strong(expected, kHeld, std::memory_order_acquire, std::memory_order_relaxed);
    }
    // For a caller whose tryLock just failed: spins briefly, then sleeps
    // until the lock is its.
    void lockContended() noexcept;
    void unlock() noexcept {
        if (word_.exchange(kFree, std::memory_order_release) == kHeldWithSleepers) word_.notify_one();
    }

private:
    static constexpr std::uint32_t kFree = 0;
    static constexpr std::uint32_t kHeld = 1;
    static constexpr std::uint32_t kHeldWithSleepers = 2;

    std::atomic<std::uint32_t> word_{kFree};
};

class OwnedLock {
public:
    explicit constexpr OwnedLock(bool recursive) noexcept : recursive_(recursive) {}

    // False, taking nothing, when the caller already holds a non-recursive lock.
    bool take() noexcept;
    // False, giving nothing, when the caller does not hold the lock.
    bool give() noexcept;

private:
    LockWord word_;
    std::atomic<std::uintptr_t> holder_{0};  // written by the holder only
    unsigned depth_ = 0;                     // touched by the holder only
    const bool recursive_;
};

}  // namespace vexar::runtime
