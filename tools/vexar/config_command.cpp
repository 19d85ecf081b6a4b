// vexar config: check XML configuration files and print them back.
#include <cstdio>
#include <string>

#include "commands.hpp"
#include "line_format.hpp"
#include "platform/dds/domain_participant_factory.h"
#include "usage_error.hpp"
#include "vexar/QosLibrary.h"
#include "xml_files.hpp"

namespace vexar::cli {
namespace {

constexpr OptionDescription kConfigOptions[] = {
    {"json", "", "check: one JSON object per file instead of the listing"},
};

constexpr std::string_view kConfigDetails =
    "  check FILE...  parse each file and list the QoS libraries, QoS profiles\n"
    "                 and vexar elements that it holds; errors go to standard\n"
    "                 error as FILE:LINE: message, and the exit status is 1 when\n"
    "                 any file was refused\n"
    "  save FILE...   load the files and print their vexar element and QoS\n"
    "                 profiles back as one XML document, with the built-in\n"
    "                 library VexarQosLibrary (profiles Lossless and Bounded)";

std::string entryJson(const XmlEntry &entry) {
    std::string out = "{\"kind\":";
    appendJsonString(out, entry.kind);
    out += ",\"name\":";
    appendJsonString(out, entry.name);
    return out + ",\"line\":" + std::to_string(entry.line) + "}";
}

void printChecked(const std::string &path, bool accepted, bool json) {
    std::vector<XmlEntry> entries = accepted ? entriesOf(path) : std::vector<XmlEntry>{};
    if (json) {
        std::string out = "{\"file\":";
        appendJsonString(out, path);
        out += accepted ? ",\"ok\":true,\"entries\":[" : ",\"ok\":false,\"entries\":[";
        for (std::size_t i = 0; i < entries.size(); ++i) out += (i > 0 ? "," : "") + entryJson(entries[i]);
        std::printf("%s]}\n", out.c_str());
        return;
    }
    std::printf("%s: %s\n", path.c_str(), accepted ? "ok" : "refused");
    for (const XmlEntry &entry : entries) {
        std::printf("  line %-5lu %-12s %s\n", entry.line, entry.kind.c_str(), entry.name.c_str());
    }
}

int check(const ParsedArguments &arguments) {
    bool allAccepted = true;
    for (std::size_t i = 1; i < arguments.operands.size(); ++i) {
        // One file at a time, so that each listing holds that file's elements only.
        XmlFiles files;
        bool accepted = files.load(arguments.operands[i]);
        allAccepted = allAccepted && accepted;
        printChecked(arguments.operands[i], accepted, arguments.has("json"));
    }
    return allAccepted ? 0 : kExitFailure;
}

int save(const ParsedArguments &arguments) {
    XmlFiles files;
    for (std::size_t i = 1; i < arguments.operands.size(); ++i) {
        if (!files.load(arguments.operands[i])) return kExitFailure;
    }
    // Shown beside the files' own: any logger can name them without a file.
    if (QTV_VX_QosLibrary_load() != DDS_RETCODE_OK) return kExitFailure;
    return DDS_DomainParticipantFactory_save_xml(DDS_DomainParticipantFactory_get_instance(), stdout) == DDS_RETCODE_OK
               ? 0
               : kExitFailure;
}

}  // namespace

const CommandDescription kConfigCommand{
    "config",       "check|save FILE...", "Check XML configuration files, or print them back.",
    kConfigDetails, kConfigOptions,       2,
    SIZE_MAX};

int runConfig(const ParsedArguments &arguments) {
    const std::string &action = arguments.operands.front();
    if (action == "check") return check(arguments);
    if (action == "save") {
        if (arguments.has("json")) throw UsageError("--json goes with check only");
        return save(arguments);
    }
    throw UsageError("unknown action '" + action + "' (expected check or save)");
}

}  // namespace vexar::cli
