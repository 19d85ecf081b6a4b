// The platform's own sequences: DDS_LongSeq, DDS_OctetSeq and DDS_StringSeq.
#include "platform/types/sequence.hpp"

#include "platform/runtime/dds_string.h"

namespace {

// A string element owns its heap text; a fresh element is an empty string
// when memory is to be allocated, else null.
struct StringElementTraits {
    static DDS_Boolean initialize(char **element, const DDS_TypeAllocationParams_t *params) noexcept {
        *element = params->allocate_memory ? DDS_String_alloc(0) : nullptr;
        return !params->allocate_memory || *element != nullptr;
    }
    static void finalize(char **element, const DDS_TypeDeallocationParams_t *) noexcept {
        DDS_String_free(*element);
        *element = nullptr;
    }
    // Replaces the destination's text; on failure the destination is kept.
    static DDS_Boolean copy(char **destination, const char *const *source) noexcept {
        char *duplicate = DDS_String_dup(*source);
        if (duplicate == nullptr && *source != nullptr) {
            return DDS_BOOLEAN_FALSE;
        }
        DDS_String_free(*destination);
        *destination = duplicate;
        return DDS_BOOLEAN_TRUE;
    }
};

}  // namespace

OBLX_SEQUENCE_DEFINE(DDS_LongSeq, DDS_Long, vexar::types::PlainElementTraits<DDS_Long>);
OBLX_SEQUENCE_DEFINE(DDS_OctetSeq, DDS_Octet, vexar::types::PlainElementTraits<DDS_Octet>);
OBLX_SEQUENCE_DEFINE(DDS_StringSeq, char *, StringElementTraits);
