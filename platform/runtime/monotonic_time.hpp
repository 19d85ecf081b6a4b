// Deadlines on the monotonic clock, for waits that must not follow changes
// of the wall clock.
#pragma once

#include <ctime>

#include "platform/dds_types.h"

namespace vexar::runtime {

// The monotonic time `nanoseconds` (negative counts as 0) from now,
// saturating far in the future.
timespec monotonicDeadlineAfter(DDS_LongLong nanoseconds) noexcept;

}  // namespace vexar::runtime
