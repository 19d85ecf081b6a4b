// The generic walker behind every type's sample functions.
#include "platform/types/sample_ops.hpp"

#include <cstring>

#include "platform/runtime/dds_string.h"

namespace vexar::types::sample {
namespace {

// Where one member, array element or union discriminator lives.
void *at(void *sample, size_t offset) noexcept { return static_cast<char *>(sample) + offset; }
const void *at(const void *sample, size_t offset) noexcept { return static_cast<const char *>(sample) + offset; }

char *&stringAt(void *sample) noexcept { return *static_cast<char **>(sample); }
char *stringAt(const void *sample) noexcept { return *static_cast<char *const *>(sample); }

// Enumerations and discriminators are 32-bit values; reading them as such
// keeps values outside the enumerators (a discriminator of 7) well defined.
DDS_Long readLong(const void *where) noexcept {
    DDS_Long value;
    std::memcpy(&value, where, sizeof value);
    return value;
}

void writeLong(void *where, DDS_Long value) noexcept { std::memcpy(where, &value, sizeof value); }

DDS_Long toLong(DDS_UnsignedLong value) noexcept { return static_cast<DDS_Long>(value); }

// Calls visit(memberType, offset) for each member of a struct, each branch
// of a union or each element of an array, stopping when it returns false.
template <typename Visit>
bool forEachMember(const DDS_TypeCode &type, Visit visit) noexcept {
    for (DDS_UnsignedLong i = 0; i < type.member_count; ++i) {
        if (!visit(*type.members[i].type, type.members[i].offset)) {
            return false;
        }
    }
    return true;
}

template <typename Visit>
bool forEachElement(const DDS_TypeCode &array, Visit visit) noexcept {
    const DDS_TypeCode &element = *array.content_type;
    for (DDS_UnsignedLong i = 0; i < array.dimension; ++i) {
        if (!visit(element, i * element.sample_size)) {
            return false;
        }
    }
    return true;
}

// The union branch that the discriminator at the start of `sample` selects.
const DDS_TypeCodeMember *activeBranch(const DDS_TypeCode &type, const void *sample) noexcept {
    DDS_Long index = DDS_TypeCode_find_member_by_label(&type, readLong(sample));
    return index < 0 ? nullptr : &type.members[index];
}

bool initializeString(const DDS_TypeCode &type, char *&string, const DDS_TypeAllocationParams_t &params) noexcept {
    if (params.allocate_memory) {
        string = DDS_String_alloc(type.length);
        return string != nullptr;
    }
    if (string != nullptr) {
        string[0] = '\0';
    }
    return true;
}

// A sequence member is reserved at its bound with the caller's parameters
// for its elements; without memory it is only emptied, keeping its buffer.
bool initializeSequence(const DDS_TypeCode &type, void *sequence, const DDS_TypeAllocationParams_t &params) noexcept {
    const DDS_TypeCodeSequenceOps &ops = *type.sequence_ops;
    if (!params.allocate_memory) {
        return ops.set_length(sequence, 0);
    }
    return ops.initialize(sequence) && ops.set_element_allocation_params(sequence, &params) &&
           ops.set_maximum(sequence, toLong(type.length));
}

DDS_Long firstEnumerator(const DDS_TypeCode &type) noexcept {
    return type.member_count == 0 ? 0 : type.members[0].label;
}

}  // namespace

bool initialize(const DDS_TypeCode &type, void *sample, const DDS_TypeAllocationParams_t &params) noexcept {
    auto initializeMember = [sample, &params](const DDS_TypeCode &memberType, size_t offset) {
        return initialize(memberType, at(sample, offset), params);
    };
    switch (DDS_TypeCode_kind(&type)) {
    case DDS_TK_STRUCT:
        return forEachMember(type, initializeMember);
    case DDS_TK_UNION:
        writeLong(sample, DDS_TypeCode_default_discriminator(&type));
        return forEachMember(type, initializeMember);
    case DDS_TK_ARRAY:
        return forEachElement(type, initializeMember);
    case DDS_TK_SEQUENCE:
        return initializeSequence(type, sample, params);
    case DDS_TK_STRING:
        return initializeString(type, stringAt(sample), params);
    case DDS_TK_ENUM:
        writeLong(sample, firstEnumerator(type));
        return true;
    default:
        std::memset(sample, 0, type.sample_size);
        return true;
    }
}

void finalize(const DDS_TypeCode &type, void *sample, const DDS_TypeDeallocationParams_t &params) noexcept {
    auto finalizeMember = [sample, &params](const DDS_TypeCode &memberType, size_t offset) {
        finalize(memberType, at(sample, offset), params);
        return true;
    };
    switch (DDS_TypeCode_kind(&type)) {
    case DDS_TK_STRUCT:
    case DDS_TK_UNION:  // every branch, whatever the discriminator
        forEachMember(type, finalizeMember);
        break;
    case DDS_TK_ARRAY:
        forEachElement(type, finalizeMember);
        break;
    case DDS_TK_SEQUENCE:
        type.sequence_ops->set_element_deallocation_params(sample, &params);
        type.sequence_ops->finalize(sample);
        break;
    case DDS_TK_STRING:
        DDS_String_free(stringAt(sample));
        stringAt(sample) = nullptr;
        break;
    default:
        break;
    }
}

void finalizeOptionalMembers(const DDS_TypeCode &type, void *sample,
                             const DDS_TypeDeallocationParams_t &params) noexcept {
    auto walkMember = [sample, &params](const DDS_TypeCode &memberType, size_t offset) {
        finalizeOptionalMembers(memberType, at(sample, offset), params);
        return true;
    };
    switch (DDS_TypeCode_kind(&type)) {
    case DDS_TK_STRUCT:
        forEachMember(type, walkMember);
        break;
    case DDS_TK_UNION:
        if (const DDS_TypeCodeMember *branch = activeBranch(type, sample)) {
            walkMember(*branch->type, branch->offset);
        }
        break;
    case DDS_TK_ARRAY:
        forEachElement(type, walkMember);
        break;
    case DDS_TK_SEQUENCE:
        for (DDS_Long i = 0, n = type.sequence_ops->get_length(sample); i < n; ++i) {
            finalizeOptionalMembers(*type.content_type, type.sequence_ops->get_reference(sample, i), params);
        }
        break;
    default:
        break;
    }
}

bool copy(const DDS_TypeCode &type, void *dst, const void *src) noexcept {
    auto copyMember = [dst, src](const DDS_TypeCode &memberType, size_t offset) {
        return copy(memberType, at(dst, offset), at(src, offset));
    };
    switch (DDS_TypeCode_kind(&type)) {
    case DDS_TK_STRUCT:
        return forEachMember(type, copyMember);
    case DDS_TK_UNION: {
        writeLong(dst, readLong(src));
        const DDS_TypeCodeMember *branch = activeBranch(type, src);
        return branch == nullptr || copyMember(*branch->type, branch->offset);
    }
    case DDS_TK_ARRAY:
        return forEachElement(type, copyMember);
    case DDS_TK_SEQUENCE:
        return type.sequence_ops->copy(dst, src);
    case DDS_TK_STRING:
        return DDS_String_copy_bounded(stringAt(dst), stringAt(src), type.length + 1) != nullptr;
    default:
        std::memcpy(dst, src, type.sample_size);
        return true;
    }
}

}  // namespace vexar::types::sample
