// vexar set-level, set-verbosity, set-format: one remote command to each
// logger that the target names, each answered by its CommandResponse.
#include <algorithm>
#include <array>
#include <cstdio>
#include <functional>
#include <limits>
#include <optional>
#include <random>

#include "commands.hpp"
#include "dds_session.hpp"
#include "names.hpp"
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

constexpr auto kResendInterval = std::chrono::seconds(1);
constexpr auto kKindSettleTime = std::chrono::milliseconds(500);

using CategoryVerbosities = std::vector<QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity>;
using FillCommand = std::function<void(QTV_VX_ADMIN_Command &)>;

CategoryVerbosities parseCategoryVerbosities(std::span<const std::string> pairs) {
    std::array<std::optional<std::int32_t>, QTV_VX_ADMIN_STATE_VERBOSITIES_LENGTH> byCategory;
    for (const std::string &pair : pairs) {
        std::size_t equals = pair.find('=');
        if (equals == std::string::npos) {
            throw UsageError("bad CATEGORY=VERBOSITY '" + pair + "' (expected e.g. COMMUNICATION=WARNING)");
        }
        std::string_view category = std::string_view(pair).substr(0, equals);
        std::int32_t verbosity = parseNameOrThrow(kVerbosityNames, std::string_view(pair).substr(equals + 1));
        if (isName("ALL", category)) {
            byCategory.fill(verbosity);
        } else {
            byCategory[static_cast<std::size_t>(parseNameOrThrow(kCategoryNames, category))] = verbosity;
        }
    }
    CategoryVerbosities entries;
    for (std::size_t category = 0; category < byCategory.size(); ++category) {
        if (!byCategory[category]) continue;
        entries.push_back({static_cast<QTV_VX_ADMIN_QTVLoggerCategory>(category),
                           static_cast<QTV_VX_ADMIN_QTVLoggerVerbosity>(*byCategory[category])});
    }
    return entries;
}

std::int32_t freshInvocation() {
    std::random_device entropy;
    return std::uniform_int_distribution<std::int32_t>(1, std::numeric_limits<std::int32_t>::max())(entropy);
}

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

struct Answer {
    std::int32_t result;
    std::string message;
};

// Responses echo the originator and invocation of their request.
struct Pending {
    AppId target;
    std::int32_t invocation;
    std::optional<Answer> answer;
};

// Sends each target its request (again each second, until answered: the
// logger's reader may not have matched the writer yet, and the commands are
// idempotent) and waits until every one answered or the deadline passed.
void exchange(std::vector<Pending> &pending, QTV_VX_ADMIN_CommandRequest &request,
              Writer<QTV_VX_ADMIN_CommandRequest> &requests, Reader<QTV_VX_ADMIN_CommandResponse> &responses,
              DataSignal &signal, Clock::time_point deadline) {
    AppId self = appIdOf(request.originatorHostAndAppId);
    std::optional<Clock::time_point> lastSent;
    auto answered = [&] { return std::ranges::all_of(pending, [](const Pending &p) { return p.answer.has_value(); }); };
    while (!answered() && !stopRequested() && Clock::now() < deadline) {
        Clock::time_point now = Clock::now();
        if (requests.matchedReaders() > 0 && (!lastSent || now - *lastSent >= kResendInterval)) {
            for (const Pending &target : pending) {
                if (target.answer) continue;
                request.targetHostAndAppId = {target.target.host, target.target.app};
                request.invocation = target.invocation;
                if (!requests.write(request)) throw DdsFailure("cannot send the command request");
            }
            lastSent = now;
        }
        signal.waitUntil(deadline);
        responses.takeAll([&](const std::vector<Received<QTV_VX_ADMIN_CommandResponse>> &received) {
            for (const auto &[response, info] : received) {
                if (!info->valid_data || appIdOf(response->originatorHostAndAppId) != self) continue;
                for (Pending &target : pending) {
                    if (target.answer || target.invocation != response->invocation) continue;
                    target.answer =
                        Answer{response->commandResult, response->message != nullptr ? response->message : ""};
                }
            }
        });
    }
}

