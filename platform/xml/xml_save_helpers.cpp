// The save context and the helpers through which save callbacks write
// elements back.
#include <charconv>
#include <cstdarg>
#include <cstdlib>
#include <new>

#include "platform/log/logger.hpp"
#include "platform/log/report.h"
#include "platform/xml/save_output.hpp"

using vexar::xml::write;

namespace {

// Null (reported) when `context` is null.
DDS_XMLSaveContext *given(DDS_XMLSaveContext *context, const char *operation) noexcept {
    if (context == nullptr) OBLX_Report_badParameter(operation, "context");
    return context;
}

bool givenTag(const char *tag_name, const char *operation) noexcept {
    if (tag_name == nullptr) OBLX_Report_badParameter(operation, "tag_name");
    return tag_name != nullptr;
}

// One line "<tag>text</tag>" at the context's depth, the text escaped.
void writeElement(DDS_XMLSaveContext &context, const char *tag_name, std::string_view text) noexcept {
    vexar::xml::writeIndent(context);
    write(context, "<");
    write(context, tag_name);
    write(context, ">");
    vexar::xml::writeEscaped(context, text, vexar::xml::Escape::text);
    write(context, "</");
    write(context, tag_name);
    write(context, ">\n");
}

DDS_Long elementAt(const DDS_LongSeq &sequence, DDS_UnsignedLong index) noexcept {
    return sequence._discontiguous_buffer != nullptr ? *sequence._discontiguous_buffer[index]
                                                     : sequence._contiguous_buffer[index];
}

}  // namespace

extern "C" {

DDS_Boolean DDS_XMLSaveContext_initialize(DDS_XMLSaveContext *self, FILE *file) {
    if (self == nullptr) {
        OBLX_Report_badParameter("DDS_XMLSaveContext_initialize", "self");
        return DDS_BOOLEAN_FALSE;
    }
    *self = DDS_XMLSaveContext{file, nullptr, 0, 0, 0, 4, 0};
    return DDS_BOOLEAN_TRUE;
}

void DDS_XMLSaveContext_finalize(DDS_XMLSaveContext *self) {
    if (self == nullptr) return;
    std::free(self->buffer);
    *self = DDS_XMLSaveContext{};
}

const char *DDS_XMLSaveContext_get_string(const DDS_XMLSaveContext *self) {
    return self != nullptr && self->buffer != nullptr ? self->buffer : "";
}

void DDS_XMLHelper_save_freeform(DDS_XMLSaveContext *context, const char *format, ...) {
    if (given(context, "DDS_XMLHelper_save_freeform") == nullptr) return;
    va_list args;
    va_start(args, format);
    try {
        write(*context, vexar::log::formatText(format, args));
    } catch (const std::bad_alloc &) {
        OBLX_Report_failure("DDS_XMLHelper_save_freeform", "out of memory");
        context->error = 1;
    }
    va_end(args);
}

void DDS_XMLHelper_save_indent(DDS_XMLSaveContext *context) {
    if (given(context, "DDS_XMLHelper_save_indent") != nullptr) vexar::xml::writeIndent(*context);
}

void DDS_XMLHelper_save_tag(const char *tag_name, DDS_XMLSaveTagKind kind, DDS_XMLSaveContext *context) {
    const char *operation = "DDS_XMLHelper_save_tag";
    if (given(context, operation) == nullptr || !givenTag(tag_name, operation)) return;
    if (kind != DDS_XML_SAVE_TAG_OPEN && kind != DDS_XML_SAVE_TAG_CLOSE) {
        OBLX_Report_badParameter(operation, "kind");
        return;
    }
    if (kind == DDS_XML_SAVE_TAG_CLOSE) --context->depth;
    vexar::xml::writeIndent(*context);
    write(*context, kind == DDS_XML_SAVE_TAG_OPEN ? "<" : "</");
    write(*context, tag_name);
    write(*context, ">\n");
    if (kind == DDS_XML_SAVE_TAG_OPEN) ++context->depth;
}

void DDS_XMLHelper_save_long(const char *tag_name, DDS_Long value, DDS_XMLSaveContext *context) {
    if (given(context, "DDS_XMLHelper_save_long") == nullptr || !givenTag(tag_name, "DDS_XMLHelper_save_long")) return;
    char digits[16];
    const auto written = std::to_chars(digits, digits + sizeof digits, value);
    writeElement(*context, tag_name, std::string_view(digits, static_cast<std::size_t>(written.ptr - digits)));
}

void DDS_XMLHelper_save_string(const char *tag_name, const char *value, DDS_XMLSaveContext *context) {
    const char *operation = "DDS_XMLHelper_save_string";
    if (given(context, operation) == nullptr || !givenTag(tag_name, operation) || value == nullptr) return;
    writeElement(*context, tag_name, value);
}

void DDS_XMLHelper_save_long_seq(const char *tag_name, const DDS_LongSeq *value, DDS_XMLSaveContext *context) {
    const char *operation = "DDS_XMLHelper_save_long_seq";
    if (given(context, operation) == nullptr || !givenTag(tag_name, operation)) return;
    if (value == nullptr || value->_length == 0) return;
    DDS_XMLHelper_save_tag(tag_name, DDS_XML_SAVE_TAG_OPEN, context);
    for (DDS_UnsignedLong i = 0; i < value->_length; ++i)
        DDS_XMLHelper_save_long("element", elementAt(*value, i), context);
    DDS_XMLHelper_save_tag(tag_name, DDS_XML_SAVE_TAG_CLOSE, context);
}

}  // extern "C"
