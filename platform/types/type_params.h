/* Allocation and deallocation parameters of samples and sequence elements. */
#ifndef VEXAR_PLATFORM_TYPE_PARAMS_H
#define VEXAR_PLATFORM_TYPE_PARAMS_H

#include "platform/dds_types.h"

VEXAR_BEGIN_DECLS

typedef struct DDS_TypeAllocationParams_t {
    DDS_Boolean allocate_pointers;         /* members held by pointer */
    DDS_Boolean allocate_optional_members; /* optional members */
    DDS_Boolean allocate_memory;           /* string and sequence buffers */
} DDS_TypeAllocationParams_t;

typedef struct DDS_TypeDeallocationParams_t {
    DDS_Boolean delete_pointers;
    DDS_Boolean delete_optional_members;
} DDS_TypeDeallocationParams_t;

/* Sequences keep the same flags for their elements. */
typedef DDS_TypeAllocationParams_t DDS_SeqElementTypeAllocationParams_t;
typedef DDS_TypeDeallocationParams_t DDS_SeqElementTypeDeallocationParams_t;

#define DDS_TYPE_ALLOCATION_PARAMS_DEFAULT \
    { DDS_BOOLEAN_TRUE, DDS_BOOLEAN_FALSE, DDS_BOOLEAN_TRUE }
#define DDS_TYPE_DEALLOCATION_PARAMS_DEFAULT \
    { DDS_BOOLEAN_TRUE, DDS_BOOLEAN_TRUE }

VEXAR_END_DECLS

#endif
