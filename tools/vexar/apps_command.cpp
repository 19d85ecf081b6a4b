// vexar apps: the loggers of the domain, from their State samples and their
// published message counts.
#include <unistd.h>

#include <cstdio>
#include <ctime>

#include "commands.hpp"
#include "dds_session.hpp"
#include "filter_options.hpp"

namespace vexar::cli {
namespace {

constexpr OptionDescription kAppsOptions[] = {
    {"watch", "", "keep running and redraw whenever a State changes"},
    {"json", "", "print one JSON object per logger (with --watch: per change)"},
    kOutputOption,
    {"middleware", "", "also the middleware logger's verbosity per category and its print format"},
    {"timeout", "SECONDS", "listen this long (default 3; with --watch: until interrupted)"},
};

constexpr std::string_view kAppsDetails =
    "Lists host and application id, application kind, the identity of its process\n"
    "(exe@host[pid], from discovery), life-cycle state, filter level and messages\n"
    "dropped by a full queue; with --middleware also the middleware logger's verbosity\n"
    "per category and its print format. A logger that went away (its State disposed or its writer\n"
    "lost) is marked \"(gone)\". DROPPED and the other counts (--json) are what the\n"
    "logger's process counted since it started, as its logger last published them\n"
    "(at most once a second); \"-\" (null) for a logger that publishes none.\n"
    "Without --watch the list is printed once the States have stopped arriving.";

// The loggers' States and, beside them, their published message counts.
struct AppsWatch {
    explicit AppsWatch(std::int32_t domainId)
        : domain(domainId), counts(domain.session, stateReaderQos(), domain.signal) {}

    // Takes what arrived; true when a listed logger changed.
    bool update() {
        bool states = domain.updateApps();
        bool changedCounts = domain.apps.update(counts);
        return states || changedCounts;
    }
    const AppDirectory &apps() const { return domain.apps; }

    DomainWatch domain;
    Reader<QTV_VX_ADMIN_Statistics> counts;
};

constexpr auto kFirstLook = std::chrono::milliseconds(1000);
constexpr auto kQuietPeriod = std::chrono::milliseconds(500);

std::vector<AppRecord> recordsOf(const AppDirectory &apps) {
    std::vector<AppRecord> records;
    for (const auto &[id, record] : apps.records()) records.push_back(record);
    return records;
}

void printJson(const std::vector<AppRecord> &records) {
    for (const AppRecord &record : records) std::fputs(renderAppJson(record).c_str(), stdout);
}

void printTable(const std::vector<AppRecord> &records, std::int32_t domain, bool middleware) {
    if (records.empty()) {
        std::fprintf(stderr, "no loggers seen in domain %d\n", domain);
        return;
    }
    std::fputs(renderAppsTable(records, middleware).c_str(), stdout);
}

// One screen of --watch: on a terminal the screen is redrawn, elsewhere
// each change is printed below the previous one.
void redraw(const std::vector<AppRecord> &records, std::int32_t domain, bool middleware) {
    std::time_t now = std::time(nullptr);
    std::tm parts{};
    localtime_r(&now, &parts);
    char clock[16];
    std::strftime(clock, sizeof clock, "%H:%M:%S", &parts);
    if (isatty(STDOUT_FILENO)) std::fputs("\x1b[H\x1b[2J", stdout);
    else std::fputs("\n", stdout);
    std::printf("loggers in domain %d at %s\n\n", domain, clock);
    std::fputs(records.empty() ? "(no loggers seen yet)\n" : renderAppsTable(records, middleware).c_str(), stdout);
}

int listOnce(AppsWatch &watch, const ParsedArguments &arguments, std::int32_t domain) {
    Clock::time_point start = Clock::now();
    Clock::time_point deadline = deadlineAfter(arguments.seconds("timeout", 3));
    Clock::time_point lastChange = start;
    for (;;) {
        Clock::time_point now = Clock::now();
        if (watch.update()) lastChange = now;
        bool settled = now - start >= kFirstLook && now - lastChange >= kQuietPeriod;
        if (settled || now >= deadline || stopRequested()) break;
        watch.domain.signal.waitUntil(deadline);
    }
    std::vector<AppRecord> records = recordsOf(watch.apps());
    if (jsonRequested(arguments)) printJson(records);
    else printTable(records, domain, arguments.has("middleware"));
    return 0;
}

int keepWatching(AppsWatch &watch, const ParsedArguments &arguments, std::int32_t domain) {
    Clock::time_point deadline = deadlineAfter(arguments.seconds("timeout", 0));
    bool json = jsonRequested(arguments);
    bool middleware = arguments.has("middleware");
    if (!json) redraw({}, domain, middleware);
    while (!stopRequested() && Clock::now() < deadline) {
        AppDirectory before = watch.apps();
        if (watch.update()) {
            if (json) {
                for (const auto &[id, record] : watch.apps().records()) {
                    const AppRecord *old = before.find(id);
                    if (old == nullptr || *old != record) printJson({record});
                }
            } else {
                redraw(recordsOf(watch.apps()), domain, middleware);
            }
            std::fflush(stdout);
        }
        watch.domain.signal.waitUntil(deadline);
    }
    return 0;
}

}  // namespace

const CommandDescription kAppsCommand{
    "apps", "", "List the loggers in the domain and their administration State.", kAppsDetails, kAppsOptions, 0, 0};

int runApps(const ParsedArguments &arguments) {
    std::int32_t domain = arguments.domain();
    arguments.seconds("timeout", 0);  // checked before DDS starts
    jsonRequested(arguments);
    AppsWatch watch(domain);
    return arguments.has("watch") ? keepWatching(watch, arguments, domain) : listOnce(watch, arguments, domain);
}

}  // namespace vexar::cli
