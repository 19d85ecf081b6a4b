#include "line_format.hpp"

#include <ctime>
#include <optional>

#include "names.hpp"
#include "vexar/FormattedLogging.h"

namespace vexar::cli {
namespace {

constexpr std::size_t kKindWidth = 12;
constexpr std::size_t kIdentityWidth = 20;
constexpr std::size_t kLevelWidth = 7;
constexpr std::size_t kCategoryWidth = 10;
constexpr std::size_t kLocationWidth = 16;
constexpr std::string_view kLocationOpen = QTV_VX_VEXAR_LOCATION_OPEN;
constexpr std::string_view kLocationClose = QTV_VX_VEXAR_LOCATION_CLOSE;

struct CodePoint {
    char32_t value;
    std::size_t length;
};

// The UTF-8 sequence at `text[at]`, or nothing for a byte that does not
// start a well-formed one (overlong forms and surrogates included).
std::optional<CodePoint> decodeUtf8(std::string_view text, std::size_t at) {
    auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    unsigned char lead = byte(at);
    if (lead < 0x80) return CodePoint{lead, 1};
    std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 0;
    if (length == 0 || lead > 0xF4 || at + length > text.size()) return std::nullopt;
    char32_t value = lead & (0x7F >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(at + i) & 0xC0) != 0x80) return std::nullopt;
        value = (value << 6) | (byte(at + i) & 0x3F);
    }
    constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (value < kSmallest[length] || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) return std::nullopt;
    return CodePoint{value, length};
}

void appendHex(std::string &out, std::string_view prefix, unsigned value, int digits) {
    static constexpr char kDigits[] = "0123456789abcdef";
    out += prefix;
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) out += kDigits[(value >> shift) & 0xF];
}

std::string_view shortEscape(char32_t c) {
    switch (c) {
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    default:
        return {};
    }
}

void appendPadded(std::string &out, std::string_view text, std::size_t width) {
    out += text;
    if (text.size() < width) out.append(width - text.size(), ' ');
}

void appendKind(std::string &out, std::string_view kind) {
    if (kind.size() <= kKindWidth) return appendPadded(out, kind, kKindWidth);
    out += kind.substr(0, kKindWidth - 1);
    out += '~';
}

void appendLevel(std::string &out, std::int32_t level, bool colour) {
    std::string name = nameOrNumber(kLevelNames, level);
    if (colour) out += levelColour(level);
    out += name;
    if (colour) out += kColourReset;
    if (name.size() < kLevelWidth) out.append(kLevelWidth - name.size(), ' ');
}

void appendDigits(std::string &out, std::uint32_t value, int digits) {
    char text[10];
    for (int i = digits - 1; i >= 0; --i, value /= 10) text[i] = static_cast<char>('0' + value % 10);
    out.append(text, static_cast<std::size_t>(digits));
}

std::optional<std::uint32_t> lineNumber(std::string_view digits) {
    if (digits.empty() || digits.size() > 9) return std::nullopt;
    std::uint32_t value = 0;
    for (char digit : digits) {
        if (digit < '0' || digit > '9') return std::nullopt;
        value = value * 10 + static_cast<std::uint32_t>(digit - '0');
    }
    return value;
}

}  // namespace

LocatedText splitLocation(std::string_view message) {
    const LocatedText whole{message, {}, 0};
    std::size_t open = message.rfind(kLocationOpen);
    if (!message.ends_with(kLocationClose) || open == std::string_view::npos) return whole;
    std::string_view inside = message.substr(open + kLocationOpen.size());
    inside.remove_suffix(kLocationClose.size());
    std::size_t colon = inside.rfind(':');
    if (colon == 0 || colon == std::string_view::npos) return whole;
    std::optional<std::uint32_t> line = lineNumber(inside.substr(colon + 1));
    if (!line) return whole;
    return {message.substr(0, open), inside.substr(0, colon), *line};
}

void appendUtcTime(std::string &out, std::int64_t seconds, std::uint32_t nanoseconds) {
    std::time_t time = static_cast<std::time_t>(seconds);
    std::tm parts{};
    gmtime_r(&time, &parts);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
    out += text;
    out += '.';
    appendDigits(out, nanoseconds, 9);
    out += 'Z';
}

std::string_view levelColour(std::int32_t level) {
    if (level <= 200) return "\x1b[1;31m";  // FATAL, SEVERE: bold red
    if (level <= 300) return "\x1b[31m";    // ERROR: red
    if (level <= 400) return "\x1b[33m";    // WARNING: yellow
    if (level <= 500) return "\x1b[36m";    // NOTICE: cyan
    if (level <= 600) return "\x1b[32m";    // INFO: green
    return "\x1b[2m";                       // DEBUG, TRACE: dim
}

