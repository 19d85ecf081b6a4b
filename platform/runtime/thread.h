/* Threads: start with a name and settings, join, identify, sleep. */
#ifndef VEXAR_PLATFORM_THREAD_H
#define VEXAR_PLATFORM_THREAD_H

#include "platform/runtime/clock.h"
#include "platform/dds_types.h"
#include "platform/runtime/thread_options.h"

VEXAR_BEGIN_DECLS

typedef struct OBLX_Thread OBLX_Thread;

/* Starts `entry(arg)` on a new thread.
 * - `name` (may be null) is the system's name for the thread, cut to 15
 *   characters (what /proc/<pid>/task/<tid>/comm shows).
 * - `priority` OBLX_THREAD_PRIORITY_DEFAULT and `stackSize`
 *   OBLX_THREAD_STACK_SIZE_DEFAULT (or any value <= 0) keep the platform's
 *   defaults. A positive stack size is raised to the system minimum and
 *   rounded up to whole pages.
 * - `options` with DDS_THREAD_SETTINGS_REALTIME_PRIORITY asks for SCHED_FIFO
 *   at `priority`, clamped to the policy's range (the range's minimum for the
 *   default priority). Without privileges the system refuses: that is
 *   reported as a warning and the thread starts with default scheduling,
 *   unless DDS_THREAD_SETTINGS_PRIORITY_ENFORCE is set too, in which case the
 *   creation fails. Without the real-time bit the priority is not used.
 * Null (reported) when `entry` is null or the thread cannot be started. */
VEXAR_API OBLX_Thread *OBLX_Thread_new(const char *name, DDS_Long priority, DDS_ThreadSettingsKindMask options,
                                       DDS_Long stackSize, void *(*entry)(void *), void *arg);
/* Waits for the thread to finish and frees it. Accepts null. Called from the
 * thread itself it detaches instead, since a thread cannot join itself. */
VEXAR_API void OBLX_Thread_delete(OBLX_Thread *self);
/* The calling thread's kernel thread id: never 0, distinct among live
 * threads, the <tid> of /proc/self/task/<tid>. */
VEXAR_API DDS_UnsignedLong OBLX_Thread_currentId(void);
/* Sleeps the whole `duration`, resuming after signal interruptions. A
 * non-positive duration returns at once; a null one is reported. */
VEXAR_API void OBLX_Thread_sleep(const OBLX_Time_t *duration);

VEXAR_END_DECLS

#endif
