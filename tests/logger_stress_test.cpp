// Four threads logging, middleware diagnostics, a remote administrator
// sending commands, and the logger finalized and created again and again:
// nothing may deadlock or race (this suite also runs under
// ThreadSanitizer), and every message must be delivered or accounted for.
//
// The accounting is exact because each number comes from where it happens:
// - each logging thread knows how many calls it made, and the logger counts,
//   per calling thread, how each call ended (refused, queued, or dropped by
//   a full queue);
// - the logger counts what its queues did with what they took: published,
//   failed write, or discarded when the logger was destroyed;
// - the subscriber, a reliable keep-all reader in this process (Cyclone
//   delivers to local readers inside the write, so DDS cannot lose here),
//   marks every (thread, sequence) it receives.
// Each new logger starts with filter level 0, so it refuses everything
// until its writer has matched the subscriber; only then does the test open
// the filter and let the administrator address it.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <future>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "support/administrator.hpp"
#include "support/domains.h"
#include "support/log_subscriber.hpp"
#include "support/running_logger.hpp"
#include "vexar/message_counts.hpp"

using namespace vexar_test;
using namespace std::chrono_literals;

namespace {

constexpr int kDomain = domains::kLoggerBase + 25;
constexpr int kLoggingThreads = 4;
constexpr int kCycles = 6;
constexpr auto kLoggerLife = 250ms;
// Small, and filled in bursts, so that the four threads overflow it now and
// then.
constexpr DDS_Long kQueueSize = 128;
constexpr long kBurst = 64;

// ---- the logging threads ----

struct ThreadTally {
    long logged = 0;
    vexar::CallOutcomes outcomes;
};

// Through each of the three logging calls in turn, at every level, with the
// singleton or, between two loggers, a stale pointer that must be refused.
void logOnce(QTV_VX_Vexar *logger, DDS_Long level, long sequence, const std::string &text) {
    if (sequence % 3 == 0) {
        QTV_VX_Vexar_log(logger, level, text.c_str());
    } else if (sequence % 3 == 1) {
        QTV_VX_Vexar_logMessageWithLevelCategory(logger, level, text.c_str(), "stress");
    } else {
        QTV_VX_Vexar_MessageParams params{level, text.c_str(), "stress", {1700000000, 0}};
        QTV_VX_Vexar_logMessageWithParams(logger, &params);
    }
}

ThreadTally logUntil(int thread, const std::atomic<bool> &stop) {
    ThreadTally tally;
    QTV_VX_Vexar *remembered = nullptr;
    for (long sequence = 0; !stop.load(); ++sequence) {
        if (QTV_VX_Vexar *current = vexar::shared(QTV_VX_Vexar_instance).load()) remembered = current;
        // "stress t<thread> #<sequence>": who logged it and which it was.
        const std::string text = "stress t" + std::to_string(thread) + " #" + std::to_string(sequence);
        logOnce(remembered, 100 * (1 + sequence % 8), sequence, text);
        ++tally.logged;
        if (sequence % kBurst == kBurst - 1) std::this_thread::sleep_for(2ms);
    }
    tally.outcomes = vexar::callOutcomesOfThisThread();
    return tally;
}

// ---- the subscriber ----

// Every (thread, sequence) received; any other line (captured middleware
// output) is only counted.
struct Receipts {
    // Collects until `stop`; then takes what is left.
    void collectUntil(LogSubscriber &subscriber, const std::atomic<bool> &stop) {
        while (!stop.load()) {
            if (takeFrom(subscriber) == 0) std::this_thread::sleep_for(1ms);
        }
    }
    long takeFrom(LogSubscriber &subscriber) {
        return subscriber.takeEach([this](const QTV_VX_LogMessage &sample) {
            int thread = -1;
            long sequence = -1;
            if (std::sscanf(sample.message, "stress t%d #%ld", &thread, &sequence) != 2) {
                ++others;
            } else if (!stress.emplace(thread, sequence).second) {
                ++duplicates;
            }
        });
    }

