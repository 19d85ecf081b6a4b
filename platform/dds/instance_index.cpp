// The live instances of a topic type, by handle (see instance_index.hpp).
#include "platform/dds/instance_index.hpp"

#include <limits>
#include <vector>

#include "platform/log/report.h"

namespace vexar::dds {

void InstanceIndex::retain() noexcept { references_.fetch_add(1, std::memory_order_relaxed); }

void InstanceIndex::release() noexcept {
    if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

std::uint64_t InstanceIndex::add(const unsigned char *key, std::size_t size, const char *context) noexcept {
    try {
        std::lock_guard lock(mutex_);
        const std::uint64_t id = ++lastId_;
        entries_.emplace(id, Entry{std::string(reinterpret_cast<const char *>(key), size)});
        try {
            unresolved_.insert(id);
        } catch (...) {
            entries_.erase(id);
            throw;
        }
        return id;
    } catch (...) {
        OBLX_Report_failure(context, "out of memory: an instance is left out of the next-instance reads");
        return 0;
    }
}

void InstanceIndex::remove(std::uint64_t id) noexcept {
    std::lock_guard lock(mutex_);
    auto entry = entries_.find(id);
    if (entry == entries_.end()) return;
    if (entry->second.handle == 0) {
        unresolved_.erase(id);
    } else {
        byHandle_.erase({entry->second.handle, id});
    }
    entries_.erase(entry);
}

// Looks the keys up without the mutex (Cyclone may be freeing a key copy
// meanwhile, which needs it), then files what it found under entries that
// are still there. A key that Cyclone does not know yet, or no more, stays
// unresolved: its instance may be just being made.
void InstanceIndex::resolve(const HandleOfKey &handleOf) {
    std::vector<std::pair<std::uint64_t, std::string>> keys;
    {
        std::lock_guard lock(mutex_);
        if (unresolved_.empty()) return;
        keys.reserve(unresolved_.size());
        for (std::uint64_t id : unresolved_) keys.emplace_back(id, entries_.at(id).key);
    }
    std::vector<std::pair<std::uint64_t, std::uint64_t>> found;  // (id, handle)
    found.reserve(keys.size());
    for (const auto &[id, key] : keys) {
        if (std::uint64_t handle = handleOf(key); handle != 0) found.emplace_back(id, handle);
    }
    std::lock_guard lock(mutex_);
    for (const auto &[id, handle] : found) {
        auto entry = entries_.find(id);
        if (entry == entries_.end() || entry->second.handle != 0) continue;
        byHandle_.emplace(handle, id);
        entry->second.handle = handle;
        unresolved_.erase(id);
    }
}

std::uint64_t InstanceIndex::after(std::uint64_t previous, const HandleOfKey &handleOf) {
    resolve(handleOf);
    std::lock_guard lock(mutex_);
    auto next = byHandle_.upper_bound({previous, std::numeric_limits<std::uint64_t>::max()});
    return next == byHandle_.end() ? 0 : next->first;
}

}  // namespace vexar::dds
