// Resident memory that a running logger adds to a process that already has
// a DDS participant: read before getInstance (the participant exists and
// has been discovering for a while) and after, once the logger has run and
// published, for the default queue size and for a large one.
//
//   logger_memory_bench
//
// Resident memory comes from /proc/self/smaps_rollup (Rss), with
// /proc/self/statm as a cross-check; both count every page the process
// touched, including the write thread's stack and what Cyclone allocates
// for the logger's topics, writers and reader.
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>

#include "logger_bench_support.hpp"
#include "platform/dds/domain_participant_factory.h"
#include "support/domains.h"

namespace {

using namespace std::chrono_literals;

constexpr int kDomain = vexar_test::domains::kBenchBase + 2;
constexpr int kMessages = 20'000;

long kibFromSmapsRollup() {
    FILE *file = std::fopen("/proc/self/smaps_rollup", "r");
    if (file == nullptr) return -1;
    char line[256];
    long kib = -1;
    while (std::fgets(line, sizeof line, file) != nullptr) {
        if (std::sscanf(line, "Rss: %ld kB", &kib) == 1) break;
    }
    std::fclose(file);
    return kib;
}

long kibFromStatm() {
    FILE *file = std::fopen("/proc/self/statm", "r");
    if (file == nullptr) return -1;
    long size = 0, resident = -1;
    if (std::fscanf(file, "%ld %ld", &size, &resident) != 2) resident = -1;
    std::fclose(file);
    return resident < 0 ? -1 : resident * (sysconf(_SC_PAGESIZE) / 1024);
}

struct Resident {
    long rollup;
    long statm;
};

Resident resident() { return {kibFromSmapsRollup(), kibFromStatm()}; }

// Starts a logger on `participant`, logs, lets the write thread publish, and
// returns the resident memory while it still runs.
Resident withRunningLogger(DDS_DomainParticipant *participant, DDS_Long queueSize) {
    vexar_bench::BenchLogger logger(kDomain, queueSize, participant);
    std::string text(100, 'm');
    for (int i = 0; i < kMessages; ++i) {
        logger.waitForRoom();
        QTV_VX_Vexar_info(logger.get(), text.c_str());
    }
    std::this_thread::sleep_for(500ms);
    return resident();
}

void report(const char *what, Resident before, Resident after) {
    std::printf("%-28s before %6ld KiB, with logger %6ld KiB: added %5ld KiB (%.2f MiB); statm added %5ld KiB\n", what,
                before.rollup, after.rollup, after.rollup - before.rollup,
                static_cast<double>(after.rollup - before.rollup) / 1024.0, after.statm - before.statm);
}

}  // namespace

int main() {
    DDS_DomainParticipantFactory *factory = DDS_DomainParticipantFactory_get_instance();
    DDS_DomainParticipant *participant =
        DDS_DomainParticipantFactory_create_participant(factory, kDomain, nullptr, nullptr, 0);
    if (participant == nullptr) {
        std::fprintf(stderr, "no participant\n");
        return 1;
    }
    std::this_thread::sleep_for(500ms);  // the participant's own threads and buffers settle
    for (DDS_Long queueSize : {128, 8192}) {
        Resident before = resident();
        Resident after = withRunningLogger(participant, queueSize);
        std::string what = "queueSize " + std::to_string(queueSize) + ":";
        report(what.c_str(), before, after);
    }
    DDS_DomainParticipantFactory_delete_participant(factory, participant);
    return 0;
}
