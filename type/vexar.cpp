// The sample functions and sequences of the Vexar data types: thin C
// wrappers over the type-code walker and the sequence template.
#include "type/vexar.h"

#include "platform/types/sample_ops.hpp"
#include "platform/types/sequence.hpp"

#define VEXAR_DEFINE_TYPE(Type)                                                                       \
    VEXAR_DEFINE_SAMPLE_OPERATIONS(Type)                                                              \
    using Type##_ElementTraits = ::vexar::types::sample::SampleOperations<Type, Type##_get_typecode>; \
    OBLX_SEQUENCE_DEFINE(Type##Seq, Type, Type##_ElementTraits)

VEXAR_DEFINE_TYPE(QTV_VX_HostAndAppId);
VEXAR_DEFINE_TYPE(QTV_VX_LogMessage);
VEXAR_DEFINE_TYPE(QTV_VX_ADMIN_QTVLoggerVerbosity);
VEXAR_DEFINE_TYPE(QTV_VX_ADMIN_QTVLoggerCategory);
VEXAR_DEFINE_TYPE(QTV_VX_ADMIN_QTVLoggerPrintFormat);
VEXAR_DEFINE_TYPE(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity);
VEXAR_DEFINE_TYPE(QTV_VX_ADMIN_StateKind);
VEXAR_DEFINE_TYPE(QTV_VX_ADMIN_State);
VEXAR_DEFINE_TYPE(QTV_VX_ADMIN_CommandKind);
VEXAR_DEFINE_TYPE(QTV_VX_ADMIN_Command);
VEXAR_DEFINE_TYPE(QTV_VX_ADMIN_CommandRequest);
VEXAR_DEFINE_TYPE(QTV_VX_ADMIN_CommandResult);
VEXAR_DEFINE_TYPE(QTV_VX_ADMIN_CommandResponse);
VEXAR_DEFINE_TYPE(QTV_VX_ADMIN_Statistics);
