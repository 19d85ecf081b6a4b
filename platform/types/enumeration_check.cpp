// Enumeration values checked against their enumerators, walking only the
// members whose types hold an enumeration.
#include "platform/types/enumeration_check.hpp"

#include <cstring>

namespace vexar::types {
namespace {

DDS_TCKind kindOf(const DDS_TypeCode &type) noexcept { return static_cast<DDS_TCKind>(type.kind & DDS_TK_KIND_MASK); }

DDS_Long longAt(const unsigned char *value) noexcept {
    DDS_Long stored;
    std::memcpy(&stored, value, sizeof stored);
    return stored;
}

bool isEnumerator(const DDS_TypeCode &enumeration, DDS_Long value) noexcept {
    for (DDS_UnsignedLong i = 0; i < enumeration.member_count; ++i) {
        if (enumeration.members[i].label == value) return true;
    }
    return false;
}

// The union member that `discriminator` selects, or null.
const DDS_TypeCodeMember *selectedBranch(const DDS_TypeCode &type, DDS_Long discriminator) noexcept {
    for (DDS_UnsignedLong i = 0; i < type.member_count; ++i) {
        if (type.members[i].label == discriminator) return &type.members[i];
    }
    return type.default_index >= 0 ? &type.members[type.default_index] : nullptr;
}

}  // namespace

EnumerationCheck::EnumerationCheck(const DDS_TypeCode &type) : type_(&type), needed_(learn(&type)) {}

bool EnumerationCheck::learn(const DDS_TypeCode *type) {
    if (type == nullptr) return false;
    auto known = holdsEnumeration_.find(type);
    if (known != holdsEnumeration_.end()) return known->second;
    holdsEnumeration_[type] = false;  // a type that refers to itself adds nothing
    bool holds = kindOf(*type) == DDS_TK_ENUM;
    holds = learn(type->content_type) || holds;
    holds = learn(type->discriminator_type) || holds;
    if (kindOf(*type) != DDS_TK_ENUM) {
        for (DDS_UnsignedLong i = 0; i < type->member_count; ++i) holds = learn(type->members[i].type) || holds;
    }
    holdsEnumeration_[type] = holds;
    return holds;
}

bool EnumerationCheck::holdsEnumeration(const DDS_TypeCode *type) const noexcept {
    auto known = holdsEnumeration_.find(type);
    return known != holdsEnumeration_.end() && known->second;
}

bool EnumerationCheck::passes(const void *sample, Fault &fault) const noexcept {
    return !needed() || valueIsValid(*type_, static_cast<const unsigned char *>(sample), fault);
}

bool EnumerationCheck::valueIsValid(const DDS_TypeCode &type, const unsigned char *value, Fault &fault) const noexcept {
    if (!holdsEnumeration(&type)) return true;
    switch (kindOf(type)) {
    case DDS_TK_ENUM:
        fault = {&type, longAt(value)};
        return isEnumerator(type, fault.value);
    case DDS_TK_UNION:
        return unionIsValid(type, value, fault);
    case DDS_TK_STRUCT:
        for (DDS_UnsignedLong i = 0; i < type.member_count; ++i) {
            const DDS_TypeCodeMember &member = type.members[i];
            if (!valueIsValid(*member.type, value + member.offset, fault)) return false;
        }
        return true;
    case DDS_TK_ARRAY:
        return elementsAreValid(*type.content_type, value, type.dimension, fault);
    case DDS_TK_SEQUENCE:
        return sequenceIsValid(type, value, fault);
    case DDS_TK_ALIAS:
        return valueIsValid(*type.content_type, value, fault);
    default:
        return true;
    }
}

// The discriminator (the record's first 32 bits) must be valid; only the
// branch that it selects means anything (a value may select none).
bool EnumerationCheck::unionIsValid(const DDS_TypeCode &type, const unsigned char *value, Fault &fault) const noexcept {
    const DDS_TypeCode *discriminatorType = type.discriminator_type;
    if (discriminatorType != nullptr && !valueIsValid(*discriminatorType, value, fault)) return false;
    fault = {discriminatorType, longAt(value)};
    const DDS_TypeCodeMember *branch = selectedBranch(type, fault.value);
    return branch == nullptr || valueIsValid(*branch->type, value + branch->offset, fault);
}

bool EnumerationCheck::sequenceIsValid(const DDS_TypeCode &type, const unsigned char *value,
                                       Fault &fault) const noexcept {
    auto *sequence = const_cast<unsigned char *>(value);  // the operations take no const
    DDS_Long length = type.sequence_ops->get_length(sequence);
    for (DDS_Long i = 0; i < length; ++i) {
        auto *element = static_cast<const unsigned char *>(type.sequence_ops->get_reference(sequence, i));
        if (element != nullptr && !valueIsValid(*type.content_type, element, fault)) return false;
    }
    return true;
}

bool EnumerationCheck::elementsAreValid(const DDS_TypeCode &element, const unsigned char *first, DDS_UnsignedLong count,
                                        Fault &fault) const noexcept {
    if (!holdsEnumeration(&element)) return true;
    for (DDS_UnsignedLong i = 0; i < count; ++i) {
        if (!valueIsValid(element, first + i * element.sample_size, fault)) return false;
    }
    return true;
}

}  // namespace vexar::types
