#include "web_hub.hpp"

#include <algorithm>
#include <utility>

namespace vexar::cli {
namespace {

std::int64_t steadySecond() {
    using namespace std::chrono;
    return duration_cast<seconds>(steady_clock::now().time_since_epoch()).count();
}

}  // namespace

std::size_t rateSlotOf(std::int32_t level) {
    bool named = level >= 100 && level <= 800 && level % 100 == 0;
    return named ? static_cast<std::size_t>(level / 100 - 1) : kRateSlots - 1;
}

StreamTurn LiveStream::next(std::chrono::milliseconds wait) {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, wait, [this] { return closed_ || lost_ > 0 || !backlog_.empty(); });
    StreamTurn turn;
    turn.lines.swap(backlog_);
    turn.lost = std::exchange(lost_, 0);
    turn.closed = closed_;
    return turn;
}

void LiveStream::offer(std::span<const LogLine> lines) {
    bool added = false;
    std::lock_guard lock(mutex_);
    for (const LogLine &line : lines) {
        if (!filter_.matches(line)) continue;
        if (backlog_.size() >= kBacklogMost) {
            ++lost_;
        } else {
            backlog_.emplace_back(line);
        }
        added = true;
    }
    if (added) changed_.notify_one();
}

void LiveStream::addLost(std::uint64_t count) {
    std::lock_guard lock(mutex_);
    lost_ += count;
    changed_.notify_one();
}

void LiveStream::close() {
    std::lock_guard lock(mutex_);
    closed_ = true;
    changed_.notify_one();
}

std::shared_ptr<LiveStream> LiveHub::subscribe(MessageFilter filter) {
    auto stream = std::make_shared<LiveStream>(std::move(filter));
    std::lock_guard lock(mutex_);
    if (closed_) stream->close();
    std::erase_if(streams_, [](const std::weak_ptr<LiveStream> &known) { return known.expired(); });
    streams_.push_back(stream);
    return stream;
}

std::vector<std::shared_ptr<LiveStream>> LiveHub::liveStreams() {
    std::vector<std::shared_ptr<LiveStream>> alive;
    std::lock_guard lock(mutex_);
    for (const auto &known : streams_) {
        if (auto stream = known.lock()) alive.push_back(std::move(stream));
    }
    return alive;
}

void LiveHub::publish(std::span<const LogLine> lines) {
    countRates(lines);
    for (const auto &stream : liveStreams()) stream->offer(lines);
}

void LiveHub::reportLost(std::uint64_t count) {
    if (count == 0) return;
    for (const auto &stream : liveStreams()) stream->addLost(count);
}

void LiveHub::close() {
    {
        std::lock_guard lock(mutex_);
        closed_ = true;
    }
    for (const auto &stream : liveStreams()) stream->close();
}

void LiveHub::countRates(std::span<const LogLine> lines) {
    std::int64_t second = steadySecond();
    std::lock_guard lock(mutex_);
    if (second != currentSecond_) {
        // A second without messages in between counts as zero.
        lastSecond_ = currentSecond_ >= 0 ? second - 1 : -1;
        last_ = second - 1 == currentSecond_ ? current_ : LevelCounts{};
        currentSecond_ = second;
        current_ = {};
    }
    for (const LogLine &line : lines) ++current_[rateSlotOf(line.level)];
}

std::pair<std::int64_t, LevelCounts> LiveHub::lastSecond() const {
    std::int64_t second = steadySecond();
    std::lock_guard lock(mutex_);
    if (currentSecond_ == second - 1) return {currentSecond_, current_};
    if (currentSecond_ < second - 1) return {second - 1, LevelCounts{}};
    return {lastSecond_, last_};
}

}  // namespace vexar::cli
