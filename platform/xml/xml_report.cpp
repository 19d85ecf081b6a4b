#include "platform/xml/xml_report.hpp"

#include "platform/log/logger.h"

namespace vexar::xml {

void reportXmlError(const char *operation, std::string_view document, DDS_UnsignedLong line,
                    std::string_view text) noexcept {
    const auto category = OBLX_CONFIG_LOG_CATEGORY_API;
    const auto level = OBLX_CONFIG_LOG_LEVEL_ERROR;
    const int documentLength = static_cast<int>(document.size());
    const int textLength = static_cast<int>(text.size());
    if (document.empty()) {
        OBLX_Config_Logger_log(category, level, operation, nullptr, 0, "%.*s", textLength, text.data());
    } else if (line == 0) {
        OBLX_Config_Logger_log(category, level, operation, nullptr, 0, "%.*s: %.*s", documentLength, document.data(),
                               textLength, text.data());
    } else {
        OBLX_Config_Logger_log(category, level, operation, nullptr, 0, "%.*s:%lu: %.*s", documentLength,
                               document.data(), static_cast<unsigned long>(line), textLength, text.data());
    }
}

void reportXmlErrors(const char *operation, std::string_view document, const std::vector<XmlError> &errors) noexcept {
    for (const XmlError &error : errors) reportXmlError(operation, document, error.line, error.message);
}

}  // namespace vexar::xml
