// What `vexar demo` logs. By default it looks like a healthy service:
// mostly INFO and DEBUG with short texts, an occasional WARNING, a rare
// ERROR, and now and then one long message (never the first). Tests of
// filters ask instead for every level and category in turn, with every
// 50th message long, so that each filter has something to select.
#pragma once

#include <cstdint>
#include <string>

namespace vexar::cli {

struct DemoMessage {
    std::int32_t level;
    const char *category;
    std::string text;
};

DemoMessage healthyDemoMessage(std::uint64_t index);
DemoMessage everyLevelDemoMessage(std::uint64_t index);

}  // namespace vexar::cli
