// An application that logs numbered messages at a steady rate until it is
// stopped, so that a subscriber elsewhere can tell exactly which ones it
// missed; then it flushes, finalizes and prints the logger's statistics.
//
//   paced_logger <domain> <kind> <rate per second> <queue size> [lossless]
//
// Once its log writer has matched a reader it prints "logging" and logs
// "paced N" at INFO for N = 0, 1, ... until SIGINT or SIGTERM (or ten
// minutes), and with every 100th one "probe N" at DEBUG, which the default
// filter level refuses: probes arrive only once a remote set-level has let
// DEBUG through. "lossless" names VexarQosLibrary's Lossless profile.
// Prints "logged N", "flush OK|TIMEOUT" and "statistics accepted A refused R
// dropped D published P failed F discarded X". Each failure has its own exit
// status.
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include "support/remote_log_counter.hpp"
#include "vexar/Statistics.h"

namespace {

enum Exit { kOk = 0, kUsage = 2, kSetup = 3, kNoSubscriber = 4, kNotFlushed = 5 };

using Clock = std::chrono::steady_clock;

constexpr long kProbeEvery = 100;
constexpr auto kLongest = std::chrono::minutes(10);
// Long enough for what a cut link held back to be resent.
constexpr DDS_Duration_t kFlushTimeout{20, 0};

volatile std::sig_atomic_t stopRequested = 0;

void requestStop(int) { stopRequested = 1; }

long logPacedUntilStopped(QTV_VX_Vexar *logger, long rate) {
    const Clock::time_point start = Clock::now();
    long logged = 0;
    while (stopRequested == 0 && Clock::now() - start < kLongest) {
        QTV_VX_Vexar_info(logger, ("paced " + std::to_string(logged)).c_str());
        if (logged % kProbeEvery == 0) QTV_VX_Vexar_debug(logger, ("probe " + std::to_string(logged)).c_str());
        ++logged;
        std::this_thread::sleep_until(start + std::chrono::microseconds(1000000 * logged / rate));
    }
    return logged;
}

void printStatistics() {
    QTV_VX_Statistics figures{};
    QTV_VX_Vexar_getStatistics(&figures);
    std::printf("statistics accepted %llu refused %llu dropped %llu published %llu failed %llu discarded %llu\n",
                static_cast<unsigned long long>(figures.accepted), static_cast<unsigned long long>(figures.refused),
                static_cast<unsigned long long>(figures.dropped), static_cast<unsigned long long>(figures.published),
                static_cast<unsigned long long>(figures.failed), static_cast<unsigned long long>(figures.discarded));
}

}  // namespace

int main(int argc, char **argv) {
    const bool lossless = argc == 6 && std::strcmp(argv[5], "lossless") == 0;
    const long rate = argc >= 5 ? std::atol(argv[3]) : 0;
    const int queueSize = argc >= 5 ? std::atoi(argv[4]) : 0;
    if ((argc != 5 && !lossless) || rate <= 0 || queueSize <= 0) {
        std::fprintf(stderr, "usage: %s DOMAIN KIND RATE QUEUE_SIZE [lossless]\n", argv[0]);
        return kUsage;
    }
    std::signal(SIGINT, requestStop);
    std::signal(SIGTERM, requestStop);
    // The logger keeps the options by pointer until it is finalized.
    QTV_VX_Options *options = QTV_VX_Options_createDefault();
    QTV_VX_Vexar *logger = vexar_test::startHelperLogger(options, std::atoi(argv[1]), argv[2], queueSize, lossless);
    if (logger == nullptr) return kSetup;
    if (!vexar_test::logWriterMatched(logger)) return kNoSubscriber;

    std::printf("logging\n");
    std::fflush(stdout);
    std::printf("logged %ld\n", logPacedUntilStopped(logger, rate));
    const bool flushed = QTV_VX_Vexar_flush(logger, &kFlushTimeout) == DDS_RETCODE_OK;
    std::printf("flush %s\n", flushed ? "OK" : "TIMEOUT");
    std::fflush(stdout);
    QTV_VX_Vexar_finalizeInstance();
    QTV_VX_Options_delete(options);
    printStatistics();
    return flushed ? kOk : kNotFlushed;
}
