// The logger's output device, swappable while other threads write to it.
//
// A writer takes a counted reference to the installed device for the length
// of one write; installing another device only drops the slot's reference.
// The previous device is closed when its last reference goes: at once when
// nobody is writing, otherwise on the last writer's thread right after its
// write returns. So a close never overlaps a write, and the swap never waits
// for a writer, which matters because a device may take locks of its own
// (the application's global lock) that the thread swapping it already holds.
#pragma once

#include <memory>
#include <mutex>

#include "platform/log/logger.h"

namespace vexar::log {

class LogDeviceSlot {
public:
    // Closes the device (if it has a close) when the last holder lets go.
    class Installed {
    public:
        explicit Installed(OBLX_Config_LoggerDevice *device) noexcept : device_(device) {}
        ~Installed();
        Installed(const Installed &) = delete;
        Installed &operator=(const Installed &) = delete;

        void write(const OBLX_Config_LogMessage &message) const { device_->write(device_, &message); }
        OBLX_Config_LoggerDevice *device() const noexcept { return device_; }

    private:
        OBLX_Config_LoggerDevice *device_;
    };

    // Null when no device is installed (lines then go to standard output).
    std::shared_ptr<const Installed> acquire() const noexcept;

    // False only when memory runs out; `device` null uninstalls.
    bool install(OBLX_Config_LoggerDevice *device) noexcept;

    OBLX_Config_LoggerDevice *current() const noexcept;

private:
    mutable std::mutex mutex_;
    std::shared_ptr<const Installed> installed_;
};

}  // namespace vexar::log
