/* The data types exchanged on the Vexar topics, their sample functions and
 * their sequences.
 *
 * Every type has the same family of operations, told once here:
 *   <Type>_get_typecode()             its type code (platform/types/typecode.h)
 *   <Type>_initialize(sample)         initialize_ex(sample, true, true)
 *   <Type>_initialize_ex(sample, allocatePointers, allocateMemory)
 *   <Type>_initialize_w_params(sample, params)
 *                                     every member to its initial value; string
 *                                     buffers allocated at their bound when
 *                                     params->allocate_memory, else emptied in place
 *   <Type>_finalize(sample)           finalize_ex(sample, true)
 *   <Type>_finalize_ex(sample, deletePointers)
 *   <Type>_finalize_w_params(sample, params)
 *                                     frees the owned buffers, nulls the strings
 *   <Type>_finalize_optional_members(sample, deletePointers)
 *                                     no type has optional members: frees nothing
 *   <Type>_copy(dst, src)             member by member; strings are copied into
 *                                     dst's existing buffers, never reallocated
 * Boolean results are true on success; a failure stops at the first member
 * that fails and leaves what was done in place. Finalize accepts null and
 * is harmless on a finalized sample. Nothing here prints.
 *
 * A sample owns its string buffers and its sequence buffers. Initializing
 * with allocation overwrites the string pointers: finalize a sample before
 * initializing it again. */
#ifndef VEXAR_TYPE_VEXAR_H
#define VEXAR_TYPE_VEXAR_H

#include "platform/dds_types.h"
#include "platform/types/sequence.h"
#include "platform/types/type_params.h"
#include "platform/types/typecode.h"

VEXAR_BEGIN_DECLS

/* ---- Type names, carried by the type codes. ---- */

#define QTV_VX_HostAndAppIdTYPENAME "QTV::VX::HostAndAppId"
#define QTV_VX_LogMessageTYPENAME "QTV::VX::LogMessage"
#define QTV_VX_ADMIN_QTVLoggerVerbosityTYPENAME "QTV::VX::ADMIN::QTVLoggerVerbosity"
#define QTV_VX_ADMIN_QTVLoggerCategoryTYPENAME "QTV::VX::ADMIN::QTVLoggerCategory"
#define QTV_VX_ADMIN_QTVLoggerPrintFormatTYPENAME "QTV::VX::ADMIN::QTVLoggerPrintFormat"
#define QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosityTYPENAME "QTV::VX::ADMIN::QTVLoggerCategoryAndVerbosity"
#define QTV_VX_ADMIN_StateKindTYPENAME "QTV::VX::ADMIN::StateKind"
#define QTV_VX_ADMIN_StateTYPENAME "QTV::VX::ADMIN::State"
#define QTV_VX_ADMIN_CommandKindTYPENAME "QTV::VX::ADMIN::CommandKind"
#define QTV_VX_ADMIN_CommandTYPENAME "QTV::VX::ADMIN::Command"
#define QTV_VX_ADMIN_CommandRequestTYPENAME "QTV::VX::ADMIN::CommandRequest"
#define QTV_VX_ADMIN_CommandResultTYPENAME "QTV::VX::ADMIN::CommandResult"
#define QTV_VX_ADMIN_CommandResponseTYPENAME "QTV::VX::ADMIN::CommandResponse"
#define QTV_VX_ADMIN_StatisticsTYPENAME "QTV::VX::ADMIN::Statistics"

/* ---- Bounds: characters of a string (its buffer holds one more byte for
 * the NUL), elements of an array or a sequence. ---- */

#define QTV_VX_LOG_MESSAGE_CATEGORY_MAX_LENGTH 512
#define QTV_VX_LOG_MESSAGE_MESSAGE_MAX_LENGTH 4096
#define QTV_VX_ADMIN_STATE_APPLICATION_KIND_MAX_LENGTH 256
#define QTV_VX_ADMIN_STATE_VERBOSITIES_LENGTH 5
#define QTV_VX_ADMIN_COMMAND_CATEGORY_AND_VERBOSITY_MAX_LENGTH 5
#define QTV_VX_ADMIN_COMMAND_RESPONSE_MESSAGE_MAX_LENGTH 2048

