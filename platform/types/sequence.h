/* The sequence family: a growable, loanable array of elements.
 *
 * A sequence either owns one contiguous array of `_maximum` elements, or
 * borrows a contiguous array or an array of element pointers (a
 * discontiguous buffer) from someone else, typically a DataReader. Every
 * element type gets the same record and the same operations, declared here
 * by OBLX_SEQUENCE_DECLARE and defined by OBLX_SEQUENCE_DEFINE
 * (platform/types/sequence.hpp).
 *
 * A zero-filled or statically declared sequence is usable at once: every
 * operation except initialize and the element-parameter accessors
 * initializes it on the spot when its magic number is missing.
 * Misuse is reported through the middleware logger under the operation's
 * full name, e.g. "DDS_LongSeq_set_maximum". A sequence is not
 * synchronized. */
#ifndef VEXAR_PLATFORM_SEQUENCE_H
#define VEXAR_PLATFORM_SEQUENCE_H

#include "platform/dds_types.h"
#include "platform/types/type_params.h"

VEXAR_BEGIN_DECLS

/* `_sequence_init` holds this once the sequence is initialized. */
#define DDS_SEQUENCE_MAGIC_NUMBER 0x7344

/* Static initializer of any sequence record: owned, empty, initialized. */
#define DDS_SEQUENCE_INITIALIZER                                                                                       \
    {                                                                                                                  \
        DDS_BOOLEAN_TRUE, NULL, NULL, 0, 0, DDS_SEQUENCE_MAGIC_NUMBER, NULL, NULL, DDS_TYPE_ALLOCATION_PARAMS_DEFAULT, \
            DDS_TYPE_DEALLOCATION_PARAMS_DEFAULT                                                                       \
    }

/* The record of the sequence `Seq` of elements `T`. Every instantiation has
 * the same layout apart from the element type behind the buffer pointers. */
#define OBLX_SEQUENCE_DECLARE_RECORD(Seq, T)                                        \
    typedef struct Seq {                                                            \
        DDS_Boolean _owned;        /* false while the buffer is on loan */          \
        T *_contiguous_buffer;     /* owned or loaned array of _maximum elements */ \
        T **_discontiguous_buffer; /* loaned array of element pointers */           \
        DDS_UnsignedLong _maximum; /* capacity */                                   \
        DDS_UnsignedLong _length;  /* number of valid elements */                   \
        DDS_Long _sequence_init;   /* DDS_SEQUENCE_MAGIC_NUMBER once initialized */ \
        void *_read_token1;        /* kept for the reader that loaned the buffer */ \
        void *_read_token2;                                                         \
        DDS_SeqElementTypeAllocationParams_t _elementAllocParams;                   \
        DDS_SeqElementTypeDeallocationParams_t _elementDeallocParams;               \
    } Seq

/* The operations of `Seq`. Use inside VEXAR_BEGIN_DECLS / VEXAR_END_DECLS,
 * followed by a semicolon. Boolean results are true on success. */
