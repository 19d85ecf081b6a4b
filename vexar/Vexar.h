/* The logger: the header that applications include.
 *
 * A process has at most one logger, obtained with QTV_VX_Vexar_getInstance
 * (created on first use from the options registered with
 * QTV_VX_Vexar_setOptions, or from defaults) and taken down with
 * QTV_VX_Vexar_finalizeInstance. Messages are echoed to stdout when the
 * options ask for it, filtered by level and published on the topic
 * "qtv/vexar" by a background thread. */
#ifndef VEXAR_VEXAR_VEXAR_H
#define VEXAR_VEXAR_VEXAR_H

#include "platform/runtime/clock.h"
#include "platform/dds_types.h"
#include "platform/dds/entity.h"
#include "platform/export.h"
#include "platform/log/logger.h"
#include "type/vexar.h"
#include "vexar/EnumTranslators.h"
#include "vexar/LogMessageWriteThread.h"
#include "vexar/MessageQueue.h"
#include "vexar/Options.h"
#include "vexar/VexarUtility.h"

VEXAR_BEGIN_DECLS

struct QTV_VX_DDSEntities;

/* The logger record, fields in their fixed order. */
typedef struct QTV_VX_Vexar {
    QTV_VX_Options *options; /* borrowed when registered with setOptions, owned when made by default */
    DDS_Long filterLevel;    /* messages above this level are not published; read and written atomically;
                                 change it only with QTV_VX_Vexar_setFilterLevel, which also updates the
                                 level check made before the global lock */
    struct QTV_VX_DDSEntities *_ddsEntities; /* owned */
    QTV_VX_ADMIN_State *state;               /* the administration sample, owned; guarded by the State's own mutex */
    DDS_InstanceHandle_t loggerStateInstanceHandle; /* used when writing `state`; DDS_HANDLE_NIL at first */
    LogMessageWriteThread *logMessageWriteThread;   /* owned */
    QTV_VX_MessageQueue *q;                         /* the write thread's queue, borrowed from it */
    OBLX_Config_LoggerDevice *ddsLoggerDevice;      /* &QTV_VX_Vexar_localDevice while installed, else null */
    OBLX_Clock *clock;                              /* the system clock that stamps messages, owned */
} QTV_VX_Vexar;

/* The argument record of QTV_VX_Vexar_logMessageWithParams. */
typedef struct QTV_VX_Vexar_MessageParams {
    DDS_Long log_level;
    const char *message;  /* borrowed, must not be null */
    const char *category; /* borrowed, must not be null; the level calls use "" */
    DDS_Time_t timestamp; /* when the message was made; seconds must not be negative */
} QTV_VX_Vexar_MessageParams;

/* The category in which captured middleware lines are logged. */
#define QTV_VX_VEXAR_INFRASTRUCTURE_CATEGORY "com.qtv.oblx.config.Logger"

/* ---- process-wide state ------------------------------------------------ */

/* The singleton, null when none exists. */
extern VEXAR_API QTV_VX_Vexar *QTV_VX_Vexar_instance;
/* Options registered for the next creation; null when none. */
extern VEXAR_API QTV_VX_Options *gQTV_VX_Vexar_currentOptions;
/* 1 once getInstance has finished creating the singleton, 0 before and after
 * finalization. */
extern VEXAR_API volatile DDS_Long gQTV_VX_Vexar_initialized;
/* The output device that captures the middleware's diagnostic lines into
 * the log stream (write = QTV_VX_Vexar_writeDevice). */
extern VEXAR_API OBLX_Config_LoggerDevice QTV_VX_Vexar_localDevice;

/* ---- lifecycle --------------------------------------------------------- */

/* The singleton, created on first call under the global lock; null (with a
 * printed line) when creation failed, and the next call tries again. */
VEXAR_API QTV_VX_Vexar *QTV_VX_Vexar_getInstance(void);
/* Builds a new logger, or returns the existing singleton. Called by
 * getInstance under the global lock; null on failure, nothing left behind. */
VEXAR_API QTV_VX_Vexar *QTV_VX_Vexar_createInstance(void);
/* Zeroes every field. */
VEXAR_API void QTV_VX_Vexar_initialize(QTV_VX_Vexar *self);
/* Registers `options` (kept by pointer: it must outlive the logger) for the
 * next creation. Returns 1 when accepted, 0 when a logger already runs
 * (then nothing changes). The registration is forgotten at finalization. */
VEXAR_API DDS_Long QTV_VX_Vexar_setOptions(QTV_VX_Options *options);
/* Takes the singleton down. 0 on success or when none runs; 1 when the
 * global lock could not be taken or released. */
VEXAR_API DDS_Long QTV_VX_Vexar_finalizeInstance(void);
/* Frees one logger and all that it owns, tolerating a half-built one.
 * Always returns null. */
