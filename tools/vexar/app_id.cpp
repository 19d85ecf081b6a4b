#include "app_id.hpp"

#include <fnmatch.h>

#include <algorithm>
#include <charconv>
#include <cstdio>

#include "app_identity.hpp"
#include "names.hpp"
#include "usage_error.hpp"

namespace vexar::cli {
namespace {

constexpr std::size_t kHexDigits = 8;

std::optional<std::int32_t> parseHex(std::string_view digits) {
    if (digits.empty() || digits.size() > kHexDigits) return std::nullopt;
    std::uint32_t value = 0;
    const char *end = digits.data() + digits.size();
    auto [stop, error] = std::from_chars(digits.data(), end, value, 16);
    if (error != std::errc() || stop != end) return std::nullopt;
    return static_cast<std::int32_t>(value);
}

bool isHexDigit(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

std::optional<std::int32_t> parseIdPart(std::string_view text) {
    if (text.starts_with("0x") || text.starts_with("0X")) return parseHex(text.substr(2));
    bool printedForm = text.size() == kHexDigits && std::ranges::all_of(text, isHexDigit);
    return printedForm ? parseHex(text) : parseInt32(text);
}

}  // namespace

std::string formatAppId(AppId id) {
    char text[2 * kHexDigits + 2];
    std::snprintf(text, sizeof text, "%08x:%08x", static_cast<std::uint32_t>(id.host),
                  static_cast<std::uint32_t>(id.app));
    return text;
}

std::optional<AppId> parseAppId(std::string_view text) {
    std::size_t colon = text.find(':');
    if (colon == std::string_view::npos) return std::nullopt;
    std::optional<std::int32_t> host = parseIdPart(text.substr(0, colon));
    std::optional<std::int32_t> app = parseIdPart(text.substr(colon + 1));
    if (!host || !app) return std::nullopt;
    return AppId{*host, *app};
}

namespace {

// '[' alone does not make a glob: "exe@host[pid]" is a name.
bool hasGlobCharacter(std::string_view text) { return text.find_first_of("*?") != std::string_view::npos; }

bool globMatches(const std::string &pattern, const std::string &text) {
    return fnmatch(pattern.c_str(), text.c_str(), 0) == 0;
}

}  // namespace

AppSelector AppSelector::parse(std::string_view text) {
    if (text.empty()) throw UsageError("empty HOST:APP or application name");
    if (text.find(':') == std::string_view::npos || hasGlobCharacter(text)) return AppSelector{std::string(text)};
    if (std::optional<AppId> id = parseAppId(text)) return AppSelector{*id};
    throw UsageError("bad HOST:APP '" + std::string(text) +
                     "' (expected two ids such as 01100f3a:8b2c4d1e, 0x1a:0x2b or -5:17)");
}

bool AppSelector::isGlob() const {
    const auto *text = std::get_if<std::string>(&target);
    return text != nullptr && hasGlobCharacter(*text);
}

bool AppSelector::matches(AppId id, std::string_view kind, std::string_view identity) const {
    if (const auto *wanted = std::get_if<AppId>(&target)) return *wanted == id;
    const std::string &text = std::get<std::string>(target);
    std::optional<AppIdentity> parts = AppIdentity::parse(identity);
    std::string exe = parts ? parts->exe : std::string();
    if (!isGlob()) return (!kind.empty() && text == kind) || (!exe.empty() && (text == exe || text == identity));
    std::string names[] = {std::string(kind), exe, std::string(identity), formatAppId(id),
                           parts ? parts->host + ":" + exe : std::string()};
    return std::ranges::any_of(names,
                               [&](const std::string &name) { return !name.empty() && globMatches(text, name); });
}

std::string AppSelector::describe() const {
    if (const auto *id = std::get_if<AppId>(&target)) return formatAppId(*id);
    return (isGlob() ? "name matching '" : "kind '") + std::get<std::string>(target) + "'";
}

std::string seenNames(const std::set<std::string> &names) {
    std::string text;
    for (const std::string &name : names) text += (text.empty() ? "" : ", ") + name;
    return text.empty() ? "none" : text;
}

}  // namespace vexar::cli