    // Whether every message received was one that its thread logged.
    bool allLogged(const std::vector<ThreadTally> &tallies) const {
        return std::all_of(stress.begin(), stress.end(), [&](const std::pair<int, long> &received) {
            auto [thread, sequence] = received;
            return thread >= 0 && thread < kLoggingThreads && sequence >= 0 && sequence < tallies[thread].logged;
        });
    }

    std::set<std::pair<int, long>> stress;
    long others = 0, duplicates = 0;
};

// ---- the administrator ----

// The id of the logger that may be addressed now; all zero when none.
std::atomic<QTV_VX_HostAndAppId> gTarget{};

bool addressable(QTV_VX_HostAndAppId id) { return id.rtps_host_id != 0 || id.rtps_app_id != 0; }

// Filter levels, the API category's verbosity and the print format, in turn.
void sendCommand(Administrator &administrator, QTV_VX_HostAndAppId target, DDS_Long invocation) {
    static constexpr QTV_VX_ADMIN_CommandKind kKinds[] = {QTV_VX_SET_LOG_LEVEL, QTV_VX_SET_QTV_LOGGER_LEVEL,
                                                          QTV_VX_SET_QTV_LOGGER_PRINT_FORMAT};
    static constexpr DDS_Long kLevels[] = {300, 600, 800};
    const bool odd = (invocation / 3) % 2;
    // The level shares its union with the other branches: zero unless used.
    Request request(target, invocation, kKinds[invocation % 3], invocation % 3 ? 0 : kLevels[(invocation / 3) % 3]);
    if (invocation % 3 == 1) {
        const QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity pair{QTV_VX_OBLX_CONFIG_LOG_CATEGORY_API,
                                                              odd ? QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_WARNING
                                                                  : QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_ERROR};
        QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq_from_array(&request.sample.command._u.categoryAndVerbosity, &pair,
                                                                 1);
    } else if (invocation % 3 == 2) {
        request.sample.command._u.printFormat =
            odd ? QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_MINIMAL : QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_DEFAULT;
    }
    administrator.send(request);
}

struct CommandTally {
    DDS_Long sent = 0;
    std::vector<ResponseSeen> responses;
};

// Commands to whichever logger is addressable, every few milliseconds. A
// request that reaches a logger before its command reader was matched, or
// after it began to finalize, gets no answer; every other gets one.
CommandTally commandUntil(const std::atomic<bool> &stop) {
    Administrator administrator(kDomain);
    CommandTally tally;
    while (!addressable(gTarget.load()) && !stop.load()) std::this_thread::sleep_for(1ms);
    if (stop.load()) return tally;
    CollectedResponses responses = administrator.connect();
    while (!stop.load()) {
        if (QTV_VX_HostAndAppId target = gTarget.load(); addressable(target)) {
            sendCommand(administrator, target, tally.sent++);
        }
        responses.now();
        std::this_thread::sleep_for(3ms);
    }
    std::this_thread::sleep_for(100ms);
    tally.responses = responses.now();
    return tally;
}

// ---- the logger's lives ----

void liveAndDie(QTV_VX_Options *options) {
    ASSERT_EQ(QTV_VX_Vexar_setOptions(options), 1);
    QTV_VX_Vexar *logger = QTV_VX_Vexar_getInstance();
    ASSERT_NE(logger, nullptr);
    DDS_DataWriter *writer =
        QTV_VX_LogMessageDataWriter_as_datawriter(QTV_VX_DDSEntities_getLogMessageWriter(logger->_ddsEntities));
    ASSERT_TRUE(eventuallyWithin(10s, [&] { return hasMatchedReaders(writer, 1); })) << "no subscriber matched";
    QTV_VX_Vexar_setFilterLevel(logger, QTV_VX_LOG_LEVEL_TRACE);
    gTarget.store({QTV_VX_DDSEntities_getRtpsHostId(logger->_ddsEntities),
                   QTV_VX_DDSEntities_getRtpsAppId(logger->_ddsEntities)});
    std::this_thread::sleep_for(kLoggerLife);
    gTarget.store({});
    ASSERT_EQ(QTV_VX_Vexar_finalizeInstance(), 0);
}

TEST(LoggerStressConcurrency, EveryMessageIsDeliveredOrAccountedForThroughCommandsAndRecreation) {
    OptionsPtr options = loggerOptions(kDomain, 0, 1);
    QTV_VX_Options_setQueueSize(options.get(), kQueueSize);
    QTV_VX_Options_setFilterLevel(options.get(), 0);
    LogSubscriber subscriber(kDomain);
    ASSERT_TRUE(subscriber.ready());
    OBLX_Config_Logger_set_verbosity(OBLX_Config_Logger_get_instance(), OBLX_CONFIG_LOG_VERBOSITY_STATUS_ALL);
    std::fflush(stdout);
    testing::internal::CaptureStdout();  // overflow warnings, and lines captured between two loggers

    std::atomic<bool> stopLogging{false}, stopCommands{false}, stopCollecting{false};
    std::vector<std::future<ThreadTally>> loggers;
    for (int thread = 0; thread < kLoggingThreads; ++thread) {
        loggers.push_back(std::async(std::launch::async, logUntil, thread, std::cref(stopLogging)));
    }
    // Middleware lines from a thread of their own, captured into the log
    // stream (and counted by the subscriber among the others).
    std::thread diagnostics([&] {
        for (; !stopLogging.load(); std::this_thread::sleep_for(200us)) {
            OBLX_Config_Logger_log(OBLX_CONFIG_LOG_CATEGORY_PLATFORM, OBLX_CONFIG_LOG_LEVEL_WARNING, "emitter", nullptr,
                                   0, "diagnostic from another thread");
        }
    });
    auto commands = std::async(std::launch::async, commandUntil, std::cref(stopCommands));
    Receipts receipts;
    std::thread collector([&] { receipts.collectUntil(subscriber, stopCollecting); });
    for (int cycle = 0; cycle < kCycles && !testing::Test::HasFatalFailure(); ++cycle) liveAndDie(options.get());
    stopLogging.store(true);
    std::vector<ThreadTally> tallies;
    for (auto &logger : loggers) tallies.push_back(logger.get());
    diagnostics.join();
    stopCommands.store(true);
    CommandTally commandTally = commands.get();
    stopCollecting.store(true);
    collector.join();
    receipts.takeFrom(subscriber);
    const long delivered = static_cast<long>(receipts.stress.size());

    std::fflush(stdout);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(QTV_VX_Vexar_isVexarRunning(), 0);

    // Every call ended one way, as its own thread saw it.
    long queuedByThreads = 0, refused = 0;
    for (const ThreadTally &tally : tallies) {
        EXPECT_EQ(tally.logged,
                  static_cast<long>(tally.outcomes.refused + tally.outcomes.queued + tally.outcomes.dropped));
        queuedByThreads += static_cast<long>(tally.outcomes.queued);
        refused += static_cast<long>(tally.outcomes.refused);
    }
    // Every queued message left its queue one way; all loggers are gone.
    const vexar::QueueOutcomes queues = vexar::queueOutcomes();
    EXPECT_EQ(queues.queued, queues.settled());
    // Everything published arrived, once (captured middleware lines too).
    EXPECT_EQ(delivered + receipts.others, static_cast<long>(queues.published));
    EXPECT_EQ(receipts.duplicates, 0);
    EXPECT_TRUE(receipts.allLogged(tallies));
    // So what the threads queued and did not arrive was discarded or failed.
    EXPECT_LE(delivered, queuedByThreads);
    EXPECT_LE(queuedByThreads - delivered, static_cast<long>(queues.discarded + queues.failed));
    // The run did what it was meant to: deliveries, refusals, and answered commands.
    EXPECT_GT(delivered, 0);
    EXPECT_GT(refused, 0);
    EXPECT_GT(commandTally.responses.size(), 0u);
    EXPECT_LE(static_cast<DDS_Long>(commandTally.responses.size()), commandTally.sent);
    for (const ResponseSeen &response : commandTally.responses) {
        EXPECT_EQ(response.commandResult, QTV_VX_COMMAND_RESULT_OK) << "invocation " << response.invocation;
    }
}

}  // namespace
