/* The CDR stream: a cursor over a caller's buffer that reads and writes
 * aligned CDR values in either byte order, bounded strings, sequences of
 * composite elements and the parameter headers of the parameter-list
 * (PL_CDR) encoding of mutable types.
 *
 * The record is plain so a stream can live on the stack; nothing here
 * allocates. Every read checks the bytes that remain first, so no input can
 * move the cursor past the end of the buffer, whatever its bytes claim.
 * Alignment counts from the alignment origin (the start of the buffer, or
 * the body after an encapsulation header). Operations return
 * DDS_BOOLEAN_TRUE on success; after a failure the position is of no
 * further use. */
#ifndef VEXAR_PLATFORM_CDR_STREAM_H
#define VEXAR_PLATFORM_CDR_STREAM_H

#include "platform/dds_types.h"

VEXAR_BEGIN_DECLS

/* Encapsulation identifiers of a serialized sample. */
#define OBLX_CDR_ENCAPSULATION_CDR_BE ((DDS_UnsignedShort)0)
#define OBLX_CDR_ENCAPSULATION_CDR_LE ((DDS_UnsignedShort)1)
#define OBLX_CDR_ENCAPSULATION_PL_CDR_BE ((DDS_UnsignedShort)2)
#define OBLX_CDR_ENCAPSULATION_PL_CDR_LE ((DDS_UnsignedShort)3)
#define OBLX_CDR_ENCAPSULATION_HEADER_SIZE 4u

/* Parameter identifiers with a meaning of their own, and the flag bits of
 * the 16-bit identifier field (the low 14 bits are the identifier). */
#define OBLX_CDR_PID_EXTENDED 0x3F01u
#define OBLX_CDR_PID_LIST_END 0x3F02u
#define OBLX_CDR_PID_IGNORE 0x3F03u
#define OBLX_CDR_PID_MASK 0x3FFFu
#define OBLX_CDR_PID_FLAG_MUST_UNDERSTAND 0x4000u
#define OBLX_CDR_PID_FLAG_IMPL_EXTENSION 0x8000u
/* The same flags in the 32-bit identifier of an extended header. */
#define OBLX_CDR_EXTENDED_ID_MASK 0x0FFFFFFFu
#define OBLX_CDR_EXTENDED_FLAG_MUST_UNDERSTAND 0x40000000u
#define OBLX_CDR_EXTENDED_FLAG_IMPL_EXTENSION 0x80000000u
/* Header sizes: short form, and extended form (short header + id + length). */
#define OBLX_CDR_SHORT_PARAMETER_HEADER_SIZE 4u
#define OBLX_CDR_EXTENDED_PARAMETER_HEADER_SIZE 12u
/* The largest member length a short header can carry. */
#define OBLX_CDR_SHORT_PARAMETER_MAX_LENGTH 0xFFFFu

typedef struct OBLX_CdrStream {
    unsigned char *buffer;
    DDS_UnsignedLong length;          /* bytes the stream may touch */
    DDS_UnsignedLong position;        /* next byte to read or write */
    DDS_UnsignedLong alignmentOrigin; /* alignment counts from here */
    DDS_Boolean bigEndian;            /* the stream's byte order */
    DDS_Boolean needByteSwap;         /* it differs from this machine's */
    DDS_Boolean dirty;                /* a value was started in it */
    DDS_Boolean skipListEnd;          /* the current list writes no sentinel */
    DDS_Boolean unassignable;         /* a value read had no valid meaning */
} OBLX_CdrStream;

/* A parameter header: filled when one is written (to finish it later) or
 * read. `valueStart` is the position of the member's first byte. */
typedef struct OBLX_CdrParameterHeader {
    DDS_UnsignedLong memberId; /* flags removed; LIST_END / IGNORE as such */
    DDS_UnsignedLong length;   /* the member's byte length */
    DDS_UnsignedLong valueStart;
    DDS_Boolean extended;
    DDS_Boolean mustUnderstand;
} OBLX_CdrParameterHeader;

/* Reads or writes one composite element of an array or sequence. Writers
 * receive the element through `element` and must not change it. */
typedef DDS_Boolean (*OBLX_CdrElementFunction)(OBLX_CdrStream *stream, void *element, void *context);

/* --- set-up and position ------------------------------------------------ */

/* A stream over `length` bytes of `buffer` in this machine's byte order, at
 * position 0, with every mark clear. */
