#include "process_identity.hpp"

#include <errno.h>
#include <limits.h>
#include <unistd.h>

namespace vexar {
namespace {

std::string hostName() {
    char name[HOST_NAME_MAX + 1] = {};
    if (gethostname(name, sizeof name - 1) != 0 || name[0] == '\0') return "localhost";
    return name;
}

}  // namespace

std::string processIdentity() {
    // glibc's short name of argv[0]; a program started under another name
    // shows that name, as ps does.
    std::string exe = program_invocation_short_name != nullptr ? program_invocation_short_name : "";
    if (exe.empty()) exe = "unknown";
    return exe + "@" + hostName() + "[" + std::to_string(static_cast<long>(getpid())) + "]";
}

}  // namespace vexar
