// Collects the lines that the middleware logger writes while it is alive, so
// tests can check what was reported. Restores the logger's device and
// verbosities when it goes.
#pragma once

#include <array>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/log/logger.h"

namespace vexar_test {

class LogCapture {
public:
    explicit LogCapture(OBLX_Config_LogVerbosity verbosity = OBLX_CONFIG_LOG_VERBOSITY_WARNING)
        : logger_(OBLX_Config_Logger_get_instance()) {
        for (int category = 0; category < OBLX_CONFIG_LOG_CATEGORY_COUNT; ++category)
            savedVerbosity_[category] = OBLX_Config_Logger_get_verbosity_by_category(logger_, categoryOf(category));
        OBLX_Config_Logger_set_verbosity(logger_, verbosity);
        OBLX_Config_Logger_set_output_device(logger_, &device_);
    }
    ~LogCapture() {
        OBLX_Config_Logger_set_output_device(logger_, nullptr);
        for (int category = 0; category < OBLX_CONFIG_LOG_CATEGORY_COUNT; ++category)
            OBLX_Config_Logger_set_verbosity_by_category(logger_, categoryOf(category), savedVerbosity_[category]);
    }
    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;

    std::string text() const {
        std::lock_guard lock(mutex_);
        return text_;
    }
    bool contains(std::string_view fragment) const { return text().find(fragment) != std::string::npos; }

private:
    static OBLX_Config_LogCategory categoryOf(int index) { return static_cast<OBLX_Config_LogCategory>(index); }
    static void write(OBLX_Config_LoggerDevice *device, const OBLX_Config_LogMessage *message) {
        auto *self = static_cast<LogCapture *>(device->device_data);
        std::lock_guard lock(self->mutex_);
        self->text_ += message->text;
    }

    OBLX_Config_Logger *logger_;
    OBLX_Config_LoggerDevice device_{this, &LogCapture::write, nullptr};
    std::array<OBLX_Config_LogVerbosity, OBLX_CONFIG_LOG_CATEGORY_COUNT> savedVerbosity_{};
    mutable std::mutex mutex_;
    std::string text_;
};

}  // namespace vexar_test
