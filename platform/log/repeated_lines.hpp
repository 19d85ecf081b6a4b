// Which lines of a burst are copies: the first of identical lines is
// written, copies that follow within a window (one second) of it are only
// counted, and the count falls due as one line when the window ends. The
// caller passes the time, so the rule is checked without waiting.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/log/logger.hpp"

namespace vexar::log {

// A line kept beyond the call that raised it. `source`, `function` and `file`
// stay borrowed: they are the string literals of their producer.
struct KeptLine {
    explicit KeptLine(const LogRecord &record);

    bool sameAs(const LogRecord &record) const noexcept;
    LogRecord record() const noexcept { return {category, level, source, function, file, line, domain, text}; }

    OBLX_Config_LogCategory category;
    OBLX_Config_LogLevel level;
    const char *source;
    const char *function;
    const char *file;
    int line;
    uint32_t domain;
    std::string text;  // without a final newline
};

// How many copies of a written line were counted instead of written.
struct RepeatCount {
    KeptLine line;
    uint64_t copies;

    // "<text> (repeated N times)", with the line's other fields.
    std::string text() const;
};

class RepeatedLines {
public:
    using Clock = std::chrono::steady_clock;
    static constexpr Clock::duration kWindow = std::chrono::seconds(1);
    // Lines told apart at once; when more arrive, the oldest is forgotten
    // (and its count falls due at once).
    static constexpr std::size_t kTracked = 32;

    // True when `record` is to be written; false when it is a copy of a line
    // written less than a window ago, which is then counted. Counts that fell
    // due by `now` are appended to `due` first. Throws std::bad_alloc.
    bool admit(const LogRecord &record, Clock::time_point now, std::vector<RepeatCount> &due);

    // Appends the counts of the windows that ended by `now` to `due`.
    void expire(Clock::time_point now, std::vector<RepeatCount> &due);

    // When the earliest count falls due; Clock::time_point::max() when no
    // copy is counted.
    Clock::time_point nextDue() const noexcept;

private:
    struct Tracked {
        KeptLine line;
        Clock::time_point windowEnd;
        uint64_t copies;
    };
    // Drops `tracked`, its count (if any) falling due; returns the next one.
    std::vector<Tracked>::iterator forget(std::vector<Tracked>::iterator tracked, std::vector<RepeatCount> &due);

    std::vector<Tracked> tracked_;
};

}  // namespace vexar::log
