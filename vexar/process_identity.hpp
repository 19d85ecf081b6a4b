// The identity a logger announces for the participant it creates:
// "exe@host[pid]", the executable's name, the host name and the process id.
// It goes into the participant's user data after
// QTV_VX_IDENTITY_USER_DATA_PREFIX (vexar/DDSEntities.h); discovery carries
// it, so tools can tell apart two applications of one kind.
#pragma once

#include <string>

namespace vexar {

std::string processIdentity();

}  // namespace vexar
