#include "remote_command.hpp"

#include <array>
#include <limits>
#include <random>

#include "names.hpp"
#include "usage_error.hpp"

namespace vexar::cli {
namespace {

constexpr auto kResendInterval = std::chrono::seconds(1);

std::int32_t freshInvocation() {
    std::random_device entropy;
    return std::uniform_int_distribution<std::int32_t>(1, std::numeric_limits<std::int32_t>::max())(entropy);
}

}  // namespace

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

FillCommand setLevelCommand(std::int32_t level) {
    return [level](QTV_VX_ADMIN_Command &command) {
        command._d = QTV_VX_SET_LOG_LEVEL;
        command._u.filterLevel = level;
    };
}

FillCommand setVerbosityCommand(CategoryVerbosities entries) {
    return [entries = std::move(entries)](QTV_VX_ADMIN_Command &command) {
        command._d = QTV_VX_SET_QTV_LOGGER_LEVEL;
        if (!QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq_from_array(&command._u.categoryAndVerbosity, entries.data(),
                                                                      static_cast<DDS_Long>(entries.size()))) {
            throw DdsFailure("cannot fill the verbosity command");
        }
    };
}

FillCommand setFormatCommand(std::int32_t format) {
    return [format](QTV_VX_ADMIN_Command &command) {
        command._d = QTV_VX_SET_QTV_LOGGER_PRINT_FORMAT;
        command._u.printFormat = static_cast<QTV_VX_ADMIN_QTVLoggerPrintFormat>(format);
    };
}

RemoteCommander::RemoteCommander(Session &session)
    : self_(session.id()), responses_(session, responseReaderQos(), signal_), requests_(session, requestWriterQos()) {}

std::optional<CommandAnswer> RemoteCommander::send(AppId target, const FillCommand &fill, Clock::time_point deadline) {
    return sendToEach(std::span<const AppId>(&target, 1), fill, deadline).front();
}

std::vector<std::optional<CommandAnswer>>
RemoteCommander::sendToEach(std::span<const AppId> targets, const FillCommand &fill, Clock::time_point deadline) {
    OwnedSample<QTV_VX_ADMIN_CommandRequest> owned;
    QTV_VX_ADMIN_CommandRequest &request = owned.value;
    request.originatorHostAndAppId = {self_.host, self_.app};
    fill(request.command);
    std::vector<std::int32_t> invocations;
    for (std::int32_t invocation = freshInvocation(); invocations.size() < targets.size();) {
        invocations.push_back(invocation);
        invocation = invocation == std::numeric_limits<std::int32_t>::max() ? 1 : invocation + 1;
    }

    std::vector<std::optional<CommandAnswer>> answers(targets.size());
    std::size_t unanswered = targets.size();
    std::optional<Clock::time_point> lastSent;
    while (unanswered > 0 && !stopRequested() && Clock::now() < deadline) {
        Clock::time_point now = Clock::now();
        if (requests_.matchedReaders() > 0 && (!lastSent || now - *lastSent >= kResendInterval)) {
            for (std::size_t i = 0; i < targets.size(); ++i) {
                if (answers[i]) continue;
                request.targetHostAndAppId = {targets[i].host, targets[i].app};
                request.invocation = invocations[i];
                if (!requests_.write(request)) throw DdsFailure("cannot send the command request");
            }
            lastSent = now;
        }
        signal_.waitUntil(deadline);
        responses_.takeAll([&](const std::vector<Received<QTV_VX_ADMIN_CommandResponse>> &received) {
            for (const auto &[response, info] : received) {
                if (!info->valid_data || appIdOf(response->originatorHostAndAppId) != self_) continue;
                for (std::size_t i = 0; i < targets.size(); ++i) {
                    if (answers[i] || response->invocation != invocations[i]) continue;
                    answers[i] = CommandAnswer{appIdOf(response->hostAndAppId), response->commandResult,
                                               response->message != nullptr ? response->message : ""};
                    --unanswered;
                }
            }
        });
    }
    return answers;
}

}  // namespace vexar::cli
