#include "platform/runtime/clock.h"

#include <cerrno>
#include <cstdint>
#include <ctime>
#include <limits>
#include <new>

#include "platform/runtime/posix_failure.hpp"
#include "platform/log/report.h"

namespace {

constexpr DDS_LongLong kNanosecondsPerSecond = 1'000'000'000;

// Whole nanoseconds in a 2^-32 fraction of a second, truncated.
DDS_LongLong nanosecondsOfFraction(DDS_UnsignedLong fraction) noexcept {
    return static_cast<DDS_LongLong>((static_cast<uint64_t>(fraction) * kNanosecondsPerSecond) >> 32);
}

// The fraction of `nanoseconds` (0..999999999), rounded up so that
// truncating it back gives the same count.
DDS_UnsignedLong fractionOfNanoseconds(DDS_LongLong nanoseconds) noexcept {
    const uint64_t scaled = static_cast<uint64_t>(nanoseconds) << 32;
    return static_cast<DDS_UnsignedLong>((scaled + kNanosecondsPerSecond - 1) / kNanosecondsPerSecond);
}

OBLX_Time_t saturatedTime(DDS_LongLong seconds, DDS_UnsignedLong fraction) noexcept {
    using Limits = std::numeric_limits<DDS_Long>;
    if (seconds > Limits::max()) return OBLX_Time_t{Limits::max(), std::numeric_limits<DDS_UnsignedLong>::max()};
    if (seconds < Limits::min()) return OBLX_Time_t{Limits::min(), 0};
    return OBLX_Time_t{static_cast<DDS_Long>(seconds), fraction};
}

DDS_Boolean readSystemClock(OBLX_Clock * /*self*/, OBLX_Time_t *out) noexcept {
    timespec now{};
    if (clock_gettime(CLOCK_REALTIME, &now) != 0) {
        vexar::runtime::reportPosixFailure("OBLX_Clock_getTime", "clock_gettime", errno);
        return DDS_BOOLEAN_FALSE;
    }
    *out = saturatedTime(now.tv_sec, fractionOfNanoseconds(now.tv_nsec));
    return DDS_BOOLEAN_TRUE;
}

}  // namespace

extern "C" {

OBLX_Clock *OBLX_Clock_newSystemClock(void) {
    auto *clock = new (std::nothrow) OBLX_Clock{&readSystemClock};
    if (clock == nullptr) OBLX_Report_allocationFailure("OBLX_Clock_newSystemClock", sizeof(OBLX_Clock));
    return clock;
}

void OBLX_Clock_delete(OBLX_Clock *self) { delete self; }

DDS_Boolean OBLX_Clock_getTime(OBLX_Clock *self, OBLX_Time_t *out) {
    if (self == nullptr || self->getTime == nullptr) {
        OBLX_Report_badParameter("OBLX_Clock_getTime", "self");
        return DDS_BOOLEAN_FALSE;
    }
    if (out == nullptr) {
        OBLX_Report_badParameter("OBLX_Clock_getTime", "out");
        return DDS_BOOLEAN_FALSE;
    }
    return self->getTime(self, out);
}

DDS_LongLong OBLX_Time_toNanoseconds(const OBLX_Time_t *time) {
    if (time == nullptr) {
        OBLX_Report_badParameter("OBLX_Time_toNanoseconds", "time");
        return 0;
    }
    return static_cast<DDS_LongLong>(time->sec) * kNanosecondsPerSecond + nanosecondsOfFraction(time->frac);
}

OBLX_Time_t OBLX_Time_fromNanoseconds(DDS_LongLong nanoseconds) {
    // Floor division keeps the fraction non-negative for negative inputs.
    DDS_LongLong seconds = nanoseconds / kNanosecondsPerSecond;
    DDS_LongLong remainder = nanoseconds % kNanosecondsPerSecond;
    if (remainder < 0) {
        seconds -= 1;
        remainder += kNanosecondsPerSecond;
    }
    return saturatedTime(seconds, fractionOfNanoseconds(remainder));
}

}  // extern "C"
