// Read accessors of type codes and the built-in codes.
#include "platform/types/typecode.h"

namespace {

const DDS_TypeCodeMember *memberAt(const DDS_TypeCode *self, DDS_UnsignedLong index) noexcept {
    if (self == nullptr || index >= self->member_count) {
        return nullptr;
    }
    return &self->members[index];
}

// Reads one field of a member, or `fallback` when there is no such member.
template <typename Field>
Field memberField(const DDS_TypeCode *self, DDS_UnsignedLong index, Field DDS_TypeCodeMember::*field,
                  Field fallback) noexcept {
    const DDS_TypeCodeMember *member = memberAt(self, index);
    return member == nullptr ? fallback : member->*field;
}

constexpr DDS_TypeCode primitiveCode(DDS_TCKind kind, const char *name, size_t size) noexcept {
    return {kind, name, 0, nullptr, 0, 0, nullptr, nullptr, DDS_TYPECODE_NO_DEFAULT_INDEX, size, nullptr};
}

}  // namespace

extern "C" {

const DDS_TypeCode DDS_g_tc_long = primitiveCode(DDS_TK_LONG, "long", sizeof(DDS_Long));
const DDS_TypeCode DDS_g_tc_ulonglong =
    primitiveCode(DDS_TK_ULONGLONG, "unsigned long long", sizeof(DDS_UnsignedLongLong));

DDS_TCKind DDS_TypeCode_kind(const DDS_TypeCode *self) {
    return self == nullptr ? DDS_TK_NULL : static_cast<DDS_TCKind>(self->kind & DDS_TK_KIND_MASK);
}

DDS_Long DDS_TypeCode_kind_with_extensibility(const DDS_TypeCode *self) {
    return self == nullptr ? DDS_TK_NULL : self->kind;
}

DDS_Boolean DDS_TypeCode_is_mutable(const DDS_TypeCode *self) {
    return self != nullptr && (self->kind & DDS_TK_MUTABLE_EXTENSIBILITY) != 0;
}

const char *DDS_TypeCode_name(const DDS_TypeCode *self) { return self == nullptr ? nullptr : self->name; }

DDS_UnsignedLong DDS_TypeCode_member_count(const DDS_TypeCode *self) {
    return self == nullptr ? 0 : self->member_count;
}

const DDS_TypeCodeMember *DDS_TypeCode_member(const DDS_TypeCode *self, DDS_UnsignedLong index) {
    return memberAt(self, index);
}

const char *DDS_TypeCode_member_name(const DDS_TypeCode *self, DDS_UnsignedLong index) {
    return memberField<const char *>(self, index, &DDS_TypeCodeMember::name, nullptr);
}

DDS_Long DDS_TypeCode_member_id(const DDS_TypeCode *self, DDS_UnsignedLong index) {
    return memberField<DDS_Long>(self, index, &DDS_TypeCodeMember::id, -1);
}

const DDS_TypeCode *DDS_TypeCode_member_type(const DDS_TypeCode *self, DDS_UnsignedLong index) {
    return memberField<const DDS_TypeCode *>(self, index, &DDS_TypeCodeMember::type, nullptr);
}

DDS_TypeCodeMemberFlags DDS_TypeCode_member_flags(const DDS_TypeCode *self, DDS_UnsignedLong index) {
    return memberField<DDS_TypeCodeMemberFlags>(self, index, &DDS_TypeCodeMember::flags, DDS_TYPECODE_NONKEY_MEMBER);
}

DDS_Boolean DDS_TypeCode_is_member_key(const DDS_TypeCode *self, DDS_UnsignedLong index) {
    return DDS_TypeCode_member_flags(self, index) == DDS_TYPECODE_KEY_MEMBER;
}

DDS_Visibility DDS_TypeCode_member_visibility(const DDS_TypeCode *self, DDS_UnsignedLong index) {
    return memberField<DDS_Visibility>(self, index, &DDS_TypeCodeMember::visibility, DDS_PRIVATE_MEMBER);
}

DDS_Long DDS_TypeCode_member_label(const DDS_TypeCode *self, DDS_UnsignedLong index) {
    return memberField<DDS_Long>(self, index, &DDS_TypeCodeMember::label, 0);
}

size_t DDS_TypeCode_member_offset(const DDS_TypeCode *self, DDS_UnsignedLong index) {
    return memberField<size_t>(self, index, &DDS_TypeCodeMember::offset, 0);
}

DDS_Long DDS_TypeCode_find_member_by_label(const DDS_TypeCode *self, DDS_Long discriminator) {
    for (DDS_UnsignedLong i = 0; i < DDS_TypeCode_member_count(self); ++i) {
        if (self->members[i].label == discriminator) {
            return static_cast<DDS_Long>(i);
        }
    }
    return DDS_TypeCode_default_index(self);
}

DDS_UnsignedLong DDS_TypeCode_length(const DDS_TypeCode *self) { return self == nullptr ? 0 : self->length; }

DDS_UnsignedLong DDS_TypeCode_array_dimension(const DDS_TypeCode *self) {
    return self == nullptr ? 0 : self->dimension;
}

const DDS_TypeCode *DDS_TypeCode_content_type(const DDS_TypeCode *self) {
    return self == nullptr ? nullptr : self->content_type;
}

const DDS_TypeCode *DDS_TypeCode_discriminator_type(const DDS_TypeCode *self) {
    return self == nullptr ? nullptr : self->discriminator_type;
}

DDS_Long DDS_TypeCode_default_index(const DDS_TypeCode *self) {
    return self == nullptr ? DDS_TYPECODE_NO_DEFAULT_INDEX : self->default_index;
}

DDS_Long DDS_TypeCode_default_discriminator(const DDS_TypeCode *self) {
    DDS_Long index = DDS_TypeCode_default_index(self);
    return DDS_TypeCode_member_label(self, index < 0 ? 0 : static_cast<DDS_UnsignedLong>(index));
}

size_t DDS_TypeCode_sample_size(const DDS_TypeCode *self) { return self == nullptr ? 0 : self->sample_size; }

}  // extern "C"
