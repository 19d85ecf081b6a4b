/* The background thread that publishes queued log messages. It owns the
 * message queue and drains it through the typed LogMessage writer, stamping
 * each sample with the time at which it was logged, so that logging threads
 * never wait on DDS. */
#ifndef VEXAR_VEXAR_LOGMESSAGEWRITETHREAD_H
#define VEXAR_VEXAR_LOGMESSAGEWRITETHREAD_H

#include "platform/dds_types.h"
#include "platform/export.h"
#include "platform/log/logger.h"
#include "platform/runtime/thread.h"
#include "platform/dds/thread_settings.h"
#include "vexar/MessageQueue.h"

VEXAR_BEGIN_DECLS

struct QTV_VX_LogMessageDataWriter;

/* Fields in their fixed order. `shouldRun` and `exitRun` cross threads
 * without a lock; the library reads and writes them atomically. */
typedef struct LogMessageWriteThread {
    OBLX_Thread *thread;                                  /* owned; null when none was started */
    QTV_VX_MessageQueue *q;                               /* owned; the queue that the thread drains */
    OBLX_Config_Logger *qtvLogger;                        /* borrowed: the middleware logger */
    OBLX_Config_LogVerbosity logVerbosity;                /* COMMUNICATION verbosity last applied through this object */
    volatile DDS_Long shouldRun;                          /* 1 while the loop is to go on; cleared by the owner */
    volatile DDS_Long exitRun;                            /* set to 1 by the thread once it has left its loop */
    struct QTV_VX_LogMessageDataWriter *logMessageWriter; /* borrowed from the DDS entities */
    volatile DDS_UnsignedLong threadId;                   /* the thread's id while it runs, else 0 */
} LogMessageWriteThread;

/* Creates the queue (`queueSize` elements) and starts the thread named
 * "LogMessageWriteThread" with the priority, option mask and stack size of
 * `threadSettings` (null: platform defaults). Null, with a printed line,
 * when anything fails; nothing is left behind then. */
VEXAR_API LogMessageWriteThread *LogMessageWriteThread_create(struct QTV_VX_LogMessageDataWriter *writer,
                                                              DDS_Long queueSize,
                                                              const DDS_ThreadSettings_t *threadSettings);

/* The thread's body; `arg` is the LogMessageWriteThread. Loops while
 * `shouldRun` is 1: waits just under 100 ms for a message, writes it, and
 * pops it unless the write timed out (then it stays at the head and is
 * written again after the next push). Other write failures drop the
 * message with a printed line. */
VEXAR_API void *LogMessageWriteThread_run(void *arg);

/* Waits until the thread has left its loop, joins it and frees the queue
 * (unpublished messages are dropped) and the record. The caller must have
 * cleared `shouldRun` first. Accepts null. */
VEXAR_API void LogMessageWriteThread_delete(LogMessageWriteThread *self);

/* Sets the middleware logger's COMMUNICATION verbosity and remembers it in
 * `logVerbosity`. Accepts null (does nothing). */
VEXAR_API void LogMessageWriteThread_setCommunicationsLogVerbosity(LogMessageWriteThread *self,
                                                                   OBLX_Config_LogVerbosity verbosity);

VEXAR_END_DECLS

#endif
