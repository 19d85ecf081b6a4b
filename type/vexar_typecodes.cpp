// The type codes of the Vexar data types: each type described once, as a
// member table. Everything else about a type is derived from its code.
#include "platform/types/typecode_builder.hpp"
#include "type/vexar.h"

using namespace vexar::types::typecode;

namespace {

// QTV::VX::HostAndAppId
constexpr MemberRow kHostAndAppIdMembers[] = {
    key(VEXAR_TC_MEMBER(QTV_VX_HostAndAppId, rtps_host_id), longCode),
    key(VEXAR_TC_MEMBER(QTV_VX_HostAndAppId, rtps_app_id), longCode),
};
constexpr TypeDescription kHostAndAppId =
    structType<QTV_VX_HostAndAppId>(QTV_VX_HostAndAppIdTYPENAME, Extensibility::extensible, kHostAndAppIdMembers);

// QTV::VX::LogMessage; `level` is part of the key: one instance per application and level.
constexpr MemberRow kLogMessageMembers[] = {
    key(VEXAR_TC_MEMBER(QTV_VX_LogMessage, hostAndAppId), QTV_VX_HostAndAppId_get_typecode),
    key(VEXAR_TC_MEMBER(QTV_VX_LogMessage, level), longCode),
    field(VEXAR_TC_MEMBER(QTV_VX_LogMessage, category), stringCode<QTV_VX_LOG_MESSAGE_CATEGORY_MAX_LENGTH>),
    field(VEXAR_TC_MEMBER(QTV_VX_LogMessage, message), stringCode<QTV_VX_LOG_MESSAGE_MESSAGE_MAX_LENGTH>),
};
constexpr TypeDescription kLogMessage =
    structType<QTV_VX_LogMessage>(QTV_VX_LogMessageTYPENAME, Extensibility::mutable_, kLogMessageMembers);

// QTV::VX::ADMIN::QTVLoggerVerbosity
constexpr MemberRow kVerbosityEnumerators[] = {
    VEXAR_TC_ENUMERATOR(QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_SILENT),
    VEXAR_TC_ENUMERATOR(QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_ERROR),
    VEXAR_TC_ENUMERATOR(QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_WARNING),
    VEXAR_TC_ENUMERATOR(QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_STATUS_LOCAL),
    VEXAR_TC_ENUMERATOR(QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_STATUS_REMOTE),
    VEXAR_TC_ENUMERATOR(QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_STATUS_ALL),
};
constexpr TypeDescription kVerbosity =
    enumType<QTV_VX_ADMIN_QTVLoggerVerbosity>(QTV_VX_ADMIN_QTVLoggerVerbosityTYPENAME, kVerbosityEnumerators);

// QTV::VX::ADMIN::QTVLoggerCategory
constexpr MemberRow kCategoryEnumerators[] = {
    VEXAR_TC_ENUMERATOR(QTV_VX_OBLX_CONFIG_LOG_CATEGORY_PLATFORM),
    VEXAR_TC_ENUMERATOR(QTV_VX_OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION),
    VEXAR_TC_ENUMERATOR(QTV_VX_OBLX_CONFIG_LOG_CATEGORY_DATABASE),
    VEXAR_TC_ENUMERATOR(QTV_VX_OBLX_CONFIG_LOG_CATEGORY_ENTITIES),
    VEXAR_TC_ENUMERATOR(QTV_VX_OBLX_CONFIG_LOG_CATEGORY_API),
};
constexpr TypeDescription kCategory =
    enumType<QTV_VX_ADMIN_QTVLoggerCategory>(QTV_VX_ADMIN_QTVLoggerCategoryTYPENAME, kCategoryEnumerators);

// QTV::VX::ADMIN::QTVLoggerPrintFormat
constexpr MemberRow kPrintFormatEnumerators[] = {
    VEXAR_TC_ENUMERATOR(QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_DEFAULT),
    VEXAR_TC_ENUMERATOR(QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_TIMESTAMPED),
    VEXAR_TC_ENUMERATOR(QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_VERBOSE),
    VEXAR_TC_ENUMERATOR(QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_VERBOSE_TIMESTAMPED),
    VEXAR_TC_ENUMERATOR(QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_DEBUG),
    VEXAR_TC_ENUMERATOR(QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_MINIMAL),
    VEXAR_TC_ENUMERATOR(QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_MAXIMAL),
};
constexpr TypeDescription kPrintFormat =
    enumType<QTV_VX_ADMIN_QTVLoggerPrintFormat>(QTV_VX_ADMIN_QTVLoggerPrintFormatTYPENAME, kPrintFormatEnumerators);

// QTV::VX::ADMIN::QTVLoggerCategoryAndVerbosity
constexpr MemberRow kCategoryAndVerbosityMembers[] = {
    field(VEXAR_TC_MEMBER(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity, category),
          QTV_VX_ADMIN_QTVLoggerCategory_get_typecode),
    field(VEXAR_TC_MEMBER(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity, verbosity),
          QTV_VX_ADMIN_QTVLoggerVerbosity_get_typecode),
};
constexpr TypeDescription kCategoryAndVerbosity = structType<QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity>(
    QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosityTYPENAME, Extensibility::extensible, kCategoryAndVerbosityMembers);

// QTV::VX::ADMIN::StateKind
constexpr MemberRow kStateKindEnumerators[] = {
    VEXAR_TC_ENUMERATOR(QTV_VX_STATE_INITIALIZING),
    VEXAR_TC_ENUMERATOR(QTV_VX_STATE_OPERATIONAL),
    VEXAR_TC_ENUMERATOR(QTV_VX_STATE_NONOPERATIONAL),
    VEXAR_TC_ENUMERATOR(QTV_VX_STATE_SHUTTING_DOWN),
};
constexpr TypeDescription kStateKind =
    enumType<QTV_VX_ADMIN_StateKind>(QTV_VX_ADMIN_StateKindTYPENAME, kStateKindEnumerators);

// QTV::VX::ADMIN::State
constexpr MemberRow kStateMembers[] = {
    key(VEXAR_TC_MEMBER(QTV_VX_ADMIN_State, hostAndAppId), QTV_VX_HostAndAppId_get_typecode),
    field(VEXAR_TC_MEMBER(QTV_VX_ADMIN_State, administrationDomainId), longCode),
    field(VEXAR_TC_MEMBER(QTV_VX_ADMIN_State, state), QTV_VX_ADMIN_StateKind_get_typecode),
    field(VEXAR_TC_MEMBER(QTV_VX_ADMIN_State, applicationKind),
          stringCode<QTV_VX_ADMIN_STATE_APPLICATION_KIND_MAX_LENGTH>),
    field(VEXAR_TC_MEMBER(QTV_VX_ADMIN_State, filterLevel), longCode),
    field(VEXAR_TC_MEMBER(QTV_VX_ADMIN_State, qtvLoggerVerbosities),
          arrayCode<QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity, QTV_VX_ADMIN_STATE_VERBOSITIES_LENGTH,
                    QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity_get_typecode>),
    field(VEXAR_TC_MEMBER(QTV_VX_ADMIN_State, qtvLoggerPrintFormat), QTV_VX_ADMIN_QTVLoggerPrintFormat_get_typecode),
};
constexpr TypeDescription kState =
    structType<QTV_VX_ADMIN_State>(QTV_VX_ADMIN_StateTYPENAME, Extensibility::mutable_, kStateMembers);

// QTV::VX::ADMIN::CommandKind
constexpr MemberRow kCommandKindEnumerators[] = {
    VEXAR_TC_ENUMERATOR(QTV_VX_SET_LOG_LEVEL),
    VEXAR_TC_ENUMERATOR(QTV_VX_SET_QTV_LOGGER_LEVEL),
    VEXAR_TC_ENUMERATOR(QTV_VX_SET_QTV_LOGGER_PRINT_FORMAT),
};
constexpr TypeDescription kCommandKind =
    enumType<QTV_VX_ADMIN_CommandKind>(QTV_VX_ADMIN_CommandKindTYPENAME, kCommandKindEnumerators);

// QTV::VX::ADMIN::Command, a union without a default branch.
constexpr DDS_TypeCodeSequenceOps kCategoryAndVerbositySeqOps =
    VEXAR_TC_SEQUENCE_OPS(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq);
constexpr MemberRow kCommandBranches[] = {
    branch(QTV_VX_SET_LOG_LEVEL, VEXAR_TC_BRANCH(QTV_VX_ADMIN_Command, filterLevel), longCode),
    branch(QTV_VX_SET_QTV_LOGGER_LEVEL, VEXAR_TC_BRANCH(QTV_VX_ADMIN_Command, categoryAndVerbosity),
           sequenceCode<QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq,
                        QTV_VX_ADMIN_COMMAND_CATEGORY_AND_VERBOSITY_MAX_LENGTH,
                        QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity_get_typecode, kCategoryAndVerbositySeqOps>),
    branch(QTV_VX_SET_QTV_LOGGER_PRINT_FORMAT, VEXAR_TC_BRANCH(QTV_VX_ADMIN_Command, printFormat),
           QTV_VX_ADMIN_QTVLoggerPrintFormat_get_typecode),
};
constexpr TypeDescription kCommand = unionType<QTV_VX_ADMIN_Command>(
    QTV_VX_ADMIN_CommandTYPENAME, Extensibility::mutable_, QTV_VX_ADMIN_CommandKind_get_typecode, kCommandBranches);

// QTV::VX::ADMIN::CommandRequest: unkeyed, addressed by a content filter.
constexpr MemberRow kCommandRequestMembers[] = {
    field(VEXAR_TC_MEMBER(QTV_VX_ADMIN_CommandRequest, targetHostAndAppId), QTV_VX_HostAndAppId_get_typecode),
    field(VEXAR_TC_MEMBER(QTV_VX_ADMIN_CommandRequest, originatorHostAndAppId), QTV_VX_HostAndAppId_get_typecode),
    field(VEXAR_TC_MEMBER(QTV_VX_ADMIN_CommandRequest, invocation), longCode),
    field(VEXAR_TC_MEMBER(QTV_VX_ADMIN_CommandRequest, command), QTV_VX_ADMIN_Command_get_typecode),
};
constexpr TypeDescription kCommandRequest = structType<QTV_VX_ADMIN_CommandRequest>(
    QTV_VX_ADMIN_CommandRequestTYPENAME, Extensibility::mutable_, kCommandRequestMembers);

// QTV::VX::ADMIN::CommandResult
constexpr MemberRow kCommandResultEnumerators[] = {
    VEXAR_TC_ENUMERATOR(QTV_VX_COMMAND_RESULT_OK),
    VEXAR_TC_ENUMERATOR(QTV_VX_COMMAND_RESULT_NOT_SUPPORTED),
    VEXAR_TC_ENUMERATOR(QTV_VX_COMMAND_RESULT_ERROR),
};
constexpr TypeDescription kCommandResult =
    enumType<QTV_VX_ADMIN_CommandResult>(QTV_VX_ADMIN_CommandResultTYPENAME, kCommandResultEnumerators);

// QTV::VX::ADMIN::CommandResponse
constexpr MemberRow kCommandResponseMembers[] = {
    key(VEXAR_TC_MEMBER(QTV_VX_ADMIN_CommandResponse, hostAndAppId), QTV_VX_HostAndAppId_get_typecode),
    field(VEXAR_TC_MEMBER(QTV_VX_ADMIN_CommandResponse, originatorHostAndAppId), QTV_VX_HostAndAppId_get_typecode),
    field(VEXAR_TC_MEMBER(QTV_VX_ADMIN_CommandResponse, invocation), longCode),
    field(VEXAR_TC_MEMBER(QTV_VX_ADMIN_CommandResponse, commandResult), QTV_VX_ADMIN_CommandResult_get_typecode),
    field(VEXAR_TC_MEMBER(QTV_VX_ADMIN_CommandResponse, message),
          stringCode<QTV_VX_ADMIN_COMMAND_RESPONSE_MESSAGE_MAX_LENGTH>),
};
constexpr TypeDescription kCommandResponse = structType<QTV_VX_ADMIN_CommandResponse>(
    QTV_VX_ADMIN_CommandResponseTYPENAME, Extensibility::mutable_, kCommandResponseMembers);

// QTV::VX::ADMIN::Statistics: mutable, so that counts added later leave
// older readers able to read it.
constexpr MemberRow kStatisticsMembers[] = {
    key(VEXAR_TC_MEMBER(QTV_VX_ADMIN_Statistics, hostAndAppId), QTV_VX_HostAndAppId_get_typecode),
    field(VEXAR_TC_MEMBER(QTV_VX_ADMIN_Statistics, accepted), unsignedLongLongCode),
    field(VEXAR_TC_MEMBER(QTV_VX_ADMIN_Statistics, refused), unsignedLongLongCode),
    field(VEXAR_TC_MEMBER(QTV_VX_ADMIN_Statistics, dropped), unsignedLongLongCode),
    field(VEXAR_TC_MEMBER(QTV_VX_ADMIN_Statistics, published), unsignedLongLongCode),
    field(VEXAR_TC_MEMBER(QTV_VX_ADMIN_Statistics, failed), unsignedLongLongCode),
    field(VEXAR_TC_MEMBER(QTV_VX_ADMIN_Statistics, discarded), unsignedLongLongCode),
};
constexpr TypeDescription kStatistics =
    structType<QTV_VX_ADMIN_Statistics>(QTV_VX_ADMIN_StatisticsTYPENAME, Extensibility::mutable_, kStatisticsMembers);

}  // namespace

