// How `vexar web` hands live log messages to the pages that watch them.
// The DDS thread publishes each batch once; every page's stream has its own
// filter, applied here, so a page receives only what it shows, and its own
// bounded backlog: a page that falls behind loses messages, counted and
// told to it, and never makes the server grow or the DDS thread wait.
#pragma once

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include "line_format.hpp"
#include "message_filter.hpp"

namespace vexar::cli {

// Messages per level and second, of everything that arrived: the page's
// rate sparklines. Slot 8 counts levels that are not one of the eight.
inline constexpr std::size_t kRateSlots = 9;
using LevelCounts = std::array<std::uint64_t, kRateSlots>;
std::size_t rateSlotOf(std::int32_t level);

// What a stream takes from the hub in one turn.
struct StreamTurn {
    std::vector<OwnedLine> lines;
    std::uint64_t lost = 0;  // messages that matched but found the backlog full
    bool closed = false;     // the hub is closing: the stream ends
};

class LiveStream {
public:
    explicit LiveStream(MessageFilter filter) : filter_(std::move(filter)) {}

    // Waits until messages or a loss are waiting, the hub closes, or the
    // wait is over, and takes them.
    StreamTurn next(std::chrono::milliseconds wait);

    // Backlog bound: about 20 MB of long messages.
    static constexpr std::size_t kBacklogMost = 50000;

private:
    friend class LiveHub;
    void offer(std::span<const LogLine> lines);
    void addLost(std::uint64_t count);
    void close();

    const MessageFilter filter_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<OwnedLine> backlog_;
    std::uint64_t lost_ = 0;
    bool closed_ = false;
};

class LiveHub {
public:
    // A stream that receives what matches `filter` from now on; it leaves
    // the hub when the last owner drops it.
    std::shared_ptr<LiveStream> subscribe(MessageFilter filter);

    // From the DDS thread: a batch of messages in time order.
    void publish(std::span<const LogLine> lines);
    // The reader lost messages: every stream is told, whatever its filter,
    // since nobody knows what they were.
    void reportLost(std::uint64_t count);
    // Ends every stream.
    void close();

    // The counts of the last whole second, and which second it was (the
    // steady clock's, in seconds); second -1 while none has ended.
    std::pair<std::int64_t, LevelCounts> lastSecond() const;

private:
    std::vector<std::shared_ptr<LiveStream>> liveStreams();
    void countRates(std::span<const LogLine> lines);

    mutable std::mutex mutex_;
    std::vector<std::weak_ptr<LiveStream>> streams_;
    bool closed_ = false;
    std::int64_t currentSecond_ = -1;
    LevelCounts current_{};
    std::int64_t lastSecond_ = -1;
    LevelCounts last_{};
};

}  // namespace vexar::cli
