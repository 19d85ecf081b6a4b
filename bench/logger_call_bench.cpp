// What one logging call costs the application's thread.
//
//   accepted: QTV_VX_Vexar_info with a 100-character message while the write
//             thread drains the queue into DDS, timed one call at a time
//             (median and 99th percentile), next to spdlog's asynchronous
//             logger writing the same text to a null sink in the same run;
//   formatted: a text made of two integers and a short string, timed like
//             the accepted calls: QTV_VX_Vexar_logf, the C++ API's call, and
//             spdlog's asynchronous logger (which formats with fmt too);
//   filtered: QTV_VX_Vexar_info below the filter level, the VX_LOG_DEBUG and
//             VX_DEBUG macros and spdlog's formatted call below it, the mean
//             of a loop.
//
// Calls come in bursts smaller than the queue, and each burst waits until
// the previous one was drained, so no call meets a full queue (a full queue
// drops the message and prints a warning: a different cost, not the one
// measured here). The loggers take turns burst by burst, together with an
// empty call that measures the two clock reads around each call, so that a
// change of the host's speed during the run meets all three alike. Each
// figure is printed as timed and net of the clock reads' median. The logger
// runs on loopback (CYCLONEDDS_URI) without a subscriber.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "logger_bench_support.hpp"
#include "support/domains.h"
#include "vexar/FormattedLogging.h"
#include "vexar/vexar.hpp"

#ifdef VEXAR_HAVE_SPDLOG
#include <spdlog/async.h>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>
#endif

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr int kDomain = vexar_test::domains::kBenchBase + 0;
constexpr DDS_Long kQueueSize = 8192;
constexpr int kBursts = 200;
constexpr int kCallsPerBurst = 1000;
constexpr long kFilteredCalls = 20'000'000;

// 100 characters, as an application might log them.
const std::string kMessage = [] {
    std::string text =
        "pump 7: pressure 3.25 bar above the set point of 3.00 bar, valve B opened to 40 %, next check 2 s";
    text.resize(100, '.');
    return text;
}();

struct Percentiles {
    double median;
    double p99;
};

// One kind of call, timed burst after burst.
struct TimedCall {
    const char *name;
    std::function<void()> call;
    std::function<void()> drained;  // waits until the logger caught up
    std::vector<long> nanoseconds;

    void burst() {
        for (int i = 0; i < kCallsPerBurst; ++i) {
            auto start = Clock::now();
            call();
            auto end = Clock::now();
            nanoseconds.push_back(std::chrono::duration_cast<std::chrono::nanoseconds>(end - start).count());
        }
        drained();
    }

    Percentiles percentiles() {
        std::sort(nanoseconds.begin(), nanoseconds.end());
        auto at = [&](double fraction) {
            return static_cast<double>(nanoseconds[static_cast<size_t>(fraction * (nanoseconds.size() - 1))]);
        };
        return {at(0.5), at(0.99)};
    }
};

void timeInTurns(std::vector<TimedCall> &calls) {
    for (TimedCall &timed : calls) timed.nanoseconds.reserve(static_cast<size_t>(kBursts) * kCallsPerBurst);
    for (int burst = 0; burst < kBursts; ++burst) {
        for (TimedCall &timed : calls) timed.burst();
    }
}

template <typename Call>
double meanNanoseconds(Call call, long calls) {
    auto start = Clock::now();
    for (long i = 0; i < calls; ++i) call();
    return std::chrono::duration<double, std::nano>(Clock::now() - start).count() / static_cast<double>(calls);
}

void waitUntil(const auto &condition) {
    for (auto deadline = Clock::now() + 10s; !condition() && Clock::now() < deadline;) {
        std::this_thread::sleep_for(200us);
    }
}

void printTimed(const char *name, Percentiles timed, double timerMedian) {
    std::printf("%-44s median %5.0f ns   p99 %6.0f ns   net of the clock: median %5.0f ns   p99 %6.0f ns\n", name,
                timed.median, timed.p99, timed.median - timerMedian, timed.p99 - timerMedian);
}

void printMean(const char *name, double nanoseconds) { std::printf("%-44s mean %7.1f ns\n", name, nanoseconds); }

#ifdef VEXAR_HAVE_SPDLOG
struct SpdlogRun {
    SpdlogRun() {
        spdlog::init_thread_pool(kQueueSize, 1);
        logger = spdlog::create_async<spdlog::sinks::null_sink_mt>("bench");
    }
    ~SpdlogRun() { spdlog::shutdown(); }
    SpdlogRun(const SpdlogRun &) = delete;
    SpdlogRun &operator=(const SpdlogRun &) = delete;