#define VEXAR_DEFINE_GET_TYPECODE(Type, description) \
    extern "C" const DDS_TypeCode *Type##_get_typecode(void) { return StaticTypeCode<description>::get(); }

VEXAR_DEFINE_GET_TYPECODE(QTV_VX_HostAndAppId, kHostAndAppId)
VEXAR_DEFINE_GET_TYPECODE(QTV_VX_LogMessage, kLogMessage)
VEXAR_DEFINE_GET_TYPECODE(QTV_VX_ADMIN_QTVLoggerVerbosity, kVerbosity)
VEXAR_DEFINE_GET_TYPECODE(QTV_VX_ADMIN_QTVLoggerCategory, kCategory)
VEXAR_DEFINE_GET_TYPECODE(QTV_VX_ADMIN_QTVLoggerPrintFormat, kPrintFormat)
VEXAR_DEFINE_GET_TYPECODE(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity, kCategoryAndVerbosity)
VEXAR_DEFINE_GET_TYPECODE(QTV_VX_ADMIN_StateKind, kStateKind)
VEXAR_DEFINE_GET_TYPECODE(QTV_VX_ADMIN_State, kState)
VEXAR_DEFINE_GET_TYPECODE(QTV_VX_ADMIN_CommandKind, kCommandKind)
VEXAR_DEFINE_GET_TYPECODE(QTV_VX_ADMIN_Command, kCommand)
VEXAR_DEFINE_GET_TYPECODE(QTV_VX_ADMIN_CommandRequest, kCommandRequest)
VEXAR_DEFINE_GET_TYPECODE(QTV_VX_ADMIN_CommandResult, kCommandResult)
VEXAR_DEFINE_GET_TYPECODE(QTV_VX_ADMIN_CommandResponse, kCommandResponse)
VEXAR_DEFINE_GET_TYPECODE(QTV_VX_ADMIN_Statistics, kStatistics)

extern "C" QTV_VX_ADMIN_CommandKind QTV_VX_ADMIN_Command_getDefaultDiscriminator(void) {
    const DDS_TypeCode *command = QTV_VX_ADMIN_Command_get_typecode();
    return static_cast<QTV_VX_ADMIN_CommandKind>(DDS_TypeCode_default_discriminator(command));
}
