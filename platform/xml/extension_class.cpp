// Extension classes: a tag name, two rules and the callbacks that take over
// the elements of that name.
#include "platform/xml/extension_class.hpp"

#include <new>

#include "platform/log/report.h"

namespace {

// Null (reported) when `self` is null.
const DDS_XMLExtensionClass *given(const DDS_XMLExtensionClass *self, const char *context) noexcept {
    if (self == nullptr) OBLX_Report_badParameter(context, "self");
    return self;
}

// The name of the first missing argument, or null when all are given.
const char *missingArgument(const char *tag_name, const void *on_start_tag, const void *on_end_tag,
                            const void *new_object, const void *delete_object, const void *save) noexcept {
    if (tag_name == nullptr || tag_name[0] == '\0') return "tag_name";
    if (on_start_tag == nullptr) return "on_start_tag";
    if (on_end_tag == nullptr) return "on_end_tag";
    if (new_object == nullptr) return "new_object";
    if (delete_object == nullptr) return "delete_object";
    return save == nullptr ? "save" : nullptr;
}

}  // namespace

extern "C" {

DDS_XMLExtensionClass *DDS_XMLExtensionClass_new(const char *tag_name, DDS_Boolean is_root,
                                                 DDS_Boolean allow_duplicates,
                                                 DDS_XMLExtensionClass_OnStartTagFunction on_start_tag,
                                                 DDS_XMLExtensionClass_OnEndTagFunction on_end_tag,
                                                 DDS_XMLExtensionClass_NewObjectFunction new_object,
                                                 DDS_XMLExtensionClass_DeleteObjectFunction delete_object,
                                                 DDS_XMLExtensionClass_SaveFunction save, void *user_data) {
    const char *context = "DDS_XMLExtensionClass_new";
    const auto asPointer = [](auto function) { return reinterpret_cast<const void *>(function); };
    if (const char *missing = missingArgument(tag_name, asPointer(on_start_tag), asPointer(on_end_tag),
                                              asPointer(new_object), asPointer(delete_object), asPointer(save))) {
        OBLX_Report_badParameter(context, missing);
        return nullptr;
    }
    try {
        return new DDS_XMLExtensionClass{tag_name,      is_root != 0, allow_duplicates != 0,
                                         on_start_tag,  on_end_tag,   new_object,
                                         delete_object, save,         user_data};
    } catch (const std::bad_alloc &) {
        OBLX_Report_allocationFailure(context, sizeof(DDS_XMLExtensionClass));
        return nullptr;
    }
}

void DDS_XMLExtensionClass_delete(DDS_XMLExtensionClass *self) { delete self; }

const char *DDS_XMLExtensionClass_get_tag_name(const DDS_XMLExtensionClass *self) {
    return given(self, "DDS_XMLExtensionClass_get_tag_name") != nullptr ? self->tagName.c_str() : nullptr;
}

void *DDS_XMLExtensionClass_get_user_data(const DDS_XMLExtensionClass *self) {
    return given(self, "DDS_XMLExtensionClass_get_user_data") != nullptr ? self->userData : nullptr;
}

DDS_Boolean DDS_XMLExtensionClass_is_root(const DDS_XMLExtensionClass *self) {
    return given(self, "DDS_XMLExtensionClass_is_root") != nullptr && self->isRoot;
}

DDS_Boolean DDS_XMLExtensionClass_allows_duplicates(const DDS_XMLExtensionClass *self) {
    return given(self, "DDS_XMLExtensionClass_allows_duplicates") != nullptr && self->allowDuplicates;
}

}  // extern "C"
