/* printf-style logging and the VX_LOG_<LEVEL> macros.
 *
 *   VX_LOG_WARNING("net", "retry %d of %d", attempt, attempts);
 *
 * The text is formatted on the caller's thread into a stack buffer of the
 * message's bound; nothing is formatted, and no argument of a macro is even
 * evaluated, when the level is filtered out. A longer text is cut at a UTF-8
 * character boundary and ends with QTV_VX_VEXAR_CUT_MARKER. */
#ifndef VEXAR_VEXAR_FORMATTEDLOGGING_H
#define VEXAR_VEXAR_FORMATTEDLOGGING_H

#include <stdarg.h>
#include <stddef.h>

#include "platform/dds_types.h"
#include "platform/export.h"
#include "vexar/Vexar.h"

VEXAR_BEGIN_DECLS

/* The end of a text that was cut to fit QTV_VX_LOG_MESSAGE_MESSAGE_MAX_LENGTH. */
#define QTV_VX_VEXAR_CUT_MARKER "[...]"

/* How a call's source location ends a text, when the C++ API's settings ask
 * for it: "<text> [@<file>:<line>]". `vexar tail` and `vexar query` show it in
 * a column of its own. */
#define QTV_VX_VEXAR_LOCATION_OPEN " [@"
#define QTV_VX_VEXAR_LOCATION_CLOSE "]"

#if defined(__GNUC__)
#define QTV_VX_PRINTF_FORMAT(formatIndex, firstArgument) __attribute__((format(printf, formatIndex, firstArgument)))
#else
#define QTV_VX_PRINTF_FORMAT(formatIndex, firstArgument)
#endif

/* `format` and its arguments as vsnprintf formats them, logged like
 * QTV_VX_Vexar_logMessageWithLevelCategory. A filtered level is refused
 * before anything is formatted. A null format or category is printed as an
 * error, a formatting error too ("Unable to format message"). */
VEXAR_API void QTV_VX_Vexar_logf(QTV_VX_Vexar *self, DDS_Long level, const char *category, const char *format, ...)
    QTV_VX_PRINTF_FORMAT(4, 5);
VEXAR_API void QTV_VX_Vexar_vlogf(QTV_VX_Vexar *self, DDS_Long level, const char *category, const char *format,
                                  va_list arguments) QTV_VX_PRINTF_FORMAT(4, 0);

/* 1 when a message at `level` may be more than refused: the running logger's
 * filter lets it through, echo is on, or no logger runs yet (the logging
 * call then creates it). 0 when the logging call would refuse it; the call
 * is then counted as refused, as the logging call would have counted it.
 * Costs what a filtered logging call costs. */
VEXAR_API DDS_Long QTV_VX_Vexar_passesLevelGate(DDS_Long level);

/* Ends a text formatted into `buffer` (`size` bytes, more than the marker)
 * of which the formatter wanted `length` bytes and wrote at most size - 1:
 * a text that fits is terminated; a longer one is cut before the UTF-8
 * character that does not fit with the marker, and ends with it. Returns
 * the length of the result. */
VEXAR_API size_t QTV_VX_Vexar_endFormattedText(char *buffer, size_t size, size_t length);

/* The singleton's calls at one level, in a category: arguments are
 * evaluated and formatted only when the level passes. The format is part of
 * the variable arguments, so a call without arguments is valid C11. */
#define VX_LOG_AT(level, category, ...)                                                       \
    do {                                                                                      \
        const DDS_Long vxLevel_ = (level);                                                    \
        if (QTV_VX_Vexar_passesLevelGate(vxLevel_)) {                                         \
            QTV_VX_Vexar_logf(QTV_VX_Vexar_getInstance(), vxLevel_, (category), __VA_ARGS__); \
        }                                                                                     \
    } while (0)
#define VX_LOG_FATAL(category, ...) VX_LOG_AT(QTV_VX_LOG_LEVEL_FATAL, category, __VA_ARGS__)
#define VX_LOG_SEVERE(category, ...) VX_LOG_AT(QTV_VX_LOG_LEVEL_SEVERE, category, __VA_ARGS__)
#define VX_LOG_ERROR(category, ...) VX_LOG_AT(QTV_VX_LOG_LEVEL_ERROR, category, __VA_ARGS__)
#define VX_LOG_WARNING(category, ...) VX_LOG_AT(QTV_VX_LOG_LEVEL_WARNING, category, __VA_ARGS__)
#define VX_LOG_NOTICE(category, ...) VX_LOG_AT(QTV_VX_LOG_LEVEL_NOTICE, category, __VA_ARGS__)
#define VX_LOG_INFO(category, ...) VX_LOG_AT(QTV_VX_LOG_LEVEL_INFO, category, __VA_ARGS__)
#define VX_LOG_DEBUG(category, ...) VX_LOG_AT(QTV_VX_LOG_LEVEL_DEBUG, category, __VA_ARGS__)
#define VX_LOG_TRACE(category, ...) VX_LOG_AT(QTV_VX_LOG_LEVEL_TRACE, category, __VA_ARGS__)

VEXAR_END_DECLS

#endif
