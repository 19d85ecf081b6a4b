// Type support and typed endpoints of the five topic types: one generic
// implementation (type/typed_endpoints.hpp) instantiated per type.
#include "type/typed_endpoints.hpp"

VEXAR_DEFINE_TOPIC_TYPE_SUPPORT(QTV_VX_LogMessage)
VEXAR_DEFINE_TOPIC_TYPE_SUPPORT(QTV_VX_ADMIN_State)
VEXAR_DEFINE_TOPIC_TYPE_SUPPORT(QTV_VX_ADMIN_CommandRequest)
VEXAR_DEFINE_TOPIC_TYPE_SUPPORT(QTV_VX_ADMIN_CommandResponse)
VEXAR_DEFINE_TOPIC_TYPE_SUPPORT(QTV_VX_ADMIN_Statistics)
