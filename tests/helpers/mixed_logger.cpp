// An application that logs numbered messages at a steady rate, every Nth
// at WARNING and the others at INFO, so that a subscriber filtering to
// WARNING can tell exactly which ones it missed.
//
//   mixed_logger <domain> <kind> <rate per second> <count> <warning every> [text]
//
// Logs under the Lossless profile once its log writer has matched a reader:
// "<text> N" for N = 0 .. count-1 (count 0: until SIGINT or SIGTERM), then
// flushes and prints "logged N warned W flush OK|TIMEOUT dropped D". Each
// failure has its own exit status.
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include "support/remote_log_counter.hpp"
#include "vexar/Statistics.h"

namespace {

enum Exit { kOk = 0, kUsage = 2, kSetup = 3, kNoSubscriber = 4, kNotFlushed = 5 };

using Clock = std::chrono::steady_clock;
constexpr DDS_Duration_t kFlushTimeout{20, 0};
volatile std::sig_atomic_t stopRequested = 0;

void requestStop(int) { stopRequested = 1; }

}  // namespace

int main(int argc, char **argv) {
    const long rate = argc >= 6 ? std::atol(argv[3]) : 0;
    const long count = argc >= 6 ? std::atol(argv[4]) : -1;
    const long warningEvery = argc >= 6 ? std::atol(argv[5]) : 0;
    if (argc < 6 || argc > 7 || rate <= 0 || count < 0 || warningEvery <= 0) {
        std::fprintf(stderr, "usage: %s DOMAIN KIND RATE COUNT WARNING_EVERY [TEXT]\n", argv[0]);
        return kUsage;
    }
    const std::string text = argc == 7 ? argv[6] : "mixed";
    std::signal(SIGINT, requestStop);
    std::signal(SIGTERM, requestStop);
    QTV_VX_Options *options = QTV_VX_Options_createDefault();
    QTV_VX_Vexar *logger = vexar_test::startHelperLogger(options, std::atoi(argv[1]), argv[2], 1 << 16, true);
    if (logger == nullptr) return kSetup;
    if (!vexar_test::logWriterMatched(logger)) return kNoSubscriber;

    std::printf("logging\n");
    std::fflush(stdout);
    const Clock::time_point start = Clock::now();
    long logged = 0;
    long warned = 0;
    while (stopRequested == 0 && (count == 0 || logged < count)) {
        std::string message = text + " " + std::to_string(logged);
        if (logged % warningEvery == 0) {
            QTV_VX_Vexar_warning(logger, message.c_str());
            ++warned;
        } else {
            QTV_VX_Vexar_info(logger, message.c_str());
        }
        ++logged;
        std::this_thread::sleep_until(start + std::chrono::microseconds(1000000 * logged / rate));
    }
    const bool flushed = QTV_VX_Vexar_flush(logger, &kFlushTimeout) == DDS_RETCODE_OK;
    QTV_VX_Statistics figures{};
    QTV_VX_Vexar_getStatistics(&figures);
    std::printf("logged %ld warned %ld flush %s dropped %llu\n", logged, warned, flushed ? "OK" : "TIMEOUT",
                static_cast<unsigned long long>(figures.dropped));
    std::fflush(stdout);
    QTV_VX_Vexar_finalizeInstance();
    QTV_VX_Options_delete(options);
    return flushed ? kOk : kNotFlushed;
}
