// printf-style logging: the text formatted on the caller's thread into a
// stack buffer of the message's bound, cut at a character boundary when
// longer, then logged like any other message.
#include "vexar/FormattedLogging.h"

#include <cstdio>
#include <cstring>
#include <string_view>

#include "vexar/logger_core.hpp"
#include "vexar/report_line.hpp"

namespace {

constexpr std::size_t kTextSize = QTV_VX_LOG_MESSAGE_MESSAGE_MAX_LENGTH + 1;
constexpr std::string_view kCutMarker = QTV_VX_VEXAR_CUT_MARKER;

bool continuationByte(char byte) noexcept { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

// Where to cut so that the byte at `end` and the rest of its character go:
// at most three bytes back, since a character has at most three
// continuation bytes (text that is not UTF-8 loses no more).
std::size_t characterStart(const char *text, std::size_t end) noexcept {
    for (int back = 0; back < 3 && end > 0 && continuationByte(text[end]); ++back) --end;
    return end;
}

}  // namespace

extern "C" {

std::size_t QTV_VX_Vexar_endFormattedText(char *buffer, std::size_t size, std::size_t length) {
    if (buffer == nullptr || size <= kCutMarker.size()) {
        vexar::reportError("Buffer too small for a cut text", "QTV_VX_Vexar_endFormattedText");
        return 0;
    }
    if (length < size) {
        buffer[length] = '\0';
        return length;
    }
    std::size_t end = characterStart(buffer, size - 1 - kCutMarker.size());
    std::memcpy(buffer + end, kCutMarker.data(), kCutMarker.size());
    buffer[end + kCutMarker.size()] = '\0';
    return end + kCutMarker.size();
}

DDS_Long QTV_VX_Vexar_passesLevelGate(DDS_Long level) { return vexar::passesLevelGate(level) ? 1 : 0; }

void QTV_VX_Vexar_vlogf(QTV_VX_Vexar *self, DDS_Long level, const char *category, const char *format,
                        va_list arguments) {
    // A null format is logged as a null message: its error is printed whatever the level.
    if (format == nullptr) return QTV_VX_Vexar_logMessageWithLevelCategory(self, level, nullptr, category);
    if (!vexar::passesLevelGate(level)) return;
    char text[kTextSize];
    int length = std::vsnprintf(text, sizeof text, format, arguments);
    if (length < 0) {
        vexar::reportError("Unable to format message", "QTV_VX_Vexar_vlogf");
        vexar::countCall(vexar::CallOutcome::refused);
        return;
    }
    QTV_VX_Vexar_endFormattedText(text, sizeof text, static_cast<std::size_t>(length));
    QTV_VX_Vexar_logMessageWithLevelCategory(self, level, text, category);
}

void QTV_VX_Vexar_logf(QTV_VX_Vexar *self, DDS_Long level, const char *category, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    QTV_VX_Vexar_vlogf(self, level, category, format, arguments);
    va_end(arguments);
}

}  // extern "C"
