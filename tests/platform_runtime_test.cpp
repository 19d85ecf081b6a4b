// The portability runtime's synchronization, time and strings.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <thread>
#include <vector>

#include "support/log_capture.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/dds_string.h"
#include "platform/runtime/global_lock.h"
#include "platform/runtime/mutex.h"
#include "platform/runtime/semaphore.h"

namespace {

using namespace std::chrono_literals;
using vexar_test::LogCapture;

OBLX_Time_t milliseconds(int count) { return OBLX_Time_fromNanoseconds(count * 1'000'000LL); }

// The initial count and each give allow one take each; an empty take waits
// out its time-out (a take woken by a give is checked in the ping-pong).
TEST(CountingSemaphore, EachGiveAllowsExactlyOneTakeAndAnEmptyTakeTimesOut) {
    OBLX_CountingSemaphore *sem = OBLX_CountingSemaphore_new(2);
    ASSERT_NE(sem, nullptr);
    const OBLX_Time_t noWait = OBLX_TIME_ZERO, negative = milliseconds(-5), timeout = milliseconds(100);
    EXPECT_EQ(OBLX_CountingSemaphore_give(sem), OBLX_SYNC_OK);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(OBLX_CountingSemaphore_take(sem, &noWait), OBLX_SYNC_OK) << i;
    EXPECT_EQ(OBLX_CountingSemaphore_take(sem, &noWait), OBLX_SYNC_TIMEOUT);
    EXPECT_EQ(OBLX_CountingSemaphore_take(sem, &negative), OBLX_SYNC_TIMEOUT);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(OBLX_CountingSemaphore_take(sem, &timeout), OBLX_SYNC_TIMEOUT);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 100ms);
    EXPECT_EQ(OBLX_CountingSemaphore_give(sem), OBLX_SYNC_OK);
    EXPECT_EQ(OBLX_CountingSemaphore_take(sem, nullptr), OBLX_SYNC_OK);
    OBLX_CountingSemaphore_delete(sem);
}

// Null handles, a give without a take, a second take by the holder and a
// give past the count's limit are reported instead of crashing or hanging.
TEST(SyncMisuse, IsReportedInsteadOfCrashingOrHanging) {
    LogCapture log;
    EXPECT_EQ(OBLX_CountingSemaphore_take(nullptr, nullptr), OBLX_SYNC_ERROR);
    EXPECT_EQ(OBLX_CountingSemaphore_new(-1), nullptr);
    EXPECT_EQ(OBLX_Mutex_take(nullptr), OBLX_SYNC_ERROR);
    EXPECT_FALSE(OBLX_GlobalLock_give());

    OBLX_Mutex *mutex = OBLX_Mutex_new();
    ASSERT_NE(mutex, nullptr);
    EXPECT_EQ(OBLX_Mutex_give(mutex), OBLX_SYNC_ERROR);  // not held
    ASSERT_EQ(OBLX_Mutex_take(mutex), OBLX_SYNC_OK);
    EXPECT_EQ(OBLX_Mutex_take(mutex), OBLX_SYNC_ERROR);  // already held by this thread
    EXPECT_EQ(OBLX_Mutex_give(mutex), OBLX_SYNC_OK);
    OBLX_Mutex_delete(mutex);

    // A give at the count's limit is taken back whole: the count still allows
    // its takes, and one take makes room for a give again.
    const OBLX_Time_t noWait = OBLX_TIME_ZERO;
    OBLX_CountingSemaphore *full = OBLX_CountingSemaphore_new((1 << 30) - 1);
    ASSERT_NE(full, nullptr);
    EXPECT_EQ(OBLX_CountingSemaphore_give(full), OBLX_SYNC_ERROR);
    EXPECT_EQ(OBLX_CountingSemaphore_take(full, &noWait), OBLX_SYNC_OK);
    EXPECT_EQ(OBLX_CountingSemaphore_give(full), OBLX_SYNC_OK);
    EXPECT_EQ(OBLX_CountingSemaphore_give(full), OBLX_SYNC_ERROR);
    OBLX_CountingSemaphore_delete(full);
    for (const char *source : {"OBLX_CountingSemaphore_take", "OBLX_CountingSemaphore_give", "OBLX_Mutex_take",
                               "OBLX_Mutex_give", "OBLX_GlobalLock_give"})
        EXPECT_TRUE(log.contains(source)) << source << " in " << log.text();
}

// In the Concurrency suite, so that ThreadSanitizer checks the exclusion too.
TEST(SyncConcurrency, GlobalLockIsRecursiveAndExcludesOtherThreadsUntilFullyGiven) {
    ASSERT_TRUE(OBLX_GlobalLock_take());
    ASSERT_TRUE(OBLX_GlobalLock_take());
    std::atomic<bool> otherHoldsIt{false};
    std::thread other([&] {
        EXPECT_TRUE(OBLX_GlobalLock_take());
        otherHoldsIt = true;
        EXPECT_TRUE(OBLX_GlobalLock_give());
    });
    EXPECT_TRUE(OBLX_GlobalLock_give());
    std::this_thread::sleep_for(50ms);
    EXPECT_FALSE(otherHoldsIt.load()) << "one give must not release a lock taken twice";
    EXPECT_TRUE(OBLX_GlobalLock_give());
    other.join();
    EXPECT_TRUE(otherHoldsIt.load());
}

