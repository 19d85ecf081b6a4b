// Cyclone's C API for the bridge. Include Cyclone only through this header.
//
// Cyclone names its return codes DDS_RETCODE_* like ours but gives them
// negative values; whichever header came last would silently win. Here
// Cyclone's definitions are dropped and ours (platform/dds_types.h) kept:
// popping a macro that was undefined when pushed undefines it again. So
// compare Cyclone's results against 0 (negative means failure), never
// against DDS_RETCODE_* names.
#pragma once

#pragma push_macro("DDS_RETCODE_OK")
#pragma push_macro("DDS_RETCODE_ERROR")
#pragma push_macro("DDS_RETCODE_UNSUPPORTED")
#pragma push_macro("DDS_RETCODE_BAD_PARAMETER")
#pragma push_macro("DDS_RETCODE_PRECONDITION_NOT_MET")
#pragma push_macro("DDS_RETCODE_OUT_OF_RESOURCES")
#pragma push_macro("DDS_RETCODE_NOT_ENABLED")
#pragma push_macro("DDS_RETCODE_IMMUTABLE_POLICY")
#pragma push_macro("DDS_RETCODE_INCONSISTENT_POLICY")
#pragma push_macro("DDS_RETCODE_ALREADY_DELETED")
#pragma push_macro("DDS_RETCODE_TIMEOUT")
#pragma push_macro("DDS_RETCODE_NO_DATA")
#pragma push_macro("DDS_RETCODE_ILLEGAL_OPERATION")
#undef DDS_RETCODE_OK
#undef DDS_RETCODE_ERROR
#undef DDS_RETCODE_UNSUPPORTED
#undef DDS_RETCODE_BAD_PARAMETER
#undef DDS_RETCODE_PRECONDITION_NOT_MET
#undef DDS_RETCODE_OUT_OF_RESOURCES
#undef DDS_RETCODE_NOT_ENABLED
#undef DDS_RETCODE_IMMUTABLE_POLICY
#undef DDS_RETCODE_INCONSISTENT_POLICY
#undef DDS_RETCODE_ALREADY_DELETED
#undef DDS_RETCODE_TIMEOUT
#undef DDS_RETCODE_NO_DATA
#undef DDS_RETCODE_ILLEGAL_OPERATION

#include <dds/dds.h>

#pragma pop_macro("DDS_RETCODE_OK")
#pragma pop_macro("DDS_RETCODE_ERROR")
#pragma pop_macro("DDS_RETCODE_UNSUPPORTED")
#pragma pop_macro("DDS_RETCODE_BAD_PARAMETER")
#pragma pop_macro("DDS_RETCODE_PRECONDITION_NOT_MET")
#pragma pop_macro("DDS_RETCODE_OUT_OF_RESOURCES")
#pragma pop_macro("DDS_RETCODE_NOT_ENABLED")
#pragma pop_macro("DDS_RETCODE_IMMUTABLE_POLICY")
#pragma pop_macro("DDS_RETCODE_INCONSISTENT_POLICY")
#pragma pop_macro("DDS_RETCODE_ALREADY_DELETED")
#pragma pop_macro("DDS_RETCODE_TIMEOUT")
#pragma pop_macro("DDS_RETCODE_NO_DATA")
#pragma pop_macro("DDS_RETCODE_ILLEGAL_OPERATION")

#include "platform/dds_types.h"

namespace vexar::dds {
// Cyclone counts times and durations in nanoseconds.
inline constexpr dds_duration_t kNanosecondsPerSecond = DDS_NSECS_IN_SEC;
}  // namespace vexar::dds
