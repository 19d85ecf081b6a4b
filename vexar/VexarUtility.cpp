#include "vexar/VexarUtility.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "platform/runtime/clock.h"
#include "platform/runtime/thread.h"

namespace {

constexpr const char *kPrintSource = "QTV_VX_Vexar_printMessage";

struct NamedLevel {
    DDS_Long level;
    const char *name;
};

constexpr NamedLevel kNamedLevels[] = {
    {QTV_VX_LOG_LEVEL_FATAL, "VX Fatal"},   {QTV_VX_LOG_LEVEL_SEVERE, "VX Severe"},
    {QTV_VX_LOG_LEVEL_ERROR, "VX Error"},   {QTV_VX_LOG_LEVEL_WARNING, "VX Warning"},
    {QTV_VX_LOG_LEVEL_NOTICE, "VX Notice"}, {QTV_VX_LOG_LEVEL_INFO, "VX Info"},
    {QTV_VX_LOG_LEVEL_DEBUG, "VX Debug"},   {QTV_VX_LOG_LEVEL_TRACE, "VX Trace"},
};
constexpr const char *kUnnamedLevel = "VX Silent";

// Printed instead of a level name when the name cannot be had.
constexpr const char *kFallbackLevelName = "VX Warning";

const char *nameOf(DDS_Long level) noexcept {
    for (const NamedLevel &named : kNamedLevels) {
        if (named.level == level) {
            return named.name;
        }
    }
    return kUnnamedLevel;
}

bool endsInNewline(const char *text) noexcept {
    const size_t length = std::strlen(text);
    return length > 0 && text[length - 1] == '\n';
}

// Formats into a buffer and hands stdout the whole line in one call, so
// lines printed by concurrent threads never interleave. A small line needs
// no allocation; when even the heap fails the line is written in pieces
// under stdout's lock, which keeps it whole within this process.
void writeLine(const char *levelName, const char *source, const char *text) noexcept {
    const char *newline = endsInNewline(text) ? "" : "\n";
    char local[512];
    const int length = std::snprintf(local, sizeof local, "%s: %s: %s%s", levelName, source, text, newline);
    if (length >= 0 && static_cast<size_t>(length) < sizeof local) {
        std::fwrite(local, 1, static_cast<size_t>(length), stdout);
        return;
    }
    if (length >= 0) {
        const size_t size = static_cast<size_t>(length) + 1;
        std::unique_ptr<char, decltype(&std::free)> heap(static_cast<char *>(std::malloc(size)), &std::free);
        if (heap) {
            std::snprintf(heap.get(), size, "%s: %s: %s%s", levelName, source, text, newline);
            std::fwrite(heap.get(), 1, static_cast<size_t>(length), stdout);
            return;
        }
    }
    flockfile(stdout);
    for (const char *piece : {levelName, ": ", source, ": ", text, newline}) {
        std::fputs(piece, stdout);
    }
    funlockfile(stdout);
}

}  // namespace

extern "C" {

DDS_Long QTV_VX_translateFromVXLogLevelToString(DDS_Long level, char *buffer) {
    if (buffer == nullptr) {
        return DDS_RETCODE_BAD_PARAMETER;
    }
    const char *name = nameOf(level);
    std::memcpy(buffer, name, std::strlen(name) + 1);
    return DDS_RETCODE_OK;
}

DDS_Long QTV_VX_Vexar_printMessage(const char *message, const char *source, DDS_Long level) {
    if (message == nullptr || source == nullptr) {
        writeLine("VX Error", kPrintSource, "String passed as parameter is NULL.");
        return DDS_RETCODE_PRECONDITION_NOT_MET;
    }
    if (message[0] == '\0') {
        writeLine("VX Error", kPrintSource, "Message to print is empty.");
        return DDS_RETCODE_BAD_PARAMETER;
    }
    char levelName[QTV_VX_LOG_LEVEL_NAME_SIZE];
    const DDS_Long translated = QTV_VX_translateFromVXLogLevelToString(level, levelName);
    writeLine(translated == DDS_RETCODE_OK ? levelName : kFallbackLevelName, source, message);
    return translated;
}

void QTV_VX_Utility_sleep(DDS_Long milliseconds) {
    if (milliseconds <= 0) {
        return;
    }
    constexpr DDS_LongLong kNanosecondsPerSecond = 1000000000;
    const DDS_LongLong seconds = milliseconds / 1000;
    const DDS_LongLong nanoseconds = milliseconds % 1000;  // the remainder, kept as nanoseconds
    const OBLX_Time_t duration = OBLX_Time_fromNanoseconds(seconds * kNanosecondsPerSecond + nanoseconds);
    OBLX_Thread_sleep(&duration);
}

}  // extern "C"