    static void drained() {
        waitUntil([] { return spdlog::thread_pool()->queue_size() == 0; });
    }

    std::shared_ptr<spdlog::logger> logger;
};
#endif

}  // namespace

int main() {
    vexar_bench::BenchLogger running(kDomain, kQueueSize);
    QTV_VX_Vexar *vexar = running.get();
    if (vexar == nullptr) {
        std::fprintf(stderr, "the logger could not be created\n");
        return 1;
    }
    std::vector<TimedCall> calls;
    calls.push_back({"timer overhead (two steady_clock reads)", [] {}, [] {}, {}});
    calls.push_back({"accepted: QTV_VX_Vexar_info, 100 chars",
                     [&] { QTV_VX_Vexar_info(vexar, kMessage.c_str()); },
                     [&] { running.waitUntilDrained(); },
                     {}});
    // Formatted: "retry 17 of 3 on eth0".
    int attempt = 0;
    const vexar::Category cpp(vexar, "");
    calls.push_back(
        {"formatted: QTV_VX_Vexar_logf",
         [&] { QTV_VX_Vexar_logf(vexar, QTV_VX_LOG_LEVEL_INFO, "", "retry %d of %d on %s", ++attempt, 3, "eth0"); },
         [&] { running.waitUntilDrained(); },
         {}});
    calls.push_back({"formatted: vexar::Category::info",
                     [&] { cpp.info("retry {} of {} on {}", ++attempt, 3, "eth0"); },
                     [&] { running.waitUntilDrained(); },
                     {}});
#ifdef VEXAR_HAVE_SPDLOG
    SpdlogRun spdlogRun;
    calls.push_back({"accepted: spdlog async, null sink, 100 chars",
                     [&] { spdlogRun.logger->info(kMessage); },
                     &SpdlogRun::drained,
                     {}});
    calls.push_back({"formatted: spdlog async, null sink",
                     [&] { spdlogRun.logger->info("retry {} of {} on {}", ++attempt, 3, "eth0"); },
                     &SpdlogRun::drained,
                     {}});
#endif
    timeInTurns(calls);
    const Percentiles timer = calls.front().percentiles();
    std::printf("%-44s median %5.0f ns   p99 %6.0f ns\n", calls.front().name, timer.median, timer.p99);
    for (size_t i = 1; i < calls.size(); ++i) printTimed(calls[i].name, calls[i].percentiles(), timer.median);
#ifndef VEXAR_HAVE_SPDLOG
    std::printf("spdlog not found at configuration: no comparison\n");
#endif

    QTV_VX_Vexar_setFilterLevel(vexar, QTV_VX_LOG_LEVEL_WARNING);
    printMean("filtered: QTV_VX_Vexar_info below the level",
              meanNanoseconds([&] { QTV_VX_Vexar_info(vexar, kMessage.c_str()); }, kFilteredCalls));
    printMean("filtered: VX_LOG_DEBUG, formatted",
              meanNanoseconds([&] { VX_LOG_DEBUG("", "retry %d of %d on %s", ++attempt, 3, "eth0"); }, kFilteredCalls));
    printMean("filtered: VX_DEBUG, formatted",
              meanNanoseconds([&] { VX_DEBUG(cpp, "retry {} of {} on {}", ++attempt, 3, "eth0"); }, kFilteredCalls));
#ifdef VEXAR_HAVE_SPDLOG
    spdlogRun.logger->set_level(spdlog::level::warn);
    printMean("filtered: spdlog info below the level",
              meanNanoseconds([&] { spdlogRun.logger->info(kMessage); }, kFilteredCalls));
    printMean("filtered: spdlog debug, formatted",
              meanNanoseconds([&] { spdlogRun.logger->debug("retry {} of {} on {}", ++attempt, 3, "eth0"); },
                              kFilteredCalls));
#endif
    vexar::CallOutcomes outcomes = vexar::callOutcomesOfThisThread();
    std::printf("Vexar: %llu calls queued, %llu dropped, %llu refused\n",
                static_cast<unsigned long long>(outcomes.queued), static_cast<unsigned long long>(outcomes.dropped),
                static_cast<unsigned long long>(outcomes.refused));
    return 0;
}
