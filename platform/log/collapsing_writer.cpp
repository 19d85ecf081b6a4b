#include "platform/log/collapsing_writer.hpp"

#include <pthread.h>

#include <new>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

namespace vexar::log {
namespace {

thread_local bool tUncollapsed = false;

}  // namespace

void writeLinesOfThisThreadUncollapsed() noexcept { tUncollapsed = true; }

void CollapsingWriter::write(const LogRecord &record) noexcept {
    if (tUncollapsed) return logRecord(logger_, record);
    std::vector<RepeatCount> due;
    bool fresh = true;
    try {
        bool startTimerNow = false;
        bool earlier = false;
        {
            std::lock_guard lock(mutex_);
            const auto timerDeadline = lines_.nextDue();
            fresh = lines_.admit(record, RepeatedLines::Clock::now(), due);
            startTimerNow = !fresh && !std::exchange(timerStarted_, true);
            earlier = !fresh && lines_.nextDue() < timerDeadline;
        }
        if (startTimerNow) startTimer();
        if (earlier) earlierDue_.notify_one();
    } catch (const std::bad_alloc &) {
        // Out of memory: the line is written as if it were the first.
    }
    writeCounts(due);
    if (fresh) logRecord(logger_, record);
}

void CollapsingWriter::writeCounts(const std::vector<RepeatCount> &due) noexcept {
    for (const RepeatCount &count : due) {
        try {
            const std::string text = count.text();
            LogRecord record = count.line.record();
            record.text = text;
            logRecord(logger_, record);
        } catch (const std::bad_alloc &) {
            // The count is lost with the memory to say it.
        }
    }
}

// Without a thread, counts still fall due at the next line raised.
void CollapsingWriter::startTimer() noexcept {
    try {
        std::thread([this] { writeCountsWhenDue(); }).detach();
    } catch (const std::system_error &) {}
}

// Lives as long as the process, like the logger it writes through.
void CollapsingWriter::writeCountsWhenDue() noexcept {
    pthread_setname_np(pthread_self(), "LogRepeatCounts");
    std::unique_lock lock(mutex_);
    for (;;) {
        const auto deadline = lines_.nextDue();
        if (deadline == RepeatedLines::Clock::time_point::max()) {
            earlierDue_.wait(lock);
        } else {
            earlierDue_.wait_until(lock, deadline);
        }
        std::vector<RepeatCount> due;
        try {
            lines_.expire(RepeatedLines::Clock::now(), due);
        } catch (const std::bad_alloc &) {
            // Tried again at the next turn.
        }
        if (due.empty()) continue;
        lock.unlock();
        writeCounts(due);
        lock.lock();
    }
}

}  // namespace vexar::log
