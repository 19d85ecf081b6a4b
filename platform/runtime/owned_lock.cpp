#include "platform/runtime/owned_lock.hpp"

#include "platform/runtime/hot_thread_local.hpp"
#include "platform/runtime/spin_pause.hpp"

namespace vexar::runtime {

namespace {

// The address of a thread-local names the calling thread for as long as it
// lives, with no system call to learn it.
std::uintptr_t callingThread() noexcept {
    static VEXAR_HOT_THREAD_LOCAL char tag;
    return reinterpret_cast<std::uintptr_t>(&tag);
}

}  // namespace

// Holders keep the lock for a few hundred nanoseconds at most, so a short
// spin usually wins it without sleeping.
void LockWord::lockContended() noexcept {
    constexpr int kSpins = 100;
    for (int spin = 0; spin < kSpins; ++spin) {
        if (word_.load(std::memory_order_relaxed) == kFree && tryLock()) return;
        spinPause();
    }
    while (word_.exchange(kHeldWithSleepers, std::memory_order_acquire) != kFree) {
        word_.wait(kHeldWithSleepers, std::memory_order_relaxed);
    }
}

// The swap comes first: on a lock that another core used last, reading the
// holder before swapping would fetch the line twice, once to read and once
// to own it. A caller that holds the lock fails the swap and finds itself
// named as holder, since only it writes its own name there.
bool OwnedLock::take() noexcept {
    const std::uintptr_t caller = callingThread();
    if (!word_.tryLock()) {
        if (holder_.load(std::memory_order_relaxed) == caller) {
            if (!recursive_) return false;
            ++depth_;
            return true;
        }
        word_.lockContended();
    }
    holder_.store(caller, std::memory_order_relaxed);
    depth_ = 1;
    return true;
}

bool OwnedLock::give() noexcept {
    if (holder_.load(std::memory_order_relaxed) != callingThread()) return false;
    if (--depth_ > 0) return true;
    holder_.store(0, std::memory_order_relaxed);
    word_.unlock();
    return true;
}

}  // namespace vexar::runtime