// Producers push under the mutex and give the semaphore; one consumer takes
// it with a time-out and pops under the mutex, as the message queue does.
TEST(SyncConcurrency, SemaphoreAndMutexHandOverEveryItem) {
    constexpr int kProducers = 4;
    constexpr int kItemsEach = 2000;
    OBLX_Mutex *mutex = OBLX_Mutex_new();
    OBLX_CountingSemaphore *sem = OBLX_CountingSemaphore_new(0);
    ASSERT_NE(mutex, nullptr);
    ASSERT_NE(sem, nullptr);
    std::vector<int> queue;
    std::vector<std::thread> producers;
    for (int p = 0; p < kProducers; ++p) {
        producers.emplace_back([&] {
            for (int i = 0; i < kItemsEach; ++i) {
                ASSERT_EQ(OBLX_Mutex_take(mutex), OBLX_SYNC_OK);
                queue.push_back(i);
                ASSERT_EQ(OBLX_Mutex_give(mutex), OBLX_SYNC_OK);
                ASSERT_EQ(OBLX_CountingSemaphore_give(sem), OBLX_SYNC_OK);
            }
        });
    }
    long long received = 0;
    long long sum = 0;
    const OBLX_Time_t timeout = milliseconds(2000);
    while (received < kProducers * kItemsEach) {
        ASSERT_EQ(OBLX_CountingSemaphore_take(sem, &timeout), OBLX_SYNC_OK) << "after " << received;
        ASSERT_EQ(OBLX_Mutex_take(mutex), OBLX_SYNC_OK);
        ASSERT_FALSE(queue.empty());
        sum += queue.back();
        queue.pop_back();
        ASSERT_EQ(OBLX_Mutex_give(mutex), OBLX_SYNC_OK);
        ++received;
    }
    for (auto &producer : producers) producer.join();
    EXPECT_EQ(sum, kProducers * (kItemsEach * (kItemsEach - 1LL) / 2));
    const OBLX_Time_t noWait = OBLX_TIME_ZERO;
    EXPECT_EQ(OBLX_CountingSemaphore_take(sem, &noWait), OBLX_SYNC_TIMEOUT);
    OBLX_CountingSemaphore_delete(sem);
    OBLX_Mutex_delete(mutex);
}

// Now and then one side dawdles past the other's spin, so gives race takers
// on their way to sleep: a wake-up lost there leaves a take to time out.
TEST(SyncConcurrency, SemaphorePingPongLosesNoWakeUp) {
    constexpr int kRounds = 5000;
    OBLX_CountingSemaphore *ping = OBLX_CountingSemaphore_new(0);
    OBLX_CountingSemaphore *pong = OBLX_CountingSemaphore_new(0);
    ASSERT_NE(ping, nullptr);
    ASSERT_NE(pong, nullptr);
    const OBLX_Time_t timeout = milliseconds(5000);
    std::thread partner([&] {
        for (int round = 0; round < kRounds; ++round) {
            ASSERT_EQ(OBLX_CountingSemaphore_take(ping, &timeout), OBLX_SYNC_OK) << "round " << round;
            if (round % 8 == 0) std::this_thread::sleep_for(20us);
            ASSERT_EQ(OBLX_CountingSemaphore_give(pong), OBLX_SYNC_OK);
        }
    });
    for (int round = 0; round < kRounds; ++round) {
        if (round % 8 == 4) std::this_thread::sleep_for(20us);
        ASSERT_EQ(OBLX_CountingSemaphore_give(ping), OBLX_SYNC_OK);
        ASSERT_EQ(OBLX_CountingSemaphore_take(pong, round % 2 == 0 ? &timeout : nullptr), OBLX_SYNC_OK)
            << "round " << round;
    }
    partner.join();
    OBLX_CountingSemaphore_delete(ping);
    OBLX_CountingSemaphore_delete(pong);
}

TEST(Time, FractionIsBinaryAndConversionsRoundTrip) {
    const OBLX_Time_t half = OBLX_Time_fromNanoseconds(1'500'000'000);
    EXPECT_EQ(half.sec, 1);
    EXPECT_EQ(half.frac, 0x80000000u);
    const OBLX_Time_t quarter = {2, 0x40000000u};
    EXPECT_EQ(OBLX_Time_toNanoseconds(&quarter), 2'250'000'000LL);

    const OBLX_Time_t beforeEpoch = OBLX_Time_fromNanoseconds(-1);
    EXPECT_EQ(beforeEpoch.sec, -1);
    EXPECT_GT(beforeEpoch.frac, 0xFFFFFFF0u);

    for (long long ns : {0LL, 1LL, 999'999'999LL, 1'000'000'000LL, 123'456'789'012LL, -1LL, -1'000'000'001LL}) {
        const OBLX_Time_t time = OBLX_Time_fromNanoseconds(ns);
        EXPECT_EQ(OBLX_Time_toNanoseconds(&time), ns) << ns;
    }
    const OBLX_Time_t far = OBLX_Time_fromNanoseconds(INT64_MAX);
    EXPECT_EQ(far.sec, INT32_MAX);
}

// Room for the characters and copies that fit exactly are checked through the
// samples' string bounds; here what the samples never pass.
TEST(DDSString, ARefusedBoundedCopyLeavesTheBufferAlone) {
    char buffer[4] = {'x', 'x', 'x', 'x'};
    EXPECT_EQ(DDS_String_copy_bounded(buffer, "abcd", sizeof buffer), nullptr);
    EXPECT_EQ(std::memcmp(buffer, "xxxx", 4), 0);
    EXPECT_EQ(DDS_String_copy_bounded(buffer, "", 0), nullptr);
    EXPECT_EQ(DDS_String_copy_bounded(nullptr, "a", 4), nullptr);
    EXPECT_EQ(DDS_String_copy_bounded(buffer, nullptr, 4), nullptr);
    EXPECT_EQ(std::memcmp(buffer, "xxxx", 4), 0);
}

}  // namespace
