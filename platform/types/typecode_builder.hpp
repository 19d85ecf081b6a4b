// Building static type codes from compact member tables.
//
// A type is described once by a TypeDescription: its kind, name, C size and
// a table of MemberRow (name, offset, flags, label and the getter of the
// member's type code). StaticTypeCode lays the DDS_TypeCode and its member
// table out at compile time and, on the first get(), fills the pointers to
// other types' codes by calling their getters. The function-local static
// is the completion flag: concurrent first calls are safe and later calls
// cost one load.
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "platform/types/typecode.h"

namespace vexar::types::typecode {

using TypeCodeGetter = const DDS_TypeCode *(*)();

// One member of a struct or union, or one enumerator.
struct MemberRow {
    const char *name;
    size_t offset;
    TypeCodeGetter type;  // null for enumerators
    DDS_TypeCodeMemberFlags flags;
    DDS_Long label;
};

constexpr MemberRow key(const char *name, size_t offset, TypeCodeGetter type) {
    return {name, offset, type, DDS_TYPECODE_KEY_MEMBER, 0};
}

constexpr MemberRow field(const char *name, size_t offset, TypeCodeGetter type) {
    return {name, offset, type, DDS_TYPECODE_NONKEY_REQUIRED_MEMBER, 0};
}

constexpr MemberRow branch(DDS_Long label, const char *name, size_t offset, TypeCodeGetter type) {
    return {name, offset, type, DDS_TYPECODE_NONKEY_MEMBER, label};
}

constexpr MemberRow enumerator(const char *name, DDS_Long value) {
    return {name, 0, nullptr, DDS_TYPECODE_NONKEY_MEMBER, value};
}

// "name", offset of a struct member.
#define VEXAR_TC_MEMBER(Type, member) #member, offsetof(Type, member)
// "name", offset of a union branch (all branches live in `_u`).
#define VEXAR_TC_BRANCH(Type, member) #member, offsetof(Type, _u.member)
// An enumerator named as in C.
#define VEXAR_TC_ENUMERATOR(name) ::vexar::types::typecode::enumerator(#name, name)

enum class Extensibility { extensible, mutable_ };

struct TypeDescription {
    DDS_TCKind kind;
    Extensibility extensibility;
    const char *name;
    size_t sampleSize;
    std::span<const MemberRow> members;
    TypeCodeGetter discriminator;  // unions only
};

template <typename Sample>
constexpr TypeDescription structType(const char *name, Extensibility extensibility,
                                     std::span<const MemberRow> members) {
    return {DDS_TK_STRUCT, extensibility, name, sizeof(Sample), members, nullptr};
}

template <typename Sample>
constexpr TypeDescription unionType(const char *name, Extensibility extensibility, TypeCodeGetter discriminator,
                                    std::span<const MemberRow> members) {
    return {DDS_TK_UNION, extensibility, name, sizeof(Sample), members, discriminator};
}

template <typename Enum>
constexpr TypeDescription enumType(const char *name, std::span<const MemberRow> enumerators) {
    static_assert(sizeof(Enum) == sizeof(DDS_Long), "enumerations are held as 32-bit values");
    return {DDS_TK_ENUM, Extensibility::extensible, name, sizeof(Enum), enumerators, nullptr};
}

constexpr DDS_Long storedKind(DDS_TCKind kind, Extensibility extensibility) {
    return extensibility == Extensibility::mutable_ ? (kind | DDS_TK_MUTABLE_EXTENSIBILITY) : kind;
}

// Union members are numbered from 1: id 0 is the discriminator on the wire.
constexpr DDS_Long memberId(DDS_TCKind kind, size_t index) {
    return static_cast<DDS_Long>(kind == DDS_TK_UNION ? index + 1 : index);
}

constexpr DDS_TypeCode anonymousCode(DDS_TCKind kind, DDS_UnsignedLong length, DDS_UnsignedLong dimension,
                                     size_t sampleSize, const DDS_TypeCodeSequenceOps *sequenceOps) {
    const DDS_TypeCode code = {
        kind,       nullptr,    0, nullptr, length, dimension, nullptr, nullptr, DDS_TYPECODE_NO_DEFAULT_INDEX,
        sampleSize, sequenceOps};
    return code;
}

template <const TypeDescription &D>
class StaticTypeCode {
public:
    static const DDS_TypeCode *get() noexcept {
        static const bool completed = complete();
        (void)completed;
        return &code_;
    }

private:
    static constexpr size_t memberCount = D.members.size();

