// Threads of the portability runtime: names, stack sizes, scheduling,
// identity, sleep, and the thread settings record.
#include <gtest/gtest.h>

#include <linux/capability.h>
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

#include "platform/runtime/thread.h"
#include "platform/dds/thread_settings.h"
#include "support/log_capture.h"

namespace {

using namespace std::chrono_literals;
using vexar_test::LogCapture;

// What a started thread saw of itself.
struct Observed {
    std::atomic<bool> ran{false};
    DDS_UnsignedLong id = 0;
    std::string comm;
    size_t stackSize = 0;
    int policy = -1;
    int priority = -1;
};

void *observeSelf(void *argument) {
    auto *observed = static_cast<Observed *>(argument);
    observed->id = OBLX_Thread_currentId();
    char comm[16] = {};
    pthread_getname_np(pthread_self(), comm, sizeof comm);  // the kernel's name of the thread
    observed->comm = comm;
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) == 0) {
        pthread_attr_getstacksize(&attributes, &observed->stackSize);
        pthread_attr_destroy(&attributes);
    }
    sched_param parameters{};
    pthread_getschedparam(pthread_self(), &observed->policy, &parameters);
    observed->priority = parameters.sched_priority;
    observed->ran = true;
    return nullptr;
}

// Starts a thread that observes itself, waits for it and returns what it saw.
bool runObserved(Observed &observed, const char *name, DDS_Long priority, DDS_ThreadSettingsKindMask options,
                 DDS_Long stackSize) {
    OBLX_Thread *thread = OBLX_Thread_new(name, priority, options, stackSize, &observeSelf, &observed);
    if (thread == nullptr) return false;
    OBLX_Thread_delete(thread);
    return observed.ran;
}

// The name is cut to 15 characters, a positive stack size is applied in whole
// pages (at least the system's minimum), and each thread has its kernel id.
TEST(Thread, StartedThreadHasItsNameStackAndOwnId) {
    const size_t pageSize = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    Observed large;
    ASSERT_TRUE(runObserved(large, "LogMessageWriteThread", OBLX_THREAD_PRIORITY_DEFAULT,
                            DDS_THREAD_SETTINGS_KIND_MASK_DEFAULT, 4 * 1024 * 1024 + 1));
    EXPECT_EQ(large.comm, "LogMessageWrite");
    EXPECT_GE(large.stackSize, 4u * 1024 * 1024 + 1);
    EXPECT_EQ(large.stackSize % pageSize, 0u);

    Observed tiny;
    ASSERT_TRUE(runObserved(tiny, "tiny", OBLX_THREAD_PRIORITY_DEFAULT, 0, 100));
    EXPECT_GE(tiny.stackSize, static_cast<size_t>(PTHREAD_STACK_MIN));

    EXPECT_EQ(OBLX_Thread_currentId(), static_cast<DDS_UnsignedLong>(gettid()));
    EXPECT_NE(tiny.id, 0u);
    EXPECT_NE(tiny.id, OBLX_Thread_currentId());
}

TEST(Thread, DeletingItselfDetachesWithoutLeaking) {
    static std::atomic<OBLX_Thread *> self{nullptr};
    static std::atomic<bool> done{false};
    auto entry = [](void *) -> void * {
        while (self.load() == nullptr) std::this_thread::yield();
        OBLX_Thread_delete(self.load());
        done = true;
        return nullptr;
    };
    self =
        OBLX_Thread_new("selfdelete", OBLX_THREAD_PRIORITY_DEFAULT, 0, OBLX_THREAD_STACK_SIZE_DEFAULT, entry, nullptr);
    ASSERT_NE(self.load(), nullptr);
    while (!done) std::this_thread::sleep_for(1ms);
    std::this_thread::sleep_for(10ms);  // let the detached thread finish
}

// Where the system grants real-time scheduling (privileged runs), the thread
// gets SCHED_FIFO with the priority clamped into the policy's range.
TEST(Thread, RealtimePriorityIsClampedIntoTheFifoRange) {
    LogCapture log;
    Observed observed;
    ASSERT_TRUE(runObserved(observed, "realtime", 100000, DDS_THREAD_SETTINGS_REALTIME_PRIORITY,
                            OBLX_THREAD_STACK_SIZE_DEFAULT));
    if (log.contains("real-time priority refused")) GTEST_SKIP() << "real-time scheduling is not permitted here";
    EXPECT_EQ(observed.policy, SCHED_FIFO);
    EXPECT_EQ(observed.priority, sched_get_priority_max(SCHED_FIFO));
}

