/* Option bits and default values for creating a thread. */
#ifndef VEXAR_PLATFORM_THREAD_OPTIONS_H
#define VEXAR_PLATFORM_THREAD_OPTIONS_H

#include "platform/dds_types.h"

VEXAR_BEGIN_DECLS

typedef DDS_UnsignedLong DDS_ThreadSettingsKindMask;

#define DDS_THREAD_SETTINGS_KIND_MASK_DEFAULT ((DDS_ThreadSettingsKindMask)0)
/* Floating-point and stdio use need no preparation on POSIX systems; the
 * bits are accepted and change nothing. */
#define DDS_THREAD_SETTINGS_FLOATING_POINT ((DDS_ThreadSettingsKindMask)0x01)
#define DDS_THREAD_SETTINGS_STDIO ((DDS_ThreadSettingsKindMask)0x02)
/* Run under the real-time FIFO policy at the given priority. */
#define DDS_THREAD_SETTINGS_REALTIME_PRIORITY ((DDS_ThreadSettingsKindMask)0x08)
/* Fail the creation instead of falling back to default scheduling when the
 * system refuses the requested priority. */
#define DDS_THREAD_SETTINGS_PRIORITY_ENFORCE ((DDS_ThreadSettingsKindMask)0x10)
/* The thread may be cancelled at any point, not only at cancellation points. */
#define DDS_THREAD_SETTINGS_CANCEL_ASYNCHRONOUS ((DDS_ThreadSettingsKindMask)0x20)

/* The platform's own default priority and stack size. */
#define OBLX_THREAD_PRIORITY_DEFAULT ((DDS_Long)-9999999)
#define OBLX_THREAD_STACK_SIZE_DEFAULT ((DDS_Long)-1)

/* The middleware's named priorities. This platform has one normal priority,
 * so every name stands for the default. */
#define DDS_THREAD_PRIORITY_DEFAULT OBLX_THREAD_PRIORITY_DEFAULT
#define DDS_THREAD_PRIORITY_HIGH OBLX_THREAD_PRIORITY_DEFAULT
#define DDS_THREAD_PRIORITY_ABOVE_NORMAL OBLX_THREAD_PRIORITY_DEFAULT
#define DDS_THREAD_PRIORITY_NORMAL OBLX_THREAD_PRIORITY_DEFAULT
#define DDS_THREAD_PRIORITY_BELOW_NORMAL OBLX_THREAD_PRIORITY_DEFAULT
#define DDS_THREAD_PRIORITY_LOW OBLX_THREAD_PRIORITY_DEFAULT
#define DDS_THREAD_STACK_SIZE_DEFAULT OBLX_THREAD_STACK_SIZE_DEFAULT

VEXAR_END_DECLS

#endif