    static constexpr std::array<DDS_TypeCodeMember, memberCount> layoutMembers() {
        std::array<DDS_TypeCodeMember, memberCount> members{};
        for (size_t i = 0; i < memberCount; ++i) {
            const MemberRow &row = D.members[i];
            members[i] = {row.name, memberId(D.kind, i), row.flags, DDS_PUBLIC_MEMBER, nullptr, row.label, row.offset};
        }
        return members;
    }

    static bool complete() noexcept {
        for (size_t i = 0; i < memberCount; ++i) {
            if (D.members[i].type != nullptr) {
                members_[i].type = D.members[i].type();
            }
        }
        if (D.discriminator != nullptr) {
            code_.discriminator_type = D.discriminator();
        }
        return true;
    }

    static constinit inline std::array<DDS_TypeCodeMember, memberCount> members_ = layoutMembers();
    static constinit inline DDS_TypeCode code_ = {storedKind(D.kind, D.extensibility),
                                                  D.name,
                                                  static_cast<DDS_UnsignedLong>(memberCount),
                                                  members_.data(),
                                                  0,
                                                  0,
                                                  nullptr,
                                                  nullptr,
                                                  DDS_TYPECODE_NO_DEFAULT_INDEX,
                                                  D.sampleSize,
                                                  nullptr};
};

inline const DDS_TypeCode *longCode() noexcept { return &DDS_g_tc_long; }
inline const DDS_TypeCode *unsignedLongLongCode() noexcept { return &DDS_g_tc_ulonglong; }

// The anonymous code of a string of at most Bound characters.
template <DDS_UnsignedLong Bound>
const DDS_TypeCode *stringCode() noexcept {
    static constexpr DDS_TypeCode code = anonymousCode(DDS_TK_STRING, Bound, 0, sizeof(char *), nullptr);
    return &code;
}

// The anonymous code of an array of Dimension elements.
template <typename Element, DDS_UnsignedLong Dimension, TypeCodeGetter ElementType>
const DDS_TypeCode *arrayCode() noexcept {
    static constinit DDS_TypeCode code =
        anonymousCode(DDS_TK_ARRAY, 0, Dimension, sizeof(Element) * Dimension, nullptr);
    static const bool completed = (code.content_type = ElementType(), true);
    (void)completed;
    return &code;
}

// The anonymous code of a sequence record Seq of at most Maximum elements.
template <typename Seq, DDS_UnsignedLong Maximum, TypeCodeGetter ElementType, const DDS_TypeCodeSequenceOps &Operations>
const DDS_TypeCode *sequenceCode() noexcept {
    static constinit DDS_TypeCode code = anonymousCode(DDS_TK_SEQUENCE, Maximum, 0, sizeof(Seq), &Operations);
    static const bool completed = (code.content_type = ElementType(), true);
    (void)completed;
    return &code;
}

}  // namespace vexar::types::typecode

// The walker's view of the sequence Seq: adapters over its C operations.
#define VEXAR_TC_SEQUENCE_OPS(Seq)                                                                            \
    DDS_TypeCodeSequenceOps {                                                                                 \
        [](void *s) { return Seq##_initialize(static_cast<Seq *>(s)); },                                      \
            [](void *s) { return Seq##_finalize(static_cast<Seq *>(s)); },                                    \
            [](void *d, const void *s) -> DDS_Boolean {                                                       \
                return Seq##_copy(static_cast<Seq *>(d), static_cast<const Seq *>(s)) != nullptr;             \
            },                                                                                                \
            [](void *s) { return Seq##_get_length(static_cast<Seq *>(s)); },                                  \
            [](void *s, DDS_Long n) { return Seq##_set_length(static_cast<Seq *>(s), n); },                   \
            [](void *s, DDS_Long n) { return Seq##_set_maximum(static_cast<Seq *>(s), n); },                  \
            [](void *s, DDS_Long n, DDS_Long m) { return Seq##_ensure_length(static_cast<Seq *>(s), n, m); }, \
            [](void *s, DDS_Long i) -> void * { return Seq##_get_reference(static_cast<Seq *>(s), i); },      \
            [](void *s, const DDS_TypeAllocationParams_t *p) {                                                \
                return Seq##_set_element_allocation_params(static_cast<Seq *>(s), p);                         \
            },                                                                                                \
            [](void *s, const DDS_TypeDeallocationParams_t *p) {                                              \
                return Seq##_set_element_deallocation_params(static_cast<Seq *>(s), p);                       \
            },                                                                                                \
    }
