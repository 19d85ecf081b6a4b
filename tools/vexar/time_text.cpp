#include "time_text.hpp"

#include <cctype>
#include <charconv>
#include <chrono>
#include <ctime>
#include <optional>
#include <string>

#include "names.hpp"
#include "usage_error.hpp"

namespace vexar::cli {
namespace {

constexpr std::int64_t kSecond = 1000000000;

[[noreturn]] void reject(std::string_view option, std::string_view text, std::string_view expected) {
    throw UsageError("bad --" + std::string(option) + " '" + std::string(text) + "' (expected " +
                     std::string(expected) + ")");
}

// A whole number followed by one of the unit letters, whose multipliers
// are given in the same order; no letter means `plain`.
std::optional<std::int64_t> numberWithUnit(std::string_view text, std::string_view units,
                                           const std::int64_t *multipliers, std::int64_t plain) {
    std::int64_t number = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end == text.data() || number < 0) return std::nullopt;
    std::string_view rest(end, static_cast<std::size_t>(text.data() + text.size() - end));
    std::int64_t multiplier = plain;
    if (!rest.empty()) {
        std::size_t unit =
            rest.size() == 1 ? units.find(static_cast<char>(std::tolower(rest[0]))) : std::string_view::npos;
        if (unit == std::string_view::npos) return std::nullopt;
        multiplier = multipliers[unit];
    }
    if (number > INT64_MAX / multiplier) return std::nullopt;
    return number * multiplier;
}

std::optional<std::int64_t> durationOf(std::string_view text) {
    static constexpr std::int64_t kMultipliers[] = {kSecond, 60 * kSecond, 3600 * kSecond, 86400 * kSecond,
                                                    7 * 86400 * kSecond};
    return numberWithUnit(text, "smhdw", kMultipliers, kSecond);
}

std::int64_t localMidnight(std::int64_t now, int daysBack) {
    std::time_t seconds = static_cast<std::time_t>(now / kSecond);
    std::tm parts{};
    localtime_r(&seconds, &parts);
    parts.tm_hour = parts.tm_min = parts.tm_sec = 0;
    parts.tm_mday -= daysBack;
    parts.tm_isdst = -1;
    return static_cast<std::int64_t>(std::mktime(&parts)) * kSecond;
}

// Reads `count` digits at `at` into `value`.
bool digits(std::string_view text, std::size_t &at, int count, int &value) {
    if (at + count > text.size()) return false;
    value = 0;
    for (int i = 0; i < count; ++i) {
        char c = text[at + i];
        if (c < '0' || c > '9') return false;
        value = value * 10 + (c - '0');
    }
    at += count;
    return true;
}

bool literal(std::string_view text, std::size_t &at, std::string_view choices) {
    if (at >= text.size() || choices.find(text[at]) == std::string_view::npos) return false;
    ++at;
    return true;
}

// The zone at the end: "Z", "+HH:MM", "-HHMM"; sets the offset east of UTC.
bool zoneOffset(std::string_view text, std::size_t &at, std::optional<int> &offsetSeconds) {
    if (at == text.size()) return true;
    if (literal(text, at, "Zz")) {
        offsetSeconds = 0;
        return at == text.size();
    }
    if (at >= text.size() || (text[at] != '+' && text[at] != '-')) return false;
    int sign = text[at++] == '-' ? -1 : 1;
    int hours = 0;
    int minutes = 0;
    if (!digits(text, at, 2, hours)) return false;
    literal(text, at, ":");
    if (!digits(text, at, 2, minutes)) return false;
    offsetSeconds = sign * (hours * 3600 + minutes * 60);
    return at == text.size();
}

std::optional<std::int64_t> absoluteTime(std::string_view text) {
    std::tm parts{};
    std::size_t at = 0;
    int year = 0;
    int month = 0;
    int day = 0;
    if (!digits(text, at, 4, year) || !literal(text, at, "-") || !digits(text, at, 2, month) ||
        !literal(text, at, "-") || !digits(text, at, 2, day)) {
        return std::nullopt;
    }
    std::int64_t fraction = 0;
    if (literal(text, at, " T")) {
        if (!digits(text, at, 2, parts.tm_hour) || !literal(text, at, ":") || !digits(text, at, 2, parts.tm_min)) {
            return std::nullopt;
        }
        if (literal(text, at, ":")) {
            if (!digits(text, at, 2, parts.tm_sec)) return std::nullopt;
            if (literal(text, at, ".")) {
                std::int64_t scale = kSecond;
                for (; at < text.size() && std::isdigit(static_cast<unsigned char>(text[at])); ++at) {
                    scale /= 10;
                    fraction += (text[at] - '0') * scale;
                }
            }
        }
    }
    std::optional<int> offset;
    if (!zoneOffset(text, at, offset)) return std::nullopt;
    parts.tm_year = year - 1900;
    parts.tm_mon = month - 1;
    parts.tm_mday = day;
    parts.tm_isdst = -1;
    // Checked before the conversion, which would carry an hour of 25 into the next day.
    if (month < 1 || month > 12 || day < 1 || day > 31 || parts.tm_hour > 23 || parts.tm_min > 59 ||
        parts.tm_sec > 60) {
        return std::nullopt;
    }
    std::time_t seconds = offset ? timegm(&parts) - *offset : std::mktime(&parts);
    return static_cast<std::int64_t>(seconds) * kSecond + fraction;
}

}  // namespace

std::int64_t wallClockNow() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

std::int64_t parseDuration(std::string_view option, std::string_view text) {
    std::optional<std::int64_t> duration = durationOf(text);
    if (!duration || *duration == 0) reject(option, text, "a duration such as 90s, 10m, 2h, 7d or 1w");
    return *duration;
}

std::int64_t parseTimePoint(std::string_view option, std::string_view text, std::int64_t now) {
    if (isName("NOW", text)) return now;
    if (isName("TODAY", text)) return localMidnight(now, 0);
    if (isName("YESTERDAY", text)) return localMidnight(now, 1);
    if (std::optional<std::int64_t> ago = durationOf(text)) return now - *ago;
    if (std::optional<std::int64_t> time = absoluteTime(text)) return *time;
    reject(option, text, "10m, 2h, 7d, now, today, yesterday, or YYYY-MM-DD[ HH:MM[:SS]][Z|+HH:MM]");
}

std::int64_t parseSize(std::string_view option, std::string_view text) {
    static constexpr std::int64_t kMultipliers[] = {1 << 10, 1 << 20, 1 << 30, std::int64_t{1} << 40};
    std::optional<std::int64_t> size = numberWithUnit(text, "kmgt", kMultipliers, 1);
    if (!size || *size == 0) reject(option, text, "a size such as 500M or 2G");
    return *size;
}

}  // namespace vexar::cli
