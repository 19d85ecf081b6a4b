// The sample functions of every data type, derived from its type code.
//
// One walker over DDS_TypeCode initializes, finalizes and copies a sample
// of any type; SampleOperations<Sample, getter> gives one type the eight
// operations of its C family (and serves as its sequences' element traits),
// and VEXAR_DEFINE_SAMPLE_OPERATIONS emits the C functions.
#pragma once

#include "platform/types/type_params.h"
#include "platform/types/typecode.h"

namespace vexar::types::sample {

// Sets every member to its initial value: numbers 0, enumerations their
// first enumerator, strings allocated at their bound (params.allocate_memory)
// or emptied in place, a union's discriminator its default and all of its
// branches, sequences reserved at their bound. Stops at the first failure.
bool initialize(const DDS_TypeCode &type, void *sample, const DDS_TypeAllocationParams_t &params) noexcept;

// Frees the strings (leaving them null) and sequence buffers, all union
// branches included. Harmless on a finalized sample.
void finalize(const DDS_TypeCode &type, void *sample, const DDS_TypeDeallocationParams_t &params) noexcept;

// Walks the members that are present (a union's active branch only); no type
// has optional members, so nothing is freed.
void finalizeOptionalMembers(const DDS_TypeCode &type, void *sample,
                             const DDS_TypeDeallocationParams_t &params) noexcept;

// Member by member; strings go into dst's existing buffers (a longer source
// fails), sequences grow as needed, a union copies its discriminator and the
// branch that it selects. Stops at the first failure, keeping what was copied.
bool copy(const DDS_TypeCode &type, void *dst, const void *src) noexcept;

template <typename Sample, const DDS_TypeCode *(*TypeCode)()>
struct SampleOperations {
    static DDS_Boolean initialize(Sample *sample, const DDS_TypeAllocationParams_t *params) noexcept {
        return sample != nullptr && params != nullptr && sample::initialize(*TypeCode(), sample, *params);
    }

    static DDS_Boolean initializeEx(Sample *sample, DDS_Boolean allocatePointers, DDS_Boolean allocateMemory) noexcept {
        DDS_TypeAllocationParams_t params = DDS_TYPE_ALLOCATION_PARAMS_DEFAULT;
        params.allocate_pointers = allocatePointers;
        params.allocate_memory = allocateMemory;
        return initialize(sample, &params);
    }

    static void finalize(Sample *sample, const DDS_TypeDeallocationParams_t *params) noexcept {
        if (sample != nullptr && params != nullptr) {
            sample::finalize(*TypeCode(), sample, *params);
        }
    }

    static void finalizeEx(Sample *sample, DDS_Boolean deletePointers) noexcept {
        DDS_TypeDeallocationParams_t params = DDS_TYPE_DEALLOCATION_PARAMS_DEFAULT;
        params.delete_pointers = deletePointers;
        finalize(sample, &params);
    }

    static void finalizeOptionalMembers(Sample *sample, DDS_Boolean deletePointers) noexcept {
        const DDS_TypeDeallocationParams_t params = {deletePointers, DDS_BOOLEAN_TRUE};
        if (sample != nullptr) {
            sample::finalizeOptionalMembers(*TypeCode(), sample, params);
        }
    }

    static DDS_Boolean copy(Sample *dst, const Sample *src) noexcept {
        return dst != nullptr && src != nullptr && sample::copy(*TypeCode(), dst, src);
    }
};

}  // namespace vexar::types::sample

// The eight C sample functions of Type, over its type code.
#define VEXAR_DEFINE_SAMPLE_OPERATIONS(Type)                                                                          \
    extern "C" {                                                                                                      \
    DDS_Boolean Type##_initialize(Type *sample) {                                                                     \
        return Type##_initialize_ex(sample, DDS_BOOLEAN_TRUE, DDS_BOOLEAN_TRUE);                                      \
    }                                                                                                                 \
    DDS_Boolean Type##_initialize_ex(Type *sample, DDS_Boolean allocatePointers, DDS_Boolean allocateMemory) {        \
        return ::vexar::types::sample::SampleOperations<Type, Type##_get_typecode>::initializeEx(                     \
            sample, allocatePointers, allocateMemory);                                                                \
    }                                                                                                                 \
    DDS_Boolean Type##_initialize_w_params(Type *sample, const DDS_TypeAllocationParams_t *params) {                  \
        return ::vexar::types::sample::SampleOperations<Type, Type##_get_typecode>::initialize(sample, params);       \
    }                                                                                                                 \
    void Type##_finalize(Type *sample) { Type##_finalize_ex(sample, DDS_BOOLEAN_TRUE); }                              \
    void Type##_finalize_ex(Type *sample, DDS_Boolean deletePointers) {                                               \
        ::vexar::types::sample::SampleOperations<Type, Type##_get_typecode>::finalizeEx(sample, deletePointers);      \
    }                                                                                                                 \
    void Type##_finalize_w_params(Type *sample, const DDS_TypeDeallocationParams_t *params) {                         \
        ::vexar::types::sample::SampleOperations<Type, Type##_get_typecode>::finalize(sample, params);                \
    }                                                                                                                 \
    void Type##_finalize_optional_members(Type *sample, DDS_Boolean deletePointers) {                                 \
        ::vexar::types::sample::SampleOperations<Type, Type##_get_typecode>::finalizeOptionalMembers(sample,          \
                                                                                                     deletePointers); \
    }                                                                                                                 \
    DDS_Boolean Type##_copy(Type *dst, const Type *src) {                                                             \
        return ::vexar::types::sample::SampleOperations<Type, Type##_get_typecode>::copy(dst, src);                   \
    }                                                                                                                 \
    }
