// The middleware logger: per-category verbosity gate, print format and
// output device, shared by the platform layer and Cyclone's own diagnostics.
#include "platform/log/logger.h"

#include <array>
#include <atomic>
#include <cstdio>
#include <string>

#include "platform/log/cyclone_log_sink.hpp"
#include "platform/log/failure_causes.hpp"
#include "platform/log/log_device_slot.hpp"
#include "platform/log/log_line_format.hpp"
#include "platform/log/logger.hpp"
#include "platform/log/report.h"

struct OBLX_Config_Logger {
    // Atomics: every line, on any thread, reads them to decide whether to print.
    std::array<std::atomic<uint32_t>, OBLX_CONFIG_LOG_CATEGORY_COUNT> verbosity;
    std::atomic<uint32_t> printFormat;
    vexar::log::LogDeviceSlot device;
};

namespace vexar::log {
namespace {

constexpr uint32_t kVerbosityBits = OBLX_CONFIG_LOG_VERBOSITY_STATUS_ALL;

// Level n is bit n-1 of a verbosity; levels outside 1..5 pass nowhere.
constexpr uint32_t levelBit(OBLX_Config_LogLevel level) noexcept {
    return level >= OBLX_CONFIG_LOG_LEVEL_ERROR && level <= OBLX_CONFIG_LOG_LEVEL_DEBUG ? 1u << (level - 1) : 0u;
}

bool isCategory(OBLX_Config_LogCategory category) noexcept {
    return category >= 0 && category < OBLX_CONFIG_LOG_CATEGORY_COUNT;
}

OBLX_Config_Logger *createLogger() {
    // Never destroyed: Cyclone may still log from its threads during exit.
    auto *logger = new OBLX_Config_Logger{};
    for (auto &verbosity : logger->verbosity) verbosity.store(OBLX_CONFIG_LOG_VERBOSITY_ERROR);
    logger->printFormat.store(OBLX_CONFIG_LOG_PRINT_FORMAT_DEFAULT);
    hookCycloneDiagnostics(*logger);
    return logger;
}

void writeToStdout(const std::string &line) noexcept {
    fwrite(line.data(), 1, line.size(), stdout);
    fflush(stdout);
}

// Set while this thread is inside a device's write.
thread_local bool tWritingToDevice = false;

class DeviceWriteScope {
public:
    DeviceWriteScope() noexcept { tWritingToDevice = true; }
    ~DeviceWriteScope() { tWritingToDevice = false; }
    DeviceWriteScope(const DeviceWriteScope &) = delete;
    DeviceWriteScope &operator=(const DeviceWriteScope &) = delete;
};

// A line raised from inside a device's write goes to standard output: handing
// it to the device again could recurse without end.
void writeLine(OBLX_Config_Logger &logger, OBLX_Config_LogLevel level, const std::string &line) {
    const auto installed = tWritingToDevice ? nullptr : logger.device.acquire();
    if (!installed) return writeToStdout(line);
    DeviceWriteScope scope;
    installed->write(OBLX_Config_LogMessage{line.c_str(), level});
}

}  // namespace

std::string formatText(const char *format, va_list args) {
    if (format == nullptr) return {};
    va_list measuring;
    va_copy(measuring, args);
    const int length = vsnprintf(nullptr, 0, format, measuring);
    va_end(measuring);
    if (length <= 0) return {};
    std::string text(static_cast<size_t>(length), '\0');
    vsnprintf(text.data(), text.size() + 1, format, args);
    return text;
}

bool logPasses(OBLX_Config_Logger &logger, OBLX_Config_LogCategory category, OBLX_Config_LogLevel level) noexcept {
    if (!isCategory(category)) return false;
    return (logger.verbosity[category].load(std::memory_order_relaxed) & levelBit(level)) != 0;
}

void logRecord(OBLX_Config_Logger &logger, const LogRecord &record) noexcept {
    if (!logPasses(logger, record.category, record.level)) return;
    try {
        const auto printFormat = logger.printFormat.load(std::memory_order_relaxed);
        writeLine(logger, record.level, formatLogLine(record, printFormat, LineStamp::now()));
    } catch (...) {
        // Out of memory while formatting, or a device that threw: the line is lost.
    }
}

void vlog(OBLX_Config_LogCategory category, OBLX_Config_LogLevel level, const char *function, const char *file,
          int line, const char *format, va_list args) noexcept {
    OBLX_Config_Logger *logger = OBLX_Config_Logger_get_instance();
    if (logger == nullptr) return;
    // An error is kept as a failure cause whatever the verbosity.
    const bool cause = level == OBLX_CONFIG_LOG_LEVEL_ERROR && collectingFailureCauses();
    if (!cause && !logPasses(*logger, category, level)) return;
    try {
        const std::string text = formatText(format, args);
        const LogRecord record{category, level, "vexar", function, file, line, kNoDomain, text};
        if (cause) keepFailureCause(record);
        logRecord(*logger, record);
    } catch (...) {
        // Out of memory while formatting: the line is lost.
    }
}

}  // namespace vexar::log

