// How the element's converters and callbacks report a value that they
// cannot use: to the application's parse-error function, with the line
// being parsed, marking the parse as failed.
#pragma once

#include "config/XMLConfig.h"

namespace vexar::xmlconfig {

struct ParseErrorReporter {
    QTV_VX_XMLConfig_ParseErrorLogFunction errorFunction;  // null: the text is printed as an error line
    DDS_XMLContext *context;                               // null: line 0, no flag to set
    const char *reportingName;

    // Reports `text` under `reportingName` with the context's current line,
    // then sets the context's error flag. Returns false, for the converters'
    // results.
    bool fail(const char *text) const noexcept;
};

}  // namespace vexar::xmlconfig
