// A collecting application in a process of its own: a reliable keep-all
// transient-local LogMessage reader (as `vexar tail` has) that counts what
// arrives.
//
//   log_counter <domain> <expected> <quiet ms> <ready file> <result file>
//
// Creates <ready file> once its reader exists, stops at <expected> messages
// or after <quiet ms> without a new one (counted from the first; at most a
// minute in all), then writes "received N" into <result file>.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "support/log_subscriber.hpp"

namespace {

using Clock = std::chrono::steady_clock;

bool writeFile(const char *path, long received) {
    std::FILE *file = std::fopen(path, "w");
    if (file == nullptr) return false;
    if (received >= 0) std::fprintf(file, "received %ld\n", received);
    return std::fclose(file) == 0;
}

long countUntilQuiet(vexar_test::LogSubscriber &subscriber, long expected, std::chrono::milliseconds quiet) {
    const auto limit = Clock::now() + std::chrono::minutes(1);
    auto lastArrival = Clock::now();
    long received = 0;
    while (received < expected && Clock::now() < limit) {
        const long taken = subscriber.takeEach([](const QTV_VX_LogMessage &) {});
        received += taken;
        if (taken > 0) lastArrival = Clock::now();
        if (received > 0 && Clock::now() - lastArrival > quiet) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return received;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc != 6) {
        std::fprintf(stderr, "usage: %s DOMAIN EXPECTED QUIET_MS READY_FILE RESULT_FILE\n", argv[0]);
        return 2;
    }
    vexar_test::LogSubscriber subscriber(std::atoi(argv[1]), true);
    if (!subscriber.ready() || !writeFile(argv[4], -1)) return 3;
    const long received =
        countUntilQuiet(subscriber, std::atol(argv[2]), std::chrono::milliseconds(std::atol(argv[3])));
    return writeFile(argv[5], received) ? 0 : 4;
}
