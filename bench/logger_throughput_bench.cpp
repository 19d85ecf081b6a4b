// Messages per second that the logger delivers end to end, from the logging
// call in this process to a subscriber in another process on loopback, and
// how many of them were lost.
//
//   logger_throughput_bench [messages [rate]]  the logger here, a subscriber child
//   logger_throughput_bench sub <domain> <messages>
//   logger_throughput_bench pub <messages> <rate>   the logger only, for a
//                                                   subscriber started apart
//                                                   (scripts/bench-tail.sh)
//
// The producer logs `messages` INFO messages of 100 characters, each
// carrying its sequence number, with queueSize 8192, as fast as the queue
// takes them: before a call it waits while the queue is nearly full, so the
// rate measured is the rate at which the write thread and DDS carry messages
// away, and no message is refused for a full queue (if one were, it would
// be counted as lost all the same). With a rate, the producer logs bursts of
// kBurst messages on a fixed schedule instead: the subscriber then only has
// to keep up with that rate, which shows the rate that is carried with
// nothing lost (under the default QoS the log writer keeps the last 10
// samples of an instance, so a subscriber that falls behind the writer loses
// what it cannot take; the benchmarks run under VexarQosLibrary::Lossless
// unless VEXAR_BENCH_PROFILE says otherwise). The subscriber (tests/support/
// log_subscriber.hpp: reliable, keep-all, takes on loan in batches) marks
// every sequence number it gets; its rate is distinct messages over the time
// from the first to the last arrival. Lost = logged - distinct received,
// whatever the cause: the queue's overflow, a failed write, DDS.
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "logger_bench_support.hpp"
#include "platform/dds/data_writer.h"
#include "support/domains.h"
#include "support/log_subscriber.hpp"
#include "vexar/DDSEntities.h"

extern char **environ;

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr int kDomain = vexar_test::domains::kBenchBase + 1;
constexpr long kDefaultMessages = 1'000'000;
constexpr DDS_Long kQueueSize = 8192;
// Room kept free in the queue: the logger's own captured lines may come too.
constexpr std::uint64_t kHeadroom = 64;
constexpr size_t kMessageLength = 100;
// The subscriber stops once nothing arrived for this long.
constexpr auto kIdleEnd = 3s;

// "seq 00000042 " and filler up to 100 characters.
std::string messageWith(long sequence) {
    char text[kMessageLength + 1];
    int length = std::snprintf(text, sizeof text, "seq %08ld ", sequence);
    std::memset(text + length, 'x', kMessageLength - static_cast<size_t>(length));
    text[kMessageLength] = '\0';
    return text;
}

long sequenceOf(const char *message) {
    if (std::strncmp(message, "seq ", 4) != 0) return -1;
    return std::strtol(message + 4, nullptr, 10);
}

// ---- subscriber (child process) ----

// Which sequence numbers arrived, and when the first and the last did.
class SequenceTally {
public:
    explicit SequenceTally(long messages) : seen_(static_cast<size_t>(messages), false) {}

    void record(const char *message) {
        long sequence = sequenceOf(message);
        if (sequence < 0 || sequence >= static_cast<long>(seen_.size())) {
            ++foreign_;
        } else if (seen_[static_cast<size_t>(sequence)]) {
            ++duplicates_;
        } else {
            seen_[static_cast<size_t>(sequence)] = true;
            ++distinct_;
        }
    }
    void arrivedNow() {
        last_ = Clock::now();
        if (first_ == Clock::time_point{}) first_ = last_;
    }
    bool complete() const { return distinct_ == static_cast<long>(seen_.size()); }

    void print() const {
        double seconds = std::chrono::duration<double>(last_ - first_).count();
        std::printf("received %ld distinct, %ld duplicates, %ld others in %.3f s\n", distinct_, duplicates_, foreign_,
                    seconds);
        std::printf("rate %.0f\n", seconds > 0 ? static_cast<double>(distinct_) / seconds : 0.0);
        std::printf("distinct %ld\n", distinct_);
        printMissing(10);
    }

private:
    // The first `most` runs of sequence numbers that never arrived.
    void printMissing(int most) const {
        const size_t size = seen_.size();
        for (size_t i = 0; i < size && most > 0; ++i) {
            if (seen_[i]) continue;
            size_t end = i;
            while (end < size && !seen_[end]) ++end;
            std::printf("missing %zu..%zu\n", i, end - 1);
            --most;
            i = end;
        }
    }

    std::vector<bool> seen_;
    long distinct_ = 0, duplicates_ = 0, foreign_ = 0;
    Clock::time_point first_{}, last_{};
};

int subscribe(int domain, long messages) {
    vexar_test::LogSubscriber subscriber(domain);
    if (!subscriber.ready()) return 1;
    for (auto deadline = Clock::now() + 20s; !subscriber.matched(); std::this_thread::sleep_for(1ms)) {
        if (Clock::now() > deadline) return 1;
    }
    std::printf("ready\n");
    std::fflush(stdout);
    SequenceTally tally(messages);
    for (auto idleSince = Clock::now(); !tally.complete() && Clock::now() - idleSince < kIdleEnd;) {
        if (subscriber.takeEach([&](const QTV_VX_LogMessage &sample) { tally.record(sample.message); }) == 0) {
            std::this_thread::sleep_for(200us);
            continue;
        }
        tally.arrivedNow();
        idleSince = Clock::now();
    }
    tally.print();
    return 0;
}

// ---- producer (this process) ----

