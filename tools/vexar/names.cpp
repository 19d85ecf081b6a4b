#include "names.hpp"

#include <algorithm>
#include <charconv>

#include "usage_error.hpp"

namespace vexar::cli {
namespace {

constexpr NamedValue kLevels[] = {{"FATAL", 100},  {"SEVERE", 200}, {"ERROR", 300}, {"WARNING", 400},
                                  {"NOTICE", 500}, {"INFO", 600},   {"DEBUG", 700}, {"TRACE", 800}};
constexpr NamedValue kCategories[] = {
    {"PLATFORM", 0}, {"COMMUNICATION", 1}, {"DATABASE", 2}, {"ENTITIES", 3}, {"API", 4}};
constexpr NamedValue kVerbosities[] = {{"SILENT", 0},       {"ERROR", 1},         {"WARNING", 2},
                                       {"STATUS_LOCAL", 3}, {"STATUS_REMOTE", 4}, {"STATUS_ALL", 5}};
constexpr NamedValue kPrintFormats[] = {{"DEFAULT", 0}, {"TIMESTAMPED", 1}, {"VERBOSE", 2}, {"VERBOSE_TIMESTAMPED", 3},
                                        {"DEBUG", 4},   {"MINIMAL", 5},     {"MAXIMAL", 6}};
constexpr NamedValue kStates[] = {{"INITIALIZING", 0}, {"OPERATIONAL", 1}, {"NONOPERATIONAL", 2}, {"SHUTTING_DOWN", 3}};
constexpr NamedValue kCommandResults[] = {{"OK", 0}, {"NOT_SUPPORTED", 1}, {"ERROR", 2}};

char normalized(char c) {
    if (c == '-') return '_';
    return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
}

}  // namespace

bool isName(std::string_view name, std::string_view text) {
    return name.size() == text.size() &&
           std::equal(name.begin(), name.end(), text.begin(), [](char n, char t) { return n == normalized(t); });
}

const NameTable kLevelNames{"level", kLevels, true};
const NameTable kCategoryNames{"category", kCategories, false};
const NameTable kVerbosityNames{"verbosity", kVerbosities, false};
const NameTable kPrintFormatNames{"print format", kPrintFormats, false};
const NameTable kStateNames{"state", kStates, false};
const NameTable kCommandResultNames{"command result", kCommandResults, false};

std::optional<std::int32_t> parseInt32(std::string_view text) {
    std::int32_t value = 0;
    const char *end = text.data() + text.size();
    auto [stop, error] = std::from_chars(text.data(), end, value);
    if (text.empty() || error != std::errc() || stop != end) return std::nullopt;
    return value;
}

std::optional<std::int32_t> parseName(const NameTable &table, std::string_view text) {
    for (const NamedValue &entry : table.entries) {
        if (isName(entry.name, text)) return entry.value;
    }
    std::optional<std::int32_t> number = parseInt32(text);
    if (!number || table.anyNumber || !nameOf(table, *number).empty()) return number;
    return std::nullopt;
}

std::int32_t parseNameOrThrow(const NameTable &table, std::string_view text) {
    if (std::optional<std::int32_t> value = parseName(table, text)) return *value;
    std::string expected = listNames(table) + (table.anyNumber ? " or a number" : " or their numbers");
    throw UsageError("bad " + std::string(table.what) + " '" + std::string(text) + "' (expected " + expected + ")");
}

std::string_view nameOf(const NameTable &table, std::int32_t value) {
    for (const NamedValue &entry : table.entries) {
        if (entry.value == value) return entry.name;
    }
    return {};
}

std::string nameOrNumber(const NameTable &table, std::int32_t value) {
    std::string_view name = nameOf(table, value);
    return name.empty() ? std::to_string(value) : std::string(name);
}

std::string listNames(const NameTable &table) {
    std::string list;
    for (const NamedValue &entry : table.entries) {
        if (!list.empty()) list += ", ";
        list += entry.name;
    }
    return list;
}

}  // namespace vexar::cli
