// The parts of every type plugin that do not depend on the sample type.
#include "platform/plugin/type_plugin.hpp"

#include <algorithm>
#include <array>
#include <vector>

namespace vexar::plugin {

TypePlan makeTypePlan(const DDS_TypeCode &type) noexcept {
    std::uint64_t maxSize = cdr::boundSize(type, cdr::Bound::largest, 0, false);
    bool extended = maxSize >= kExtendedHeaderThreshold;
    return TypePlan{&type,
                    maxSize,
                    cdr::boundSize(type, cdr::Bound::largest, 0, true),
                    cdr::kindOf(type) == DDS_TK_STRUCT && cdr::isMutable(type),
                    cdr::hasKeyMembers(type),
                    cdr::Plan(type, cdr::PlanOptions{extended, false, false}),
                    cdr::Plan(type, cdr::PlanOptions{extended, true, true}),
                    cdr::Plan(type, cdr::PlanOptions{extended, false, true})};
}

bool encapsulationIdFor(const TypePlan &plan, DDS_UnsignedShort requested, DDS_UnsignedShort &written) noexcept {
    if (requested > kLastEncapsulationId) return false;
    bool parameterList = cdr::isMutable(*plan.type);
    written = parameterList && requested < OBLX_CDR_ENCAPSULATION_PL_CDR_BE
                  ? static_cast<DDS_UnsignedShort>(requested + OBLX_CDR_ENCAPSULATION_PL_CDR_BE)
                  : requested;
    return true;
}

// Even identifiers are big-endian, odd ones little-endian.
static void takeByteOrderFrom(OBLX_CdrStream &stream, DDS_UnsignedShort id) noexcept {
    cdr::setBigEndian(stream, (id & 1u) == 0);
    cdr::resetAlignment(stream);
}

bool writeEncapsulationHeader(OBLX_CdrStream &stream, const TypePlan &plan, DDS_UnsignedShort requested) noexcept {
    DDS_UnsignedShort id;
    if (!encapsulationIdFor(plan, requested, id) || !cdr::writeEncapsulation(stream, id, 0)) return false;
    takeByteOrderFrom(stream, id);
    return true;
}

bool readEncapsulationHeader(OBLX_CdrStream &stream) noexcept {
    DDS_UnsignedShort id, options;
    if (!cdr::readEncapsulation(stream, id, options) || id > kLastEncapsulationId) return false;
    takeByteOrderFrom(stream, id);
    return true;
}

bool keyHash(const TypePlan &plan, const void *instance, DDS_KeyHash_t &hash) noexcept {
    constexpr std::uint64_t kScratchSize = 256;
    std::array<unsigned char, kScratchSize> scratch;
    std::vector<unsigned char> large;
    unsigned char *buffer = scratch.data();
    if (plan.keyMaxSize > kScratchSize) {
        try {
            large.resize(plan.keyMaxSize);
        } catch (...) {
            return false;
        }
        buffer = large.data();
    }
    OBLX_CdrStream stream;
    cdr::init(stream, buffer, static_cast<DDS_UnsignedLong>(std::min<std::uint64_t>(plan.keyMaxSize, UINT32_MAX)));
    cdr::setBigEndian(stream, true);
    stream.dirty = DDS_BOOLEAN_TRUE;
    if (!cdr::serialize(stream, plan.key, instance)) return false;
    cdr::keyHashOf(buffer, stream.position, plan.keyMaxSize, hash.value);
    hash.length = DDS_KEYHASH_LENGTH;
    return true;
}

}  // namespace vexar::plugin
