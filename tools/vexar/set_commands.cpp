// vexar set-level, set-verbosity, set-format: one remote command to one
// logger, answered by its CommandResponse.
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

struct Answer {
    AppId responder;
    std::int32_t result;
    std::string message;
};

bool answers(const QTV_VX_ADMIN_CommandResponse &response, const QTV_VX_ADMIN_CommandRequest &request) {
    return response.invocation == request.invocation &&
           appIdOf(response.originatorHostAndAppId) == appIdOf(request.originatorHostAndAppId);
}

// Sends the request (again each second, until answered: the logger's reader
// may not have matched the writer yet, and the commands are idempotent) and
// waits for the response that echoes its originator and invocation.
std::optional<Answer> exchange(const QTV_VX_ADMIN_CommandRequest &request,
                               Writer<QTV_VX_ADMIN_CommandRequest> &requests,
                               Reader<QTV_VX_ADMIN_CommandResponse> &responses, DataSignal &signal,
                               Clock::time_point deadline) {
    std::optional<Clock::time_point> lastSent;
    std::optional<Answer> answer;
    while (!answer && !stopRequested() && Clock::now() < deadline) {
        Clock::time_point now = Clock::now();
        if (requests.matchedReaders() > 0 && (!lastSent || now - *lastSent >= kResendInterval)) {
            if (!requests.write(request)) throw DdsFailure("cannot send the command request");
            lastSent = now;
        }
        signal.waitUntil(deadline);
        responses.takeAll([&](const std::vector<Received<QTV_VX_ADMIN_CommandResponse>> &received) {
            for (const auto &[response, info] : received) {
                if (answer || !info->valid_data || !answers(*response, request)) continue;
                answer = Answer{appIdOf(response->hostAndAppId), response->commandResult,
                                response->message != nullptr ? response->message : ""};
            }
        });
    }
    return answer;
}

int report(const Answer &answer, std::string_view kind) {
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
    Reader<QTV_VX_ADMIN_CommandResponse> responses(watch.session, responseReaderQos(), watch.signal);
    Writer<QTV_VX_ADMIN_CommandRequest> requests(watch.session, requestWriterQos());
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

    OwnedSample<QTV_VX_ADMIN_CommandRequest> request;
    AppId self = watch.session.id();
    request.value.targetHostAndAppId = {target->host, target->app};
    request.value.originatorHostAndAppId = {self.host, self.app};
    request.value.invocation = freshInvocation();
    fill(request.value.command);

    std::optional<Answer> answer = exchange(request.value, requests, responses, watch.signal, deadline);
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
