// vexar tail: every log message of the domain, one line each.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <map>

#include <thread>

#include "commands.hpp"
#include "dds_session.hpp"
#include "filter_options.hpp"
#include "history_seam.hpp"
#include "line_format.hpp"
#include "loss_report.hpp"
#include "message_filter.hpp"
#include "store_schema.hpp"
#include "usage_error.hpp"

namespace vexar::cli {
namespace {

constexpr OptionDescription kTailOptions[] = {
    kLevelOption,
    kAppOption,
    kCategoryOption,
    kGrepOption,
    kExcludeCategoryOption,
    kExcludeGrepOption,
    {"count", "N", "exit after N messages"},
    {"timeout", "SECONDS", "exit after SECONDS (status 3 when --count was not reached)"},
    kJsonOption,
    kOutputOption,
    kNoColourOption,
    {"db", "PATH", "first the recorded history from this log database (the last 10, or -n, --since)"},
    {"n", "N", "with --db: the last N recorded messages that match"},
    {"since", "TIME", "with --db: the recorded messages from TIME on (the forms of 'vexar query')"},
    {"follow", "", "keep printing new messages (what tail always does; for the habit of tail -f)", 'f'},
};

constexpr std::string_view kTailDetails =
    "Columns: source time (local), HOST:APP, application kind (once its State is seen),\n"
    "level, category, text. A late start still shows each logger's recent history.\n"
    "JSON objects carry time (UTC), host, app, id, kind, level, levelName, category, message.\n"
    "Messages the reader lost are counted on standard error at most once a second\n"
    "(\"vexar tail: lost N messages since HH:MM:SS\"); with --json also as {\"lost\":N,\"since\":TIME}.\n"
    "With --db, the recorded history comes first (marked \"history\":true in JSON), then\n"
    "the live messages; those the history printed already are not repeated.";

bool earlier(const Received<QTV_VX_LogMessage> &a, const Received<QTV_VX_LogMessage> &b) {
    const DDS_Time_t &x = a.info->source_timestamp;
    const DDS_Time_t &y = b.info->source_timestamp;
    return x.sec != y.sec ? x.sec < y.sec : x.nanosec < y.nanosec;
}

// A message kept back while its application's State is awaited.
struct HeldMessage {
    LogLine view() const {
        LogLine copy = line;
        copy.category = category;
        copy.message = message;
        return copy;
    }
    LogLine line;  // category and message are taken from the strings below
    std::string category;
    std::string message;
};

// Prints the messages that pass the filter until `limit` have been printed.
//
// A logger's State and its first messages arrive at about the same time,
// in either order. So that its lines show its kind from the first one, the
// messages of an application not yet named by a State are held back (with
// all that follows them, to keep the order) for at most kHoldTime, and at
// most kHoldMost of them: a logger without a State at full rate must not
// make tail grow.
class TailPrinter {
public:
    static constexpr auto kHoldTime = std::chrono::milliseconds(500);
    static constexpr std::size_t kHoldMost = 4096;
    // Output goes out in pieces of about this size, however much a turn prints.
    static constexpr std::size_t kOutputPiece = 1 << 16;

    TailPrinter(MessageFilter filter, LineStyle style, std::int64_t limit)
        : filter_(std::move(filter)), formatter_(style), remaining_(limit) {
        out_.reserve(1 << 16);
    }

    // The reader gives each application and level as its own instance, so
    // a batch is put back into time order first.
    // Prints what a log database recorded before tail went live.
    void printHistory(const LogLine &line) {
        if (done()) return;
        LogLine marked = line;
        marked.history = true;
        formatter_.append(out_, marked);
        seam_.printed(line);
        --remaining_;
        if (out_.size() >= kOutputPiece) writeOut();
    }

