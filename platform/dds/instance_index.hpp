// The instances of one topic type that its Cyclone domain holds, in the
// order of their handles, so that a reader can find the instance after a
// given one without reading: a read marks what it returns READ, so reading
// to find instances would change samples that it does not return.
//
// Cyclone keeps one key-only copy of each instance of a domain (the
// sertype's to_untyped, in its key-to-handle map) from the instance's first
// sample until no reader or writer of the domain holds it any more. The
// sertype adds an entry when it makes that copy and removes it when Cyclone
// frees the copy, so the index holds the live instances, pruned by Cyclone
// itself, at no cost per sample. An entry's handle is looked up the first
// time a reader asks: Cyclone's map cannot be asked while it makes the copy.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace vexar::dds {

class InstanceIndex {
public:
    // The handle Cyclone gives the instance of these key bytes, 0 when it
    // holds none (yet, or any more).
    using HandleOfKey = std::function<std::uint64_t(const std::string &key)>;

    InstanceIndex() noexcept = default;
    InstanceIndex(const InstanceIndex &) = delete;
    InstanceIndex &operator=(const InstanceIndex &) = delete;

    // Shared by the sertype and the key copies, which may outlive it: one
    // reference at creation; the last release deletes the index.
    void retain() noexcept;
    void release() noexcept;

    // An instance that Cyclone now holds, by its key bytes: the entry's id,
    // or 0 when memory ran out (reported under `context`: the instance is
    // then left out of iteration).
    std::uint64_t add(const unsigned char *key, std::size_t size, const char *context) noexcept;
    void remove(std::uint64_t id) noexcept;

    // The least handle above `previous` of an instance held, 0 when none.
    // Entries new since the last call get their handles first.
    std::uint64_t after(std::uint64_t previous, const HandleOfKey &handleOf);

private:
    ~InstanceIndex() = default;
    void resolve(const HandleOfKey &handleOf);

    struct Entry {
        std::string key;
        std::uint64_t handle = 0;  // 0 until looked up
    };

    std::atomic<std::uint32_t> references_{1};
    std::mutex mutex_;
    std::uint64_t lastId_ = 0;
    std::unordered_map<std::uint64_t, Entry> entries_;
    std::unordered_set<std::uint64_t> unresolved_;                // ids whose handle is not known yet
    std::set<std::pair<std::uint64_t, std::uint64_t>> byHandle_;  // (handle, id) of the others
};

}  // namespace vexar::dds
