// The object record of the XML tree: filling and freeing it, and reading it.
#include <cstdlib>
#include <cstring>

#include "platform/log/report.h"
#include "platform/runtime/dds_string.h"
#include "platform/xml/object_tree.hpp"

namespace {

void freeAttributes(char **attributes) noexcept {
    if (attributes == nullptr) return;
    for (char **entry = attributes; *entry != nullptr; ++entry) DDS_String_free(*entry);
    std::free(attributes);
}

// A copy of `attributes` into `copy` (null when there are none). False,
// reported, when memory runs out or a name has no value; `copy` then holds
// what was copied, for the caller to free.
bool copyAttributes(char **&copy, const char **attributes, const char *context) noexcept {
    copy = nullptr;
    std::size_t count = 0;
    while (attributes != nullptr && attributes[count] != nullptr) ++count;
    if (count == 0) return true;
    if (count % 2 != 0) {
        OBLX_Report_badParameter(context, "attributes (a name without a value)");
        return false;
    }
    copy = static_cast<char **>(std::calloc(count + 1, sizeof(char *)));
    if (copy == nullptr) {
        OBLX_Report_allocationFailure(context, (count + 1) * sizeof(char *));
        return false;
    }
    for (std::size_t i = 0; i < count; ++i) {
        copy[i] = DDS_String_dup(attributes[i]);
        if (copy[i] == nullptr) {
            OBLX_Report_allocationFailure(context, std::strlen(attributes[i]) + 1);
            return false;
        }
    }
    return true;
}

// Null (reported) when `self` is null.
const DDS_XMLObject *given(const DDS_XMLObject *self, const char *context) noexcept {
    if (self == nullptr) OBLX_Report_badParameter(context, "self");
    return self;
}

}  // namespace

extern "C" {

DDS_Boolean DDS_XMLObject_initialize(DDS_XMLObject *self, DDS_XMLExtensionClass *extension_class, DDS_XMLObject *parent,
                                     const char *tag_name, const char **attributes) {
    const char *context = "DDS_XMLObject_initialize";
    if (self == nullptr || tag_name == nullptr) {
        OBLX_Report_badParameter(context, self == nullptr ? "self" : "tag_name");
        if (self != nullptr) *self = DDS_XMLObject{};
        return DDS_BOOLEAN_FALSE;
    }
    *self = DDS_XMLObject{};
    self->extension_class = extension_class;
    self->parent = parent;
    self->tag_name = DDS_String_dup(tag_name);
    if (self->tag_name == nullptr) OBLX_Report_allocationFailure(context, std::strlen(tag_name) + 1);
    if (self->tag_name == nullptr || !copyAttributes(self->attributes, attributes, context)) {
        DDS_XMLObject_finalize(self);
        *self = DDS_XMLObject{};
        return DDS_BOOLEAN_FALSE;
    }
    return DDS_BOOLEAN_TRUE;
}

void DDS_XMLObject_finalize(DDS_XMLObject *self) {
    if (self == nullptr) return;
    DDS_String_free(self->tag_name);
    freeAttributes(self->attributes);
    DDS_String_free(self->text);
    DDS_String_free(self->document_name);
    self->tag_name = nullptr;
    self->attributes = nullptr;
    self->text = nullptr;
    self->document_name = nullptr;
}

const char *DDS_XMLObject_get_tag_name(const DDS_XMLObject *self) {
    return given(self, "DDS_XMLObject_get_tag_name") != nullptr ? self->tag_name : nullptr;
}

DDS_XMLObject *DDS_XMLObject_get_parent(const DDS_XMLObject *self) {
    return given(self, "DDS_XMLObject_get_parent") != nullptr ? self->parent : nullptr;
}

DDS_XMLObject *DDS_XMLObject_get_first_child(const DDS_XMLObject *self) {
    return given(self, "DDS_XMLObject_get_first_child") != nullptr ? self->first_child : nullptr;
}

DDS_XMLObject *DDS_XMLObject_get_next_sibling(const DDS_XMLObject *self) {
    return given(self, "DDS_XMLObject_get_next_sibling") != nullptr ? self->next_sibling : nullptr;
}

DDS_XMLExtensionClass *DDS_XMLObject_get_extension_class(const DDS_XMLObject *self) {
    return given(self, "DDS_XMLObject_get_extension_class") != nullptr ? self->extension_class : nullptr;
}

const char *DDS_XMLObject_get_attribute(const DDS_XMLObject *self, const char *name) {
    if (given(self, "DDS_XMLObject_get_attribute") == nullptr) return nullptr;
    if (name == nullptr) {
        OBLX_Report_badParameter("DDS_XMLObject_get_attribute", "name");
        return nullptr;
    }
    return vexar::xml::findAttribute(self->attributes, name);
}

const char *DDS_XMLObject_get_text(const DDS_XMLObject *self) {
    return given(self, "DDS_XMLObject_get_text") != nullptr ? self->text : nullptr;
}

DDS_UnsignedLong DDS_XMLObject_get_line_number(const DDS_XMLObject *self) {
    return given(self, "DDS_XMLObject_get_line_number") != nullptr ? self->line_number : 0;
}

const char *DDS_XMLObject_get_document_name(const DDS_XMLObject *self) {
    return given(self, "DDS_XMLObject_get_document_name") != nullptr ? self->document_name : nullptr;
}

}  // extern "C"
