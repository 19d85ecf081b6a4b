// The logger core's report lines: one line on stdout through
// QTV_VX_Vexar_printMessage, at the level that says how bad it is, with the
// reporting operation's name as its source.
#pragma once

#include "vexar/VexarUtility.h"

namespace vexar {

inline void reportError(const char *text, const char *source) noexcept {
    QTV_VX_Vexar_printMessage(text, source, QTV_VX_LOG_LEVEL_ERROR);
}

inline void reportWarning(const char *text, const char *source) noexcept {
    QTV_VX_Vexar_printMessage(text, source, QTV_VX_LOG_LEVEL_WARNING);
}

inline void reportNote(const char *text, const char *source) noexcept {
    QTV_VX_Vexar_printMessage(text, source, QTV_VX_LOG_LEVEL_INFO);
}

// True when there is an object to work on; otherwise reports `nullText`.
template <typename T>
bool present(const T *object, const char *source, const char *nullText) noexcept {
    if (object != nullptr) {
        return true;
    }
    reportError(nullText, source);
    return false;
}

}  // namespace vexar
