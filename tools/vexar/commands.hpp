// The subcommands of `vexar`: each has its command-line description and
// its run function, which returns the exit status.
#pragma once

#include <span>

#include "arguments.hpp"

namespace vexar::cli {

// Exit statuses beside 0 and kExitUsage (64).
inline constexpr int kExitFailure = 1;   // DDS could not be used
inline constexpr int kExitRefused = 2;   // the logger answered NOT_SUPPORTED or ERROR
inline constexpr int kExitNoAnswer = 3;  // nothing answered, or --count not reached in time

struct Command {
    const CommandDescription &description;
    int (*run)(const ParsedArguments &arguments);
};

extern const CommandDescription kTailCommand;
extern const CommandDescription kAppsCommand;
extern const CommandDescription kSetLevelCommand;
extern const CommandDescription kSetVerbosityCommand;
extern const CommandDescription kSetFormatCommand;
extern const CommandDescription kDemoCommand;
extern const CommandDescription kConfigCommand;
extern const CommandDescription kRecordCommand;
extern const CommandDescription kQueryCommand;
extern const CommandDescription kWebCommand;

int runTail(const ParsedArguments &arguments);
int runApps(const ParsedArguments &arguments);
int runSetLevel(const ParsedArguments &arguments);
int runSetVerbosity(const ParsedArguments &arguments);
int runSetFormat(const ParsedArguments &arguments);
int runDemo(const ParsedArguments &arguments);
int runConfig(const ParsedArguments &arguments);
int runRecord(const ParsedArguments &arguments);
int runQuery(const ParsedArguments &arguments);
int runWeb(const ParsedArguments &arguments);

}  // namespace vexar::cli