std::string loggerName(AppId id, const AppDirectory &apps) {
    std::string name = formatAppId(id);
    if (std::string_view kind = apps.kindOf(id); !kind.empty()) name += " " + std::string(kind);
    if (std::string_view identity = apps.identityOf(id); !identity.empty()) name += " " + std::string(identity);
    return name;
}

// One line per logger; the status says the worst: 3 when one did not
// answer, else 2 when one refused, else 0.
int report(const std::vector<Pending> &pending, const AppDirectory &apps, std::int32_t domain, double timeout) {
    int status = 0;
    for (const Pending &target : pending) {
        if (!target.answer) {
            std::fprintf(stderr, "no answer from %s in domain %d within %g s\n",
                         loggerName(target.target, apps).c_str(), domain, timeout);
            status = kExitNoAnswer;
            continue;
        }
        std::string line =
            loggerName(target.target, apps) + ": " + nameOrNumber(kCommandResultNames, target.answer->result);
        if (!target.answer->message.empty()) line += ": " + target.answer->message;
        std::printf("%s\n", line.c_str());
        if (target.answer->result != QTV_VX_COMMAND_RESULT_OK && status == 0) status = kExitRefused;
    }
    return status;
}

std::vector<Pending> pendingFor(const std::vector<AppId> &targets) {
    std::vector<Pending> pending;
    std::int32_t invocation = freshInvocation();
    for (AppId target : targets) {
        pending.push_back({target, invocation, std::nullopt});
        invocation = invocation == std::numeric_limits<std::int32_t>::max() ? 1 : invocation + 1;
    }
    return pending;
}

int sendCommand(const ParsedArguments &arguments, const FillCommand &fill) {
    AppSelector selector = AppSelector::parse(arguments.operands.front());
    double timeout = arguments.seconds("timeout", 5);
    std::int32_t domain = arguments.domain();
    bool many = arguments.has("all") || selector.isGlob();

    DomainWatch watch(domain);
    Reader<QTV_VX_ADMIN_CommandResponse> responses(watch.session, responseReaderQos(), watch.signal);
    Writer<QTV_VX_ADMIN_CommandRequest> requests(watch.session, requestWriterQos());
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

    OwnedSample<QTV_VX_ADMIN_CommandRequest> request;
    AppId self = watch.session.id();
    request.value.originatorHostAndAppId = {self.host, self.app};
    fill(request.value.command);
    std::vector<Pending> pending = pendingFor(targets);
    exchange(pending, request.value, requests, responses, watch.signal, deadline);
    watch.updateApps();
    return report(pending, watch.apps, domain, timeout);
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
    std::int32_t level = parseNameOrThrow(kLevelNames, arguments.operands[1]);
    return sendCommand(arguments, [level](QTV_VX_ADMIN_Command &command) {
        command._d = QTV_VX_SET_LOG_LEVEL;
        command._u.filterLevel = level;
    });
}

int runSetVerbosity(const ParsedArguments &arguments) {
    CategoryVerbosities entries = parseCategoryVerbosities(std::span<const std::string>(arguments.operands).subspan(1));
    return sendCommand(arguments, [&entries](QTV_VX_ADMIN_Command &command) {
        command._d = QTV_VX_SET_QTV_LOGGER_LEVEL;
        if (!QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq_from_array(&command._u.categoryAndVerbosity, entries.data(),
                                                                      static_cast<DDS_Long>(entries.size()))) {
            throw DdsFailure("cannot fill the verbosity command");
        }
    });
}

int runSetFormat(const ParsedArguments &arguments) {
    auto format =
        static_cast<QTV_VX_ADMIN_QTVLoggerPrintFormat>(parseNameOrThrow(kPrintFormatNames, arguments.operands[1]));
    return sendCommand(arguments, [format](QTV_VX_ADMIN_Command &command) {
        command._d = QTV_VX_SET_QTV_LOGGER_PRINT_FORMAT;
        command._u.printFormat = format;
    });
}

}  // namespace vexar::cli
