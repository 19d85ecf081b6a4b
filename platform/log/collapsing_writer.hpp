// Writes Cyclone's lines through the middleware logger with floods of
// identical lines collapsed (repeated_lines.hpp): a peer can make Cyclone
// raise one line per datagram, thousands a second, and each would otherwise
// become a log message in every subscriber. A count is written when its
// window ends, by a thread started at the first copy counted, so it is never
// held back waiting for a later line.
#pragma once

#include <condition_variable>
#include <mutex>
#include <vector>

#include "platform/log/logger.hpp"
#include "platform/log/repeated_lines.hpp"

namespace vexar::log {

class CollapsingWriter {
public:
    explicit CollapsingWriter(OBLX_Config_Logger &logger) noexcept : logger_(logger) {}
    CollapsingWriter(const CollapsingWriter &) = delete;
    CollapsingWriter &operator=(const CollapsingWriter &) = delete;

    OBLX_Config_Logger &logger() const noexcept { return logger_; }

    // Writes `record` unless it is a copy of a line written less than a
    // window ago; writes the counts that fell due first. Any thread.
    void write(const LogRecord &record) noexcept;

private:
    void writeCounts(const std::vector<RepeatCount> &due) noexcept;
    void startTimer() noexcept;
    [[noreturn]] void writeCountsWhenDue() noexcept;

    OBLX_Config_Logger &logger_;
    std::mutex mutex_;
    std::condition_variable earlierDue_;
    RepeatedLines lines_;        // under mutex_
    bool timerStarted_ = false;  // under mutex_
};

// For a thread whose lines the output device drops (the logger's write
// thread): its lines are written one by one, since a count would be written
// from another thread and so get past the device.
void writeLinesOfThisThreadUncollapsed() noexcept;

}  // namespace vexar::log
