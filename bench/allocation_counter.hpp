// Counts heap allocations made by the calling thread while it has counting
// on, by interposing malloc, calloc and realloc (and so operator new).
// Sanitizers own those functions, so sanitized builds count nothing.
// Include it in one file of a benchmark program only: it defines them.
#pragma once

#include <atomic>
#include <cstddef>

extern "C" {
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *pointer, size_t size);
}

namespace vexar_bench {

inline std::atomic<long long> allocationCount{0};
inline thread_local bool countingAllocations = false;

inline void noteAllocation() noexcept {
    if (countingAllocations) allocationCount.fetch_add(1, std::memory_order_relaxed);
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kCountsAllocations = false;
#else
constexpr bool kCountsAllocations = true;
#endif

}  // namespace vexar_bench

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
extern "C" {
void *malloc(size_t size) {
    vexar_bench::noteAllocation();
    return __libc_malloc(size);
}
void *calloc(size_t count, size_t size) {
    vexar_bench::noteAllocation();
    return __libc_calloc(count, size);
}
void *realloc(void *pointer, size_t size) {
    vexar_bench::noteAllocation();
    return __libc_realloc(pointer, size);
}
}
#endif
