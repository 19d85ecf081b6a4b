// The name a logger gives the participant it creates: "exe@host[pid]",
// the executable's name, the host name and the process id. Discovery
// carries it, so tools can tell apart two applications of one kind.
#pragma once

#include <string>

namespace vexar {

std::string processIdentity();

}  // namespace vexar