/* ---- Records and enumerations. ---- */

/* One application instance, named by its RTPS identifiers (both keys). */
typedef struct QTV_VX_HostAndAppId {
    DDS_Long rtps_host_id;
    DDS_Long rtps_app_id;
} QTV_VX_HostAndAppId;

/* One log record; keyed by application and level. */
typedef struct QTV_VX_LogMessage {
    QTV_VX_HostAndAppId hostAndAppId; /* key */
    DDS_Long level;                   /* key */
    char *category;                   /* at most 512 characters */
    char *message;                    /* at most 4096 characters */
} QTV_VX_LogMessage;

/* Verbosity of the middleware's own logger. */
typedef enum QTV_VX_ADMIN_QTVLoggerVerbosity {
    QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_SILENT = 0,
    QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_ERROR = 1,
    QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_WARNING = 2,
    QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_STATUS_LOCAL = 3,
    QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_STATUS_REMOTE = 4,
    QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_STATUS_ALL = 5
} QTV_VX_ADMIN_QTVLoggerVerbosity;

/* Category of the middleware's own logger. */
typedef enum QTV_VX_ADMIN_QTVLoggerCategory {
    QTV_VX_OBLX_CONFIG_LOG_CATEGORY_PLATFORM = 0,
    QTV_VX_OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION = 1,
    QTV_VX_OBLX_CONFIG_LOG_CATEGORY_DATABASE = 2,
    QTV_VX_OBLX_CONFIG_LOG_CATEGORY_ENTITIES = 3,
    QTV_VX_OBLX_CONFIG_LOG_CATEGORY_API = 4
} QTV_VX_ADMIN_QTVLoggerCategory;

/* Print format of the middleware's own logger. */
typedef enum QTV_VX_ADMIN_QTVLoggerPrintFormat {
    QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_DEFAULT = 0,
    QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_TIMESTAMPED = 1,
    QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_VERBOSE = 2,
    QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_VERBOSE_TIMESTAMPED = 3,
    QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_DEBUG = 4,
    QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_MINIMAL = 5,
    QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_MAXIMAL = 6
} QTV_VX_ADMIN_QTVLoggerPrintFormat;

/* One category of the middleware's logger and its verbosity. */
typedef struct QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity {
    QTV_VX_ADMIN_QTVLoggerCategory category;
    QTV_VX_ADMIN_QTVLoggerVerbosity verbosity;
} QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity;

/* Life-cycle state of a logger. */
typedef enum QTV_VX_ADMIN_StateKind {
    QTV_VX_STATE_INITIALIZING = 0,
    QTV_VX_STATE_OPERATIONAL = 1,
    QTV_VX_STATE_NONOPERATIONAL = 2,
    QTV_VX_STATE_SHUTTING_DOWN = 3
} QTV_VX_ADMIN_StateKind;

/* Administration state of one logger; keyed by application. */
typedef struct QTV_VX_ADMIN_State {
    QTV_VX_HostAndAppId hostAndAppId; /* key */
    DDS_Long administrationDomainId;
    QTV_VX_ADMIN_StateKind state;
    char *applicationKind; /* at most 256 characters */
    DDS_Long filterLevel;
    /* One per middleware logger category. */
    QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity qtvLoggerVerbosities[QTV_VX_ADMIN_STATE_VERBOSITIES_LENGTH];
    QTV_VX_ADMIN_QTVLoggerPrintFormat qtvLoggerPrintFormat;
} QTV_VX_ADMIN_State;

/* The discriminator of QTV_VX_ADMIN_Command. */
typedef enum QTV_VX_ADMIN_CommandKind {
    QTV_VX_SET_LOG_LEVEL = 0,
    QTV_VX_SET_QTV_LOGGER_LEVEL = 1,
    QTV_VX_SET_QTV_LOGGER_PRINT_FORMAT = 2
} QTV_VX_ADMIN_CommandKind;

OBLX_SEQUENCE_DECLARE_RECORD(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq, QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity);

/* A remote command. The branches lie side by side rather than overlapping:
 * the sequence owns memory, and all three are initialized and finalized
 * together. Only the branch selected by `_d` is meaningful. */
