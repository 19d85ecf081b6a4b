#include "app_id.hpp"

#include <algorithm>
#include <charconv>
#include <cstdio>

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

AppSelector AppSelector::parse(std::string_view text) {
    if (text.empty()) throw UsageError("empty HOST:APP or application kind");
    if (text.find(':') == std::string_view::npos) return AppSelector{std::string(text)};
    if (std::optional<AppId> id = parseAppId(text)) return AppSelector{*id};
    throw UsageError("bad HOST:APP '" + std::string(text) +
                     "' (expected two ids such as 01100f3a:8b2c4d1e, 0x1a:0x2b or -5:17)");
}

bool AppSelector::matches(AppId id, std::string_view kind) const {
    if (const auto *wanted = std::get_if<AppId>(&target)) return *wanted == id;
    return std::get<std::string>(target) == kind;
}

std::string AppSelector::describe() const {
    if (const auto *id = std::get_if<AppId>(&target)) return formatAppId(*id);
    return "kind '" + std::get<std::string>(target) + "'";
}

}  // namespace vexar::cli