VEXAR_API QTV_VX_Vexar *QTV_VX_Vexar_destroy(QTV_VX_Vexar *self);
/* 1 while a logger runs, else 0. */
VEXAR_API DDS_Long QTV_VX_Vexar_isVexarRunning(void);
/* The singleton's queue and write thread; null when no singleton exists. */
VEXAR_API QTV_VX_MessageQueue *QTV_VX_Vexar_getMessageQueue(void);
VEXAR_API LogMessageWriteThread *QTV_VX_Vexar_getLogMessageWriteThread(void);

/* ---- logging ----------------------------------------------------------- */

/* The level calls: the message at that level with the empty category.
 * `self` must come from getInstance; a logger that is no longer the
 * singleton is ignored. */
VEXAR_API void QTV_VX_Vexar_fatal(QTV_VX_Vexar *self, const char *message);
VEXAR_API void QTV_VX_Vexar_severe(QTV_VX_Vexar *self, const char *message);
VEXAR_API void QTV_VX_Vexar_error(QTV_VX_Vexar *self, const char *message);
VEXAR_API void QTV_VX_Vexar_warning(QTV_VX_Vexar *self, const char *message);
VEXAR_API void QTV_VX_Vexar_notice(QTV_VX_Vexar *self, const char *message);
VEXAR_API void QTV_VX_Vexar_info(QTV_VX_Vexar *self, const char *message);
VEXAR_API void QTV_VX_Vexar_debug(QTV_VX_Vexar *self, const char *message);
VEXAR_API void QTV_VX_Vexar_trace(QTV_VX_Vexar *self, const char *message);
/* Any level, the empty category. */
VEXAR_API void QTV_VX_Vexar_log(QTV_VX_Vexar *self, DDS_Long level, const char *message);
/* Any level and category, stamped with the logger's clock. */
VEXAR_API void QTV_VX_Vexar_logMessageWithLevelCategory(QTV_VX_Vexar *self, DDS_Long level, const char *message,
                                                        const char *category);
/* The full call, with an explicit time stamp. Echoes the message when the
 * options ask for it (whatever the filter level), then queues it when the
 * logger is operational and the level is at most the filter level.
 * Messages logged on the write thread itself are dropped. */
VEXAR_API void QTV_VX_Vexar_logMessageWithParams(QTV_VX_Vexar *self, const QTV_VX_Vexar_MessageParams *params);
/* Sets the filter level and publishes it in the State. Returns 1 for a
 * negative level (nothing changes), else 0. */
VEXAR_API DDS_Long QTV_VX_Vexar_setFilterLevel(QTV_VX_Vexar *self, DDS_Long level);

/* Waits until every message queued so far has been published and
 * acknowledged by the matched reliable readers of the log topic, at most
 * `timeout` (DDS_DURATION_INFINITE: without limit). Flush, then finalize, to
 * exit without losing the last lines: finalization discards what is still
 * queued. DDS_RETCODE_OK, DDS_RETCODE_TIMEOUT when the time-out passed
 * first; with a printed line, DDS_RETCODE_BAD_PARAMETER for a null logger
 * or a null or invalid time-out, DDS_RETCODE_PRECONDITION_NOT_MET when
 * `self` is not the running logger, when called on the write thread, or
 * when the logger is finalized meanwhile. Holds no lock while it waits, so
 * other threads keep logging (and their messages are waited for too); call
 * it from application threads, not from listeners. */
VEXAR_API DDS_ReturnCode_t QTV_VX_Vexar_flush(QTV_VX_Vexar *self, const DDS_Duration_t *timeout);

/* ---- the middleware logger --------------------------------------------- */

/* The local device's write: logs a captured line in the category
 * QTV_VX_VEXAR_INFRASTRUCTURE_CATEGORY while a logger runs, else prints it. */
VEXAR_API void QTV_VX_Vexar_writeDevice(OBLX_Config_LoggerDevice *device, const OBLX_Config_LogMessage *message);
/* Saves the five category verbosities into `saved` and silences them all. */
VEXAR_API void QTV_VX_Vexar_maskSystemVerbosity(OBLX_Config_LogVerbosity saved[OBLX_CONFIG_LOG_CATEGORY_COUNT]);
/* Restores the five verbosities saved by maskSystemVerbosity. */
VEXAR_API void QTV_VX_Vexar_unmaskSystemVerbosity(const OBLX_Config_LogVerbosity saved[OBLX_CONFIG_LOG_CATEGORY_COUNT]);
/* Sets one category's verbosity (middleware values) and publishes the
 * State; COMMUNICATION also updates the write thread's copy. */
VEXAR_API void QTV_VX_Vexar_setQTVLoggerVerbosityByCategory(QTV_VX_Vexar *self, OBLX_Config_LogCategory category,
                                                            OBLX_Config_LogVerbosity verbosity);
/* Sets the middleware's print format and publishes it in the State.
 * Returns 1 on success, 0 on failure. */
VEXAR_API DDS_Long QTV_VX_Vexar_setQTVLoggerPrintFormat(QTV_VX_Vexar *self, OBLX_Config_LogPrintFormat format);

VEXAR_END_DECLS

/* Last, so that the entities' header finds the logger record defined. */
#include "vexar/DDSEntities.h"

#endif
