// vexar demo: an application that logs through the library at every level,
// with varying categories and now and then a long message, and answers the
// remote commands of `vexar set-*` through its logger.
#include <cstdio>
#include <limits>
#include <string>
#include <thread>

#include "commands.hpp"
#include "dds_session.hpp"
#include "names.hpp"
#include "usage_error.hpp"
#include "vexar/Vexar.h"

namespace vexar::cli {
namespace {

constexpr OptionDescription kDemoOptions[] = {
    {"kind", "NAME", "application kind published in the State (default \"demo\")"},
    {"rate", "N", "messages per second (default 10; 0: as fast as the logger takes them)"},
    {"duration", "SECONDS", "stop after SECONDS (default: when interrupted)"},
    {"level", "LEVEL", "initial filter level (default INFO)"},
    {"queue", "N", "size of the logger's message queue (default 128)"},
    {"echo", "", "echo every message on standard output too"},
};

constexpr std::string_view kDemoDetails =
    "Prints its HOST:APP first, logs until stopped, and takes its logger down on\n"
    "SIGINT or SIGTERM, so that `vexar apps` sees it go.";

constexpr std::int32_t kLevels[] = {100, 200, 300, 400, 500, 600, 700, 800};
constexpr const char *kCategories[] = {"", "net", "db", "ui", "sched"};
constexpr const char *kEvents[] = {"connection accepted",    "cache refreshed",        "request served",
                                   "retrying after timeout", "configuration reloaded", "queue drained",
                                   "checkpoint written"};
constexpr std::uint64_t kLongMessageEvery = 50;
// Finalization drops what is still queued: the write thread gets this long
// to publish it first.
constexpr auto kDrainTime = std::chrono::seconds(1);

struct DemoSettings {
    std::string kind;
    std::int32_t rate;
    double duration;
    std::int32_t filterLevel;
    std::int32_t queueSize;
    bool echo;
    std::int32_t domain;
};

DemoSettings settingsFrom(const ParsedArguments &arguments) {
    DemoSettings settings;
    settings.kind = arguments.value("kind").value_or("demo");
    if (settings.kind.empty()) throw UsageError("bad --kind '' (expected a name)");
    settings.rate = arguments.integer("rate", 10, 0, 1000000);
    settings.duration = arguments.seconds("duration", 0);
    settings.filterLevel = parseNameOrThrow(kLevelNames, arguments.value("level").value_or("INFO"));
    if (settings.filterLevel < 0) throw UsageError("bad level: a filter level is 0 or more");
    settings.queueSize = arguments.integer("queue", 128, 1, 1 << 20);
    settings.echo = arguments.has("echo");
    settings.domain = arguments.domain();
    return settings;
}

std::string messageText(std::uint64_t index) {
    std::string text = "message " + std::to_string(index) + ": " + kEvents[index % std::size(kEvents)];
    if (index % kLongMessageEvery != 0) return text;
    text += " (a long one:";
    while (text.size() < 1500) text += " the quick brown fox jumps over the lazy dog";
    return text + ")";
}

// The options live as long as the logger: it keeps them by pointer.
class DemoLogger {
public:
    explicit DemoLogger(const DemoSettings &settings) : options_(QTV_VX_Options_createDefault()) {
        if (options_ == nullptr) throw DdsFailure("cannot create the logger's options");
        QTV_VX_Options_setDomainId(options_, settings.domain);
        QTV_VX_Options_setApplicationKind(options_, settings.kind.c_str());
        QTV_VX_Options_setFilterLevel(options_, settings.filterLevel);
        QTV_VX_Options_setQueueSize(options_, settings.queueSize);
        QTV_VX_Options_setEchoToStdout(options_, settings.echo ? 1 : 0);
        if (QTV_VX_Vexar_setOptions(options_) != 1 || (logger_ = QTV_VX_Vexar_getInstance()) == nullptr) {
            QTV_VX_Options_delete(options_);
            throw DdsFailure("cannot start the logger");
        }
    }
    ~DemoLogger() {
        QTV_VX_Vexar_finalizeInstance();
        QTV_VX_Options_delete(options_);
    }
    DemoLogger(const DemoLogger &) = delete;
    DemoLogger &operator=(const DemoLogger &) = delete;

    AppId id() const {
        return {QTV_VX_DDSEntities_getRtpsHostId(logger_->_ddsEntities),
                QTV_VX_DDSEntities_getRtpsAppId(logger_->_ddsEntities)};
    }
    void log(std::uint64_t index) {
        std::string text = messageText(index);
        QTV_VX_Vexar_logMessageWithLevelCategory(logger_, kLevels[index % std::size(kLevels)], text.c_str(),
                                                 kCategories[index % std::size(kCategories)]);
    }

private:
    QTV_VX_Options *options_;
    QTV_VX_Vexar *logger_ = nullptr;
};

}  // namespace

const CommandDescription kDemoCommand{
    "demo", "", "Run a demo application that logs through Vexar.", kDemoDetails, kDemoOptions, 0, 0};

int runDemo(const ParsedArguments &arguments) {
    DemoSettings settings = settingsFrom(arguments);
    installStopHandlers();
    DemoLogger logger(settings);
    std::printf("demo %s kind %s on domain %d: %d messages/s%s\n", formatAppId(logger.id()).c_str(),
                settings.kind.c_str(), settings.domain, settings.rate,
                settings.duration > 0 ? "" : " until interrupted");
    std::fflush(stdout);

    Clock::time_point start = Clock::now();
    auto elapsed = [&] { return std::chrono::duration<double>(Clock::now() - start).count(); };
    std::uint64_t logged = 0;
    while (!stopRequested() && (settings.duration <= 0 || elapsed() < settings.duration)) {
        logger.log(logged++);
        if (settings.rate > 0) {
            std::this_thread::sleep_until(start + std::chrono::duration_cast<Clock::duration>(
                                                      std::chrono::duration<double>(double(logged) / settings.rate)));
        }
    }
    std::this_thread::sleep_for(kDrainTime);
    std::printf("demo %s: logged %llu messages\n", formatAppId(logger.id()).c_str(),
                static_cast<unsigned long long>(logged));
    std::fflush(stdout);
    return 0;
}

}  // namespace vexar::cli
