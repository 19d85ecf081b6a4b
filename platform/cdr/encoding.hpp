// The CDR encoding of any data type, derived from its type code.
//
// A type code is compiled once into a Plan: a flat list of steps (a value
// at an offset, a string with its bound, a sequence, a parameter list and
// its members) that the encoder and decoder run without looking at the type
// code again. Mutable structs and unions are written as parameter lists
// (member id and length before each member, a LIST_END sentinel after the
// last), everything else as plain CDR. The type plugins of
// type/vexarPlugin.h are thin wrappers over these functions.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/cdr/cdr_stream.h"
#include "platform/types/typecode.h"

namespace vexar::cdr {

// --- what a type code says about encoding --------------------------------

inline DDS_TCKind kindOf(const DDS_TypeCode &type) noexcept {
    return static_cast<DDS_TCKind>(type.kind & DDS_TK_KIND_MASK);
}

inline bool isMutable(const DDS_TypeCode &type) noexcept { return (type.kind & DDS_TK_MUTABLE_EXTENSIBILITY) != 0; }

// Bytes of a primitive or enumeration on the wire; 0 for anything else.
inline DDS_UnsignedLong primitiveSize(const DDS_TypeCode &type) noexcept {
    switch (kindOf(type)) {
    case DDS_TK_BOOLEAN:
    case DDS_TK_CHAR:
    case DDS_TK_OCTET:
        return 1;
    case DDS_TK_SHORT:
    case DDS_TK_USHORT:
        return 2;
    case DDS_TK_LONG:
    case DDS_TK_ULONG:
    case DDS_TK_FLOAT:
    case DDS_TK_ENUM:
        return 4;
    case DDS_TK_DOUBLE:
    case DDS_TK_LONGLONG:
    case DDS_TK_ULONGLONG:
        return 8;
    default:
        return 0;
    }
}

inline bool isPrimitive(const DDS_TypeCode &type) noexcept { return primitiveSize(type) != 0; }

// True when some member of a struct is flagged as a key.
bool hasKeyMembers(const DDS_TypeCode &type) noexcept;

// Whether member `index` belongs to the type's key form: the flagged key
// members, or every member when none is flagged (an unkeyed type, or a
// nested type used whole as a key member).
bool isKeyFormMember(const DDS_TypeCode &type, DDS_UnsignedLong index) noexcept;

// --- plans ---------------------------------------------------------------

enum class StepKind : std::uint8_t {
    words,        // `bound` consecutive 4-byte values from `offset`, one step each following up to `end`
    primitive,    // `size` bytes at `offset`
    enumeration,  // 4 bytes at `offset`: one of `low`..`high` when `dense`, else of `type`'s values
    string,       // a char * at `offset`; `bound` is the longest length with the NUL
    sequence,     // the record at `offset` (`type`); the element's steps follow up to `end`
    list,         // a parameter list (a union's when `isUnion`) at `offset`; member steps follow up to `end`
    member,       // one member of a list: `id`, header form, union `label`; its steps follow up to `end`;
                  // `bound` is its length when that is fixed (one `words` step), else 0
};

struct Step {
    StepKind kind;
    std::uint8_t size = 0;
    bool extendedHeader = false;
    bool kept = true;  // false: read and dropped (a non-key member when only keys are read)
    bool isUnion = false;
    bool isDefault = false;  // the union member chosen when no label matches
    bool dense = false;      // an enumeration whose values are exactly `low`..`high`
    DDS_UnsignedLong id = 0;
    DDS_UnsignedLong bound = 0;
    DDS_Long label = 0;
    DDS_Long low = 0, high = 0;
    std::uint32_t end = 0;
    std::uint32_t checks = 0, checksEnd = 0;  // words: its enumerations' EnumChecks
    std::size_t offset = 0;                   // in the sample; a sequence's element steps: in the element
    const DDS_TypeCode *type = nullptr;
};

// An enumeration inside a `words` step, as reading checks it: the byte
// `position` in the run, the range of its values, and its type code when
// the values do not fill that range.
struct EnumCheck {
    std::uint32_t position;
    DDS_Long low, high;
    const DDS_TypeCode *sparse;
};

// How resetToInitialValues puts one part of a sample back, compiled from
// the steps: runs of zero bytes merged, the rest value by value.
struct ResetStep {
    enum class Kind : std::uint8_t { zeros, word, string, sequence } kind;
    std::size_t offset;
    std::size_t size = 0;                // zeros
    DDS_Long value = 0;                  // word: an enumeration's first value, a union's default discriminator
    const DDS_TypeCode *type = nullptr;  // sequence
};

// What the encoder runs: the steps flattened for writing. Struct members
// and parameter lists open and close in line, so writing a sample is one
// loop; only a sequence's elements and a union's chosen branch run as
// sub-ranges. `slot` is the nesting depth of a list or member within its
// range, where its header or sentinel mark waits to be completed.
enum class WriteKind : std::uint8_t {
    words,         // `count` 4-byte values from `offset`
    primitive,     // `size` bytes at `offset`
    string,        // a char * at `offset`; `count` is the longest length with the NUL
    fixedMember,   // a short header for `id` with length 4 * `count`, then `count` words from `offset`
    stringMember,  // a short header for `id`, then the string at `offset` (`count` as for string)
    openMember,    // a header for `id` (`extendedHeader`), its length completed by closeMember
    closeMember,
    openList,  // a parameter list: closeList writes its sentinel unless the caller skips it
    closeList,
    sequence,  // the record at `offset` (`type`): a count <= `count`, then each element by ops up to `end`
    select,    // a union's branch: the `branch` op after it whose label matches the discriminator at `offset`
    branch,    // `label` (`isDefault`); its ops follow up to `end`
};

struct WriteOp {
    WriteKind kind;
    std::uint8_t size = 0;
    std::uint8_t slot = 0;
    bool extendedHeader = false;
    bool isDefault = false;
    DDS_UnsignedLong id = 0;
    DDS_UnsignedLong count = 0;
    DDS_Long label = 0;
    std::uint32_t end = 0;
    std::size_t offset = 0;
    const DDS_TypeCode *type = nullptr;
};

// Lists and members nest at most this deep within one range of write ops.
inline constexpr std::size_t kMaxWriteNesting = 32;

struct PlanOptions {
    bool extendedHeaders = false;  // composite and string members behind extended headers
    bool keyForm = false;          // only the key members are on the wire
    bool keysOnly = false;         // reading keeps only the key members
};

class Plan {
public:
    Plan() = default;
    Plan(const DDS_TypeCode &type, const PlanOptions &options) noexcept;

