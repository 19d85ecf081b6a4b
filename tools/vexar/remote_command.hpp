// One remote command to one logger (or to each of several) and the response
// that answers it: what `vexar set-*` sends from the command line and `vexar web` from the page.
// The request carries a random invocation number and the sender's own
// participant ids as originator; a response answers it when it echoes both.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "dds_session.hpp"

namespace vexar::cli {

using CategoryVerbosities = std::vector<QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity>;
using FillCommand = std::function<void(QTV_VX_ADMIN_Command &)>;

// "CATEGORY=VERBOSITY" pairs (ALL for every category; a later pair for the
// same category wins); throws UsageError for a bad pair.
CategoryVerbosities parseCategoryVerbosities(std::span<const std::string> pairs);

// The three commands; names are parsed by the caller.
FillCommand setLevelCommand(std::int32_t level);
FillCommand setVerbosityCommand(CategoryVerbosities entries);
FillCommand setFormatCommand(std::int32_t format);

struct CommandAnswer {
    AppId responder;
    std::int32_t result;
    std::string message;
};

// A request writer and a response reader on a session. One command at a
// time per sender: its responses reader is its own.
class RemoteCommander {
public:
    explicit RemoteCommander(Session &session);

    // Sends the command (again each second until answered: the logger's
    // reader may not have matched the writer yet, and the commands are
    // idempotent) and waits for its answer until the deadline or a stop.
    std::optional<CommandAnswer> send(AppId target, const FillCommand &fill, Clock::time_point deadline);
    // The same command to each target at once, each request with its own
    // invocation number; the answers in the targets' order, nothing for a
    // target that did not answer in time.
    std::vector<std::optional<CommandAnswer>> sendToEach(std::span<const AppId> targets, const FillCommand &fill,
                                                         Clock::time_point deadline);

private:
    AppId self_;
    DataSignal signal_;
    Reader<QTV_VX_ADMIN_CommandResponse> responses_;
    Writer<QTV_VX_ADMIN_CommandRequest> requests_;
};

}  // namespace vexar::cli
