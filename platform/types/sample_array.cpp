// Sample arrays with their element count in front.
#include "platform/types/sample_array.hpp"

#include <cstdlib>
#include <cstring>

#include "platform/types/sample_ops.hpp"

namespace vexar::types::sample::array {
namespace {

// Sized to keep the first element aligned for any member.
struct alignas(std::max_align_t) Header {
    size_t count;
};

Header *headerOf(void *base) noexcept { return static_cast<Header *>(base) - 1; }
void *baseOf(Header *header) noexcept { return header + 1; }

void *element(const DDS_TypeCode &type, void *base, size_t index) noexcept {
    return static_cast<char *>(base) + index * type.sample_size;
}

void initializeRange(const DDS_TypeCode &type, void *base, size_t from, size_t to) noexcept {
    const DDS_TypeAllocationParams_t params = DDS_TYPE_ALLOCATION_PARAMS_DEFAULT;
    std::memset(element(type, base, from), 0, (to - from) * type.sample_size);
    for (size_t i = from; i < to; ++i) initialize(type, element(type, base, i), params);
}

void finalizeRange(const DDS_TypeCode &type, void *base, size_t from, size_t to) noexcept {
    const DDS_TypeDeallocationParams_t params = DDS_TYPE_DEALLOCATION_PARAMS_DEFAULT;
    for (size_t i = from; i < to; ++i) finalize(type, element(type, base, i), params);
}

}  // namespace

void *resize(const DDS_TypeCode &type, void *base, size_t count) noexcept {
    size_t oldCount = base != nullptr ? headerOf(base)->count : 0;
    if (base != nullptr && count == oldCount) return base;
    if (count < oldCount) {
        finalizeRange(type, base, count, oldCount);
        headerOf(base)->count = count;
    }
    Header *old = base != nullptr ? headerOf(base) : nullptr;
    auto *header = static_cast<Header *>(std::realloc(old, sizeof(Header) + count * type.sample_size));
    if (header == nullptr) return count < oldCount ? base : nullptr;  // a shrunk array stays valid in place
    header->count = count;
    if (count > oldCount) initializeRange(type, baseOf(header), oldCount, count);
    return baseOf(header);
}

void listElements(const DDS_TypeCode &type, void *base, size_t count, void **ptrs) noexcept {
    for (size_t i = 0; i < count; ++i) ptrs[i] = element(type, base, i);
}

void empty(const DDS_TypeCode &type, void *const *elements, size_t count) noexcept {
    DDS_TypeAllocationParams_t keepBuffers = DDS_TYPE_ALLOCATION_PARAMS_DEFAULT;
    keepBuffers.allocate_memory = DDS_BOOLEAN_FALSE;
    for (size_t i = 0; i < count; ++i) {
        if (elements[i] != nullptr) initialize(type, elements[i], keepBuffers);
    }
}

void destroy(const DDS_TypeCode &type, void *base) noexcept {
    if (base == nullptr) return;
    finalizeRange(type, base, 0, headerOf(base)->count);
    std::free(headerOf(base));
}

}  // namespace vexar::types::sample::array