VEXAR_API void OBLX_CdrStream_init(OBLX_CdrStream *self, void *buffer, DDS_UnsignedLong length);
/* The same over bytes that will only be read. */
VEXAR_API void OBLX_CdrStream_initForRead(OBLX_CdrStream *self, const void *buffer, DDS_UnsignedLong length);
VEXAR_API void OBLX_CdrStream_setBigEndian(OBLX_CdrStream *self, DDS_Boolean bigEndian);
VEXAR_API DDS_Boolean OBLX_CdrStream_isBigEndian(const OBLX_CdrStream *self);
VEXAR_API DDS_Boolean OBLX_CdrStream_isNativeBigEndian(void);

VEXAR_API unsigned char *OBLX_CdrStream_getBuffer(const OBLX_CdrStream *self);
VEXAR_API DDS_UnsignedLong OBLX_CdrStream_getLength(const OBLX_CdrStream *self);
VEXAR_API DDS_UnsignedLong OBLX_CdrStream_getPosition(const OBLX_CdrStream *self);
/* Fails (and stays put) when `position` is past the end. */
VEXAR_API DDS_Boolean OBLX_CdrStream_setPosition(OBLX_CdrStream *self, DDS_UnsignedLong position);
VEXAR_API DDS_UnsignedLong OBLX_CdrStream_getRemainder(const OBLX_CdrStream *self);
/* True when at least `size` bytes remain. */
VEXAR_API DDS_Boolean OBLX_CdrStream_checkSize(const OBLX_CdrStream *self, DDS_UnsignedLong size);

/* Shortens the stream to end at `end` (never lengthens it) and returns the
 * previous length, for restoreLength: keeps a member's reader inside its
 * parameter. */
VEXAR_API DDS_UnsignedLong OBLX_CdrStream_limitLength(OBLX_CdrStream *self, DDS_UnsignedLong end);
VEXAR_API void OBLX_CdrStream_restoreLength(OBLX_CdrStream *self, DDS_UnsignedLong length);

/* --- alignment ---------------------------------------------------------- */

/* Moves to the next multiple of `alignment` (1, 2, 4 or 8) from the origin. */
VEXAR_API DDS_Boolean OBLX_CdrStream_alignForRead(OBLX_CdrStream *self, DDS_UnsignedLong alignment);
/* The same, writing zero padding bytes. */
VEXAR_API DDS_Boolean OBLX_CdrStream_alignForWrite(OBLX_CdrStream *self, DDS_UnsignedLong alignment);
/* Makes the current position the alignment origin; returns the old origin. */
VEXAR_API DDS_UnsignedLong OBLX_CdrStream_resetAlignment(OBLX_CdrStream *self);
VEXAR_API void OBLX_CdrStream_restoreAlignment(OBLX_CdrStream *self, DDS_UnsignedLong origin);

/* --- primitive values (aligned to their size, in the stream's order) ---- */

VEXAR_API DDS_Boolean OBLX_CdrStream_serializeUnsignedLong(OBLX_CdrStream *self, DDS_UnsignedLong value);
VEXAR_API DDS_Boolean OBLX_CdrStream_deserializeUnsignedLong(OBLX_CdrStream *self, DDS_UnsignedLong *value);
VEXAR_API DDS_Boolean OBLX_CdrStream_serializeLong(OBLX_CdrStream *self, DDS_Long value);
VEXAR_API DDS_Boolean OBLX_CdrStream_deserializeLong(OBLX_CdrStream *self, DDS_Long *value);
VEXAR_API DDS_Boolean OBLX_CdrStream_serializeUnsignedShort(OBLX_CdrStream *self, DDS_UnsignedShort value);
VEXAR_API DDS_Boolean OBLX_CdrStream_deserializeUnsignedShort(OBLX_CdrStream *self, DDS_UnsignedShort *value);

/* --- encapsulation header ----------------------------------------------- */

/* Writes the identifier big-endian whatever the stream's order, then the
 * options. Does not change the stream's order or alignment origin. */
VEXAR_API DDS_Boolean OBLX_CdrStream_serializeEncapsulation(OBLX_CdrStream *self, DDS_UnsignedShort id,
                                                            DDS_UnsignedShort options);
VEXAR_API DDS_Boolean OBLX_CdrStream_deserializeEncapsulation(OBLX_CdrStream *self, DDS_UnsignedShort *id,
                                                              DDS_UnsignedShort *options);

/* --- strings ------------------------------------------------------------ */

/* A 4-byte length counting the NUL, then the characters and the NUL.
 * `maximumLength` bounds that length (characters + 1). A null string or one
 * over the bound fails. */
VEXAR_API DDS_Boolean OBLX_CdrStream_serializeString(OBLX_CdrStream *self, const char *value,
                                                     DDS_UnsignedLong maximumLength);
