#include "config/parse_errors.hpp"

#include "vexar/report_line.hpp"

namespace vexar::xmlconfig {

bool ParseErrorReporter::fail(const char *text) const noexcept {
    if (errorFunction != nullptr) {
        errorFunction(text, reportingName, DDS_XMLContext_get_current_line_number(context));
    } else {
        vexar::reportError(text, reportingName);
    }
    if (context != nullptr) context->error = 1;
    return false;
}

}  // namespace vexar::xmlconfig
