// Small text helpers shared by the layers that read names out of text.
#pragma once

#include <strings.h>

#include <string_view>

namespace vexar::runtime {

// ASCII letters compare alike in either case.
inline bool equalsIgnoringCase(std::string_view a, std::string_view b) noexcept {
    return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

}  // namespace vexar::runtime
