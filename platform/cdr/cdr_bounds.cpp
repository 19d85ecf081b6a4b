// The largest and smallest serialized size of a type, from its type code.
#include <algorithm>

#include "platform/cdr/encoding.hpp"

namespace vexar::cdr {
namespace {

class BoundWalker {
public:
    BoundWalker(Bound bound, bool keyForm) noexcept : largest_(bound == Bound::largest), keyForm_(keyForm) {}

    // The position after a value of `type` that starts at `position`.
    std::uint64_t end(const DDS_TypeCode &type, std::uint64_t position) const noexcept {
        if (DDS_UnsignedLong size = primitiveSize(type)) return align(position, size) + size;
        switch (kindOf(type)) {
        case DDS_TK_STRING:
            return align(position, 4) + 4 + (largest_ ? type.length + 1 : 1);
        case DDS_TK_ARRAY:
            return elements(*type.content_type, type.dimension, position);
        case DDS_TK_SEQUENCE:
            return elements(*type.content_type, largest_ ? type.length : 0, align(position, 4) + 4);
        case DDS_TK_STRUCT:
            return isMutable(type) ? structList(type, position) : structPlain(type, position);
        case DDS_TK_UNION:
            return unionValue(type, position);
        default:
            return position;
        }
    }

private:
    static std::uint64_t align(std::uint64_t position, std::uint64_t alignment) noexcept {
        return (position + alignment - 1) / alignment * alignment;
    }

    bool inForm(const DDS_TypeCode &type, DDS_UnsignedLong index) const noexcept {
        return !keyForm_ || isKeyFormMember(type, index);
    }

    // The largest allows every header the extended form; the smallest
    // counts the short form where a member must use it.
    std::uint64_t header(const DDS_TypeCode &member, std::uint64_t position) const noexcept {
        bool shortForm = !largest_ && isPrimitive(member);
        return align(position, 4) +
               (shortForm ? OBLX_CDR_SHORT_PARAMETER_HEADER_SIZE : OBLX_CDR_EXTENDED_PARAMETER_HEADER_SIZE);
    }

    std::uint64_t listEnd(std::uint64_t position) const noexcept {
        return align(position, 4) +
               (largest_ ? OBLX_CDR_EXTENDED_PARAMETER_HEADER_SIZE : OBLX_CDR_SHORT_PARAMETER_HEADER_SIZE);
    }

    std::uint64_t elements(const DDS_TypeCode &element, DDS_UnsignedLong count, std::uint64_t position) const noexcept {
        for (DDS_UnsignedLong i = 0; i < count; ++i) position = end(element, position);
        return position;
    }

    std::uint64_t structPlain(const DDS_TypeCode &type, std::uint64_t position) const noexcept {
        for (DDS_UnsignedLong i = 0; i < type.member_count; ++i) {
            if (inForm(type, i)) position = end(*type.members[i].type, position);
        }
        return position;
    }

    std::uint64_t structList(const DDS_TypeCode &type, std::uint64_t position) const noexcept {
        for (DDS_UnsignedLong i = 0; i < type.member_count; ++i) {
            const DDS_TypeCode &member = *type.members[i].type;
            if (inForm(type, i)) position = end(member, header(member, position));
        }
        return listEnd(position);
    }

    // The discriminator, then the largest (or smallest) branch; a mutable
    // union puts each behind a header (the branch's always counted
    // extended) and ends with a sentinel.
    std::uint64_t unionValue(const DDS_TypeCode &type, std::uint64_t position) const noexcept {
        bool list = isMutable(type);
        const DDS_TypeCode &discriminator = *type.discriminator_type;
        position = end(discriminator, list ? header(discriminator, position) : position);
        if (type.member_count > 0) {
            std::uint64_t branchStart = list ? align(position, 4) + OBLX_CDR_EXTENDED_PARAMETER_HEADER_SIZE : position;
            std::uint64_t extreme = end(*type.members[0].type, branchStart);
            for (DDS_UnsignedLong i = 1; i < type.member_count; ++i) {
                std::uint64_t branchEnd = end(*type.members[i].type, branchStart);
                extreme = largest_ ? std::max(extreme, branchEnd) : std::min(extreme, branchEnd);
            }
            position = extreme;
        }
        return list ? listEnd(position) : position;
    }

    bool largest_;
    bool keyForm_;
};

}  // namespace

std::uint64_t boundSize(const DDS_TypeCode &type, Bound bound, std::uint64_t start, bool keyForm) noexcept {
    return BoundWalker(bound, keyForm).end(type, start) - start;
}

}  // namespace vexar::cdr
