// vexar tail: every log message of the domain, one line each.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <map>

#include "commands.hpp"
#include "dds_session.hpp"
#include "line_format.hpp"
#include "loss_report.hpp"
#include "message_filter.hpp"
#include "names.hpp"

namespace vexar::cli {
namespace {

constexpr OptionDescription kTailOptions[] = {
    {"level", "LEVEL", "show LEVEL and more severe ones (FATAL .. TRACE, or a number)"},
    {"app", "HOST:APP", "only this application (or the applications of a kind)"},
    {"category", "TEXT", "only this category: exact text, or a glob such as 'net*'"},
    {"grep", "REGEX", "only messages whose text matches REGEX (POSIX extended)"},
    {"count", "N", "exit after N messages"},
    {"timeout", "SECONDS", "exit after SECONDS (status 3 when --count was not reached)"},
    {"json", "", "print one JSON object per line"},
    {"no-color", "", "never colour the levels (colour is used on a terminal)"},
};

constexpr std::string_view kTailDetails =
    "Columns: source time (local), HOST:APP, application kind (once its State is seen),\n"
    "level, category, text. A late start still shows each logger's recent history.\n"
    "JSON objects carry time (UTC), host, app, id, kind, level, levelName, category, message.\n"
    "Messages the reader lost are counted on standard error at most once a second\n"
    "(\"vexar tail: lost N messages since HH:MM:SS\"); with --json also as {\"lost\":N,\"since\":TIME}.";

MessageFilter filterFrom(const ParsedArguments &arguments) {
    MessageFilter filter;
    if (auto level = arguments.value("level")) filter.mostVerboseLevel = parseNameOrThrow(kLevelNames, *level);
    if (auto app = arguments.value("app")) filter.app = AppSelector::parse(*app);
    filter.categoryPattern = arguments.value("category");
    if (auto pattern = arguments.value("grep")) filter.textPattern.emplace(*pattern);
    return filter;
}

LineStyle styleFrom(const ParsedArguments &arguments) {
    if (arguments.has("json")) return LineStyle::Json;
    const char *noColour = std::getenv("NO_COLOR");
    bool colourWanted = !arguments.has("no-color") && (noColour == nullptr || *noColour == '\0');
    return colourWanted && isatty(STDOUT_FILENO) ? LineStyle::Colour : LineStyle::Plain;
}

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
    void take(std::vector<Received<QTV_VX_LogMessage>> &batch, const AppDirectory &apps) {
        std::stable_sort(batch.begin(), batch.end(), earlier);
        Clock::time_point now = Clock::now();
        for (const auto &[message, info] : batch) {
            if (!info->valid_data) continue;
            LogLine line = lineOf(*message, *info);
            line.kind = apps.kindOf(line.app);
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
                print(line);
            }
            held_.clear();
        }
        writeOut();
        std::fflush(stdout);
    }

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
        if (done() || !filter_.matches(line)) return;
        formatter_.append(out_, line);
        --remaining_;
        if (out_.size() >= kOutputPiece) writeOut();
    }

    void writeOut() {
        std::fwrite(out_.data(), 1, out_.size(), stdout);
        out_.clear();
    }

    static LogLine lineOf(const QTV_VX_LogMessage &message, const DDS_SampleInfo &info) {
        LogLine line;
        line.seconds = info.source_timestamp.sec;
        line.nanoseconds = info.source_timestamp.nanosec;
        line.app = appIdOf(message.hostAndAppId);
        line.level = message.level;
        line.category = message.category != nullptr ? message.category : "";
        line.message = message.message != nullptr ? message.message : "";
        return line;
    }

    MessageFilter filter_;
    LineFormatter formatter_;
    std::int64_t remaining_;
    std::string out_;
    std::vector<HeldMessage> held_;
    Clock::time_point holdUntil_;
    std::map<AppId, Clock::time_point> firstSeen_;
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

}  // namespace

const CommandDescription kTailCommand{
    "tail", "", "Print the log messages of every logger in the domain, one line each.", kTailDetails, kTailOptions,
    0,      0};

int runTail(const ParsedArguments &arguments) {
    MessageFilter filter = filterFrom(arguments);
    std::int32_t count = arguments.integer("count", 0, 1, std::numeric_limits<std::int32_t>::max());
    double timeout = arguments.seconds("timeout", 0);
    std::int32_t domain = arguments.domain();
    LineStyle style = styleFrom(arguments);

    DomainWatch watch(domain);
    Reader<QTV_VX_LogMessage> logs(watch.session, logReaderQos(), watch.signal);
    TailPrinter printer(std::move(filter), style, count > 0 ? count : std::numeric_limits<std::int64_t>::max());
    LossCounter losses(WallClock::now());
    auto sayLost = [&](const std::optional<LossNotice> &notice) {
        if (notice) reportLoss(*notice, style);
    };

    Clock::time_point deadline = deadlineAfter(timeout);
    while (!printer.done() && !stopRequested()) {
        watch.updateApps();
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
