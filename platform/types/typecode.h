/* Type codes: the one description of a data type's shape and C layout.
 *
 * Every data type has one static DDS_TypeCode. It says what the type is
 * (kind, name, members, bounds, keys, member ids, union labels) and where
 * each member lives in the C sample (byte offsets and sizes), so that one
 * generic walker derives the sample functions, the encoder, the decoder,
 * the size computations and the key handling from it.
 *
 * A type code is read-only for its users: take it from <Type>_get_typecode()
 * (which completes the member type pointers on the first call) and read it
 * through the accessors below or the documented fields. */
#ifndef VEXAR_PLATFORM_TYPECODE_H
#define VEXAR_PLATFORM_TYPECODE_H

#include <stddef.h>

#include "platform/dds_types.h"
#include "platform/types/type_params.h"

VEXAR_BEGIN_DECLS

/* The kind of a type code (the OMG TCKind numbering). */
typedef enum DDS_TCKind {
    DDS_TK_NULL = 0,
    DDS_TK_SHORT = 1,
    DDS_TK_LONG = 2,
    DDS_TK_USHORT = 3,
    DDS_TK_ULONG = 4,
    DDS_TK_FLOAT = 5,
    DDS_TK_DOUBLE = 6,
    DDS_TK_BOOLEAN = 7,
    DDS_TK_CHAR = 8,
    DDS_TK_OCTET = 9,
    DDS_TK_STRUCT = 10,
    DDS_TK_UNION = 11,
    DDS_TK_ENUM = 12,
    DDS_TK_STRING = 13,
    DDS_TK_SEQUENCE = 14,
    DDS_TK_ARRAY = 15,
    DDS_TK_ALIAS = 16,
    DDS_TK_LONGLONG = 17,
    DDS_TK_ULONGLONG = 18
} DDS_TCKind;

/* Added to the kind of a mutable type: it is encoded member by member as a
 * parameter list. Types without it are extensible (plain CDR). */
#define DDS_TK_MUTABLE_EXTENSIBILITY 0x4000
/* Mask that strips extensibility bits from a stored kind. */
#define DDS_TK_KIND_MASK 0x00ff

/* Member flags of struct members; union members and enumerators are plain. */
typedef DDS_Octet DDS_TypeCodeMemberFlags;
#define DDS_TYPECODE_NONKEY_MEMBER ((DDS_TypeCodeMemberFlags)0)
#define DDS_TYPECODE_KEY_MEMBER ((DDS_TypeCodeMemberFlags)1)
#define DDS_TYPECODE_NONKEY_REQUIRED_MEMBER ((DDS_TypeCodeMemberFlags)2)

typedef DDS_Short DDS_Visibility;
#define DDS_PRIVATE_MEMBER ((DDS_Visibility)0)
#define DDS_PUBLIC_MEMBER ((DDS_Visibility)1)

/* No default member (DDS_TypeCode.default_index). */
#define DDS_TYPECODE_NO_DEFAULT_INDEX (-1)

typedef struct DDS_TypeCode DDS_TypeCode;
typedef struct DDS_TypeCodeSequenceOps DDS_TypeCodeSequenceOps;

/* One member of a struct or union, or one enumerator of an enumeration. */
typedef struct DDS_TypeCodeMember {
    const char *name;
    /* Parameter id on the wire: struct members 0..n-1, union members 1..n
     * (0 is the union's discriminator); enumerators 0..n-1. */
    DDS_Long id;
    DDS_TypeCodeMemberFlags flags;
    DDS_Visibility visibility;
    /* The member's own type code; null for enumerators. Filled by the
     * owner's get_typecode() before the code is handed out. */
    const DDS_TypeCode *type;
    /* Union member: the discriminator value that selects it.
     * Enumerator: its value (ordinal). Struct member: 0. */
    DDS_Long label;
    /* Byte offset of the member inside the C sample. For a union it is
     * measured from the start of the union record (whose first field is the
     * 32-bit discriminator `_d` at offset 0). Enumerators: 0. */
    size_t offset;
} DDS_TypeCodeMember;

/* How a walker reaches inside a sequence member without knowing its
 * element type: thin adapters over that <Type>Seq's own operations. */
struct DDS_TypeCodeSequenceOps {
    DDS_Boolean (*initialize)(void *seq);
    DDS_Boolean (*finalize)(void *seq);
    /* Deep copy; grows dst when needed. */
    DDS_Boolean (*copy)(void *dst, const void *src);
    DDS_Long (*get_length)(void *seq);
    DDS_Boolean (*set_length)(void *seq, DDS_Long length);
    DDS_Boolean (*set_maximum)(void *seq, DDS_Long maximum);
    /* Grows an owning sequence to `maximum` when needed, then sets `length`. */
    DDS_Boolean (*ensure_length)(void *seq, DDS_Long length, DDS_Long maximum);
    /* Element `index` (0 <= index < length), or null. */
    void *(*get_reference)(void *seq, DDS_Long index);
    DDS_Boolean (*set_element_allocation_params)(void *seq, const DDS_TypeAllocationParams_t *params);
    DDS_Boolean (*set_element_deallocation_params)(void *seq, const DDS_TypeDeallocationParams_t *params);
};

