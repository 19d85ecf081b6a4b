// Errors found in XML documents, reported through the middleware logger as
// "FILE:LINE: message" (ERROR, category API).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/dds_types.h"

namespace vexar::xml {

struct XmlError {
    DDS_UnsignedLong line;  // 0 when the error is about the whole document
    std::string message;
};

// One line under `operation`: "FILE:LINE: text", "FILE: text" for line 0,
// just the text when `document` is empty.
void reportXmlError(const char *operation, std::string_view document, DDS_UnsignedLong line,
                    std::string_view text) noexcept;

void reportXmlErrors(const char *operation, std::string_view document, const std::vector<XmlError> &errors) noexcept;

}  // namespace vexar::xml
