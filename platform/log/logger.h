/* The middleware's process-wide diagnostic logger. Every diagnostic line of
 * the platform layer and of Cyclone DDS itself passes through it: a
 * per-category verbosity decides what is kept, the print format decides which
 * fields a line shows, and the output device (standard output by default)
 * receives the formatted line. All operations are safe from any thread. */
#ifndef VEXAR_PLATFORM_LOGGER_H
#define VEXAR_PLATFORM_LOGGER_H

#include "platform/dds_types.h"
#include "platform/export.h"

VEXAR_BEGIN_DECLS

/* The subject a line is about. ALL addresses the five at once in setters. */
typedef enum OBLX_Config_LogCategory {
    OBLX_CONFIG_LOG_CATEGORY_PLATFORM = 0,
    OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION = 1,
    OBLX_CONFIG_LOG_CATEGORY_DATABASE = 2,
    OBLX_CONFIG_LOG_CATEGORY_ENTITIES = 3,
    OBLX_CONFIG_LOG_CATEGORY_API = 4,
    OBLX_CONFIG_LOG_CATEGORY_ALL = 5
} OBLX_Config_LogCategory;

#define OBLX_CONFIG_LOG_CATEGORY_COUNT 5

/* The severity of one line. */
typedef enum OBLX_Config_LogLevel {
    OBLX_CONFIG_LOG_LEVEL_ERROR = 1,
    OBLX_CONFIG_LOG_LEVEL_WARNING = 2,
    OBLX_CONFIG_LOG_LEVEL_STATUS_LOCAL = 3,
    OBLX_CONFIG_LOG_LEVEL_STATUS_REMOTE = 4,
    OBLX_CONFIG_LOG_LEVEL_DEBUG = 5
} OBLX_Config_LogLevel;

/* A verbosity is a mask of levels: level n passes when bit (1 << (n - 1)) is
 * set. The named values are cumulative; other masks work too. */
typedef enum OBLX_Config_LogVerbosity {
    OBLX_CONFIG_LOG_VERBOSITY_SILENT = 0x00,
    OBLX_CONFIG_LOG_VERBOSITY_ERROR = 0x01,
    OBLX_CONFIG_LOG_VERBOSITY_WARNING = 0x03,
    OBLX_CONFIG_LOG_VERBOSITY_STATUS_LOCAL = 0x07,
    OBLX_CONFIG_LOG_VERBOSITY_STATUS_REMOTE = 0x0F,
    OBLX_CONFIG_LOG_VERBOSITY_STATUS_ALL = 0x1F
} OBLX_Config_LogVerbosity;

/* Print bits: each adds one field to a line. The message text is always
 * printed. The fields appear in this order:
 *   timestamp, process, thread, domain, level (or level code), category,
 *   source, function, location, then ": " and the text. */
#define OBLX_CONFIG_LOG_PRINT_BIT_LEVEL_CODE 0x001 /* "E" "W" "L" "R" "D"; hidden when LEVEL is set */
#define OBLX_CONFIG_LOG_PRINT_BIT_FUNCTION 0x002   /* reporting function, when known */
#define OBLX_CONFIG_LOG_PRINT_BIT_LOCATION 0x004   /* "file.c:123", when known */
#define OBLX_CONFIG_LOG_PRINT_BIT_THREAD 0x008     /* "[thread 4711]" (kernel thread id) */
#define OBLX_CONFIG_LOG_PRINT_BIT_CATEGORY 0x010   /* "PLATFORM" ... "API" */
#define OBLX_CONFIG_LOG_PRINT_BIT_SOURCE 0x020     /* "(discovery)": Cyclone's own category, or "(vexar)" */
#define OBLX_CONFIG_LOG_PRINT_BIT_TIMESTAMP 0x100  /* "2024-05-01 12:00:00.123456" local time */
#define OBLX_CONFIG_LOG_PRINT_BIT_DOMAIN 0x200     /* "[domain 7]", when the line belongs to one */
#define OBLX_CONFIG_LOG_PRINT_BIT_LEVEL 0x400      /* "ERROR" "WARNING" "STATUS_LOCAL" ... */
#define OBLX_CONFIG_LOG_PRINT_BIT_PROCESS 0x800    /* "[pid 1234]" */