#define OBLX_SEQUENCE_DECLARE_OPERATIONS(Seq, T)                                                                    \
    VEXAR_API DDS_Boolean Seq##_initialize(Seq *self);                                                              \
    /* Frees an owned buffer; false for a loaned sequence. */                                                       \
    VEXAR_API DDS_Boolean Seq##_finalize(Seq *self);                                                                \
    VEXAR_API DDS_Long Seq##_get_maximum(Seq *self);                                                                \
    VEXAR_API DDS_Long Seq##_get_length(Seq *self);                                                                 \
    /* 0 <= new_length <= maximum. */                                                                               \
    VEXAR_API DDS_Boolean Seq##_set_length(Seq *self, DDS_Long new_length);                                         \
    /* Sets the length, growing an owned buffer to `max` when it is too small. */                                   \
    VEXAR_API DDS_Boolean Seq##_ensure_length(Seq *self, DDS_Long length, DDS_Long max);                            \
    /* Reallocates an owned buffer: growing deep-copies, shrinking truncates. */                                    \
    VEXAR_API DDS_Boolean Seq##_set_maximum(Seq *self, DDS_Long new_max);                                           \
    /* A shallow copy of element `index` (element 0 when out of bounds). */                                         \
    VEXAR_API T Seq##_get(Seq *self, DDS_Long index);                                                               \
    /* Null when index is outside [0, length). */                                                                   \
    VEXAR_API T *Seq##_get_reference(Seq *self, DDS_Long index);                                                    \
    /* Copies src's elements into self's existing buffer. */                                                        \
    VEXAR_API DDS_Boolean Seq##_copy_no_alloc(Seq *self, const Seq *src);                                           \
    /* Deep copy, growing self to src's maximum when needed; self or null. */                                       \
    VEXAR_API Seq *Seq##_copy(Seq *self, const Seq *src);                                                           \
    VEXAR_API DDS_Boolean Seq##_from_array(Seq *self, T const *array, DDS_Long length);                             \
    /* Copies into `array` of `length` elements; self's length must fit. */                                         \
    VEXAR_API DDS_Boolean Seq##_to_array(Seq *self, T *array, DDS_Long length);                                     \
    /* Borrows a buffer; only a sequence of maximum 0 can take a loan. */                                           \
    VEXAR_API DDS_Boolean Seq##_loan_contiguous(Seq *self, T *buffer, DDS_Long new_length, DDS_Long new_max);       \
    VEXAR_API DDS_Boolean Seq##_loan_discontiguous(Seq *self, T **buffer, DDS_Long new_length, DDS_Long new_max);   \
    /* Gives a loaned buffer back, leaving an empty owning sequence. */                                             \
    VEXAR_API DDS_Boolean Seq##_unloan(Seq *self);                                                                  \
    VEXAR_API T *Seq##_get_contiguous_buffer(Seq *self);                                                            \
    VEXAR_API T *Seq##_get_contiguous_bufferI(Seq *self);                                                           \
    VEXAR_API T **Seq##_get_discontiguous_buffer(Seq *self);                                                        \
    VEXAR_API T **Seq##_get_discontiguous_bufferI(Seq *self);                                                       \
    VEXAR_API DDS_Boolean Seq##_has_ownership(Seq *self);                                                           \
    /* Element parameters; the setters of allocation parameters need maximum 0. */                                  \
    VEXAR_API DDS_Boolean Seq##_get_element_pointers_allocation(const Seq *self);                                   \
    VEXAR_API DDS_Boolean Seq##_set_element_pointers_allocation(Seq *self, DDS_Boolean allocate_pointers);          \
    VEXAR_API DDS_Boolean Seq##_set_element_allocation_params(Seq *self, const DDS_TypeAllocationParams_t *params); \
    VEXAR_API DDS_Boolean Seq##_get_element_allocation_params(const Seq *self, DDS_TypeAllocationParams_t *params); \
    VEXAR_API DDS_Boolean Seq##_set_element_deallocation_params(Seq *self,                                          \
                                                                const DDS_TypeDeallocationParams_t *params);        \
    VEXAR_API DDS_Boolean Seq##_get_element_deallocation_params(const Seq *self,                                    \
                                                                DDS_TypeDeallocationParams_t *params);              \
    /* The reader's two opaque tokens. */                                                                           \
    VEXAR_API void Seq##_get_read_tokenI(Seq *self, void **token1, void **token2);                                  \
    VEXAR_API void Seq##_set_read_tokenI(Seq *self, void *token1, void *token2);                                    \
    /* Reports the first broken invariant under `context` and returns false. */                                     \
    VEXAR_API DDS_Boolean Seq##_check_invariantsI(const Seq *self, const char *context)

/* The record and the operations of `Seq`, for use inside VEXAR_BEGIN_DECLS. */
#define OBLX_SEQUENCE_DECLARE(Seq, T)     \
    OBLX_SEQUENCE_DECLARE_RECORD(Seq, T); \
    OBLX_SEQUENCE_DECLARE_OPERATIONS(Seq, T)

/* The platform's own sequences. */
OBLX_SEQUENCE_DECLARE(DDS_LongSeq, DDS_Long);
/* Opaque bytes, such as the user data of a QoS. */
OBLX_SEQUENCE_DECLARE(DDS_OctetSeq, DDS_Octet);
/* Elements are heap strings owned by the sequence. */
OBLX_SEQUENCE_DECLARE(DDS_StringSeq, char *);

VEXAR_END_DECLS

#endif
