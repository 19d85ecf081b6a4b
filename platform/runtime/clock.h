/* Time as seconds plus a 2^-32 binary fraction of a second, and the clock
 * object that produces it. */
#ifndef VEXAR_PLATFORM_CLOCK_H
#define VEXAR_PLATFORM_CLOCK_H

#include "platform/dds_types.h"

VEXAR_BEGIN_DECLS

/* `frac` counts units of 2^-32 s, so 0x80000000 is half a second. Used both
 * for points in time (seconds since the Unix epoch) and for durations. */
typedef struct OBLX_Time_t {
    DDS_Long sec;
    DDS_UnsignedLong frac;
} OBLX_Time_t;

#define OBLX_TIME_ZERO \
    { 0, 0u }

typedef struct OBLX_Clock OBLX_Clock;

/* A clock is read through its own function pointer, so other time sources
 * can stand in for the system clock (in tests, for instance). */
struct OBLX_Clock {
    DDS_Boolean (*getTime)(OBLX_Clock *self, OBLX_Time_t *out);
};

/* The system (wall) clock: time since the Unix epoch. Null when out of memory. */
VEXAR_API OBLX_Clock *OBLX_Clock_newSystemClock(void);
/* Accepts null. */
VEXAR_API void OBLX_Clock_delete(OBLX_Clock *self);
/* Reads `self` into `out`. FALSE (reported) for a null argument or a failed read. */
VEXAR_API DDS_Boolean OBLX_Clock_getTime(OBLX_Clock *self, OBLX_Time_t *out);

/* Nanoseconds in `time`; the fraction is truncated to whole nanoseconds. */
VEXAR_API DDS_LongLong OBLX_Time_toNanoseconds(const OBLX_Time_t *time);
/* The time of `nanoseconds` (negative values too: the fraction stays
 * non-negative and the seconds round down). Converting back with
 * OBLX_Time_toNanoseconds gives the same value. Seconds beyond the 32-bit
 * range saturate. */
VEXAR_API OBLX_Time_t OBLX_Time_fromNanoseconds(DDS_LongLong nanoseconds);

VEXAR_END_DECLS

#endif
