/* Log levels, their printed names, the library's one console writer and a
 * millisecond sleep. */
#ifndef VEXAR_VEXAR_VEXARUTILITY_H
#define VEXAR_VEXAR_VEXARUTILITY_H

#include "platform/dds_types.h"
#include "platform/export.h"

VEXAR_BEGIN_DECLS

/* Named log levels: a smaller number is more severe. Any integer is a valid
 * message level; only these have names. */
#define QTV_VX_LOG_LEVEL_FATAL 100
#define QTV_VX_LOG_LEVEL_SEVERE 200
#define QTV_VX_LOG_LEVEL_ERROR 300
#define QTV_VX_LOG_LEVEL_WARNING 400
#define QTV_VX_LOG_LEVEL_NOTICE 500
#define QTV_VX_LOG_LEVEL_INFO 600
#define QTV_VX_LOG_LEVEL_DEBUG 700
#define QTV_VX_LOG_LEVEL_TRACE 800

/* Room for the longest level name ("VX Warning") and its terminator. */
#define QTV_VX_LOG_LEVEL_NAME_SIZE 16

/* Prints one line on standard output: "<level name>: <source>: <message>",
 * with a newline added unless the message already ends in one. Echoed
 * messages use the empty source. The line reaches stdout in a single write
 * so that lines of concurrent threads never interleave.
 * Returns DDS_RETCODE_OK, DDS_RETCODE_BAD_PARAMETER for an empty message or
 * DDS_RETCODE_PRECONDITION_NOT_MET for a null argument (each with a
 * "VX Error: " line about the bad call). */
VEXAR_API DDS_Long QTV_VX_Vexar_printMessage(const char *message, const char *source, DDS_Long level);

/* Copies the name of `level` ("VX Fatal" .. "VX Trace", any other value
 * "VX Silent") into `buffer`, which holds at least
 * QTV_VX_LOG_LEVEL_NAME_SIZE bytes. Returns DDS_RETCODE_OK, or
 * DDS_RETCODE_BAD_PARAMETER for a null buffer. */
VEXAR_API DDS_Long QTV_VX_translateFromVXLogLevelToString(DDS_Long level, char *buffer);

/* Sleeps `milliseconds` / 1000 seconds plus `milliseconds` % 1000
 * nanoseconds: the remainder is taken as nanoseconds, not milliseconds, so
 * 1500 sleeps about one second. Existing callers are timed on that, so it
 * stays. A negative duration does not sleep. */
VEXAR_API void QTV_VX_Utility_sleep(DDS_Long milliseconds);

VEXAR_END_DECLS

#endif
