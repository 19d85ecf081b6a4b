// Messages that `vexar tail` knows it lost, said at most once a second so
// that a flood of losses cannot drown the messages themselves. Loss is
// never silent: what is still counted when tail stops is said too.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vexar::cli {

using WallClock = std::chrono::system_clock;

// `count` messages lost since `since` (tail's start, or the previous notice).
struct LossNotice {
    std::int64_t count;
    WallClock::time_point since;
};

class LossCounter {
public:
    explicit LossCounter(WallClock::time_point start) : since_(start) {}

    // Counts `lost` more; returns a notice of everything counted when there
    // is any and no notice was given in the last second.
    std::optional<LossNotice> add(std::int64_t lost, WallClock::time_point now);
    // Whatever is still counted, regardless of time.
    std::optional<LossNotice> flush(WallClock::time_point now);

private:
    std::int64_t pending_ = 0;
    WallClock::time_point since_;
    std::optional<WallClock::time_point> lastNotice_;
};

// "vexar tail: lost 12 messages since 18:30:05" (local time), with newline;
// `command` names the one that lost them.
std::string lossLine(const LossNotice &notice, std::string_view command = "tail");
// {"lost":12,"since":"2026-11-21T17:30:05.000000000Z"}, with newline.
std::string lossJson(const LossNotice &notice);

}  // namespace vexar::cli
