// vexar set-level, set-verbosity, set-format: one remote command to each
// logger that the target names, each answered by its CommandResponse.
#include <cstdio>
#include <optional>
#include <vector>

#include "commands.hpp"
#include "dds_session.hpp"
#include "names.hpp"
#include "remote_command.hpp"
#include "usage_error.hpp"

namespace vexar::cli {
namespace {

constexpr OptionDescription kSetOptions[] = {
    {"all", "", "steer every logger the target names (a glob does so without it)"},
    {"timeout", "SECONDS", "wait this long for the answers (default 5; 0: no limit)"},
};

#define VEXAR_CLI_TARGET_HELP                                                                \
    "TARGET is HOST:APP as `vexar apps` shows it (8 hex digits each, or 0x-hex or decimal\n" \
    "ids), an application kind, an executable's name, exe@host[pid], or a glob over those\n" \
    "and over HOST:APP or hostname:exe (01100f3a:*, myhost:*). A name that fits several\n"   \
    "loggers needs --all; a glob steers every logger it fits. One line per logger.\n"        \
    "Exit status: 0 all answered OK, 2 one answered NOT_SUPPORTED or ERROR, 3 one did not\n" \
    "answer in time (or none fits)."

constexpr std::string_view kSetLevelDetails =
    "LEVEL is FATAL, SEVERE, ERROR, WARNING, NOTICE, INFO, DEBUG, TRACE or a number\n"
    "(any case). The logger publishes messages at LEVEL and more severe ones.\n" VEXAR_CLI_TARGET_HELP;
constexpr std::string_view kSetVerbosityDetails =
    "CATEGORY is PLATFORM, COMMUNICATION, DATABASE, ENTITIES, API (or 0..4), or ALL;\n"
    "VERBOSITY is SILENT, ERROR, WARNING, STATUS_LOCAL, STATUS_REMOTE, STATUS_ALL (or 0..5).\n"
    "Several pairs may be given; a later pair for the same category wins.\n" VEXAR_CLI_TARGET_HELP;
constexpr std::string_view kSetFormatDetails =
    "FORMAT is DEFAULT, TIMESTAMPED, VERBOSE, VERBOSE_TIMESTAMPED, DEBUG, MINIMAL,\n"
    "MAXIMAL (or 0..6), in any case.\n" VEXAR_CLI_TARGET_HELP;

constexpr auto kKindSettleTime = std::chrono::milliseconds(500);

// The live loggers that the selector names, once the States have settled
// (and at least one showed up) or at the deadline.
std::vector<AppId> findTargets(const AppSelector &selector, DomainWatch &watch, Clock::time_point deadline) {
    std::vector<AppId> matches;
    std::optional<Clock::time_point> firstSeen;
    while (!stopRequested()) {
        watch.updateApps();
        matches.clear();
        for (const auto &[id, record] : watch.apps.records()) {
            if (!record.gone && selector.matches(id, record.kind, record.identity)) matches.push_back(id);
        }
        Clock::time_point now = Clock::now();
        if (!matches.empty() && !firstSeen) firstSeen = now;
        if ((firstSeen && now - *firstSeen >= kKindSettleTime) || now >= deadline) break;
        watch.signal.waitUntil(deadline);
    }
    return matches;
}

std::string loggerName(AppId id, const AppDirectory &apps) {
    std::string name = formatAppId(id);
    if (std::string_view kind = apps.kindOf(id); !kind.empty()) name += " " + std::string(kind);
    if (std::string_view identity = apps.identityOf(id); !identity.empty()) name += " " + std::string(identity);
    return name;
}

// One line per logger; the status says the worst: 3 when one did not
// answer, else 2 when one refused, else 0.
int report(const std::vector<AppId> &targets, const std::vector<std::optional<CommandAnswer>> &answers,
           const AppDirectory &apps, std::int32_t domain, double timeout) {
    int status = 0;
    for (std::size_t i = 0; i < targets.size(); ++i) {
        const std::optional<CommandAnswer> &answer = answers[i];
        if (!answer) {
            std::fprintf(stderr, "no answer from %s in domain %d within %g s\n", loggerName(targets[i], apps).c_str(),
                         domain, timeout);
            status = kExitNoAnswer;
            continue;
        }
        std::string line = loggerName(targets[i], apps) + ": " + nameOrNumber(kCommandResultNames, answer->result);
        if (!answer->message.empty()) line += ": " + answer->message;
        std::printf("%s\n", line.c_str());
        if (answer->result != QTV_VX_COMMAND_RESULT_OK && status == 0) status = kExitRefused;
    }
    return status;
}

int sendCommand(const ParsedArguments &arguments, const FillCommand &fill) {
    AppSelector selector = AppSelector::parse(arguments.operands.front());
    double timeout = arguments.seconds("timeout", 5);
    std::int32_t domain = arguments.domain();
    bool many = arguments.has("all") || selector.isGlob();

    DomainWatch watch(domain);
    RemoteCommander commander(watch.session);
    Clock::time_point deadline = deadlineAfter(timeout);

    std::vector<AppId> targets;
    if (selector.isId()) {
        targets.push_back(std::get<AppId>(selector.target));
    } else {
        targets = findTargets(selector, watch, deadline);
        if (targets.empty()) {
            std::fprintf(stderr, "no logger of %s in domain %d (seen: %s)\n", selector.describe().c_str(), domain,
                         watch.apps.seenKinds().c_str());
            return kExitNoAnswer;
        }
        if (targets.size() > 1 && !many) {
            std::string names;
            for (AppId id : targets) names += (names.empty() ? "" : ", ") + loggerName(id, watch.apps);
            throw UsageError(selector.describe() + " names " + std::to_string(targets.size()) + " loggers (" + names +
                             "); give --all for every one, or one HOST:APP");
        }
    }

    std::vector<std::optional<CommandAnswer>> answers = commander.sendToEach(targets, fill, deadline);
    watch.updateApps();
    return report(targets, answers, watch.apps, domain, timeout);
}

}  // namespace

const CommandDescription kSetLevelCommand{
    "set-level", "TARGET LEVEL", "Set a logger's filter level.", kSetLevelDetails, kSetOptions, 2, 2};
const CommandDescription kSetVerbosityCommand{"set-verbosity",
                                              "TARGET CATEGORY=VERBOSITY...",
                                              "Set the verbosity of an application's middleware logger per category.",
                                              kSetVerbosityDetails,
                                              kSetOptions,
                                              2,
                                              1 + 16};
const CommandDescription kSetFormatCommand{"set-format",
                                           "TARGET FORMAT",
                                           "Set the print format of an application's middleware logger.",
                                           kSetFormatDetails,
                                           kSetOptions,
                                           2,
                                           2};

int runSetLevel(const ParsedArguments &arguments) {
    return sendCommand(arguments, setLevelCommand(parseNameOrThrow(kLevelNames, arguments.operands[1])));
}

int runSetVerbosity(const ParsedArguments &arguments) {
    std::span<const std::string> pairs = std::span<const std::string>(arguments.operands).subspan(1);
    return sendCommand(arguments, setVerbosityCommand(parseCategoryVerbosities(pairs)));
}

int runSetFormat(const ParsedArguments &arguments) {
    return sendCommand(arguments, setFormatCommand(parseNameOrThrow(kPrintFormatNames, arguments.operands[1])));
}

}  // namespace vexar::cli