typedef struct QTV_VX_ADMIN_Command {
    QTV_VX_ADMIN_CommandKind _d;
    struct QTV_VX_ADMIN_Command_u {
        DDS_Long filterLevel;                                               /* QTV_VX_SET_LOG_LEVEL */
        QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq categoryAndVerbosity; /* QTV_VX_SET_QTV_LOGGER_LEVEL, at most 5 */
        QTV_VX_ADMIN_QTVLoggerPrintFormat printFormat;                      /* QTV_VX_SET_QTV_LOGGER_PRINT_FORMAT */
    } _u;
} QTV_VX_ADMIN_Command;

/* A remote command addressed to one application; unkeyed. */
typedef struct QTV_VX_ADMIN_CommandRequest {
    QTV_VX_HostAndAppId targetHostAndAppId;
    QTV_VX_HostAndAppId originatorHostAndAppId;
    DDS_Long invocation; /* chosen by the originator, echoed in the response */
    QTV_VX_ADMIN_Command command;
} QTV_VX_ADMIN_CommandRequest;

/* Outcome of a command. */
typedef enum QTV_VX_ADMIN_CommandResult {
    QTV_VX_COMMAND_RESULT_OK = 0,
    QTV_VX_COMMAND_RESULT_NOT_SUPPORTED = 1,
    QTV_VX_COMMAND_RESULT_ERROR = 2
} QTV_VX_ADMIN_CommandResult;

/* The answer to one request; keyed by the responder. */
typedef struct QTV_VX_ADMIN_CommandResponse {
    QTV_VX_HostAndAppId hostAndAppId; /* key */
    QTV_VX_HostAndAppId originatorHostAndAppId;
    DDS_Long invocation;
    QTV_VX_ADMIN_CommandResult commandResult;
    char *message; /* at most 2048 characters */
} QTV_VX_ADMIN_CommandResponse;

/* What became of the messages that one application logged, counted since
 * its process started (QTV_VX_Vexar_getStatistics gives the same figures
 * in the process); keyed by application. */
typedef struct QTV_VX_ADMIN_Statistics {
    QTV_VX_HostAndAppId hostAndAppId; /* key */
    DDS_UnsignedLongLong accepted;
    DDS_UnsignedLongLong refused;
    DDS_UnsignedLongLong dropped;
    DDS_UnsignedLongLong published;
    DDS_UnsignedLongLong failed;
    DDS_UnsignedLongLong discarded;
} QTV_VX_ADMIN_Statistics;

/* Key holders: the keyed types themselves; only their key members matter. */
typedef QTV_VX_HostAndAppId QTV_VX_HostAndAppIdKeyHolder;
typedef QTV_VX_LogMessage QTV_VX_LogMessageKeyHolder;
typedef QTV_VX_ADMIN_State QTV_VX_ADMIN_StateKeyHolder;
typedef QTV_VX_ADMIN_CommandResponse QTV_VX_ADMIN_CommandResponseKeyHolder;
typedef QTV_VX_ADMIN_Statistics QTV_VX_ADMIN_StatisticsKeyHolder;

/* The discriminator of a freshly initialized command: QTV_VX_SET_LOG_LEVEL. */
VEXAR_API QTV_VX_ADMIN_CommandKind QTV_VX_ADMIN_Command_getDefaultDiscriminator(void);

/* ---- The operations of every type (see the top of this file). ---- */

#define QTV_VX_DECLARE_SAMPLE_OPERATIONS(Type)                                                                     \
    VEXAR_API const DDS_TypeCode *Type##_get_typecode(void);                                                       \
    VEXAR_API DDS_Boolean Type##_initialize(Type *sample);                                                         \
    VEXAR_API DDS_Boolean Type##_initialize_ex(Type *sample, DDS_Boolean allocatePointers,                         \
                                               DDS_Boolean allocateMemory);                                        \
    VEXAR_API DDS_Boolean Type##_initialize_w_params(Type *sample, const DDS_TypeAllocationParams_t *allocParams); \
    VEXAR_API void Type##_finalize(Type *sample);                                                                  \
    VEXAR_API void Type##_finalize_ex(Type *sample, DDS_Boolean deletePointers);                                   \
    VEXAR_API void Type##_finalize_w_params(Type *sample, const DDS_TypeDeallocationParams_t *deallocParams);      \
    VEXAR_API void Type##_finalize_optional_members(Type *sample, DDS_Boolean deletePointers);                     \
    VEXAR_API DDS_Boolean Type##_copy(Type *dst, const Type *src)

