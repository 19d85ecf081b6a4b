// The CDR stream's operations as inline C++ functions. The exported C
// functions of cdr_stream.h forward here; the encoding walker calls these
// directly so that the per-value work inlines into its loops.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "platform/cdr/cdr_stream.h"

namespace vexar::cdr {

inline constexpr bool kNativeBigEndian = std::endian::native == std::endian::big;

// Whether values are byte-swapped: the stream says so at run time, or a
// caller that has checked once fixes it at compile time, so that the
// encoder's and decoder's loops carry no per-value test.
struct StreamOrder {
    static bool swap(const OBLX_CdrStream &s) noexcept { return s.needByteSwap; }
};

template <bool Swap>
struct FixedOrder {
    static constexpr bool swap(const OBLX_CdrStream &) noexcept { return Swap; }
};

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
    if (pad == 0) return true;
    if (!checkSize(s, pad)) return false;
    unsigned char *at = s.buffer + s.position;
    if (remainder(s) >= 8) {
        // At most 7 bytes: one 8-byte store beats a call; the bytes past the
        // padding lie inside the stream and are written next.
        constexpr std::uint64_t zeros = 0;
        std::memcpy(at, &zeros, sizeof zeros);
    } else {
        std::memset(at, 0, pad);
    }
    s.position += pad;
    return true;
}

inline DDS_UnsignedLong resetAlignment(OBLX_CdrStream &s) noexcept {
    DDS_UnsignedLong previous = s.alignmentOrigin;
    s.alignmentOrigin = s.position;
    return previous;
}

// Copies a value of 1, 2, 4 or 8 bytes, reversing its bytes when asked.
// Sizes are known per case, so every copy compiles to plain moves.
template <std::size_t Size>
inline void copyOrdered(unsigned char *to, const unsigned char *from, bool swap) noexcept {
    std::conditional_t<
        Size == 1, std::uint8_t,
        std::conditional_t<Size == 2, std::uint16_t, std::conditional_t<Size == 4, std::uint32_t, std::uint64_t>>>
        value;
    std::memcpy(&value, from, Size);
    if constexpr (Size == 2) {
        if (swap) value = __builtin_bswap16(value);
    } else if constexpr (Size == 4) {
        if (swap) value = __builtin_bswap32(value);
    } else if constexpr (Size == 8) {
        if (swap) value = __builtin_bswap64(value);
    }
    std::memcpy(to, &value, Size);
}

inline void copyOrdered(unsigned char *to, const void *from, DDS_UnsignedLong size, bool swap) noexcept {
    const auto *bytes = static_cast<const unsigned char *>(from);
    switch (size) {
    case 1:
        copyOrdered<1>(to, bytes, swap);
        break;
    case 2:
        copyOrdered<2>(to, bytes, swap);
        break;
    case 4:
        copyOrdered<4>(to, bytes, swap);
        break;
    default:
        copyOrdered<8>(to, bytes, swap);
        break;
    }
}

// Stores and loads an unsigned value at a known-good offset, in the
// stream's byte order.
template <typename Unsigned, typename Order = StreamOrder>
inline void store(OBLX_CdrStream &s, DDS_UnsignedLong offset, Unsigned value) noexcept {
    copyOrdered<sizeof value>(s.buffer + offset, reinterpret_cast<const unsigned char *>(&value), Order::swap(s));
}

template <typename Unsigned, typename Order = StreamOrder>
inline Unsigned load(const OBLX_CdrStream &s, DDS_UnsignedLong offset) noexcept {
    Unsigned value;
    copyOrdered<sizeof value>(reinterpret_cast<unsigned char *>(&value), s.buffer + offset, Order::swap(s));
    return value;
}

// Writes or reads one value aligned to its size.
template <typename Unsigned, typename Order = StreamOrder>
inline bool write(OBLX_CdrStream &s, Unsigned value) noexcept {
    if (!alignForWrite(s, sizeof value) || !checkSize(s, sizeof value)) return false;
    store<Unsigned, Order>(s, s.position, value);
    s.position += sizeof value;
    return true;
}

