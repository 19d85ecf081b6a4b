// vexar: collect, watch and steer the logs of a DDS domain.
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "commands.hpp"
#include "dds_session.hpp"
#include "usage_error.hpp"

namespace {

using namespace vexar::cli;

const Command kCommands[] = {
    {kTailCommand, runTail},           {kAppsCommand, runApps},
    {kSetLevelCommand, runSetLevel},   {kSetVerbosityCommand, runSetVerbosity},
    {kSetFormatCommand, runSetFormat}, {kDemoCommand, runDemo},
    {kConfigCommand, runConfig},       {kRecordCommand, runRecord},
    {kQueryCommand, runQuery},         {kWebCommand, runWeb},
};

std::string overview() {
    std::string text =
        "usage: vexar COMMAND [options]\n\nCollect, watch and steer the logs of the Vexar loggers in a DDS domain.\n\n"
        "commands:\n";
    for (const Command &command : kCommands) {
        std::string name(command.description.name);
        name.resize(16, ' ');
        text += "  " + name + std::string(command.description.summary) + "\n";
    }
    return text + "\n'vexar COMMAND --help' describes a command, 'man vexar' all of them. Every command takes\n"
                  "--domain N (default: $VEXAR_DOMAIN, else $ROS_DOMAIN_ID, else 0).\n";
}

const Command *findCommand(std::string_view name) {
    for (const Command &command : kCommands) {
        if (command.description.name == name) return &command;
    }
    return nullptr;
}

int runCommand(const Command &command, const std::vector<std::string_view> &words) {
    std::string prefix = "vexar " + std::string(command.description.name) + ": ";
    try {
        ParsedArguments arguments = parseArguments(command.description, words);
        if (arguments.helpRequested) {
            std::fputs(helpText(command.description).c_str(), stdout);
            return 0;
        }
        return command.run(arguments);
    } catch (const UsageError &error) {
        std::fprintf(stderr, "%s%s (see 'vexar %s --help')\n", prefix.c_str(), error.what(),
                     std::string(command.description.name).c_str());
        return kExitUsage;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s%s\n", prefix.c_str(), error.what());
        return kExitFailure;
    }
}

}  // namespace

int main(int argc, char **argv) {
    std::vector<std::string_view> words(argv + 1, argv + argc);
    if (words.empty()) {
        std::fputs(overview().c_str(), stderr);
        return kExitUsage;
    }
    std::string_view name = words.front();
    if (name == "--help" || name == "-h" || name == "help") {
        std::fputs(overview().c_str(), stdout);
        return 0;
    }
    if (name == "--version") {
        std::printf("vexar %s\n", VEXAR_VERSION);
        return 0;
    }
    const Command *command = findCommand(name);
    if (command == nullptr) {
        std::fprintf(stderr, "vexar: unknown command '%s' (see 'vexar --help')\n", std::string(name).c_str());
        return kExitUsage;
    }
    words.erase(words.begin());
    return runCommand(*command, words);
}
