/* Misuse reports of the platform layer. Each report is one line raised
 * through the middleware logger at ERROR in category API (memory-allocated
 * notes at STATUS_LOCAL), so the logger's verbosity gates it and its output
 * device receives it. `context` is the reporting operation's full name. */
#ifndef VEXAR_PLATFORM_REPORT_H
#define VEXAR_PLATFORM_REPORT_H

#include <stddef.h>

#include "platform/export.h"

VEXAR_BEGIN_DECLS

/* A required argument was null or otherwise unusable; `argument` names it ("self"). */
VEXAR_API void OBLX_Report_badParameter(const char *context, const char *argument);
/* An internal consistency check failed; `text` says which ("index out of bounds"). */
VEXAR_API void OBLX_Report_assertionFailure(const char *context, const char *text);
/* Not enough room: `available` against `requested`. */
VEXAR_API void OBLX_Report_insufficientSpace(const char *context, long long available, long long requested);
/* A heap allocation of `bytes` bytes failed. */
VEXAR_API void OBLX_Report_allocationFailure(const char *context, size_t bytes);
/* The operation needs a sequence that owns its buffer. */
VEXAR_API void OBLX_Report_sequenceNotOwner(const char *context);
/* Setting `what` failed. */
VEXAR_API void OBLX_Report_setFailure(const char *context, const char *what);
/* Getting `what` failed. */
VEXAR_API void OBLX_Report_getFailure(const char *context, const char *what);
/* A generic failure of `what`. */
VEXAR_API void OBLX_Report_failure(const char *context, const char *what);
/* An operation is not available on this middleware. */
VEXAR_API void OBLX_Report_unsupported(const char *context, const char *what);
/* Note at STATUS_LOCAL: memory was (re)allocated from `from` to `to` elements. */
VEXAR_API void OBLX_Report_memoryAllocated(const char *context, long long from, long long to);

VEXAR_END_DECLS

#endif