/* Reads into `buffer`, which holds `maximumLength` bytes. Fails when the
 * length is over the bound or the text is not NUL-terminated. */
VEXAR_API DDS_Boolean OBLX_CdrStream_deserializeString(OBLX_CdrStream *self, char *buffer,
                                                       DDS_UnsignedLong maximumLength);
/* Passes over a string without storing it, checking the same bound. */
VEXAR_API DDS_Boolean OBLX_CdrStream_skipString(OBLX_CdrStream *self, DDS_UnsignedLong maximumLength);

/* --- arrays and sequences of composite elements -------------------------- */

/* `count` elements of `elementSize` bytes, each through `function`. */
VEXAR_API DDS_Boolean OBLX_CdrStream_serializeComplexArray(OBLX_CdrStream *self, const void *elements,
                                                           DDS_UnsignedLong count, size_t elementSize,
                                                           OBLX_CdrElementFunction function, void *context);
VEXAR_API DDS_Boolean OBLX_CdrStream_deserializeComplexArray(OBLX_CdrStream *self, void *elements,
                                                             DDS_UnsignedLong count, size_t elementSize,
                                                             OBLX_CdrElementFunction function, void *context);
/* A 4-byte count, then the elements. A length over `maximum` fails. */
VEXAR_API DDS_Boolean OBLX_CdrStream_serializeComplexSequence(OBLX_CdrStream *self, const void *elements,
                                                              DDS_UnsignedLong length, DDS_UnsignedLong maximum,
                                                              size_t elementSize, OBLX_CdrElementFunction function,
                                                              void *context);
/* Stores the count read in `length`; a count over `maximum` fails. */
VEXAR_API DDS_Boolean OBLX_CdrStream_deserializeComplexSequence(OBLX_CdrStream *self, void *elements,
                                                                DDS_UnsignedLong *length, DDS_UnsignedLong maximum,
                                                                size_t elementSize, OBLX_CdrElementFunction function,
                                                                void *context);

/* --- parameter headers --------------------------------------------------- */

/* Aligns to 4 and writes a header for `memberId` with a zero length, to be
 * completed by finishParameterHeader once the member is written. The short
 * form takes identifiers below 0x3F00 only. */
VEXAR_API DDS_Boolean OBLX_CdrStream_serializeParameterHeader(OBLX_CdrStream *self, OBLX_CdrParameterHeader *header,
                                                              DDS_UnsignedLong memberId, DDS_Boolean extended,
                                                              DDS_Boolean mustUnderstand);
/* Writes the member's length (bytes since valueStart) into its header; a
 * short header fails when the member is longer than 65535 bytes. */
VEXAR_API DDS_Boolean OBLX_CdrStream_finishParameterHeader(OBLX_CdrStream *self, const OBLX_CdrParameterHeader *header);
/* The list's end: identifier LIST_END with must-understand, length 0. */
VEXAR_API DDS_Boolean OBLX_CdrStream_serializeListEnd(OBLX_CdrStream *self);
/* Aligns to 4 and reads a header in either form. Fails when the length
 * claims more bytes than remain. */
VEXAR_API DDS_Boolean OBLX_CdrStream_deserializeParameterHeader(OBLX_CdrStream *self, OBLX_CdrParameterHeader *header);
/* True for the short-form LIST_END header that ends a list. */
VEXAR_API DDS_Boolean OBLX_CdrParameterHeader_isListEnd(const OBLX_CdrParameterHeader *header);
/* Moves to the byte after the member, whatever its reader consumed. */
VEXAR_API DDS_Boolean OBLX_CdrStream_moveToNextParameterHeader(OBLX_CdrStream *self,
                                                               const OBLX_CdrParameterHeader *header);

/* --- marks -------------------------------------------------------------- */

VEXAR_API DDS_Boolean OBLX_CdrStream_isDirty(const OBLX_CdrStream *self);
VEXAR_API void OBLX_CdrStream_setDirty(OBLX_CdrStream *self, DDS_Boolean dirty);
VEXAR_API DDS_Boolean OBLX_CdrStream_getSkipListEnd(const OBLX_CdrStream *self);
VEXAR_API void OBLX_CdrStream_setSkipListEnd(OBLX_CdrStream *self, DDS_Boolean skip);
VEXAR_API DDS_Boolean OBLX_CdrStream_getUnassignable(const OBLX_CdrStream *self);
VEXAR_API void OBLX_CdrStream_setUnassignable(OBLX_CdrStream *self, DDS_Boolean unassignable);

VEXAR_END_DECLS

#endif
