#include <cstdio>
#include <cstring>
#include <mutex>
#include <shared_mutex>

#include "vexar/Vexar.h"
#include "vexar/admin_state.hpp"
#include "vexar/logger_core.hpp"
#include "vexar/report_line.hpp"

namespace {

// The device gate: captures hold it shared while they use the attached
// logger; attaching and detaching hold it exclusively, so a logger is never
// freed under a capture. Never destroyed: Cyclone's threads may still log
// while the process exits.
std::shared_mutex &gate() noexcept {
    static auto *gate = new std::shared_mutex;
    return *gate;
}
QTV_VX_Vexar *gAttachedLogger = nullptr;  // guarded by gate()

// Exactly one newline ends what is printed; an empty text prints nothing.
void printUncaptured(const char *text) noexcept {
    std::size_t length = std::strlen(text);
    if (length == 0) return;
    if (text[length - 1] == '\n') {
        std::fputs(text, stdout);
    } else {
        std::puts(text);
    }
}

// True when a running logger took the line.
bool capture(const OBLX_Config_LogMessage &message) noexcept {
    std::shared_lock lock(gate());
    if (gAttachedLogger == nullptr || !vexar::isInitialized()) return false;
    vexar::countCall(vexar::logNow(*gAttachedLogger, QTV_VX_translateFromQTVLoggerLogLevelToVXLevel(message.level),
                                   message.text, QTV_VX_VEXAR_INFRASTRUCTURE_CATEGORY));
    return true;
}

}  // namespace

namespace vexar {

OBLX_Config_Logger *middlewareLogger(const char *source) noexcept {
    OBLX_Config_Logger *logger = OBLX_Config_Logger_get_instance();
    if (logger == nullptr) vexar::reportError("Unable to get QTV Logger", source);
    return logger;
}

void attachLoggerDevice(QTV_VX_Vexar &logger) noexcept {
    std::unique_lock lock(gate());
    gAttachedLogger = &logger;
}

void detachLoggerDevice() noexcept {
    std::unique_lock lock(gate());
    gAttachedLogger = nullptr;
}

bool publishVerbosities(QTV_VX_Vexar &self) noexcept {
    auto stateLock = lockState();
    QTV_VX_Vexar_updateQTVLoggerCategoryAndVerbosityState(&self);
    return QTV_VX_Vexar_writeState(&self) == 1;
}

bool publishPrintFormat(QTV_VX_Vexar &self) noexcept {
    auto stateLock = lockState();
    QTV_VX_Vexar_updateQTVLoggerPrintFormatState(&self);
    return QTV_VX_Vexar_writeState(&self) == 1;
}

}  // namespace vexar

extern "C" {

OBLX_Config_LoggerDevice QTV_VX_Vexar_localDevice = {nullptr, &QTV_VX_Vexar_writeDevice, nullptr};

// Lines raised on the write thread are dropped before any lock: they come
// from its own writes and would feed its own queue. A line raised while this
// thread captures another never comes back here: the middleware logger
// prints it instead, so the gate is never taken twice by one thread.
void QTV_VX_Vexar_writeDevice(OBLX_Config_LoggerDevice * /*device*/, const OBLX_Config_LogMessage *message) {
    if (message == nullptr || message->text == nullptr || vexar::onWriteThread()) return;
    if (!capture(*message)) printUncaptured(message->text);
}

void QTV_VX_Vexar_maskSystemVerbosity(OBLX_Config_LogVerbosity saved[OBLX_CONFIG_LOG_CATEGORY_COUNT]) {
    OBLX_Config_Logger *logger = vexar::middlewareLogger("QTV_VX_Vexar_maskSystemVerbosity");
    if (logger == nullptr || saved == nullptr) return;
    for (int category = 0; category < OBLX_CONFIG_LOG_CATEGORY_COUNT; ++category) {
        saved[category] =
            OBLX_Config_Logger_get_verbosity_by_category(logger, static_cast<OBLX_Config_LogCategory>(category));
    }
    OBLX_Config_Logger_set_verbosity(logger, OBLX_CONFIG_LOG_VERBOSITY_SILENT);
}

void QTV_VX_Vexar_unmaskSystemVerbosity(const OBLX_Config_LogVerbosity saved[OBLX_CONFIG_LOG_CATEGORY_COUNT]) {
    OBLX_Config_Logger *logger = vexar::middlewareLogger("QTV_VX_Vexar_unmaskSystemVerbosity");
    if (logger == nullptr || saved == nullptr) return;
    for (int category = 0; category < OBLX_CONFIG_LOG_CATEGORY_COUNT; ++category) {
        OBLX_Config_Logger_set_verbosity_by_category(logger, static_cast<OBLX_Config_LogCategory>(category),
                                                     saved[category]);
    }
}

void QTV_VX_Vexar_setQTVLoggerVerbosityByCategory(QTV_VX_Vexar *self, OBLX_Config_LogCategory category,
                                                  OBLX_Config_LogVerbosity verbosity) {
    OBLX_Config_Logger_set_verbosity_by_category(OBLX_Config_Logger_get_instance(), category, verbosity);
    if (category == OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION) {
        LogMessageWriteThread_setCommunicationsLogVerbosity(self->logMessageWriteThread, verbosity);
    }
    if (!vexar::publishVerbosities(*self)) {
        vexar::reportWarning("Unable to write Verbosity State", "QTV_VX_Vexar_setQTVLoggerVerbosityByCategory");
    }
}

DDS_Long QTV_VX_Vexar_setQTVLoggerPrintFormat(QTV_VX_Vexar *self, OBLX_Config_LogPrintFormat format) {
    constexpr const char *source = "QTV_VX_Vexar_setQTVLoggerPrintFormat";
    OBLX_Config_Logger *logger = vexar::middlewareLogger(source);
    if (logger == nullptr) return 0;
    OBLX_Config_Logger_set_print_format(logger, format);
    if (!vexar::publishPrintFormat(*self)) {
        vexar::reportWarning("Unable to write PrintFormat State", source);
        return 0;
    }
    return 1;
}

}  // extern "C"
