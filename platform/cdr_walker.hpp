// The CDR encoding of any data type, derived from its type code.
//
// One walk over DDS_TypeCode writes, reads, skips, measures and keys a
// sample of any type: mutable structs and unions as parameter lists
// (member id and length before each member, a LIST_END sentinel after the
// last), everything else as plain CDR. The type plugins of type/vexarPlugin.h
// are thin wrappers over these functions.
#pragma once

#include <cstdint>

#include "platform/cdr_stream.h"
#include "platform/typecode.h"

namespace vexar::cdr {

// --- what a type code says about encoding --------------------------------

inline DDS_TCKind kindOf(const DDS_TypeCode &type) noexcept {
    return static_cast<DDS_TCKind>(type.kind & DDS_TK_KIND_MASK);
}

inline bool isMutable(const DDS_TypeCode &type) noexcept {
    return (type.kind & DDS_TK_MUTABLE_EXTENSIBILITY) != 0;
}

// Bytes of a primitive or enumeration on the wire; 0 for anything else.
DDS_UnsignedLong primitiveSize(const DDS_TypeCode &type) noexcept;

inline bool isPrimitive(const DDS_TypeCode &type) noexcept { return primitiveSize(type) != 0; }

// True when some member of a struct is flagged as a key.
bool hasKeyMembers(const DDS_TypeCode &type) noexcept;

// Whether member `index` belongs to the type's key form: the flagged key
// members, or every member when none is flagged (an unkeyed type, or a
// nested type used whole as a key member).
bool isKeyFormMember(const DDS_TypeCode &type, DDS_UnsignedLong index) noexcept;

// The union member selected by discriminator value `label`, or null.
const DDS_TypeCodeMember *selectedBranch(const DDS_TypeCode &type, DDS_Long label) noexcept;

// --- writing -------------------------------------------------------------

struct Encoding {
    bool extendedHeaders = false; // composite and string members behind extended headers
    bool keyForm = false;         // key members only
};

// Writes the value at `sample` (no encapsulation header).
bool serialize(OBLX_CdrStream &stream, const DDS_TypeCode &type, const void *sample,
               const Encoding &encoding) noexcept;

// The bytes that serialize would write from position `start` (alignment
// counted from 0), or 0 when the value cannot be written.
std::uint64_t serializedSize(const DDS_TypeCode &type, const void *sample, std::uint64_t start,
                             const Encoding &encoding) noexcept;

// --- reading -------------------------------------------------------------

struct Decoding {
    bool keyForm = false;  // the bytes hold the key form (as serialize with keyForm)
    bool keysOnly = false; // store key members only; pass over the others
};

// Reads a value into `sample`, whose strings already hold buffers at their
// bounds. A null `sample` passes over the value without storing it. An
// enumeration out of range leaves its field unchanged and sets the stream's
// unassignable mark.
bool deserialize(OBLX_CdrStream &stream, const DDS_TypeCode &type, void *sample, const Decoding &decoding) noexcept;

inline bool skip(OBLX_CdrStream &stream, const DDS_TypeCode &type) noexcept {
    return deserialize(stream, type, nullptr, Decoding{});
}

// --- size bounds ---------------------------------------------------------

enum class Bound { largest, smallest };

// The largest or smallest bytes that a value of `type` takes from position
// `start` (alignment counted from 0). The largest allows an extended header
// for every member; the smallest counts empty strings and sequences.
std::uint64_t boundSize(const DDS_TypeCode &type, Bound bound, std::uint64_t start, bool keyForm) noexcept;

// --- keys ----------------------------------------------------------------

// Copies the key-form members of `src` into `dst`.
bool copyKeyMembers(const DDS_TypeCode &type, void *dst, const void *src) noexcept;

// The 16-byte key hash of serialized key bytes: the bytes zero-padded when
// the key's largest size is at most 16, else their MD5 digest.
void keyHashOf(const unsigned char *key, DDS_UnsignedLong length, std::uint64_t keyMaxSize,
               DDS_Octet (&hash)[16]) noexcept;

}  // namespace vexar::cdr
