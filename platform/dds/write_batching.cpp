// The process-wide batching switch and the flush that keeps unbatched
// writers sending each sample at once.
#include "platform/dds/write_batching.hpp"

#include <atomic>

#include "platform/log/logger.h"

namespace vexar::dds {
namespace {

// Set before Cyclone's switch: a write that Cyclone kept back is always
// followed by a flush check that sees the flag.
std::atomic<bool> batchingOn{false};

}  // namespace

void enableWriteBatching(const char *context) noexcept {
    bool wasOn = batchingOn.exchange(true);
    dds_write_set_batch(true);
    if (!wasOn) {
        OBLX_Config_Logger_log(OBLX_CONFIG_LOG_CATEGORY_API, OBLX_CONFIG_LOG_LEVEL_WARNING, context, nullptr, 0, "%s",
                               "write batching is process-wide in Cyclone DDS: writers created directly with "
                               "Cyclone now need dds_write_flush after their writes");
    }
}

void flushUnbatched(dds_entity_t writer, bool batched) noexcept {
    if (!batched && batchingOn.load(std::memory_order_acquire)) dds_write_flush(writer);
}

}  // namespace vexar::dds
