#include "platform/log/log_device_slot.hpp"

#include <new>
#include <utility>

namespace vexar::log {
namespace {

OBLX_Config_LoggerDevice *deviceOf(const std::shared_ptr<const LogDeviceSlot::Installed> &installed) noexcept {
    return installed ? installed->device() : nullptr;
}

}  // namespace

LogDeviceSlot::Installed::~Installed() {
    if (device_->close != nullptr) device_->close(device_);
}

std::shared_ptr<const LogDeviceSlot::Installed> LogDeviceSlot::acquire() const noexcept {
    std::lock_guard lock(mutex_);
    return installed_;
}

bool LogDeviceSlot::install(OBLX_Config_LoggerDevice *device) noexcept {
    // Released after the lock: the close may run here, and may log.
    std::shared_ptr<const Installed> previous;
    try {
        std::lock_guard lock(mutex_);
        if (deviceOf(installed_) == device) return true;
        previous = std::exchange(installed_, device != nullptr ? std::make_shared<const Installed>(device) : nullptr);
    } catch (const std::bad_alloc &) {
        return false;
    }
    return true;
}

OBLX_Config_LoggerDevice *LogDeviceSlot::current() const noexcept {
    std::lock_guard lock(mutex_);
    return deviceOf(installed_);
}

}  // namespace vexar::log