/* A type code. Which fields matter depends on the kind:
 *
 *   kind        members            length        dimension  content_type  discriminator_type
 *   STRUCT      fields in order    -             -          -             -
 *   UNION       branches           -             -          -             the discriminator's
 *   ENUM        enumerators        -             -          -             -
 *   STRING      -                  max chars     -          -             -
 *   SEQUENCE    -                  max elements  -          element       -
 *   ARRAY       -                  -             elements   element       -
 *   LONG etc.   -                  -             -          -             -
 *
 * A C string sample is a `char *` to a buffer of at least length+1 bytes;
 * a sequence sample is a <Type>Seq record reached through sequence_ops; an
 * array sample is `dimension` elements of content_type->sample_size bytes
 * laid out back to back. */
struct DDS_TypeCode {
    /* A DDS_TCKind, plus DDS_TK_MUTABLE_EXTENSIBILITY for mutable types. */
    DDS_Long kind;
    /* Fully scoped name ("QTV::VX::LogMessage"); null for anonymous codes. */
    const char *name;
    DDS_UnsignedLong member_count;
    const DDS_TypeCodeMember *members;
    /* STRING: maximum number of characters (without the NUL).
     * SEQUENCE: maximum number of elements. */
    DDS_UnsignedLong length;
    /* ARRAY: number of elements (one dimension). */
    DDS_UnsignedLong dimension;
    /* SEQUENCE, ARRAY: element type. */
    const DDS_TypeCode *content_type;
    /* UNION: the discriminator's type (an enumeration or integer). */
    const DDS_TypeCode *discriminator_type;
    /* UNION: index of the default member, DDS_TYPECODE_NO_DEFAULT_INDEX if none. */
    DDS_Long default_index;
    /* sizeof the C sample (string: a pointer; sequence: the Seq record;
     * array: all elements). */
    size_t sample_size;
    /* SEQUENCE: the element sequence's operations; null otherwise. */
    const DDS_TypeCodeSequenceOps *sequence_ops;
};

/* The built-in codes of a signed 32-bit and an unsigned 64-bit integer. */
VEXAR_API extern const DDS_TypeCode DDS_g_tc_long;
VEXAR_API extern const DDS_TypeCode DDS_g_tc_ulonglong;

/* Read accessors. None of them checks its arguments beyond what it says:
 * a null type code gives DDS_TK_NULL, 0 or null; a member index out of
 * range gives null, 0 or DDS_BOOLEAN_FALSE. */
VEXAR_API DDS_TCKind DDS_TypeCode_kind(const DDS_TypeCode *self);
VEXAR_API DDS_Long DDS_TypeCode_kind_with_extensibility(const DDS_TypeCode *self);
VEXAR_API DDS_Boolean DDS_TypeCode_is_mutable(const DDS_TypeCode *self);
VEXAR_API const char *DDS_TypeCode_name(const DDS_TypeCode *self);
VEXAR_API DDS_UnsignedLong DDS_TypeCode_member_count(const DDS_TypeCode *self);
VEXAR_API const DDS_TypeCodeMember *DDS_TypeCode_member(const DDS_TypeCode *self, DDS_UnsignedLong index);
VEXAR_API const char *DDS_TypeCode_member_name(const DDS_TypeCode *self, DDS_UnsignedLong index);
VEXAR_API DDS_Long DDS_TypeCode_member_id(const DDS_TypeCode *self, DDS_UnsignedLong index);
VEXAR_API const DDS_TypeCode *DDS_TypeCode_member_type(const DDS_TypeCode *self, DDS_UnsignedLong index);
VEXAR_API DDS_TypeCodeMemberFlags DDS_TypeCode_member_flags(const DDS_TypeCode *self, DDS_UnsignedLong index);
VEXAR_API DDS_Boolean DDS_TypeCode_is_member_key(const DDS_TypeCode *self, DDS_UnsignedLong index);
VEXAR_API DDS_Visibility DDS_TypeCode_member_visibility(const DDS_TypeCode *self, DDS_UnsignedLong index);
/* Union member label or enumerator ordinal. */
VEXAR_API DDS_Long DDS_TypeCode_member_label(const DDS_TypeCode *self, DDS_UnsignedLong index);
VEXAR_API size_t DDS_TypeCode_member_offset(const DDS_TypeCode *self, DDS_UnsignedLong index);
/* Index of the union member that `discriminator` selects: the member with
 * that label, else the default member, else -1 (no branch is active). */
VEXAR_API DDS_Long DDS_TypeCode_find_member_by_label(const DDS_TypeCode *self, DDS_Long discriminator);
/* String or sequence bound. */
VEXAR_API DDS_UnsignedLong DDS_TypeCode_length(const DDS_TypeCode *self);
VEXAR_API DDS_UnsignedLong DDS_TypeCode_array_dimension(const DDS_TypeCode *self);
VEXAR_API const DDS_TypeCode *DDS_TypeCode_content_type(const DDS_TypeCode *self);
VEXAR_API const DDS_TypeCode *DDS_TypeCode_discriminator_type(const DDS_TypeCode *self);
VEXAR_API DDS_Long DDS_TypeCode_default_index(const DDS_TypeCode *self);
/* The discriminator of a freshly initialized union: the default member's
 * label, else the first member's label. */
VEXAR_API DDS_Long DDS_TypeCode_default_discriminator(const DDS_TypeCode *self);
VEXAR_API size_t DDS_TypeCode_sample_size(const DDS_TypeCode *self);

VEXAR_END_DECLS

#endif
