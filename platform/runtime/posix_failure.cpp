#include "platform/runtime/posix_failure.hpp"

#include <cstdio>
#include <cstring>

#include "platform/log/report.h"

namespace vexar::runtime {

void reportPosixFailure(const char *context, const char *call, int error) noexcept {
    char reason[128];
    // The GNU strerror_r returns the text, which need not be in `reason`.
    const char *text = strerror_r(error, reason, sizeof reason);
    char what[192];
    std::snprintf(what, sizeof what, "%s: %s", call, text);
    OBLX_Report_failure(context, what);
}

bool posixCallSucceeded(int error, const char *context, const char *call) noexcept {
    if (error == 0) return true;
    reportPosixFailure(context, call, error);
    return false;
}

}  // namespace vexar::runtime
