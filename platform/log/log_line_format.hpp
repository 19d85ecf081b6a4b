// Renders one log record as a text line according to a print format.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

#include "platform/log/logger.hpp"

namespace vexar::log {

// What a line says about when and where it was raised; taken by the caller so
// that the formatting itself is a pure function.
struct LineStamp {
    timespec wallClock;
    long process;
    char thread[16];  // the thread's name, or its id when it has none

    static LineStamp now() noexcept;
};

std::string_view levelName(OBLX_Config_LogLevel level) noexcept;
std::string_view categoryName(OBLX_Config_LogCategory category) noexcept;

// The fields selected by `printFormat`, then ": " and the text, then '\n'.
std::string formatLogLine(const LogRecord &record, uint32_t printFormat, const LineStamp &stamp);

}  // namespace vexar::log