void appendJsonString(std::string &out, std::string_view text) {
    out += '"';
    for (std::size_t at = 0; at < text.size();) {
        std::optional<CodePoint> point = decodeUtf8(text, at);
        if (!point) {
            out += "\\ufffd";
            ++at;
            continue;
        }
        char32_t c = point->value;
        if (c == '"' || c == '\\') {
            out += '\\';
            out += static_cast<char>(c);
        } else if (c < 0x20) {
            std::string_view escape = shortEscape(c);
            if (escape.empty()) appendHex(out, "\\u", c, 4);
            else out += escape;
        } else {
            out.append(text, at, point->length);
        }
        at += point->length;
    }
    out += '"';
}

void appendPrintable(std::string &out, std::string_view text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.remove_suffix(1);
    for (std::size_t at = 0; at < text.size();) {
        std::optional<CodePoint> point = decodeUtf8(text, at);
        if (!point) {
            appendHex(out, "\\x", static_cast<unsigned char>(text[at]), 2);
            ++at;
            continue;
        }
        char32_t c = point->value;
        bool control = c < 0x20 || c == 0x7F || (c >= 0x80 && c < 0xA0);
        if (!control) {
            out.append(text, at, point->length);
        } else if (std::string_view escape = shortEscape(c); !escape.empty()) {
            out += escape;
        } else {
            appendHex(out, "\\x", c, 2);
        }
        at += point->length;
    }
}

namespace {

// A remote text escaped, then padded; a longer one pushes the rest right.
void appendPrintablePadded(std::string &out, std::string_view text, std::size_t width) {
    std::size_t start = out.size();
    appendPrintable(out, text);
    std::size_t length = out.size() - start;
    if (length < width) out.append(width - length, ' ');
}

}  // namespace

void LineFormatter::append(std::string &out, const LogLine &line) {
    if (style_ == LineStyle::Json) appendJson(out, line);
    else appendText(out, line);
    out += '\n';
}

void LineFormatter::appendText(std::string &out, const LogLine &line) {
    appendLocalTime(out, line.seconds, line.nanoseconds);
    out += "  ";
    out += formatAppId(line.app);
    out += ' ';
    appendKind(out, line.kind);
    out += "  ";
    appendPrintablePadded(out, line.identity, kIdentityWidth);
    out += "  ";
    appendLevel(out, line.level, style_ == LineStyle::Colour);
    out += "  ";
    appendPrintablePadded(out, line.category, kCategoryWidth);
    out += "  ";
    LocatedText located = splitLocation(line.message);
    if (!located.file.empty()) {
        std::size_t locationStart = out.size();
        appendPrintable(out, located.file);
        out += ':' + std::to_string(located.line);
        std::size_t locationLength = out.size() - locationStart;
        if (locationLength < kLocationWidth) out.append(kLocationWidth - locationLength, ' ');
        out += "  ";
    }
    appendPrintable(out, located.text);
}

void LineFormatter::appendJson(std::string &out, const LogLine &line) {
    out += "{\"time\":\"";
    appendUtcTime(out, line.seconds, line.nanoseconds);
    out += "\",\"host\":" + std::to_string(line.app.host);
    out += ",\"app\":" + std::to_string(line.app.app);
    out += ",\"id\":\"" + formatAppId(line.app) + "\",\"kind\":";
    if (line.kind.empty()) out += "null";
    else appendJsonString(out, line.kind);
    out += ",\"identity\":";
    if (line.identity.empty()) out += "null";
    else appendJsonString(out, line.identity);
    out += ",\"level\":" + std::to_string(line.level) + ",\"levelName\":";
    std::string_view levelName = nameOf(kLevelNames, line.level);
    if (levelName.empty()) out += "null";
    else appendJsonString(out, levelName);
    out += ",\"category\":";
    appendJsonString(out, line.category);
    LocatedText located = splitLocation(line.message);
    out += ",\"message\":";
    appendJsonString(out, located.text);
    if (!located.file.empty()) {
        out += ",\"file\":";
        appendJsonString(out, located.file);
        out += ",\"line\":" + std::to_string(located.line);
    }
    if (line.history) out += ",\"history\":true";
    out += '}';
}

void LineFormatter::appendLocalTime(std::string &out, std::int64_t seconds, std::uint32_t nanoseconds) {
    if (seconds != cachedSecond_) {
        std::time_t time = static_cast<std::time_t>(seconds);
        std::tm parts{};
        localtime_r(&time, &parts);
        char text[32];
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
        cachedSecond_ = seconds;
        cachedSecondText_ = text;
    }
    out += cachedSecondText_;
    out += '.';
    appendDigits(out, nanoseconds / 1000000, 3);
}

}  // namespace vexar::cli
