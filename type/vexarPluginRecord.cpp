// The plugin records of the five topic types: one generic implementation
// (platform/plugin/type_plugin_record.hpp) instantiated per type.
#include "platform/plugin/type_plugin_record.hpp"
#include "type/vexarPlugin.h"

VEXAR_DEFINE_PLUGIN_RECORD(QTV_VX_LogMessage)
VEXAR_DEFINE_PLUGIN_RECORD(QTV_VX_ADMIN_State)
VEXAR_DEFINE_PLUGIN_RECORD(QTV_VX_ADMIN_CommandRequest)
VEXAR_DEFINE_PLUGIN_RECORD(QTV_VX_ADMIN_CommandResponse)
VEXAR_DEFINE_PLUGIN_RECORD(QTV_VX_ADMIN_Statistics)
