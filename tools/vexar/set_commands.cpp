// vexar set-level, set-verbosity, set-format: one remote command to one
// logger, answered by its CommandResponse.
#include <cstdio>
#include <optional>

#include "commands.hpp"
#include "dds_session.hpp"
#include "names.hpp"
#include "remote_command.hpp"
#include "usage_error.hpp"

namespace vexar::cli {
namespace {

constexpr OptionDescription kSetOptions[] = {
    {"timeout", "SECONDS", "wait this long for the answer (default 5; 0: no limit)"},
};

#define VEXAR_CLI_TARGET_HELP                                                               \
    "HOST:APP names the logger as `vexar apps` shows it (8 hex digits each, or 0x-hex or\n" \
    "decimal ids), or is an application kind that names exactly one logger.\n"              \
    "Exit status: 0 OK, 2 the logger answered NOT_SUPPORTED or ERROR, 3 no answer in time."

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

// The one live logger of `kind`; nothing when none shows up in time.
std::optional<AppId> findLoggerOfKind(const std::string &kind, DomainWatch &watch, Clock::time_point deadline) {
    std::vector<AppId> matches;
    std::optional<Clock::time_point> firstSeen;
    while (!stopRequested()) {
        watch.updateApps();
        matches.clear();
        for (const auto &[id, record] : watch.apps.records()) {
            if (!record.gone && record.kind == kind) matches.push_back(id);
        }
        Clock::time_point now = Clock::now();
        if (!matches.empty() && !firstSeen) firstSeen = now;
        if ((firstSeen && now - *firstSeen >= kKindSettleTime) || now >= deadline) break;
        watch.signal.waitUntil(deadline);
    }
    if (matches.size() > 1) {
        std::string ids;
        for (AppId id : matches) ids += " " + formatAppId(id);
        throw UsageError("application kind '" + kind + "' names " + std::to_string(matches.size()) + " loggers:" + ids +
                         "; give HOST:APP");
    }
    if (matches.empty()) return std::nullopt;
    return matches.front();
}

int report(const CommandAnswer &answer, std::string_view kind) {
    std::string line = formatAppId(answer.responder);
    if (!kind.empty()) line += " " + std::string(kind);
    line += ": " + nameOrNumber(kCommandResultNames, answer.result);
    if (!answer.message.empty()) line += ": " + answer.message;
    std::printf("%s\n", line.c_str());
    return answer.result == QTV_VX_COMMAND_RESULT_OK ? 0 : kExitRefused;
}

int sendCommand(const ParsedArguments &arguments, const FillCommand &fill) {
    AppSelector selector = AppSelector::parse(arguments.operands.front());
    double timeout = arguments.seconds("timeout", 5);
    std::int32_t domain = arguments.domain();

    DomainWatch watch(domain);
    RemoteCommander commander(watch.session);
    Clock::time_point deadline = deadlineAfter(timeout);

    std::optional<AppId> target;
    if (selector.isKind()) {
        target = findLoggerOfKind(std::get<std::string>(selector.target), watch, deadline);
        if (!target) {
            std::fprintf(stderr, "no logger of %s in domain %d within %g s\n", selector.describe().c_str(), domain,
                         timeout);
            return kExitNoAnswer;
        }
    } else {
        target = std::get<AppId>(selector.target);
    }

    std::optional<CommandAnswer> answer = commander.send(*target, fill, deadline);
    watch.updateApps();
    if (!answer) {
        std::fprintf(stderr, "no answer from %s in domain %d within %g s\n", formatAppId(*target).c_str(), domain,
                     timeout);
        return kExitNoAnswer;
    }
    return report(*answer, watch.apps.kindOf(answer->responder));
}

}  // namespace

const CommandDescription kSetLevelCommand{
    "set-level", "HOST:APP LEVEL", "Set a logger's filter level.", kSetLevelDetails, kSetOptions, 2, 2};
const CommandDescription kSetVerbosityCommand{"set-verbosity",
                                              "HOST:APP CATEGORY=VERBOSITY...",
                                              "Set the verbosity of an application's middleware logger per category.",
                                              kSetVerbosityDetails,
                                              kSetOptions,
                                              2,
                                              1 + 16};
const CommandDescription kSetFormatCommand{"set-format",
                                           "HOST:APP FORMAT",
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