template <typename Unsigned, typename Order = StreamOrder>
inline bool read(OBLX_CdrStream &s, Unsigned &value) noexcept {
    if (!alignForRead(s, sizeof value) || !checkSize(s, sizeof value)) return false;
    value = load<Unsigned, Order>(s, s.position);
    s.position += sizeof value;
    return true;
}

inline bool writeLong(OBLX_CdrStream &s, DDS_Long value) noexcept {
    return write(s, static_cast<std::uint32_t>(value));
}

inline bool readLong(OBLX_CdrStream &s, DDS_Long &value) noexcept {
    std::uint32_t raw;
    if (!read(s, raw)) return false;
    value = static_cast<DDS_Long>(raw);
    return true;
}

// Any primitive of 1, 2, 4 or 8 bytes, aligned to its size. A null `value`
// on reading passes over it.
template <typename Order = StreamOrder>
inline bool writePrimitive(OBLX_CdrStream &s, const void *value, DDS_UnsignedLong size) noexcept {
    if (!alignForWrite(s, size) || !checkSize(s, size)) return false;
    copyOrdered(s.buffer + s.position, value, size, Order::swap(s));
    s.position += size;
    return true;
}

template <typename Order = StreamOrder>
inline bool readPrimitive(OBLX_CdrStream &s, void *value, DDS_UnsignedLong size) noexcept {
    if (!alignForRead(s, size) || !checkSize(s, size)) return false;
    if (value != nullptr) copyOrdered(static_cast<unsigned char *>(value), s.buffer + s.position, size, Order::swap(s));
    s.position += size;
    return true;
}

// Copies `count` 4-byte values, swapping each when asked. A few values
// move inline; a call to memcpy pays off only for longer runs.
inline void copyWords(unsigned char *to, const unsigned char *from, DDS_UnsignedLong count, bool swap) noexcept {
    constexpr DDS_UnsignedLong kInlineWords = 4;
    if (!swap && count > kInlineWords) {
        std::memcpy(to, from, std::size_t{count} * 4);
        return;
    }
    for (DDS_UnsignedLong i = 0; i < count; ++i) copyOrdered<4>(to + 4 * i, from + 4 * i, swap);
}

