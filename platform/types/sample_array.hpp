// Contiguous arrays of initialized samples of any type, as loans need them:
// our readers lend samples from arrays of their own, and Cyclone lends a
// reader's samples (to an application using its API directly) from one
// array that it grows, reuses and frees through the sertype. Some of
// Cyclone's calls pass only the array's first element, so the element count
// lives in a header just before that element, and an array is named by its
// first element ("base") everywhere.
#pragma once

#include <cstddef>

#include "platform/types/typecode.h"

namespace vexar::types::sample::array {

// The array at `base` (null: none) resized to `count` elements: kept
// elements keep their values, new ones are initialized with their string
// buffers at their bounds, dropped ones are finalized. Returns the new base,
// or null when memory ran out (then `base` is unchanged).
void *resize(const DDS_TypeCode &type, void *base, size_t count) noexcept;

// The elements' addresses, into ptrs[0 .. count-1].
void listElements(const DDS_TypeCode &type, void *base, size_t count, void **ptrs) noexcept;

// Puts initialized elements back to their initial values in place: strings
// and sequences are emptied and keep their buffers, so reusing a loan costs
// no allocation. The listed ones, `count` of them.
void empty(const DDS_TypeCode &type, void *const *elements, size_t count) noexcept;

// Finalizes every element and frees the array.
void destroy(const DDS_TypeCode &type, void *base) noexcept;

// One initialized sample that is destroyed with its owner.
class Scratch {
public:
    explicit Scratch(const DDS_TypeCode &type) noexcept : type_(type), sample_(resize(type, nullptr, 1)) {}
    ~Scratch() { destroy(type_, sample_); }
    Scratch(const Scratch &) = delete;
    Scratch &operator=(const Scratch &) = delete;

    void *get() const noexcept { return sample_; }
    explicit operator bool() const noexcept { return sample_ != nullptr; }

private:
    const DDS_TypeCode &type_;
    void *sample_;
};

}  // namespace vexar::types::sample::array
