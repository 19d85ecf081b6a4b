/* How a thread is to be created: option bits, priority, stack size and CPU
 * binding, as one record that options and XML configuration carry around. */
#ifndef VEXAR_PLATFORM_THREAD_SETTINGS_H
#define VEXAR_PLATFORM_THREAD_SETTINGS_H

#include "platform/dds_types.h"
#include "platform/types/sequence.h"
#include "platform/runtime/thread_options.h"

VEXAR_BEGIN_DECLS

typedef enum DDS_ThreadSettingsCpuRotationKind {
    DDS_THREAD_SETTINGS_CPU_NO_ROTATION = 0,
    DDS_THREAD_SETTINGS_CPU_RR_ROTATION = 1
} DDS_ThreadSettingsCpuRotationKind;

typedef struct DDS_ThreadSettings_t {
    DDS_ThreadSettingsKindMask mask;
    DDS_Long priority;
    DDS_Long stack_size;
    DDS_LongSeq cpu_list; /* owned */
    DDS_ThreadSettingsCpuRotationKind cpu_rotation;
} DDS_ThreadSettings_t;

/* Static initializer: the same values as DDS_ThreadSettings_t_initialize. */
#define DDS_THREAD_SETTINGS_DEFAULT                                                                          \
    {                                                                                                        \
        DDS_THREAD_SETTINGS_KIND_MASK_DEFAULT, OBLX_THREAD_PRIORITY_DEFAULT, OBLX_THREAD_STACK_SIZE_DEFAULT, \
            DDS_SEQUENCE_INITIALIZER, DDS_THREAD_SETTINGS_CPU_NO_ROTATION                                    \
    }

/* The platform's defaults: no options, default priority and stack size, no
 * CPU binding. The record's previous contents are not freed. */
VEXAR_API DDS_Boolean DDS_ThreadSettings_t_initialize(DDS_ThreadSettings_t *self);
/* Deep copy into an initialized `self` (the CPU list is copied, not shared). */
VEXAR_API DDS_Boolean DDS_ThreadSettings_t_copy(DDS_ThreadSettings_t *self, const DDS_ThreadSettings_t *src);
/* Field-by-field equality, the CPU lists compared element by element. Two
 * nulls are equal; null and non-null are not. */
VEXAR_API DDS_Boolean DDS_ThreadSettings_is_equal(const DDS_ThreadSettings_t *left, const DDS_ThreadSettings_t *right);
#define DDS_ThreadSettings_t_is_equal DDS_ThreadSettings_is_equal
/* Frees the CPU list. Accepts null. */
VEXAR_API DDS_Boolean DDS_ThreadSettings_t_finalize(DDS_ThreadSettings_t *self);

VEXAR_END_DECLS

#endif
