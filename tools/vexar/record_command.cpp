// vexar record: every log message and State of the domain into a log
// database, for `vexar query` and `vexar tail --db`.
#include <csignal>
#include <filesystem>
#include <cstdio>
#include <limits>
#include <map>
#include <vector>

#include "commands.hpp"
#include "dds_session.hpp"
#include "filter_options.hpp"
#include "batch_writer.hpp"
#include "loss_report.hpp"
#include "time_text.hpp"

namespace vexar::cli {
namespace {

constexpr OptionDescription kRecordOptions[] = {
    {"db", "PATH", "the log database (created when missing, continued when it exists)"},
    {"keep", "DURATION", "delete messages older than DURATION: 90s, 10m, 2h, 7d, 1w"},
    {"max-size", "SIZE", "delete the oldest messages when the data passes SIZE: 500M, 2G"},
    {"stats", "", "print messages per second and the database size on standard error once a minute"},
    {"timeout", "SECONDS", "stop after SECONDS (default: when interrupted)"},
};

constexpr std::string_view kRecordDetails =
    "Stores each message with its source and reception times, application, level,\n"
    "category and text, and each State (so queries can name applications by kind).\n"
    "A batch is committed at least once a second; a killed recorder loses at most\n"
    "the batch it was taking. When the disk is full it says so once, keeps the batch\n"
    "and retries every second.";

constexpr auto kBatchAge = std::chrono::seconds(1);
// Once the reader is drained, a batch waits this long for more: fewer,
// larger transactions keep the text index's segments few.
constexpr auto kDrainedBatchAge = std::chrono::milliseconds(200);
constexpr std::size_t kBatchMost = 65536;
constexpr auto kStatsPeriod = std::chrono::seconds(60);
constexpr DDS_Long kTake = Reader<QTV_VX_LogMessage>::kBatch;

std::int64_t nanosecondsOf(const DDS_Time_t &time) {
    return std::int64_t{time.sec} * 1000000000 + std::int64_t{time.nanosec};
}

void say(const std::string &line) {
    std::fprintf(stderr, "vexar record: %s\n", line.c_str());
    std::fflush(stderr);
}

// Collects what arrives into batches and hands them to the writer thread.
class Recorder {
public:
    Recorder(const std::string &path, RetentionLimits limits) : path_(path), writer_(path, limits) {}

    void addMessages(const std::vector<Received<QTV_VX_LogMessage>> &batch) {
        std::int64_t now = wallClockNow();
        if (batch_.empty()) batchStart_ = Clock::now();
        for (const auto &[message, info] : batch) {
            if (!info->valid_data) continue;
            batch_.messages.push_back({nanosecondsOf(info->source_timestamp), now, appIdOf(message->hostAndAppId),
                                       message->level, message->category != nullptr ? message->category : "",
                                       message->message != nullptr ? message->message : ""});
        }
    }

    // Every State that differs from the one stored last.
    void addStates(const AppDirectory &apps) {
        std::int64_t now = wallClockNow();
        for (const auto &[id, record] : apps.records()) {
            auto stored = storedStates_.find(id);
            if (stored != storedStates_.end() && stored->second == record) continue;
            if (batch_.empty()) batchStart_ = Clock::now();
            storedStates_[id] = record;
            batch_.states.push_back({record, now});
        }
    }

    // Whether new data may be taken: not while the writer is behind (or the
    // disk refuses its batch) and this batch is full.
    bool accepting() const { return batch_.messages.size() < kBatchMost || writer_.hasRoom(); }

    // Hands the batch over when it is due and the writer has room.
    void submitIfDue(bool readerDrained) {
        if (auto failure = writer_.failure()) throw StoreError(*failure, SQLITE_ERROR);
        if (batch_.empty() || !writer_.hasRoom()) return;
        auto age = Clock::now() - batchStart_;
        bool full = batch_.messages.size() >= kBatchMost;
        if (full || age >= kBatchAge || (readerDrained && age >= kDrainedBatchAge)) {
            writer_.submit(std::move(batch_));
            batch_ = {};
        }
    }

    // Hands over what is left and waits until it is written; returns how
    // many messages could not be.
    std::size_t finish() {
        std::size_t left = batch_.messages.size();
        if (writer_.hasRoom()) {
            writer_.submit(std::move(batch_));
            left = 0;
        }
        left += writer_.finish();
        if (auto failure = writer_.failure()) throw StoreError(*failure, SQLITE_ERROR);
        return left;
    }

