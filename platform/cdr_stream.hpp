// The CDR stream's operations as inline C++ functions. The exported C
// functions of cdr_stream.h forward here; the encoding walker calls these
// directly so that the per-value work inlines into its loops.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "platform/cdr_stream.h"

namespace vexar::cdr {

inline constexpr bool kNativeBigEndian = std::endian::native == std::endian::big;

inline void init(OBLX_CdrStream &s, unsigned char *buffer, DDS_UnsignedLong length) noexcept {
    s = OBLX_CdrStream{};
    s.buffer = buffer;
    s.length = buffer != nullptr ? length : 0;
    s.bigEndian = kNativeBigEndian;
}

inline void setBigEndian(OBLX_CdrStream &s, bool bigEndian) noexcept {
    s.bigEndian = bigEndian;
    s.needByteSwap = bigEndian != kNativeBigEndian;
}

inline DDS_UnsignedLong remainder(const OBLX_CdrStream &s) noexcept { return s.length - s.position; }

inline bool checkSize(const OBLX_CdrStream &s, DDS_UnsignedLong size) noexcept { return size <= remainder(s); }

inline bool setPosition(OBLX_CdrStream &s, DDS_UnsignedLong position) noexcept {
    if (position > s.length) return false;
    s.position = position;
    return true;
}

inline DDS_UnsignedLong limitLength(OBLX_CdrStream &s, DDS_UnsignedLong end) noexcept {
    DDS_UnsignedLong previous = s.length;
    if (end < s.length) s.length = end > s.position ? end : s.position;
    return previous;
}

// Bytes of padding that bring the position to a multiple of `alignment`
// (a power of two) counted from the origin.
inline DDS_UnsignedLong paddingTo(const OBLX_CdrStream &s, DDS_UnsignedLong alignment) noexcept {
    return (0u - (s.position - s.alignmentOrigin)) & (alignment - 1u);
}

inline bool alignForRead(OBLX_CdrStream &s, DDS_UnsignedLong alignment) noexcept {
    DDS_UnsignedLong pad = paddingTo(s, alignment);
    if (!checkSize(s, pad)) return false;
    s.position += pad;
    return true;
}

inline bool alignForWrite(OBLX_CdrStream &s, DDS_UnsignedLong alignment) noexcept {
    DDS_UnsignedLong pad = paddingTo(s, alignment);
    if (!checkSize(s, pad)) return false;
    std::memset(s.buffer + s.position, 0, pad);
    s.position += pad;
    return true;
}

inline DDS_UnsignedLong resetAlignment(OBLX_CdrStream &s) noexcept {
    DDS_UnsignedLong previous = s.alignmentOrigin;
    s.alignmentOrigin = s.position;
    return previous;
}

// Raw stores and loads at a known-good offset, in the stream's byte order.
inline void store32(OBLX_CdrStream &s, DDS_UnsignedLong offset, std::uint32_t value) noexcept {
    if (s.needByteSwap) value = __builtin_bswap32(value);
    std::memcpy(s.buffer + offset, &value, sizeof value);
}

inline std::uint32_t load32(const OBLX_CdrStream &s, DDS_UnsignedLong offset) noexcept {
    std::uint32_t value;
    std::memcpy(&value, s.buffer + offset, sizeof value);
    return s.needByteSwap ? __builtin_bswap32(value) : value;
}

inline void store16(OBLX_CdrStream &s, DDS_UnsignedLong offset, std::uint16_t value) noexcept {
    if (s.needByteSwap) value = __builtin_bswap16(value);
    std::memcpy(s.buffer + offset, &value, sizeof value);
}

inline std::uint16_t load16(const OBLX_CdrStream &s, DDS_UnsignedLong offset) noexcept {
    std::uint16_t value;
    std::memcpy(&value, s.buffer + offset, sizeof value);
    return s.needByteSwap ? __builtin_bswap16(value) : value;
}

inline bool write32(OBLX_CdrStream &s, std::uint32_t value) noexcept {
    if (!alignForWrite(s, 4) || !checkSize(s, 4)) return false;
    store32(s, s.position, value);
    s.position += 4;
    return true;
}

inline bool read32(OBLX_CdrStream &s, std::uint32_t &value) noexcept {
    if (!alignForRead(s, 4) || !checkSize(s, 4)) return false;
    value = load32(s, s.position);
    s.position += 4;
    return true;
}

inline bool write16(OBLX_CdrStream &s, std::uint16_t value) noexcept {
    if (!alignForWrite(s, 2) || !checkSize(s, 2)) return false;
    store16(s, s.position, value);
    s.position += 2;
    return true;
}

inline bool read16(OBLX_CdrStream &s, std::uint16_t &value) noexcept {
    if (!alignForRead(s, 2) || !checkSize(s, 2)) return false;
    value = load16(s, s.position);
    s.position += 2;
    return true;
}

inline bool writeLong(OBLX_CdrStream &s, DDS_Long value) noexcept {
    return write32(s, static_cast<std::uint32_t>(value));
}

inline bool readLong(OBLX_CdrStream &s, DDS_Long &value) noexcept {
    std::uint32_t raw;
    if (!read32(s, raw)) return false;
    value = static_cast<DDS_Long>(raw);
    return true;
}

// Any primitive of 1, 2, 4 or 8 bytes, aligned to its size. A null `value`
// on reading passes over it.
inline bool writePrimitive(OBLX_CdrStream &s, const void *value, DDS_UnsignedLong size) noexcept {
    if (!alignForWrite(s, size) || !checkSize(s, size)) return false;
    unsigned char *out = s.buffer + s.position;
    std::memcpy(out, value, size);
    if (s.needByteSwap) std::reverse(out, out + size);
    s.position += size;
    return true;
}

inline bool readPrimitive(OBLX_CdrStream &s, void *value, DDS_UnsignedLong size) noexcept {
    if (!alignForRead(s, size) || !checkSize(s, size)) return false;
    if (value != nullptr) {
        auto *out = static_cast<unsigned char *>(value);
        std::memcpy(out, s.buffer + s.position, size);
        if (s.needByteSwap) std::reverse(out, out + size);
    }
    s.position += size;
    return true;
}

inline bool writeEncapsulation(OBLX_CdrStream &s, std::uint16_t id, std::uint16_t options) noexcept {
    if (!checkSize(s, OBLX_CDR_ENCAPSULATION_HEADER_SIZE)) return false;
    unsigned char *p = s.buffer + s.position;
    p[0] = static_cast<unsigned char>(id >> 8);
    p[1] = static_cast<unsigned char>(id);
    p[2] = static_cast<unsigned char>(options >> 8);
    p[3] = static_cast<unsigned char>(options);
    s.position += OBLX_CDR_ENCAPSULATION_HEADER_SIZE;
    return true;
}

inline bool readEncapsulation(OBLX_CdrStream &s, std::uint16_t &id, std::uint16_t &options) noexcept {
    if (!checkSize(s, OBLX_CDR_ENCAPSULATION_HEADER_SIZE)) return false;
    const unsigned char *p = s.buffer + s.position;
    id = static_cast<std::uint16_t>(p[0] << 8 | p[1]);
    options = static_cast<std::uint16_t>(p[2] << 8 | p[3]);
    s.position += OBLX_CDR_ENCAPSULATION_HEADER_SIZE;
    return true;
}

inline bool writeString(OBLX_CdrStream &s, const char *value, DDS_UnsignedLong maximumLength) noexcept {
    if (value == nullptr) return false;
    std::size_t characters = strnlen(value, maximumLength);
    if (characters >= maximumLength) return false;
    auto length = static_cast<DDS_UnsignedLong>(characters + 1);
    if (!write32(s, length) || !checkSize(s, length)) return false;
    std::memcpy(s.buffer + s.position, value, length);
    s.position += length;
    return true;
}

// Reads a string's length and checks it against the bound and the bytes
// left; the characters (NUL included) then start at the position.
inline bool readStringLength(OBLX_CdrStream &s, DDS_UnsignedLong maximumLength, DDS_UnsignedLong &length) noexcept {
    if (!read32(s, length)) return false;
    if (length > maximumLength || !checkSize(s, length)) return false;
    return length == 0 || s.buffer[s.position + length - 1] == '\0';
}

inline bool readString(OBLX_CdrStream &s, char *buffer, DDS_UnsignedLong maximumLength) noexcept {
    DDS_UnsignedLong length;
    if (buffer == nullptr || !readStringLength(s, maximumLength, length)) return false;
    if (length == 0) {
        buffer[0] = '\0';  // some writers send an empty string without its NUL
        return true;
    }
    std::memcpy(buffer, s.buffer + s.position, length);
    s.position += length;
    return true;
}

inline bool skipString(OBLX_CdrStream &s, DDS_UnsignedLong maximumLength) noexcept {
    DDS_UnsignedLong length;
    if (!readStringLength(s, maximumLength, length)) return false;
    s.position += length;
    return true;
}

// --- parameter headers ---------------------------------------------------

inline bool writeParameterHeader(OBLX_CdrStream &s, OBLX_CdrParameterHeader &header, DDS_UnsignedLong memberId,
                                 bool extended, bool mustUnderstand) noexcept {
    header = OBLX_CdrParameterHeader{memberId, 0, 0, extended, mustUnderstand};
    if (!alignForWrite(s, 4)) return false;
    if (extended) {
        if (memberId > OBLX_CDR_EXTENDED_ID_MASK || !checkSize(s, OBLX_CDR_EXTENDED_PARAMETER_HEADER_SIZE))
            return false;
        store16(s, s.position, OBLX_CDR_PID_EXTENDED | OBLX_CDR_PID_FLAG_MUST_UNDERSTAND);
        store16(s, s.position + 2, 8);
        store32(s, s.position + 4, memberId | (mustUnderstand ? OBLX_CDR_EXTENDED_FLAG_MUST_UNDERSTAND : 0u));
        store32(s, s.position + 8, 0);
        s.position += OBLX_CDR_EXTENDED_PARAMETER_HEADER_SIZE;
    } else {
        if (memberId >= 0x3F00u || !checkSize(s, OBLX_CDR_SHORT_PARAMETER_HEADER_SIZE)) return false;
        auto id = static_cast<std::uint16_t>(memberId | (mustUnderstand ? OBLX_CDR_PID_FLAG_MUST_UNDERSTAND : 0u));
        store16(s, s.position, id);
        store16(s, s.position + 2, 0);
        s.position += OBLX_CDR_SHORT_PARAMETER_HEADER_SIZE;
    }
    header.valueStart = s.position;
    return true;
}

inline bool finishParameterHeader(OBLX_CdrStream &s, const OBLX_CdrParameterHeader &header) noexcept {
    if (header.valueStart > s.position || header.valueStart < OBLX_CDR_SHORT_PARAMETER_HEADER_SIZE) return false;
    DDS_UnsignedLong length = s.position - header.valueStart;
    if (header.extended) {
        store32(s, header.valueStart - 4, length);
        return true;
    }
    if (length > OBLX_CDR_SHORT_PARAMETER_MAX_LENGTH) return false;
    store16(s, header.valueStart - 2, static_cast<std::uint16_t>(length));
    return true;
}

inline bool writeListEnd(OBLX_CdrStream &s) noexcept {
    if (!alignForWrite(s, 4) || !checkSize(s, OBLX_CDR_SHORT_PARAMETER_HEADER_SIZE)) return false;
    store16(s, s.position, OBLX_CDR_PID_LIST_END | OBLX_CDR_PID_FLAG_MUST_UNDERSTAND);
    store16(s, s.position + 2, 0);
    s.position += OBLX_CDR_SHORT_PARAMETER_HEADER_SIZE;
    return true;
}

inline bool readExtendedParameterHeader(OBLX_CdrStream &s, std::uint16_t shortLength,
                                        OBLX_CdrParameterHeader &header) noexcept {
    if (shortLength != 8 || !checkSize(s, 8)) return false;
    std::uint32_t id = load32(s, s.position);
    header.memberId = id & OBLX_CDR_EXTENDED_ID_MASK;
    header.mustUnderstand = (id & OBLX_CDR_EXTENDED_FLAG_MUST_UNDERSTAND) != 0;
    header.length = load32(s, s.position + 4);
    header.extended = true;
    s.position += 8;
    return true;
}

inline bool readParameterHeader(OBLX_CdrStream &s, OBLX_CdrParameterHeader &header) noexcept {
    header = OBLX_CdrParameterHeader{};
    if (!alignForRead(s, 4) || !checkSize(s, OBLX_CDR_SHORT_PARAMETER_HEADER_SIZE)) return false;
    std::uint16_t rawId = load16(s, s.position);
    std::uint16_t shortLength = load16(s, s.position + 2);
    s.position += OBLX_CDR_SHORT_PARAMETER_HEADER_SIZE;
    header.memberId = rawId & OBLX_CDR_PID_MASK;
    header.mustUnderstand = (rawId & OBLX_CDR_PID_FLAG_MUST_UNDERSTAND) != 0;
    header.length = shortLength;
    if (header.memberId == OBLX_CDR_PID_EXTENDED && !readExtendedParameterHeader(s, shortLength, header)) return false;
    header.valueStart = s.position;
    return checkSize(s, header.length);
}

inline bool isListEnd(const OBLX_CdrParameterHeader &header) noexcept {
    return !header.extended && header.memberId == OBLX_CDR_PID_LIST_END;
}

inline bool moveToNextParameterHeader(OBLX_CdrStream &s, const OBLX_CdrParameterHeader &header) noexcept {
    if (header.valueStart > s.length || header.length > s.length - header.valueStart) return false;
    s.position = header.valueStart + header.length;
    return true;
}

}  // namespace vexar::cdr