/* The named formats are combinations of the print bits. */
typedef enum OBLX_Config_LogPrintFormat {
    /* level, category, function */
    OBLX_CONFIG_LOG_PRINT_FORMAT_DEFAULT = 0x412,
    /* DEFAULT with the timestamp */
    OBLX_CONFIG_LOG_PRINT_FORMAT_TIMESTAMPED = 0x512,
    /* DEFAULT with process, domain and location */
    OBLX_CONFIG_LOG_PRINT_FORMAT_VERBOSE = 0xE16,
    /* VERBOSE with the timestamp */
    OBLX_CONFIG_LOG_PRINT_FORMAT_VERBOSE_TIMESTAMPED = 0xF16,
    /* where a line comes from: level code, thread, domain, source, function, location */
    OBLX_CONFIG_LOG_PRINT_FORMAT_DEBUG = 0x22F,
    /* level code and category */
    OBLX_CONFIG_LOG_PRINT_FORMAT_MINIMAL = 0x011,
    /* every field */
    OBLX_CONFIG_LOG_PRINT_FORMAT_MAXIMAL = 0xF3F
} OBLX_Config_LogPrintFormat;

/* Every print bit; a format with any other bit is refused. */
#define OBLX_CONFIG_LOG_PRINT_BITS_ALL 0xF3F

/* One formatted line handed to an output device. `text` ends with '\n' and is
 * valid only during the call. */
typedef struct OBLX_Config_LogMessage {
    const char *text;
    OBLX_Config_LogLevel level;
} OBLX_Config_LogMessage;

/* A replaceable output. `write` may be called from any thread, concurrently.
 * `close` (optional) is called once after the device was replaced, when the
 * last write to it has returned: by the thread that replaced it, or by the
 * thread of that last write. The record must stay valid until then; `close`
 * may free it. */
typedef struct OBLX_Config_LoggerDevice {
    void *device_data;
    void (*write)(struct OBLX_Config_LoggerDevice *device, const OBLX_Config_LogMessage *message);
    void (*close)(struct OBLX_Config_LoggerDevice *device);
} OBLX_Config_LoggerDevice;

typedef struct OBLX_Config_Logger OBLX_Config_Logger;

/* The process-wide logger; the first call hooks Cyclone's diagnostics into it. */
VEXAR_API OBLX_Config_Logger *OBLX_Config_Logger_get_instance(void);

/* SILENT for a null logger or a category outside 0..4. */
VEXAR_API OBLX_Config_LogVerbosity OBLX_Config_Logger_get_verbosity_by_category(OBLX_Config_Logger *self,
                                                                                OBLX_Config_LogCategory category);
/* Category ALL sets all five; any other value outside 0..4 is reported and ignored.
 * Bits above STATUS_ALL are dropped. */
VEXAR_API void OBLX_Config_Logger_set_verbosity_by_category(OBLX_Config_Logger *self, OBLX_Config_LogCategory category,
                                                            OBLX_Config_LogVerbosity verbosity);
VEXAR_API void OBLX_Config_Logger_set_verbosity(OBLX_Config_Logger *self, OBLX_Config_LogVerbosity verbosity);

VEXAR_API OBLX_Config_LogPrintFormat OBLX_Config_Logger_get_print_format(OBLX_Config_Logger *self);
/* False (and unchanged) for a null logger or a format with unknown bits. */
VEXAR_API DDS_Boolean OBLX_Config_Logger_set_print_format(OBLX_Config_Logger *self, OBLX_Config_LogPrintFormat format);

/* Installs `device` (null: standard output again) and returns at once; the
 * previous device is closed as described above. Reinstalling the current
 * device changes nothing. False for a null logger or a device without `write`. */
VEXAR_API DDS_Boolean OBLX_Config_Logger_set_output_device(OBLX_Config_Logger *self, OBLX_Config_LoggerDevice *device);
VEXAR_API OBLX_Config_LoggerDevice *OBLX_Config_Logger_get_output_device(OBLX_Config_Logger *self);

/* Raises one line: dropped unless `level` passes the verbosity of `category`,
 * otherwise formatted and written. `function` and `file` may be null. */
VEXAR_API void OBLX_Config_Logger_log(OBLX_Config_LogCategory category, OBLX_Config_LogLevel level,
                                      const char *function, const char *file, int line, const char *format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 6, 7)))
#endif
    ;

VEXAR_END_DECLS

#endif
