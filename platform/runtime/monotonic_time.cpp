#include "platform/runtime/monotonic_time.hpp"

#include <limits>

namespace vexar::runtime {

namespace {
constexpr DDS_LongLong kNanosecondsPerSecond = 1'000'000'000;
}

timespec monotonicDeadlineAfter(DDS_LongLong nanoseconds) noexcept {
    if (nanoseconds < 0) nanoseconds = 0;
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const DDS_LongLong wholeSeconds = nanoseconds / kNanosecondsPerSecond;
    if (wholeSeconds > std::numeric_limits<time_t>::max() / 2 - now.tv_sec) {
        return timespec{std::numeric_limits<time_t>::max() / 2, 0};
    }
    timespec deadline{now.tv_sec + static_cast<time_t>(wholeSeconds),
                      now.tv_nsec + static_cast<long>(nanoseconds % kNanosecondsPerSecond)};
    if (deadline.tv_nsec >= kNanosecondsPerSecond) {
        deadline.tv_sec += 1;
        deadline.tv_nsec -= kNanosecondsPerSecond;
    }
    return deadline;
}

}  // namespace vexar::runtime
