// Internal side of the middleware logger: the record every producer raises
// (our own reports and Cyclone's lines alike) and the entry points that gate,
// format and write it.
#pragma once

#include <cstdarg>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/log/logger.h"

namespace vexar::log {

inline constexpr uint32_t kNoDomain = UINT32_MAX;

// One diagnostic line before formatting. Pointers are borrowed for the call.
struct LogRecord {
    OBLX_Config_LogCategory category;
    OBLX_Config_LogLevel level;
    const char *source;    // "vexar" for our own lines, else Cyclone's category name
    const char *function;  // null when unknown
    const char *file;      // null when unknown
    int line;
    uint32_t domain;        // kNoDomain when the line belongs to no domain
    std::string_view text;  // a final newline is optional
};

// Whether `level` passes the verbosity of `category`: an atomic load.
bool logPasses(OBLX_Config_Logger &logger, OBLX_Config_LogCategory category, OBLX_Config_LogLevel level) noexcept;

// Gates, formats and writes one record to the output device (or stdout).
void logRecord(OBLX_Config_Logger &logger, const LogRecord &record) noexcept;

// printf-style text; empty for a null format or one that fails. Throws
// std::bad_alloc.
std::string formatText(const char *format, va_list args);

// printf-style entry for our own lines (source "vexar").
void vlog(OBLX_Config_LogCategory category, OBLX_Config_LogLevel level, const char *function, const char *file,
          int line, const char *format, va_list args) noexcept;

}  // namespace vexar::log
