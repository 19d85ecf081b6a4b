// vexar web: the logs of a domain, live and recorded, and the loggers'
// controls, in a browser. One DDS thread (this one) takes the loggers'
// States, counts and messages and hands them to the hub and the apps
// board; the HTTP server's threads serve the page from those.
#include <algorithm>
#include <cstdio>
#include <optional>
#include <random>

#include "apps_board.hpp"
#include "commands.hpp"
#include "dds_session.hpp"
#include "filter_options.hpp"
#include "names.hpp"
#include "remote_command.hpp"
#include "usage_error.hpp"
#include "web_hub.hpp"
#include "web_server.hpp"

namespace vexar::cli {
namespace {

constexpr OptionDescription kWebOptions[] = {
    {"listen", "HOST:PORT", "the address to serve on (default 127.0.0.1:8480; port 0: any free port)"},
    kDbOption,
    {"token", "TEXT", "the token that controls must send (default: a random one, printed at start)"},
};

constexpr std::string_view kWebDetails =
    "Serves a console page: the live log table with tail's filters (applied by the\n"
    "server), the recorded history of --db, the loggers with their State and\n"
    "controls for level, verbosity and print format, and a rate per level.\n"
    "Prints the page's address with the token; controls need it (header\n"
    "X-Vexar-Token). The JSON API is in the README.";

constexpr DDS_Long kBatch = Reader<QTV_VX_LogMessage>::kBatch;

std::string randomToken() {
    std::random_device entropy;
    std::string token;
    static constexpr char kDigits[] = "0123456789abcdef";
    for (int i = 0; i < 32; ++i) token += kDigits[entropy() % 16];
    return token;
}

WebSettings settingsFrom(const ParsedArguments &arguments) {
    WebSettings settings;
    std::string listen = arguments.value("listen").value_or("127.0.0.1:8480");
    std::size_t colon = listen.rfind(':');
    std::optional<std::int32_t> port =
        colon == std::string::npos ? std::nullopt : parseInt32(std::string_view(listen).substr(colon + 1));
    if (!port || *port < 0 || *port > 65535 || colon == 0) {
        throw UsageError("bad --listen '" + listen + "' (expected HOST:PORT, e.g. 127.0.0.1:8480)");
    }
    settings.host = listen.substr(0, colon);
    settings.port = *port;
    settings.token = arguments.value("token").value_or(randomToken());
    if (settings.token.empty()) throw UsageError("bad --token '' (expected some text)");
    if (arguments.has("db")) settings.database = requiredDatabase(arguments);
    settings.domain = arguments.domain();
    return settings;
}

bool earlier(const LogLine &a, const LogLine &b) {
    return a.seconds != b.seconds ? a.seconds < b.seconds : a.nanoseconds < b.nanoseconds;
}

// The DDS side: a log reader like tail's and the published counts like apps'.
struct WebWatch {
    explicit WebWatch(std::int32_t domainId)
        : domain(domainId),
          logs(domain.session, logReaderQos(), domain.signal),
          counts(domain.session, stateReaderQos(), domain.signal) {}

    // One bounded batch of messages per turn, as tail; true when it was full.
    bool takeTurn(LiveHub &hub, AppsBoard &board) {
        bool statesChanged = domain.updateApps();
        if (domain.apps.update(counts) || statesChanged) board.replace(domain.apps.records());
        std::vector<LogLine> lines;
        DDS_Long taken = logs.take(kBatch, [&](const std::vector<Received<QTV_VX_LogMessage>> &batch) {
            lines.reserve(batch.size());
            for (const auto &[message, info] : batch) {
                if (info->valid_data) lines.push_back(lineOf(*message, *info));
            }
            // The reader gives each application and level as its own instance.
            std::stable_sort(lines.begin(), lines.end(), earlier);
            hub.publish(lines);
        });
        board.messagesFrom(lines, AppsBoard::Clock::now());
        hub.reportLost(static_cast<std::uint64_t>(logs.lostSinceAsked()));
        return taken == kBatch;
    }

    LogLine lineOf(const QTV_VX_LogMessage &message, const DDS_SampleInfo &info) const {
        LogLine line = logLineOf(message, info);
        line.kind = domain.apps.kindOf(line.app);
        line.identity = domain.apps.identityOf(line.app);
        return line;
    }

    DomainWatch domain;
    Reader<QTV_VX_LogMessage> logs;
    Reader<QTV_VX_ADMIN_Statistics> counts;
};

}  // namespace

const CommandDescription kWebCommand{
    "web", "", "Serve a web console: live and recorded logs, and the loggers' controls.", kWebDetails, kWebOptions,
    0,     0};

int runWeb(const ParsedArguments &arguments) {
    WebSettings settings = settingsFrom(arguments);
    WebWatch watch(settings.domain);
    // A console whose credentials may only read (DDS Security) still shows
    // the logs and the loggers; its controls say why they cannot act.
    std::optional<RemoteCommander> commander;
    std::string noCommander;
    try {
        commander.emplace(watch.domain.session);
    } catch (const DdsFailure &error) {
        noCommander = std::string("this console may not command loggers: ") + error.what();
        std::fprintf(stderr, "vexar web: %s; serving without controls\n", noCommander.c_str());
    }
    LiveHub hub;
    AppsBoard board;
    WebServer server(settings, hub, board, commander ? &*commander : nullptr, noCommander);
    std::printf("vexar web: serving domain %d on http://%s:%d/#token=%s\n", settings.domain, settings.host.c_str(),
                server.port(), settings.token.c_str());
    std::fflush(stdout);
    server.start();
    while (!stopRequested()) {
        if (!watch.takeTurn(hub, board)) watch.domain.signal.waitUntil(Clock::time_point::max());
    }
    server.stop();
    return 0;
}

}  // namespace vexar::cli
