// What the encoding reads from a type code, and the key operations.
#include "platform/cdr_walker.hpp"

#include <algorithm>
#include <cstring>

#include <dds/ddsrt/md5.h>

#include "platform/sample_ops.hpp"

namespace vexar::cdr {

bool hasKeyMembers(const DDS_TypeCode &type) noexcept {
    if (kindOf(type) != DDS_TK_STRUCT) return false;
    return std::any_of(type.members, type.members + type.member_count,
                       [](const DDS_TypeCodeMember &m) { return m.flags == DDS_TYPECODE_KEY_MEMBER; });
}

bool isKeyFormMember(const DDS_TypeCode &type, DDS_UnsignedLong index) noexcept {
    return type.members[index].flags == DDS_TYPECODE_KEY_MEMBER || !hasKeyMembers(type);
}

bool copyKeyMembers(const DDS_TypeCode &type, void *dst, const void *src) noexcept {
    auto *to = static_cast<unsigned char *>(dst);
    const auto *from = static_cast<const unsigned char *>(src);
    switch (kindOf(type)) {
    case DDS_TK_STRUCT:
        for (DDS_UnsignedLong i = 0; i < type.member_count; ++i) {
            const DDS_TypeCodeMember &m = type.members[i];
            if (isKeyFormMember(type, i) && !copyKeyMembers(*m.type, to + m.offset, from + m.offset)) return false;
        }
        return true;
    case DDS_TK_ARRAY:
        for (DDS_UnsignedLong i = 0; i < type.dimension; ++i) {
            size_t offset = i * type.content_type->sample_size;
            if (!copyKeyMembers(*type.content_type, to + offset, from + offset)) return false;
        }
        return true;
    default:
        // Anything else in a key is taken whole.
        return sample::copy(type, dst, src);
    }
}

void keyHashOf(const unsigned char *key, DDS_UnsignedLong length, std::uint64_t keyMaxSize,
               DDS_Octet (&hash)[16]) noexcept {
    if (keyMaxSize <= sizeof hash) {
        std::memset(hash, 0, sizeof hash);
        std::memcpy(hash, key, std::min<size_t>(length, sizeof hash));
        return;
    }
    ddsrt_md5_state_t md5;
    ddsrt_md5_init(&md5);
    ddsrt_md5_append(&md5, key, length);
    ddsrt_md5_finish(&md5, hash);
}

}  // namespace vexar::cdr