// The subscriber, with its standard output on a pipe to us.
class SubscriberProcess {
public:
    explicit SubscriberProcess(long messages) {
        int ends[2];
        if (pipe(ends) != 0) return;
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        posix_spawn_file_actions_addclose(&actions, ends[0]);
        std::string program = "logger_throughput_bench", role = "sub", domain = std::to_string(kDomain),
                    count = std::to_string(messages);
        std::vector<char *> argv{program.data(), role.data(), domain.data(), count.data(), nullptr};
        if (posix_spawn(&pid_, "/proc/self/exe", &actions, nullptr, argv.data(), environ) != 0) pid_ = -1;
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        output_ = fdopen(ends[0], "r");
    }
    ~SubscriberProcess() {
        if (output_ != nullptr) std::fclose(output_);
        if (pid_ > 0) waitpid(pid_, nullptr, 0);
    }
    SubscriberProcess(const SubscriberProcess &) = delete;
    SubscriberProcess &operator=(const SubscriberProcess &) = delete;

    // The next line it printed, empty at its end.
    std::string line() {
        char buffer[256];
        if (output_ == nullptr || std::fgets(buffer, sizeof buffer, output_) == nullptr) return {};
        return buffer;
    }

private:
    pid_t pid_ = -1;
    FILE *output_ = nullptr;
};

// Bursts of a paced producer: small against the queue, large against a
// sleep's overshoot.
constexpr long kBurst = 500;

void logAll(const vexar_bench::BenchLogger &logger, long messages, long rate) {
    std::vector<std::string> texts;
    texts.reserve(static_cast<size_t>(messages));
    for (long sequence = 0; sequence < messages; ++sequence) texts.push_back(messageWith(sequence));
    const auto burstPeriod = std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double>(rate > 0 ? static_cast<double>(kBurst) / static_cast<double>(rate) : 0.0));
    auto start = Clock::now();
    auto nextBurst = start;
    for (long sequence = 0; sequence < messages; ++sequence) {
        if (rate > 0 && sequence % kBurst == 0) {
            std::this_thread::sleep_until(nextBurst);
            nextBurst += burstPeriod;
        }
        logger.waitForRoom(kHeadroom);
        QTV_VX_Vexar_info(logger.get(), texts[static_cast<size_t>(sequence)].c_str());
    }
    double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    std::printf("producer: %ld messages logged in %.3f s (%s, QoS %s)\n", messages, seconds,
                rate > 0 ? ("paced at " + std::to_string(rate) + "/s").c_str() : "as fast as carried away",
                vexar_bench::benchProfile());
}

int produce(long messages, long rate) {
    long distinct = -1;
    {
        vexar_bench::BenchLogger logger(kDomain, kQueueSize);
        if (logger.get() == nullptr) return 1;
        SubscriberProcess subscriber(messages);
        if (subscriber.line() == "ready\n") {
            logAll(logger, messages, rate);
            for (std::string line = subscriber.line(); !line.empty(); line = subscriber.line()) {
                std::printf("subscriber: %s", line.c_str());
                if (line.rfind("distinct ", 0) == 0) distinct = std::atol(line.c_str() + 9);
            }
        }
        vexar::CallOutcomes calls = vexar::callOutcomesOfThisThread();
        vexar::QueueOutcomes queues = vexar::queueOutcomes();
        std::printf("logger: %llu queued, %llu refused by a full queue; %llu published, %llu failed writes\n",
                    static_cast<unsigned long long>(calls.queued), static_cast<unsigned long long>(calls.dropped),
                    static_cast<unsigned long long>(queues.published), static_cast<unsigned long long>(queues.failed));
    }
    if (distinct < 0) {
        std::fprintf(stderr, "the subscriber gave no result\n");
        return 1;
    }
    std::printf("lost %ld of %ld\n", messages - distinct, messages);
    return 0;
}

bool logWriterMatched(const QTV_VX_Vexar *logger) {
    DDS_PublicationMatchedStatus status{};
    DDS_DataWriter *writer =
        QTV_VX_LogMessageDataWriter_as_datawriter(QTV_VX_DDSEntities_getLogMessageWriter(logger->_ddsEntities));
    return DDS_DataWriter_get_publication_matched_status(writer, &status) == DDS_RETCODE_OK && status.current_count > 0;
}

// Logs for a subscriber of its own (such as `vexar tail`) once it matched,
// and stays until the queue is empty and the last messages had time to go.
int produceForOthers(long messages, long rate) {
    vexar_bench::BenchLogger logger(kDomain, kQueueSize);
    if (logger.get() == nullptr) return 1;
    for (auto deadline = Clock::now() + 20s; !logWriterMatched(logger.get()); std::this_thread::sleep_for(1ms)) {
        if (Clock::now() > deadline) return 1;
    }
    logAll(logger, messages, rate);
    logger.waitUntilDrained();
    // A subscriber that is behind still has messages to fetch: they go only
    // when it has them (or after a minute), not with this process.
    const DDS_Duration_t kFlushTimeout{60, 0};
    if (QTV_VX_Vexar_flush(logger.get(), &kFlushTimeout) != DDS_RETCODE_OK) {
        std::fprintf(stderr, "producer: not every message was acknowledged within 60 s\n");
    }
    std::this_thread::sleep_for(1s);
    return 0;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc == 4 && std::strcmp(argv[1], "pub") == 0) return produceForOthers(std::atol(argv[2]), std::atol(argv[3]));
    if (argc == 4 && std::strcmp(argv[1], "sub") == 0) return subscribe(std::atoi(argv[2]), std::atol(argv[3]));
    if (argc > 3) {
        std::fprintf(stderr, "usage: %s [messages [rate]] | sub <domain> <messages> | pub <messages> <rate>\n",
                     argv[0]);
        return 2;
    }
    long messages = argc >= 2 ? std::atol(argv[1]) : kDefaultMessages;
    long rate = argc == 3 ? std::atol(argv[2]) : 0;
    return messages > 0 && rate >= 0 ? produce(messages, rate) : 2;
}
