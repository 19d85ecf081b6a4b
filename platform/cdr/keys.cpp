// What the encoding reads from a type code, and the key operations.
#include "platform/cdr/encoding.hpp"

#include <algorithm>
#include <cstring>

#include <dds/ddsrt/md5.h>

#include "platform/types/sample_ops.hpp"

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
        return types::sample::copy(type, dst, src);
    }
}

namespace {

// The digests of the last keys hashed on this thread. A logger's samples
// carry a handful of keys (one application, eight levels), and comparing a
// few bytes costs far less than a digest. Constant-initialized, so the
// per-thread copy needs no construction guard.
class RecentDigests {
public:
    static constexpr std::size_t kEntries = 8;
    static constexpr DDS_UnsignedLong kLongestKey = 64;

    // A cheap summary of the bytes that tells most different keys apart
    // before they are compared in full.
    static std::uint64_t fingerprintOf(const unsigned char *key, DDS_UnsignedLong length) noexcept {
        std::uint64_t fingerprint = length;
        DDS_UnsignedLong i = 0;
        for (; i + 8 <= length; i += 8) {
            std::uint64_t word;
            std::memcpy(&word, key + i, sizeof word);
            fingerprint = (fingerprint ^ word) * 0x9E3779B97F4A7C15u;
        }
        for (; i < length; ++i) fingerprint = (fingerprint ^ key[i]) * 0x9E3779B97F4A7C15u;
        return fingerprint;
    }

    bool find(const unsigned char *key, DDS_UnsignedLong length, std::uint64_t fingerprint,
              DDS_Octet (&digest)[16]) const noexcept {
        for (const Entry &entry : entries_) {
            if (entry.fingerprint == fingerprint && entry.length == length &&
                std::memcmp(entry.key, key, length) == 0) {
                std::memcpy(digest, entry.digest, sizeof digest);
                return true;
            }
        }
        return false;
    }

    // Replaces the oldest entry.
    void remember(const unsigned char *key, DDS_UnsignedLong length, std::uint64_t fingerprint,
                  const DDS_Octet (&digest)[16]) noexcept {
        Entry &entry = entries_[next_];
        next_ = (next_ + 1) % kEntries;
        entry.fingerprint = fingerprint;
        entry.length = length;
        std::memcpy(entry.key, key, length);
        std::memcpy(entry.digest, digest, sizeof digest);
    }

private:
    struct Entry {
        std::uint64_t fingerprint = 0;
        DDS_UnsignedLong length = kLongestKey + 1;  // no key is this long: an empty entry
        unsigned char key[kLongestKey] = {};
        DDS_Octet digest[16] = {};
    };
    Entry entries_[kEntries] = {};
    std::size_t next_ = 0;
};

thread_local RecentDigests recentDigests;

void md5Of(const unsigned char *key, DDS_UnsignedLong length, DDS_Octet (&digest)[16]) noexcept {
    ddsrt_md5_state_t md5;
    ddsrt_md5_init(&md5);
    ddsrt_md5_append(&md5, key, length);
    ddsrt_md5_finish(&md5, digest);
}

}  // namespace

void keyHashOf(const unsigned char *key, DDS_UnsignedLong length, std::uint64_t keyMaxSize,
               DDS_Octet (&hash)[16]) noexcept {
    if (keyMaxSize <= sizeof hash) {
        std::memset(hash, 0, sizeof hash);
        std::memcpy(hash, key, std::min<size_t>(length, sizeof hash));
        return;
    }
    if (length > RecentDigests::kLongestKey) {
        md5Of(key, length, hash);
        return;
    }
    RecentDigests &recent = recentDigests;
    std::uint64_t fingerprint = RecentDigests::fingerprintOf(key, length);
    if (recent.find(key, length, fingerprint, hash)) return;
    md5Of(key, length, hash);
    recent.remember(key, length, fingerprint, hash);
}

}  // namespace vexar::cdr
