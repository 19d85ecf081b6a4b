// Misuse reports: one line each through the middleware logger, category API.
#include "platform/log/report.h"

#include <cstdarg>

#include "platform/log/logger.hpp"

namespace {

const char *orNull(const char *text) noexcept { return text != nullptr ? text : "(null)"; }

[[gnu::format(printf, 2, 3)]] void raiseError(const char *context, const char *format, ...) noexcept {
    va_list args;
    va_start(args, format);
    vexar::log::vlog(OBLX_CONFIG_LOG_CATEGORY_API, OBLX_CONFIG_LOG_LEVEL_ERROR, context, nullptr, 0, format, args);
    va_end(args);
}

[[gnu::format(printf, 2, 3)]] void raiseNote(const char *context, const char *format, ...) noexcept {
    va_list args;
    va_start(args, format);
    vexar::log::vlog(OBLX_CONFIG_LOG_CATEGORY_API, OBLX_CONFIG_LOG_LEVEL_STATUS_LOCAL, context, nullptr, 0, format,
                     args);
    va_end(args);
}

}  // namespace

extern "C" {

void OBLX_Report_badParameter(const char *context, const char *argument) {
    raiseError(context, "bad parameter: %s", orNull(argument));
}

void OBLX_Report_assertionFailure(const char *context, const char *text) {
    raiseError(context, "assertion failure: %s", orNull(text));
}

void OBLX_Report_insufficientSpace(const char *context, long long available, long long requested) {
    raiseError(context, "insufficient space: %lld available, %lld requested", available, requested);
}

void OBLX_Report_allocationFailure(const char *context, size_t bytes) {
    raiseError(context, "memory allocation of %zu bytes failed", bytes);
}

void OBLX_Report_sequenceNotOwner(const char *context) {
    raiseError(context, "%s", "sequence is not the owner of its buffer");
}

void OBLX_Report_setFailure(const char *context, const char *what) {
    raiseError(context, "set failure: %s", orNull(what));
}

void OBLX_Report_getFailure(const char *context, const char *what) {
    raiseError(context, "get failure: %s", orNull(what));
}

void OBLX_Report_failure(const char *context, const char *what) { raiseError(context, "failure: %s", orNull(what)); }

void OBLX_Report_unsupported(const char *context, const char *what) {
    raiseError(context, "not supported by this middleware: %s", orNull(what));
}

void OBLX_Report_memoryAllocated(const char *context, long long from, long long to) {
    raiseNote(context, "memory allocated: from %lld to %lld elements", from, to);
}

}  // extern "C"