using vexar::log::isCategory;
using vexar::log::kVerbosityBits;

extern "C" {

OBLX_Config_Logger *OBLX_Config_Logger_get_instance(void) {
    try {
        static OBLX_Config_Logger *const instance = vexar::log::createLogger();
        return instance;
    } catch (...) {
        return nullptr;
    }
}

OBLX_Config_LogVerbosity OBLX_Config_Logger_get_verbosity_by_category(OBLX_Config_Logger *self,
                                                                      OBLX_Config_LogCategory category) {
    if (self == nullptr) {
        OBLX_Report_badParameter(__func__, "self");
        return OBLX_CONFIG_LOG_VERBOSITY_SILENT;
    }
    if (!isCategory(category)) {
        OBLX_Report_badParameter(__func__, "category");
        return OBLX_CONFIG_LOG_VERBOSITY_SILENT;
    }
    return static_cast<OBLX_Config_LogVerbosity>(self->verbosity[category].load(std::memory_order_relaxed));
}

void OBLX_Config_Logger_set_verbosity_by_category(OBLX_Config_Logger *self, OBLX_Config_LogCategory category,
                                                  OBLX_Config_LogVerbosity verbosity) {
    if (self == nullptr) return OBLX_Report_badParameter(__func__, "self");
    const uint32_t levels = static_cast<uint32_t>(verbosity) & kVerbosityBits;
    if (category == OBLX_CONFIG_LOG_CATEGORY_ALL) {
        for (auto &each : self->verbosity) each.store(levels, std::memory_order_relaxed);
    } else if (isCategory(category)) {
        self->verbosity[category].store(levels, std::memory_order_relaxed);
    } else {
        OBLX_Report_badParameter(__func__, "category");
    }
}

void OBLX_Config_Logger_set_verbosity(OBLX_Config_Logger *self, OBLX_Config_LogVerbosity verbosity) {
    if (self == nullptr) return OBLX_Report_badParameter(__func__, "self");
    OBLX_Config_Logger_set_verbosity_by_category(self, OBLX_CONFIG_LOG_CATEGORY_ALL, verbosity);
}

OBLX_Config_LogPrintFormat OBLX_Config_Logger_get_print_format(OBLX_Config_Logger *self) {
    if (self == nullptr) {
        OBLX_Report_badParameter(__func__, "self");
        return OBLX_CONFIG_LOG_PRINT_FORMAT_DEFAULT;
    }
    return static_cast<OBLX_Config_LogPrintFormat>(self->printFormat.load(std::memory_order_relaxed));
}

DDS_Boolean OBLX_Config_Logger_set_print_format(OBLX_Config_Logger *self, OBLX_Config_LogPrintFormat format) {
    if (self == nullptr) {
        OBLX_Report_badParameter(__func__, "self");
        return DDS_BOOLEAN_FALSE;
    }
    if ((static_cast<uint32_t>(format) & ~uint32_t{OBLX_CONFIG_LOG_PRINT_BITS_ALL}) != 0) {
        OBLX_Report_badParameter(__func__, "format");
        return DDS_BOOLEAN_FALSE;
    }
    self->printFormat.store(static_cast<uint32_t>(format), std::memory_order_relaxed);
    return DDS_BOOLEAN_TRUE;
}

DDS_Boolean OBLX_Config_Logger_set_output_device(OBLX_Config_Logger *self, OBLX_Config_LoggerDevice *device) {
    if (self == nullptr) {
        OBLX_Report_badParameter(__func__, "self");
        return DDS_BOOLEAN_FALSE;
    }
    if (device != nullptr && device->write == nullptr) {
        OBLX_Report_badParameter(__func__, "device");
        return DDS_BOOLEAN_FALSE;
    }
    if (!self->device.install(device)) {
        OBLX_Report_allocationFailure(__func__, sizeof(vexar::log::LogDeviceSlot::Installed));
        return DDS_BOOLEAN_FALSE;
    }
    return DDS_BOOLEAN_TRUE;
}

OBLX_Config_LoggerDevice *OBLX_Config_Logger_get_output_device(OBLX_Config_Logger *self) {
    if (self == nullptr) {
        OBLX_Report_badParameter(__func__, "self");
        return nullptr;
    }
    return self->device.current();
}

void OBLX_Config_Logger_log(OBLX_Config_LogCategory category, OBLX_Config_LogLevel level, const char *function,
                            const char *file, int line, const char *format, ...) {
    va_list args;
    va_start(args, format);
    vexar::log::vlog(category, level, function, file, line, format, args);
    va_end(args);
}

}  // extern "C"
