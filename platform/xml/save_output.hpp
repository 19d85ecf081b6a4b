// Writing into a save context: the one place that tells a FILE from a
// growing string.
#pragma once

#include <string_view>

#include "platform/xml/xml_helper.h"

namespace vexar::xml {

// Appends `text`. A failed write sets the context's error flag (reported
// when memory runs out); once the flag is set, nothing more is written.
void write(DDS_XMLSaveContext &context, std::string_view text) noexcept;

enum class Escape {
    text,
    attribute,  // also tabs and line breaks, which a parser turns into spaces in attribute values
};
// `text` with the characters that mean something in XML escaped.
void writeEscaped(DDS_XMLSaveContext &context, std::string_view text, Escape escape) noexcept;

// The indentation of the context's depth.
void writeIndent(DDS_XMLSaveContext &context) noexcept;

}  // namespace vexar::xml