QTV_VX_DECLARE_SAMPLE_OPERATIONS(QTV_VX_HostAndAppId);
QTV_VX_DECLARE_SAMPLE_OPERATIONS(QTV_VX_LogMessage);
QTV_VX_DECLARE_SAMPLE_OPERATIONS(QTV_VX_ADMIN_QTVLoggerVerbosity);
QTV_VX_DECLARE_SAMPLE_OPERATIONS(QTV_VX_ADMIN_QTVLoggerCategory);
QTV_VX_DECLARE_SAMPLE_OPERATIONS(QTV_VX_ADMIN_QTVLoggerPrintFormat);
QTV_VX_DECLARE_SAMPLE_OPERATIONS(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity);
QTV_VX_DECLARE_SAMPLE_OPERATIONS(QTV_VX_ADMIN_StateKind);
QTV_VX_DECLARE_SAMPLE_OPERATIONS(QTV_VX_ADMIN_State);
QTV_VX_DECLARE_SAMPLE_OPERATIONS(QTV_VX_ADMIN_CommandKind);
QTV_VX_DECLARE_SAMPLE_OPERATIONS(QTV_VX_ADMIN_Command);
QTV_VX_DECLARE_SAMPLE_OPERATIONS(QTV_VX_ADMIN_CommandRequest);
QTV_VX_DECLARE_SAMPLE_OPERATIONS(QTV_VX_ADMIN_CommandResult);
QTV_VX_DECLARE_SAMPLE_OPERATIONS(QTV_VX_ADMIN_CommandResponse);
QTV_VX_DECLARE_SAMPLE_OPERATIONS(QTV_VX_ADMIN_Statistics);

/* ---- The sequence of every type (platform/types/sequence.h). ---- */

OBLX_SEQUENCE_DECLARE(QTV_VX_HostAndAppIdSeq, QTV_VX_HostAndAppId);
OBLX_SEQUENCE_DECLARE(QTV_VX_LogMessageSeq, QTV_VX_LogMessage);
OBLX_SEQUENCE_DECLARE(QTV_VX_ADMIN_QTVLoggerVerbositySeq, QTV_VX_ADMIN_QTVLoggerVerbosity);
OBLX_SEQUENCE_DECLARE(QTV_VX_ADMIN_QTVLoggerCategorySeq, QTV_VX_ADMIN_QTVLoggerCategory);
OBLX_SEQUENCE_DECLARE(QTV_VX_ADMIN_QTVLoggerPrintFormatSeq, QTV_VX_ADMIN_QTVLoggerPrintFormat);
OBLX_SEQUENCE_DECLARE_OPERATIONS(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq,
                                 QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity);
OBLX_SEQUENCE_DECLARE(QTV_VX_ADMIN_StateKindSeq, QTV_VX_ADMIN_StateKind);
OBLX_SEQUENCE_DECLARE(QTV_VX_ADMIN_StateSeq, QTV_VX_ADMIN_State);
OBLX_SEQUENCE_DECLARE(QTV_VX_ADMIN_CommandKindSeq, QTV_VX_ADMIN_CommandKind);
OBLX_SEQUENCE_DECLARE(QTV_VX_ADMIN_CommandSeq, QTV_VX_ADMIN_Command);
OBLX_SEQUENCE_DECLARE(QTV_VX_ADMIN_CommandRequestSeq, QTV_VX_ADMIN_CommandRequest);
OBLX_SEQUENCE_DECLARE(QTV_VX_ADMIN_CommandResultSeq, QTV_VX_ADMIN_CommandResult);
OBLX_SEQUENCE_DECLARE(QTV_VX_ADMIN_CommandResponseSeq, QTV_VX_ADMIN_CommandResponse);
OBLX_SEQUENCE_DECLARE(QTV_VX_ADMIN_StatisticsSeq, QTV_VX_ADMIN_Statistics);

VEXAR_END_DECLS

#endif
