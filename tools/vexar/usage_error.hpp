// A mistake on the command line: the program prints the text on one line
// and exits with EX_USAGE (64).
#pragma once

#include <stdexcept>
#include <string>

namespace vexar::cli {

inline constexpr int kExitUsage = 64;

struct UsageError : std::runtime_error {
    explicit UsageError(const std::string &what) : std::runtime_error(what) {}
};

}  // namespace vexar::cli
