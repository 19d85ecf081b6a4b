// vexar record: every log message and State of the domain into a log
// database, for `vexar query` and `vexar tail --db`.
#include <csignal>
#include <cstdio>
#include <limits>
#include <map>
#include <vector>

#include "commands.hpp"
#include "dds_session.hpp"
#include "filter_options.hpp"
#include "log_store.hpp"
#include "loss_report.hpp"
#include "store_retention.hpp"
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
constexpr std::size_t kBatchMost = 65536;
constexpr auto kRetryPause = std::chrono::seconds(1);
constexpr auto kRetentionPeriod = std::chrono::seconds(1);
constexpr auto kStatsPeriod = std::chrono::seconds(60);
constexpr DDS_Long kTake = Reader<QTV_VX_LogMessage>::kBatch;

std::int64_t nanosecondsOf(const DDS_Time_t &time) {
    return std::int64_t{time.sec} * 1000000000 + std::int64_t{time.nanosec};
}

void say(const std::string &line) {
    std::fprintf(stderr, "vexar record: %s\n", line.c_str());
    std::fflush(stderr);
}

// Collects what arrives into a batch and commits it whole; holds a batch
// that the disk refused and retries it.
class Recorder {
public:
    Recorder(const std::string &path, RetentionLimits limits) : store_(path), limits_(limits) {}

    void addMessages(const std::vector<Received<QTV_VX_LogMessage>> &batch) {
        std::int64_t now = wallClockNow();
        if (messages_.empty() && states_.empty()) batchStart_ = Clock::now();
        for (const auto &[message, info] : batch) {
            if (!info->valid_data) continue;
            messages_.push_back({nanosecondsOf(info->source_timestamp), now, appIdOf(message->hostAndAppId),
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
            if (messages_.empty() && states_.empty()) batchStart_ = Clock::now();
            storedStates_[id] = record;
            states_.push_back({record, now});
        }
    }

    // Whether new data may be taken: not while the disk refuses a batch.
    bool accepting() const { return !refusedSince_; }
    bool batchFull() const { return messages_.size() >= kBatchMost; }

    // Commits the batch when it is due; false while the disk refuses it.
    void commitIfDue(bool readerDrained) {
        if (messages_.empty() && states_.empty()) return;
        Clock::time_point now = Clock::now();
        if (refusedSince_ && now < retryAt_) return;
        if (!refusedSince_ && !readerDrained && !batchFull() && now - batchStart_ < kBatchAge) return;
        try {
            stored_ += static_cast<std::int64_t>(store_.write(messages_, states_));
        } catch (const StoreError &error) {
            if (!error.diskFull()) throw;
            if (!refusedSince_) say(error.what() + std::string(" (holding the batch, retrying every second)"));
            if (!refusedSince_) refusedSince_ = now;
            retryAt_ = now + kRetryPause;
            return;
        }
        retainSize();
        if (refusedSince_) {
            auto seconds = std::chrono::duration_cast<std::chrono::seconds>(now - *refusedSince_).count();
            say("writing again after " + std::to_string(seconds) + " s");
            refusedSince_.reset();
        }
        messages_.clear();
        states_.clear();
    }

    // The size at each commit, so that the file passes it by a batch at most.
    void retainSize() {
        if (!limits_.maxBytes) return;
        try {
            deleteBeyondSize(store_.database(), *limits_.maxBytes);
        } catch (const StoreError &error) {
            if (!error.diskFull()) throw;
        }
    }

    // The age once a second, while the disk takes writes.
    void retainIfDue() {
        Clock::time_point now = Clock::now();
        if (refusedSince_ || now < nextRetention_ || !limits_.keepNanoseconds) return;
        nextRetention_ = now + kRetentionPeriod;
        try {
            deleteBeyondAge(store_.database(), *limits_.keepNanoseconds, wallClockNow());
        } catch (const StoreError &error) {
            if (!error.diskFull()) throw;
        }
    }

    void reportIfDue(bool wanted) {
        Clock::time_point now = Clock::now();
        if (!wanted || now < nextStats_) return;
        if (statsSince_ != Clock::time_point{}) {
            double seconds = std::chrono::duration<double>(now - statsSince_).count();
            double perSecond = double(stored_ - storedAtStats_) / seconds;
            char line[160];
            std::snprintf(line, sizeof line, "%.0f messages/s, %lld stored since start, database %.1f MB", perSecond,
                          static_cast<long long>(stored_), double(databaseBytes(store_.database())) / 1e6);
            say(line);
        }
        statsSince_ = now;
        storedAtStats_ = stored_;
        nextStats_ = now + kStatsPeriod;
    }

    std::size_t pending() const { return messages_.size(); }
    std::int64_t stored() const { return stored_; }

private:
    LogStore store_;
    RetentionLimits limits_;
    std::vector<StoredMessage> messages_;
    std::vector<StoredState> states_;
    std::map<AppId, AppRecord> storedStates_;
    Clock::time_point batchStart_;
    std::optional<Clock::time_point> refusedSince_;
    Clock::time_point retryAt_;
    Clock::time_point nextRetention_;
    Clock::time_point nextStats_;
    Clock::time_point statsSince_;
    std::int64_t stored_ = 0;
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
        recorder.commitIfDue(!moreWaiting);
        recorder.retainIfDue();
        recorder.reportIfDue(stats);
        sayLost(losses.add(logs.lostSinceAsked(), WallClock::now()));
        if (!moreWaiting || !recorder.accepting()) {
            watch.signal.waitUntil(
                std::min(deadline, Clock::now() + std::chrono::milliseconds(recorder.accepting() ? 200 : 100)));
        }
    }
    // What arrived before the stop is stored too.
    logs.takeAll([&](const std::vector<Received<QTV_VX_LogMessage>> &batch) { recorder.addMessages(batch); });
    recorder.commitIfDue(true);
    sayLost(losses.flush(WallClock::now()));
    if (recorder.pending() > 0) {
        say("stopped with " + std::to_string(recorder.pending()) + " messages not stored (the disk refused them)");
        return kExitFailure;
    }
    return 0;
}

}  // namespace vexar::cli