// `count` 4-byte values that lie back to back in memory, aligned to 4.
template <typename Order = StreamOrder>
inline bool writeWords(OBLX_CdrStream &s, const void *values, DDS_UnsignedLong count) noexcept {
    if (!alignForWrite(s, 4) || count > remainder(s) / 4) return false;
    copyWords(s.buffer + s.position, static_cast<const unsigned char *>(values), count, Order::swap(s));
    s.position += count * 4;
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

template <typename Order = StreamOrder>
inline bool writeString(OBLX_CdrStream &s, const char *value, DDS_UnsignedLong maximumLength) noexcept {
    if (value == nullptr) return false;
    std::size_t characters = strnlen(value, maximumLength);
    if (characters >= maximumLength) return false;
    auto length = static_cast<DDS_UnsignedLong>(characters + 1);
    if (!write<std::uint32_t, Order>(s, length) || !checkSize(s, length)) return false;
    std::memcpy(s.buffer + s.position, value, length);
    s.position += length;
    return true;
}

// Reads a string's length and checks it against the bound and the bytes
// left; the characters (NUL included) then start at the position.
template <typename Order = StreamOrder>
inline bool readStringLength(OBLX_CdrStream &s, DDS_UnsignedLong maximumLength, DDS_UnsignedLong &length) noexcept {
    if (!read<DDS_UnsignedLong, Order>(s, length)) return false;
    if (length > maximumLength || !checkSize(s, length)) return false;
    return length == 0 || s.buffer[s.position + length - 1] == '\0';
}

template <typename Order = StreamOrder>
inline bool readString(OBLX_CdrStream &s, char *buffer, DDS_UnsignedLong maximumLength) noexcept {
    DDS_UnsignedLong length;
    if (buffer == nullptr || !readStringLength<Order>(s, maximumLength, length)) return false;
    if (length == 0) {
        buffer[0] = '\0';  // some writers send an empty string without its NUL
        return true;
    }
    std::memcpy(buffer, s.buffer + s.position, length);
    s.position += length;
    return true;
}

template <typename Order = StreamOrder>
inline bool skipString(OBLX_CdrStream &s, DDS_UnsignedLong maximumLength) noexcept {
    DDS_UnsignedLong length;
    if (!readStringLength<Order>(s, maximumLength, length)) return false;
    s.position += length;
    return true;
}

// --- parameter headers ---------------------------------------------------

template <typename Order = StreamOrder>
inline bool writeParameterHeader(OBLX_CdrStream &s, OBLX_CdrParameterHeader &header, DDS_UnsignedLong memberId,
                                 bool extended, bool mustUnderstand) noexcept {
    header = OBLX_CdrParameterHeader{memberId, 0, 0, extended, mustUnderstand};
    if (!alignForWrite(s, 4)) return false;
    if (extended) {
        if (memberId > OBLX_CDR_EXTENDED_ID_MASK || !checkSize(s, OBLX_CDR_EXTENDED_PARAMETER_HEADER_SIZE))
            return false;
        store<std::uint16_t, Order>(s, s.position, OBLX_CDR_PID_EXTENDED | OBLX_CDR_PID_FLAG_MUST_UNDERSTAND);
        store<std::uint16_t, Order>(s, s.position + 2, 8);
        std::uint32_t flags = mustUnderstand ? OBLX_CDR_EXTENDED_FLAG_MUST_UNDERSTAND : 0u;
        store<std::uint32_t, Order>(s, s.position + 4, memberId | flags);
        store<std::uint32_t, Order>(s, s.position + 8, 0);
        s.position += OBLX_CDR_EXTENDED_PARAMETER_HEADER_SIZE;
    } else {
        if (memberId >= 0x3F00u || !checkSize(s, OBLX_CDR_SHORT_PARAMETER_HEADER_SIZE)) return false;
        auto id = static_cast<std::uint16_t>(memberId | (mustUnderstand ? OBLX_CDR_PID_FLAG_MUST_UNDERSTAND : 0u));
        store<std::uint16_t, Order>(s, s.position, id);
        store<std::uint16_t, Order>(s, s.position + 2, 0);
        s.position += OBLX_CDR_SHORT_PARAMETER_HEADER_SIZE;
    }
    header.valueStart = s.position;
    return true;
}

// Writes a short header for a member whose `length` is known before it is
// written, and reserves the member's bytes: returns where they start, or
// null when they do not fit. One check covers padding, header and member.
template <typename Order = StreamOrder>
inline unsigned char *reserveParameter(OBLX_CdrStream &s, DDS_UnsignedLong memberId, DDS_UnsignedLong length) noexcept {
    if (memberId >= 0x3F00u || length > OBLX_CDR_SHORT_PARAMETER_MAX_LENGTH) return nullptr;
    DDS_UnsignedLong pad = paddingTo(s, 4);
    if (std::uint64_t{pad} + OBLX_CDR_SHORT_PARAMETER_HEADER_SIZE + length > remainder(s)) return nullptr;
    constexpr std::uint32_t zeros = 0;
    std::memcpy(s.buffer + s.position, &zeros, sizeof zeros);  // the padding; the header overwrites the rest
    DDS_UnsignedLong header = s.position + pad;
    store<std::uint16_t, Order>(s, header, static_cast<std::uint16_t>(memberId));
    store<std::uint16_t, Order>(s, header + 2, static_cast<std::uint16_t>(length));
    s.position = header + OBLX_CDR_SHORT_PARAMETER_HEADER_SIZE + length;
    return s.buffer + header + OBLX_CDR_SHORT_PARAMETER_HEADER_SIZE;
}

// A member of `count` 4-byte values behind its complete short header.
template <typename Order = StreamOrder>
inline bool writeWordsParameter(OBLX_CdrStream &s, DDS_UnsignedLong memberId, const void *values,
                                DDS_UnsignedLong count) noexcept {
    if (count > OBLX_CDR_SHORT_PARAMETER_MAX_LENGTH / 4) return false;
    unsigned char *at = reserveParameter<Order>(s, memberId, count * 4);
    if (at == nullptr) return false;
    copyWords(at, static_cast<const unsigned char *>(values), count, Order::swap(s));
    return true;
}

// A string member behind its complete short header: the string's length
// is known once it is measured, so the header needs no second visit.
template <typename Order = StreamOrder>
inline bool writeStringParameter(OBLX_CdrStream &s, DDS_UnsignedLong memberId, const char *value,
                                 DDS_UnsignedLong maximumLength) noexcept {
    if (value == nullptr) return false;
    std::size_t characters = strnlen(value, maximumLength);
    if (characters >= maximumLength || characters > OBLX_CDR_SHORT_PARAMETER_MAX_LENGTH) return false;
    auto length = static_cast<std::uint32_t>(characters + 1);
    unsigned char *at = reserveParameter<Order>(s, memberId, 4 + length);
    if (at == nullptr) return false;
    copyOrdered<4>(at, reinterpret_cast<const unsigned char *>(&length), Order::swap(s));
    std::memcpy(at + 4, value, length);
    return true;
}

template <typename Order = StreamOrder>
inline bool finishParameterHeader(OBLX_CdrStream &s, const OBLX_CdrParameterHeader &header) noexcept {
    if (header.valueStart > s.position || header.valueStart < OBLX_CDR_SHORT_PARAMETER_HEADER_SIZE) return false;
    DDS_UnsignedLong length = s.position - header.valueStart;
    if (header.extended) {
        store<std::uint32_t, Order>(s, header.valueStart - 4, length);
        return true;
    }
    if (length > OBLX_CDR_SHORT_PARAMETER_MAX_LENGTH) return false;
    store<std::uint16_t, Order>(s, header.valueStart - 2, static_cast<std::uint16_t>(length));
    return true;
}

template <typename Order = StreamOrder>
inline bool writeListEnd(OBLX_CdrStream &s) noexcept {
    if (!alignForWrite(s, 4) || !checkSize(s, OBLX_CDR_SHORT_PARAMETER_HEADER_SIZE)) return false;
    store<std::uint16_t, Order>(s, s.position, OBLX_CDR_PID_LIST_END | OBLX_CDR_PID_FLAG_MUST_UNDERSTAND);
    store<std::uint16_t, Order>(s, s.position + 2, 0);
    s.position += OBLX_CDR_SHORT_PARAMETER_HEADER_SIZE;
    return true;
}

template <typename Order = StreamOrder>
inline bool readExtendedParameterHeader(OBLX_CdrStream &s, std::uint16_t shortLength,
                                        OBLX_CdrParameterHeader &header) noexcept {
    if (shortLength != 8 || !checkSize(s, 8)) return false;
    std::uint32_t id = load<std::uint32_t, Order>(s, s.position);
    header.memberId = id & OBLX_CDR_EXTENDED_ID_MASK;
    header.mustUnderstand = (id & OBLX_CDR_EXTENDED_FLAG_MUST_UNDERSTAND) != 0;
    header.length = load<std::uint32_t, Order>(s, s.position + 4);
    header.extended = true;
    s.position += 8;
    return true;
}

template <typename Order = StreamOrder>
inline bool readParameterHeader(OBLX_CdrStream &s, OBLX_CdrParameterHeader &header) noexcept {
    header = OBLX_CdrParameterHeader{};
    if (!alignForRead(s, 4) || !checkSize(s, OBLX_CDR_SHORT_PARAMETER_HEADER_SIZE)) return false;
    std::uint16_t rawId = load<std::uint16_t, Order>(s, s.position);
    std::uint16_t shortLength = load<std::uint16_t, Order>(s, s.position + 2);
    s.position += OBLX_CDR_SHORT_PARAMETER_HEADER_SIZE;
    header.memberId = rawId & OBLX_CDR_PID_MASK;
    header.mustUnderstand = (rawId & OBLX_CDR_PID_FLAG_MUST_UNDERSTAND) != 0;
    header.length = shortLength;
    if (header.memberId == OBLX_CDR_PID_EXTENDED && !readExtendedParameterHeader<Order>(s, shortLength, header))
        return false;
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
