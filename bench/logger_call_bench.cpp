// What one logging call costs the application's thread.
//
//   accepted: QTV_VX_Vexar_info with a 100-character message while the write
//             thread drains the queue into DDS, timed one call at a time
//             (median and 99th percentile), next to spdlog's asynchronous
//             logger writing the same text to a null sink in the same run;
//   filtered: QTV_VX_Vexar_info below the filter level, the mean of a loop.
//
// Calls come in bursts smaller than the queue, and each burst waits until
// the previous one was drained, so no call meets a full queue (a full queue
// drops the message and prints a warning: a different cost, not the one
// measured here). Both loggers get the same bursts. The logger runs on
// loopback (CYCLONEDDS_URI) without a subscriber.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "logger_bench_support.hpp"
#include "support/domains.h"

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
    std::string text = "pump 7: pressure 3.25 bar above the set point of 3.00 bar, valve B opened to 40 %, next check 2 s";
    text.resize(100, '.');
    return text;
}();

struct Percentiles {
    double median;
    double p99;
};

Percentiles percentilesOf(std::vector<long> &nanoseconds) {
    std::sort(nanoseconds.begin(), nanoseconds.end());
    auto at = [&](double fraction) {
        return static_cast<double>(nanoseconds[static_cast<size_t>(fraction * (nanoseconds.size() - 1))]);
    };
    return {at(0.5), at(0.99)};
}

// Times each call of `call` in bursts; `drained` waits until the logger has
// caught up between two bursts.
template <typename Call, typename Drained>
Percentiles timeEachCall(Call call, Drained drained) {
    std::vector<long> nanoseconds;
    nanoseconds.reserve(static_cast<size_t>(kBursts) * kCallsPerBurst);
    for (int burst = 0; burst < kBursts; ++burst) {
        for (int i = 0; i < kCallsPerBurst; ++i) {
            auto start = Clock::now();
            call();
            auto end = Clock::now();
            nanoseconds.push_back(std::chrono::duration_cast<std::chrono::nanoseconds>(end - start).count());
        }
        drained();
    }
    return percentilesOf(nanoseconds);
}

// The cost of the two clock reads around an empty call.
Percentiles timerOverhead() {
    return timeEachCall([] {}, [] {});
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

void printRow(const char *name, Percentiles figures) {
    std::printf("%-44s median %7.0f ns   p99 %7.0f ns\n", name, figures.median, figures.p99);
}

struct VexarFigures {
    Percentiles accepted;
    double filtered;
};

bool runVexar(VexarFigures &figures) {
    vexar_bench::BenchLogger running(kDomain, kQueueSize);
    QTV_VX_Vexar *logger = running.get();
    if (logger == nullptr) return false;
    figures.accepted = timeEachCall([&] { QTV_VX_Vexar_info(logger, kMessage.c_str()); },
                                    [&] { running.waitUntilDrained(); });
    QTV_VX_Vexar_setFilterLevel(logger, QTV_VX_LOG_LEVEL_WARNING);
    figures.filtered = meanNanoseconds([&] { QTV_VX_Vexar_info(logger, kMessage.c_str()); }, kFilteredCalls);
    vexar::CallOutcomes calls = vexar::callOutcomesOfThisThread();
    std::printf("Vexar: %llu calls queued, %llu dropped, %llu refused\n",
                static_cast<unsigned long long>(calls.queued), static_cast<unsigned long long>(calls.dropped),
                static_cast<unsigned long long>(calls.refused));
    return true;
}

#ifdef VEXAR_HAVE_SPDLOG
struct SpdlogFigures {
    Percentiles accepted;
    double filtered;
};

SpdlogFigures runSpdlog() {
    spdlog::init_thread_pool(kQueueSize, 1);
    auto logger = spdlog::create_async<spdlog::sinks::null_sink_mt>("bench");
    SpdlogFigures figures{};
    auto drained = [] { waitUntil([] { return spdlog::thread_pool()->queue_size() == 0; }); };
    figures.accepted = timeEachCall([&] { logger->info(kMessage); }, drained);
    logger->set_level(spdlog::level::warn);
    figures.filtered = meanNanoseconds([&] { logger->info(kMessage); }, kFilteredCalls);
    spdlog::shutdown();
    return figures;
}
#endif

}  // namespace

int main() {
    printRow("timer overhead (two steady_clock reads)", timerOverhead());
    VexarFigures vexar{};
    if (!runVexar(vexar)) {
        std::fprintf(stderr, "the logger could not be created\n");
        return 1;
    }
    printRow("accepted: QTV_VX_Vexar_info, 100 chars", vexar.accepted);
#ifdef VEXAR_HAVE_SPDLOG
    SpdlogFigures spdlog = runSpdlog();
    printRow("accepted: spdlog async, null sink, 100 chars", spdlog.accepted);
#else
    std::printf("spdlog not found at configuration: no comparison\n");
#endif
    std::printf("%-44s mean %9.1f ns\n", "filtered: QTV_VX_Vexar_info below the level", vexar.filtered);
#ifdef VEXAR_HAVE_SPDLOG
    std::printf("%-44s mean %9.1f ns\n", "filtered: spdlog info below the level", spdlog.filtered);
#endif
    return 0;
}