    void reportIfDue(bool wanted) {
        Clock::time_point now = Clock::now();
        if (!wanted || now < nextStats_) return;
        std::int64_t stored = writer_.stored();
        if (statsSince_ != Clock::time_point{}) {
            double seconds = std::chrono::duration<double>(now - statsSince_).count();
            char line[160];
            std::snprintf(line, sizeof line, "%.0f messages/s, %lld stored since start, database %.1f MB",
                          double(stored - storedAtStats_) / seconds, static_cast<long long>(stored),
                          double(fileBytes()) / 1e6);
            say(line);
        }
        statsSince_ = now;
        storedAtStats_ = stored;
        nextStats_ = now + kStatsPeriod;
    }

private:
    // The database with its write-ahead log, as the disk holds them.
    std::int64_t fileBytes() const {
        std::error_code ignored;
        auto main = std::filesystem::file_size(path_, ignored);
        auto log = std::filesystem::file_size(path_ + "-wal", ignored);
        return static_cast<std::int64_t>((main == std::uintmax_t(-1) ? 0 : main) +
                                         (log == std::uintmax_t(-1) ? 0 : log));
    }

    std::string path_;
    BatchWriter writer_;
    StoreBatch batch_;
    std::map<AppId, AppRecord> storedStates_;
    Clock::time_point batchStart_;
    Clock::time_point nextStats_;
    Clock::time_point statsSince_;
    std::int64_t storedAtStats_ = 0;
};

RetentionLimits limitsFrom(const ParsedArguments &arguments) {
    RetentionLimits limits;
    if (auto keep = arguments.value("keep")) limits.keepNanoseconds = parseDuration("keep", *keep);
    if (auto size = arguments.value("max-size")) limits.maxBytes = parseSize("max-size", *size);
    return limits;
}

}  // namespace

const CommandDescription kRecordCommand{
    "record", "", "Store every log message and State of the domain in a database.", kRecordDetails, kRecordOptions,
    0,        0};

int runRecord(const ParsedArguments &arguments) {
    std::string path = requiredDatabase(arguments);
    RetentionLimits limits = limitsFrom(arguments);
    double timeout = arguments.seconds("timeout", 0);
    bool stats = arguments.has("stats");
    // A file size limit (ulimit -f) is a full disk to the recorder, not a
    // reason to die.
    std::signal(SIGXFSZ, SIG_IGN);

    Recorder recorder(path, limits);
    DomainWatch watch(arguments.domain());
    Reader<QTV_VX_LogMessage> logs(watch.session, logReaderQos(), watch.signal);
    LossCounter losses(WallClock::now());
    auto sayLost = [](const std::optional<LossNotice> &notice) {
        if (notice) std::fputs(lossLine(*notice, "record").c_str(), stderr);
    };

    Clock::time_point deadline = deadlineAfter(timeout);
    while (!stopRequested() && Clock::now() < deadline) {
        bool moreWaiting = false;
        if (recorder.accepting()) {
            if (watch.updateApps()) recorder.addStates(watch.apps);
            moreWaiting = logs.take(kTake, [&](const std::vector<Received<QTV_VX_LogMessage>> &batch) {
                recorder.addMessages(batch);
            }) == kTake;
        }
        recorder.submitIfDue(!moreWaiting);
        recorder.reportIfDue(stats);
        sayLost(losses.add(logs.lostSinceAsked(), WallClock::now()));
        if (!moreWaiting || !recorder.accepting()) {
            watch.signal.waitUntil(
                std::min(deadline, Clock::now() + std::chrono::milliseconds(recorder.accepting() ? 200 : 100)));
        }
    }
    // What arrived before the stop is stored too.
    logs.takeAll([&](const std::vector<Received<QTV_VX_LogMessage>> &batch) { recorder.addMessages(batch); });
    std::size_t left = recorder.finish();
    sayLost(losses.flush(WallClock::now()));
    if (left > 0) {
        say("stopped with " + std::to_string(left) + " messages not stored (the disk refused them)");
        return kExitFailure;
    }
    return 0;
}

}  // namespace vexar::cli
