// How `vexar tail` prints one log message: a plain line with fixed-width
// columns, the same with the level coloured for a terminal, or one JSON
// object for machines.
//
//   2026-11-21 18:30:05.123  01100f3a:8b2c4d1e demo          demo@box[4242]        INFO     net         text
//
// Columns: source time (local, milliseconds), HOST:APP, application kind
// (blank until a State names it; cut at 12 characters with '~'), the
// process's "exe@host[pid]" (blank while unknown; a longer one pushes the
// rest right), level
// name (or its number), category (blank when empty; a longer one pushes the
// text right), text. A text that ends with its call's source location (the
// C++ API's " [@file:line]") has it shown in a column of its own before the
// text, and as "file" and "line" in JSON. Control characters of remote texts
// are escaped so that a message can neither break the line nor drive the
// terminal.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "app_id.hpp"

namespace vexar::cli {

struct LogLine {
    std::int64_t seconds = 0;  // source time since the epoch
    std::uint32_t nanoseconds = 0;
    AppId app;
    std::string_view kind;      // empty while unknown
    std::string_view identity;  // "exe@host[pid]", empty while unknown
    std::int32_t level = 0;
    std::string_view category;
    std::string_view message;
    bool history = false;  // read from a log database, not live
};

// A line that owns its texts, for lines kept after their source is gone.
struct OwnedLine {
    explicit OwnedLine(const LogLine &line)
        : line(line), kind(line.kind), identity(line.identity), category(line.category), message(line.message) {}
    LogLine view() const {
        LogLine copy = line;
        copy.kind = kind;
        copy.identity = identity;
        copy.category = category;
        copy.message = message;
        return copy;
    }
    LogLine line;
    std::string kind;
    std::string identity;
    std::string category;
    std::string message;
};

enum class LineStyle { Plain, Colour, Json };

// A message's text and the source location at its end; `file` is empty (and
// `text` the whole message) when it has none.
struct LocatedText {
    std::string_view text;
    std::string_view file;
    std::uint32_t line = 0;
};
LocatedText splitLocation(std::string_view message);

// The escape sequence that starts the colour of `level`, and the reset.
std::string_view levelColour(std::int32_t level);
inline constexpr std::string_view kColourReset = "\x1b[0m";

// Appends the time as RFC 3339 UTC with nanoseconds: 2026-11-21T17:30:05.123456789Z.
void appendUtcTime(std::string &out, std::int64_t seconds, std::uint32_t nanoseconds);

// Appends `text` as a JSON string (with quotes): escapes quotes, backslashes
// and control characters, and replaces bytes that are not UTF-8 with U+FFFD.
void appendJsonString(std::string &out, std::string_view text);

// Appends `text` for a terminal line: trailing line ends are dropped, other
// control characters become \n, \r, \t or \xHH.
void appendPrintable(std::string &out, std::string_view text);

class LineFormatter {
public:
    explicit LineFormatter(LineStyle style) : style_(style) {}

    // Appends the line, newline included.
    void append(std::string &out, const LogLine &line);

private:
    void appendText(std::string &out, const LogLine &line);
    void appendJson(std::string &out, const LogLine &line);
    void appendLocalTime(std::string &out, std::int64_t seconds, std::uint32_t nanoseconds);

    LineStyle style_;
    // localtime_r is costly at tail's rates: the text of the last second is kept.
    std::int64_t cachedSecond_ = -1;
    std::string cachedSecondText_;
};

}  // namespace vexar::cli