// Takes real-time scheduling away from this process, as for an unprivileged user.
void forbidRealtimeScheduling() {
    const rlimit none{0, 0};
    setrlimit(RLIMIT_RTPRIO, &none);
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2]{};
    syscall(SYS_capget, &header, data);
    data[0].effective &= ~(1u << CAP_SYS_NICE);
    data[0].permitted &= ~(1u << CAP_SYS_NICE);
    syscall(SYS_capset, &header, data);
}

// Without the privilege, real-time priority is reported and the thread runs
// normally, unless the priority is enforced: then creation fails.
void startRealtimeWithoutPrivilegeAndExit() {
    forbidRealtimeScheduling();
    LogCapture log;
    Observed observed;
    const bool ran =
        runObserved(observed, "refused", 10, DDS_THREAD_SETTINGS_REALTIME_PRIORITY, OBLX_THREAD_STACK_SIZE_DEFAULT);
    const bool reported = log.contains("real-time priority refused");
    const bool enforcedRefused =
        OBLX_Thread_new("enforced", 10, DDS_THREAD_SETTINGS_REALTIME_PRIORITY | DDS_THREAD_SETTINGS_PRIORITY_ENFORCE,
                        OBLX_THREAD_STACK_SIZE_DEFAULT, &observeSelf, nullptr) == nullptr &&
        log.contains("OBLX_Thread_new");
    std::exit(ran && observed.policy == SCHED_OTHER && reported && enforcedRefused ? 0 : 1);
}

TEST(ThreadDeathTest, RefusedRealtimeIsReportedAndFailsOnlyWhenEnforced) {
    EXPECT_EXIT(startRealtimeWithoutPrivilegeAndExit(), testing::ExitedWithCode(0), "");
}

TEST(ThreadSleep, SleepsTheWholeDurationThroughSignals) {
    struct sigaction action {};
    action.sa_handler = [](int) {};  // no SA_RESTART: the sleep sees EINTR
    sigaction(SIGUSR1, &action, nullptr);
    std::atomic<bool> sleeping{true};
    std::chrono::steady_clock::duration slept{};
    std::thread sleeper([&] {
        const OBLX_Time_t duration = OBLX_Time_fromNanoseconds(200'000'000);
        const auto start = std::chrono::steady_clock::now();
        OBLX_Thread_sleep(&duration);
        slept = std::chrono::steady_clock::now() - start;
        sleeping = false;
    });
    while (sleeping) {
        pthread_kill(sleeper.native_handle(), SIGUSR1);
        std::this_thread::sleep_for(5ms);
    }
    sleeper.join();
    EXPECT_GE(slept, 200ms);
}

// Deep copies are checked through the options that hold the settings.
TEST(ThreadSettings, EqualityComparesEveryField) {
    DDS_ThreadSettings_t source = DDS_THREAD_SETTINGS_DEFAULT;
    DDS_ThreadSettings_t copy = DDS_THREAD_SETTINGS_DEFAULT;
    const DDS_Long cpus[] = {0, 2, 3};
    ASSERT_TRUE(DDS_LongSeq_from_array(&source.cpu_list, cpus, 3));
    source.mask = DDS_THREAD_SETTINGS_REALTIME_PRIORITY | DDS_THREAD_SETTINGS_STDIO;
    source.priority = 20;
    source.stack_size = 65536;
    source.cpu_rotation = DDS_THREAD_SETTINGS_CPU_RR_ROTATION;

    ASSERT_TRUE(DDS_ThreadSettings_t_copy(&copy, &source));
    EXPECT_TRUE(DDS_ThreadSettings_is_equal(&copy, &source));

    *DDS_LongSeq_get_reference(&source.cpu_list, 2) = 7;
    EXPECT_FALSE(DDS_ThreadSettings_is_equal(&copy, &source)) << "a changed CPU";
    ASSERT_TRUE(DDS_LongSeq_set_length(&source.cpu_list, 2));
    EXPECT_FALSE(DDS_ThreadSettings_is_equal(&copy, &source)) << "a shorter CPU list";
    ASSERT_TRUE(DDS_ThreadSettings_t_copy(&source, &copy));
    source.cpu_rotation = DDS_THREAD_SETTINGS_CPU_NO_ROTATION;
    EXPECT_FALSE(DDS_ThreadSettings_is_equal(&copy, &source)) << "another rotation";

    EXPECT_FALSE(DDS_ThreadSettings_is_equal(&copy, nullptr));
    EXPECT_TRUE(DDS_ThreadSettings_t_finalize(&source));
    EXPECT_TRUE(DDS_ThreadSettings_t_finalize(&copy));
}

}  // namespace
