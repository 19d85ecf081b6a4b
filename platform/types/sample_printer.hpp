// A readable rendering of any sample, derived from its type code: what
// print_data shows on standard output and what the DDS bridge puts in
// Cyclone's trace.
#pragma once

#include <string>

#include "platform/types/typecode.h"

namespace vexar::types::sample {

enum class PrintLayout {
    // "name: value", one member a line; members of a nested value three
    // spaces deeper. Elements of arrays and sequences are named "name[i]".
    lines,
    // "{name=value, nested={...}}" on one line, for trace output.
    oneLine,
};

// The sample at `sample` (null prints "NULL"), under `description` when it
// is not null, starting `indent` levels deep (lines only). Enumerations
// print their enumerator's name, strings in double quotes, a union its
// discriminator `_d` and the branch it selects. Empty when out of memory.
std::string print(const DDS_TypeCode &type, const void *sample, PrintLayout layout, const char *description = nullptr,
                  unsigned indent = 0) noexcept;

}  // namespace vexar::types::sample