    void take(std::vector<Received<QTV_VX_LogMessage>> &batch, const AppDirectory &apps) {
        std::stable_sort(batch.begin(), batch.end(), earlier);
        Clock::time_point now = Clock::now();
        for (const auto &[message, info] : batch) {
            if (!info->valid_data) continue;
            LogLine line = logLineOf(*message, *info);
            line.kind = apps.kindOf(line.app);
            line.identity = apps.identityOf(line.app);
            if (held_.empty() && !awaitsState(line, now)) {
                print(line);
            } else {
                if (held_.empty()) holdUntil_ = now + kHoldTime;
                held_.push_back({line, std::string(line.category), std::string(line.message)});
            }
        }
        releaseHeld(apps);
    }

    // Prints what is held once every held application has a kind, or its
    // time is up; then writes the output.
    void releaseHeld(const AppDirectory &apps) {
        bool allNamed =
            std::ranges::all_of(held_, [&](const HeldMessage &held) { return !apps.kindOf(held.line.app).empty(); });
        if (!held_.empty() && (allNamed || held_.size() >= kHoldMost || Clock::now() >= holdUntil_)) {
            for (const HeldMessage &held : held_) {
                LogLine line = held.view();
                line.kind = apps.kindOf(line.app);
                line.identity = apps.identityOf(line.app);
                print(line);
            }
            held_.clear();
        }
        writeOut();
        std::fflush(stdout);
    }

    // Live messages from before `time` are not shown: the history started there.
    void historyStartsAt(std::int64_t time) { seam_.startsAt(time); }

    bool done() const { return remaining_ <= 0; }
    bool countLimited() const { return remaining_ < std::numeric_limits<std::int64_t>::max() / 2; }

private:
    // The first messages of an unnamed application wait for its State.
    bool awaitsState(const LogLine &line, Clock::time_point now) {
        if (!line.kind.empty()) return false;
        auto first = firstSeen_.try_emplace(line.app, now).first;
        return now - first->second < kHoldTime;
    }

    void print(const LogLine &line) {
        if (done() || !filter_.matches(line) || seam_.covers(line)) return;
        formatter_.append(out_, line);
        --remaining_;
        if (out_.size() >= kOutputPiece) writeOut();
    }

    void writeOut() {
        std::fwrite(out_.data(), 1, out_.size(), stdout);
        out_.clear();
    }

    MessageFilter filter_;
    LineFormatter formatter_;
    std::int64_t remaining_;
    std::string out_;
    std::vector<HeldMessage> held_;
    Clock::time_point holdUntil_;
    std::map<AppId, Clock::time_point> firstSeen_;
    HistorySeam seam_;
};

// Each take's ceiling: the loan of one batch of log messages stays under
// 5 MB however fast they arrive.
constexpr DDS_Long kBatch = Reader<QTV_VX_LogMessage>::kBatch;

// Loss goes to standard error; with --json it is also a record of its own
// among the messages.
void reportLoss(const LossNotice &notice, LineStyle style) {
    std::fputs(lossLine(notice).c_str(), stderr);
    if (style != LineStyle::Json) return;
    std::fputs(lossJson(notice).c_str(), stdout);
    std::fflush(stdout);
}

// The history tail shows first: with --db, the last 10 that match unless
// -n or --since says otherwise; without it, none.
std::optional<StoreQuery> historyQueryFrom(const ParsedArguments &arguments) {
    if (!arguments.has("db")) {
        if (arguments.has("n") || arguments.has("since")) throw UsageError("-n and --since need --db PATH");
        return std::nullopt;
    }
    StoreQuery query = storeQueryFrom(arguments);
    if (!query.last && !query.since) query.last = 10;
    return query;
}

// The recorder commits at least once a second: after this wait the database
// holds what was published before tail's reader matched, and the reader
// holds what came after, so history and live overlap instead of leaving a gap.
constexpr auto kRecorderCatchUp = std::chrono::milliseconds(1200);

void printHistory(const std::string &path, const StoreQuery &query, TailPrinter &printer, const AppDirectory &apps) {
    LogDatabase db(path, Database::Access::ReadOnly);
    std::this_thread::sleep_for(kRecorderCatchUp);
    std::int64_t printed = 0;
    std::optional<std::int64_t> first;
    selectMessages(db, query, [&](const LogLine &line) {
        if (!first) first = line.seconds * 1000000000 + line.nanoseconds;
        printer.printHistory(line);
        ++printed;
    });
    // With fewer than -n recorded, the window reaches back to the start.
    if (query.last && printed == *query.last) printer.historyStartsAt(*first);
    if (query.since) printer.historyStartsAt(*query.since);
    printer.releaseHeld(apps);
}

// An --app that fits no logger is said once, with what is there, after the
// States had a moment to arrive; tail goes on, since it may still come.
class UnmatchedTargets {
public:
    static constexpr auto kFirstLook = std::chrono::milliseconds(1500);

