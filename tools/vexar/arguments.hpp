// The command line of one subcommand: its options, described once in a
// table that both the parser and the help text read.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vexar::cli {

struct OptionDescription {
    std::string_view name;       // without the leading "--"
    std::string_view valueName;  // empty for a flag
    std::string_view help;
    char shortName = '\0';  // "-l" beside "--level"; none when '\0'
};

struct CommandDescription {
    std::string_view name;      // "tail"
    std::string_view operands;  // "HOST:APP LEVEL", for the usage line
    std::string_view summary;   // one line
    std::string_view details;   // more lines for --help, may be empty
    std::span<const OptionDescription> options;
    std::size_t minOperands;
    std::size_t maxOperands;
};

// Every subcommand takes these besides its own.
extern const OptionDescription kDomainOption;
extern const OptionDescription kHelpOption;

class ParsedArguments {
public:
    bool helpRequested = false;
    std::vector<std::string> operands;

    bool has(std::string_view option) const { return values_.contains(std::string(option)); }
    // The option's last value, for options given once.
    std::optional<std::string> value(std::string_view option) const;
    // Every value of a repeated option, in command-line order.
    std::vector<std::string> values(std::string_view option) const;

    // The option's value checked and converted; absent options give the
    // fallback. Bad values throw UsageError naming the option.
    std::int32_t integer(std::string_view option, std::int32_t fallback, std::int32_t min, std::int32_t max) const;
    double seconds(std::string_view option, double fallback) const;
    // --domain, else VEXAR_DOMAIN, else ROS_DOMAIN_ID, else 0.
    std::int32_t domain() const;

    void add(std::string_view option, std::string value) { values_[std::string(option)].push_back(std::move(value)); }

private:
    std::map<std::string, std::vector<std::string>> values_;
};

// Reads `arguments` (the words after the subcommand). "--name value" and
// "--name=value" are both accepted, as are "-x value" and "-xvalue" for an
// option with a short name; "--" ends the options, and a word like "-5" is
// an operand (levels may be negative). Throws UsageError for an
// unknown option, a missing value, or a wrong number of operands; with
// --help it returns at once with helpRequested set.
ParsedArguments parseArguments(const CommandDescription &command, std::span<const std::string_view> arguments);

// The --help text of a subcommand.
std::string helpText(const CommandDescription &command);

}  // namespace vexar::cli