    // False when the type code holds something the encoding cannot carry
    // (or compiling ran out of memory): every use of the plan then fails.
    bool valid() const noexcept { return valid_; }
    const std::vector<Step> &steps() const noexcept { return steps_; }
    const std::vector<ResetStep> &resetSteps() const noexcept { return resetSteps_; }
    const std::vector<WriteOp> &writeOps() const noexcept { return writeOps_; }
    const std::vector<EnumCheck> &enumChecks() const noexcept { return enumChecks_; }
    bool hasLists() const noexcept { return hasLists_; }

private:
    std::vector<Step> steps_;
    std::vector<ResetStep> resetSteps_;
    std::vector<WriteOp> writeOps_;
    std::vector<EnumCheck> enumChecks_;
    bool hasLists_ = false;
    bool valid_ = false;
};

// --- writing and reading -----------------------------------------------

// Writes the value at `sample` (no encapsulation header).
bool serialize(OBLX_CdrStream &stream, const Plan &plan, const void *sample) noexcept;

// The bytes that serialize would write from position `start` (alignment
// counted from 0), or 0 when the value cannot be written.
std::uint64_t serializedSize(const Plan &plan, const void *sample, std::uint64_t start) noexcept;

// Reads a value into `sample`, whose strings already hold buffers at their
// bounds; a null `sample` passes over the value. An enumeration out of range
// leaves its field unchanged and sets the stream's unassignable mark.
bool deserialize(OBLX_CdrStream &stream, const Plan &plan, void *sample) noexcept;

// True when deserialize would read the value completely, every enumeration
// in range, without needing a sample: the members the plan keeps are stored
// into `kept` (a null `kept` stores nothing), the rest only checked.
bool check(OBLX_CdrStream &stream, const Plan &plan, void *kept) noexcept;

// Puts every member back to its initial value without allocating: numbers
// 0, enumerations their first enumerator, strings emptied in place,
// sequences emptied, a union's discriminator its default.
void resetToInitialValues(const Plan &plan, void *sample) noexcept;

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
// the key's largest size is at most 16, else their MD5 digest (the last
// few digests of each thread are kept and reused for the same bytes).
void keyHashOf(const unsigned char *key, DDS_UnsignedLong length, std::uint64_t keyMaxSize,
               DDS_Octet (&hash)[16]) noexcept;

}  // namespace vexar::cdr
