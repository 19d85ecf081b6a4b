// Element text: trimming and booleans.
#include "platform/xml/xml_text.hpp"

#include <cstring>
#include <new>
#include <string>

#include "platform/log/report.h"
#include "platform/runtime/text.hpp"
#include "platform/xml/parser.hpp"
#include "platform/xml/xml_helper.h"

namespace vexar::xml {

std::string_view trimmed(std::string_view text) noexcept {
    constexpr std::string_view kWhiteSpace = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kWhiteSpace);
    if (first == std::string_view::npos) return text.substr(text.size());
    return text.substr(first, text.find_last_not_of(kWhiteSpace) - first + 1);
}

std::optional<bool> parseBoolean(std::string_view text) noexcept {
    static constexpr struct {
        std::string_view spelling;
        bool value;
    } kSpellings[] = {{"true", true}, {"false", false}, {"1", true}, {"0", false}, {"yes", true}, {"no", false}};
    text = trimmed(text);
    for (const auto &spelling : kSpellings) {
        if (runtime::equalsIgnoringCase(text, spelling.spelling)) return spelling.value;
    }
    return std::nullopt;
}

}  // namespace vexar::xml

extern "C" {

DDS_Boolean DDS_XMLHelper_str_to_boolean(DDS_Boolean *value, const char *text, DDS_XMLContext *context) {
    const char *operation = "DDS_XMLHelper_str_to_boolean";
    if (value == nullptr) {
        OBLX_Report_badParameter(operation, "value");
        if (context != nullptr) context->error = 1;
        return DDS_BOOLEAN_FALSE;
    }
    *value = DDS_BOOLEAN_FALSE;
    const std::optional<bool> parsed = text != nullptr ? vexar::xml::parseBoolean(text) : std::nullopt;
    if (parsed) {
        *value = *parsed ? DDS_BOOLEAN_TRUE : DDS_BOOLEAN_FALSE;
        return DDS_BOOLEAN_TRUE;
    }
    try {
        const std::string shown = text != nullptr ? "\"" + std::string(text) + "\"" : "(null)";
        vexar::xml::refuse(context, operation, "malformed boolean " + shown + " (expected true/false, 1/0 or yes/no)");
    } catch (const std::bad_alloc &) {
        if (context != nullptr) context->error = 1;
        OBLX_Report_failure(operation, "out of memory");
    }
    return DDS_BOOLEAN_FALSE;
}

DDS_Boolean DDS_XMLHelper_trim(char *text) {
    if (text == nullptr) {
        OBLX_Report_badParameter("DDS_XMLHelper_trim", "text");
        return DDS_BOOLEAN_FALSE;
    }
    const std::string_view kept = vexar::xml::trimmed(text);
    std::memmove(text, kept.data(), kept.size());
    text[kept.size()] = '\0';
    return DDS_BOOLEAN_TRUE;
}

}  // extern "C"
