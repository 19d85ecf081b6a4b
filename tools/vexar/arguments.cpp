#include "arguments.hpp"

#include <algorithm>
#include <cstdlib>

#include "names.hpp"
#include "usage_error.hpp"

namespace vexar::cli {
namespace {

// The DDS domain ids that Cyclone accepts.
constexpr std::int32_t kMaxDomainId = 230;

const OptionDescription *findOption(const CommandDescription &command, std::string_view name) {
    if (name == kDomainOption.name) return &kDomainOption;
    for (const OptionDescription &option : command.options) {
        if (option.name == name) return &option;
    }
    return nullptr;
}

const OptionDescription *findShortOption(const CommandDescription &command, char letter) {
    for (const OptionDescription &option : command.options) {
        if (option.shortName == letter || option.name == std::string_view(&letter, 1)) return &option;
    }
    return nullptr;
}

// A domain id from the environment; a bad one is named, not ignored.
std::optional<std::int32_t> domainFromEnvironment() {
    for (const char *variable : {"VEXAR_DOMAIN", "ROS_DOMAIN_ID"}) {
        const char *text = std::getenv(variable);
        if (text == nullptr || *text == '\0') continue;
        std::optional<std::int32_t> domain = parseInt32(text);
        if (!domain || *domain < 0 || *domain > kMaxDomainId) {
            throw UsageError("bad " + std::string(variable) + " '" + text + "' (expected a domain id from 0 to " +
                             std::to_string(kMaxDomainId) + ")");
        }
        return domain;
    }
    return std::nullopt;
}

bool isOptionWord(std::string_view word) {
    if (word.size() < 2 || word[0] != '-') return false;
    return !(word[1] >= '0' && word[1] <= '9');
}

// One-letter options are written with one dash: -n.
bool isShort(std::string_view name) { return name.size() == 1; }

std::string optionUsage(const OptionDescription &option) {
    std::string usage = option.shortName != '\0' ? std::string{'-', option.shortName, ',', ' '} : std::string();
    usage += (isShort(option.name) ? "-" : "--") + std::string(option.name);
    if (!option.valueName.empty()) usage += " " + std::string(option.valueName);
    return usage;
}

}  // namespace

const OptionDescription kDomainOption{"domain", "N",
                                      "DDS domain id (default: $VEXAR_DOMAIN, else $ROS_DOMAIN_ID, else 0)"};
const OptionDescription kHelpOption{"help", "", "show this help"};

std::optional<std::string> ParsedArguments::value(std::string_view option) const {
    auto found = values_.find(std::string(option));
    if (found == values_.end()) return std::nullopt;
    return found->second.back();
}

std::vector<std::string> ParsedArguments::values(std::string_view option) const {
    auto found = values_.find(std::string(option));
    return found != values_.end() ? found->second : std::vector<std::string>{};
}

std::int32_t ParsedArguments::integer(std::string_view option, std::int32_t fallback, std::int32_t min,
                                      std::int32_t max) const {
    std::optional<std::string> text = value(option);
    if (!text) return fallback;
    std::optional<std::int32_t> number = parseInt32(*text);
    if (!number || *number < min || *number > max) {
        throw UsageError("bad --" + std::string(option) + " '" + *text + "' (expected a whole number from " +
                         std::to_string(min) + " to " + std::to_string(max) + ")");
    }
    return *number;
}

double ParsedArguments::seconds(std::string_view option, double fallback) const {
    std::optional<std::string> text = value(option);
    if (!text) return fallback;
    char *end = nullptr;
    double number = std::strtod(text->c_str(), &end);
    // A deadline is a clock point in nanoseconds: beyond about 292 years it
    // would wrap into the past, so a huge value would end the command at once.
    constexpr double kMaxSeconds = 1e9;
    if (text->empty() || *end != '\0' || !(number >= 0 && number <= kMaxSeconds)) {
        throw UsageError("bad --" + std::string(option) + " '" + *text +
                         "' (expected seconds from 0 to 1000000000, such as 5 or 0.5)");
    }
    return number;
}

std::int32_t ParsedArguments::domain() const {
    if (has(kDomainOption.name)) return integer(kDomainOption.name, 0, 0, kMaxDomainId);
    return domainFromEnvironment().value_or(0);
}

ParsedArguments parseArguments(const CommandDescription &command, std::span<const std::string_view> arguments) {
    ParsedArguments parsed;
    bool optionsEnded = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        std::string_view word = arguments[i];
        if (optionsEnded || !isOptionWord(word)) {
            parsed.operands.emplace_back(word);
            continue;
        }
        if (word == "--") {
            optionsEnded = true;
            continue;
        }
        if (word == "--help" || word == "-h") {
            parsed.helpRequested = true;
            return parsed;
        }
        std::string_view name = word.substr(word.starts_with("--") ? 2 : 1);
        std::optional<std::string> inlineValue;
        const OptionDescription *option = nullptr;
        if (!word.starts_with("--")) {
            // "-l warning", "-lwarning"
            option = findShortOption(command, name.front());
            if (option != nullptr && name.size() > 1) {
                if (option->valueName.empty()) option = nullptr;
                else inlineValue = std::string(name.substr(name[1] == '=' ? 2 : 1));
            }
        } else {
            if (std::size_t equals = name.find('='); equals != std::string_view::npos) {
                inlineValue = std::string(name.substr(equals + 1));
                name = name.substr(0, equals);
            }
            option = isShort(name) ? nullptr : findOption(command, name);
        }
        if (option == nullptr) throw UsageError("unknown option '" + std::string(word) + "'");
        name = option->name;
        if (option->valueName.empty()) {
            if (inlineValue) throw UsageError("option --" + std::string(name) + " takes no value");
            parsed.add(name, "");
        } else if (inlineValue) {
            parsed.add(name, *inlineValue);
        } else if (i + 1 < arguments.size()) {
            parsed.add(name, std::string(arguments[++i]));
        } else {
            throw UsageError("option --" + std::string(name) + " needs a value (" + std::string(option->valueName) +
                             ")");
        }
    }
    if (parsed.operands.size() < command.minOperands) {
        throw UsageError("missing operand: expected " + std::string(command.operands));
    }
    if (parsed.operands.size() > command.maxOperands) {
        throw UsageError("unexpected operand '" + parsed.operands[command.maxOperands] + "'");
    }
    return parsed;
}

std::string helpText(const CommandDescription &command) {
    std::string text = "usage: vexar " + std::string(command.name) + " [options]";
    if (!command.operands.empty()) text += " " + std::string(command.operands);
    text += "\n\n" + std::string(command.summary) + "\n";
    if (!command.details.empty()) text += "\n" + std::string(command.details) + "\n";
    text += "\noptions:\n";
    auto addOption = [&](const OptionDescription &option) {
        std::string usage = optionUsage(option);
        usage.resize(std::max<std::size_t>(usage.size() + 2, 22), ' ');
        text += "  " + usage + std::string(option.help) + "\n";
    };
    for (const OptionDescription &option : command.options) addOption(option);
    addOption(kDomainOption);
    addOption(kHelpOption);
    return text;
}

}  // namespace vexar::cli