    UnmatchedTargets(std::vector<AppSelector> targets, std::int32_t domain)
        : targets_(std::move(targets)), domain_(domain), sayAt_(Clock::now() + kFirstLook) {}

    void sayOnce(const AppDirectory &apps) {
        if (targets_.empty() || Clock::now() < sayAt_) return;
        for (const AppSelector &target : targets_) {
            if (apps.anyFits(target)) continue;
            std::fprintf(stderr, "vexar tail: no logger of %s in domain %d yet (seen: %s)\n", target.describe().c_str(),
                         domain_, apps.seenKinds().c_str());
        }
        targets_.clear();
    }

private:
    std::vector<AppSelector> targets_;
    std::int32_t domain_;
    Clock::time_point sayAt_;
};

}  // namespace

const CommandDescription kTailCommand{
    "tail", "", "Print the log messages of every logger in the domain, one line each.", kTailDetails, kTailOptions,
    0,      0};

int runTail(const ParsedArguments &arguments) {
    MessageFilter filter = filterFrom(arguments);
    std::vector<AppSelector> filterTargets = filter.apps;
    std::int32_t count = arguments.integer("count", 0, 1, std::numeric_limits<std::int32_t>::max());
    double timeout = arguments.seconds("timeout", 0);
    std::int32_t domain = arguments.domain();
    LineStyle style = styleFrom(arguments);
    std::optional<StoreQuery> history = historyQueryFrom(arguments);

    DomainWatch watch(domain);
    // The live reader exists before the history is read, so nothing falls between.
    Reader<QTV_VX_LogMessage> logs(watch.session, logReaderQos(), watch.signal);
    TailPrinter printer(std::move(filter), style, count > 0 ? count : std::numeric_limits<std::int64_t>::max());
    if (history) printHistory(requiredDatabase(arguments), *history, printer, watch.apps);
    LossCounter losses(WallClock::now());
    auto sayLost = [&](const std::optional<LossNotice> &notice) {
        if (notice) reportLoss(*notice, style);
    };

    Clock::time_point deadline = deadlineAfter(timeout);
    UnmatchedTargets unmatched(filterTargets, domain);
    while (!printer.done() && !stopRequested()) {
        watch.updateApps();
        unmatched.sayOnce(watch.apps);
        // One bounded batch per turn, so that States, the deadline and a stop
        // are still seen under a flood; a full batch means more is waiting.
        bool moreWaiting = logs.take(kBatch, [&](std::vector<Received<QTV_VX_LogMessage>> &batch) {
            printer.take(batch, watch.apps);
        }) == kBatch;
        printer.releaseHeld(watch.apps);
        sayLost(losses.add(logs.lostSinceAsked(), WallClock::now()));
        if (printer.done() || Clock::now() >= deadline) break;
        if (!moreWaiting) watch.signal.waitUntil(deadline);
    }
    sayLost(losses.add(logs.lostSinceAsked(), WallClock::now()));
    sayLost(losses.flush(WallClock::now()));
    bool countMissed = printer.countLimited() && !printer.done() && !stopRequested();
    return countMissed ? kExitNoAnswer : 0;
}

}  // namespace vexar::cli
