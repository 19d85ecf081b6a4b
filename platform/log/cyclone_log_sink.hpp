// The bridge that routes every diagnostic line of Cyclone DDS into the
// middleware logger, classified into one of its categories and levels.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/log/logger.h"

namespace vexar::log {

struct CycloneLineOrigin {
    OBLX_Config_LogCategory category;
    OBLX_Config_LogLevel level;
    const char *source;  // Cyclone's name of the line's category: "discovery"
};

// `priority` is the line's DDS_LC_* bit, `file` Cyclone's source file (may be
// null), `text` the line without Cyclone's header. An error or warning about
// input received from the network is a WARNING of COMMUNICATION, whatever its
// file: a sender must not be able to raise errors here.
CycloneLineOrigin classifyCycloneLine(uint32_t priority, const char *file, std::string_view text) noexcept;

// Cyclone leaves the domain id field of its log records unset, but prints the
// id in the line header it passes along: "<seconds>.<micros> [<domain>] <thread>: ".
uint32_t domainFromCycloneHeader(std::string_view header) noexcept;

// Installs the logger as Cyclone's log and trace sink, repeated lines
// collapsed, and opens Cyclone's log mask to every category the logger can
// classify. Called once. Throws std::bad_alloc.
void hookCycloneDiagnostics(OBLX_Config_Logger &logger);

}  // namespace vexar::log
