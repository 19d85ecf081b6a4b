// The body of every decoder fuzz target: decode arbitrary bytes into a
// sample; whatever decodes must encode, and decode again to the same bytes.
// Checking the bytes without a sample (as the Cyclone bridge does with what
// it receives) must accept exactly what decodes, and read the same key.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "../support/cdr_test_support.hpp"
#include "platform/plugin/type_plugin.hpp"

namespace vexar_fuzz {

using vexar_test::Plugin;

template <typename T>
std::vector<char> encode(const T &sample) {
    DDS_UnsignedLong length = 0;
    if (!Plugin<T>::toBuffer(nullptr, &length, &sample)) std::abort();
    std::vector<char> bytes(length);
    if (!Plugin<T>::toBuffer(bytes.data(), &length, &sample) || length != bytes.size()) std::abort();
    return bytes;
}

// The key form of `sample`, big-endian.
template <typename T>
std::vector<unsigned char> keyOf(const vexar::plugin::TypePlan &plan, const T &sample) {
    std::vector<unsigned char> key(plan.keyMaxSize);
    OBLX_CdrStream stream;
    vexar::cdr::init(stream, key.data(), static_cast<DDS_UnsignedLong>(key.size()));
    vexar::cdr::setBigEndian(stream, true);
    if (!vexar::cdr::serialize(stream, plan.key, &sample)) std::abort();
    key.resize(stream.position);
    return key;
}

// Checks `bytes` with `form` into `kept` (null: nothing kept); false when
// the header or the body fails.
inline bool checked(const vexar::cdr::Plan &form, const std::uint8_t *data, std::size_t size, void *kept) {
    std::vector<unsigned char> exact(data, data + size);
    OBLX_CdrStream stream;
    vexar::cdr::init(stream, exact.data(), static_cast<DDS_UnsignedLong>(exact.size()));
    return vexar::plugin::readEncapsulationHeader(stream) && vexar::cdr::check(stream, form, kept);
}

template <typename T>
void expectCheckAgrees(const vexar::plugin::TypePlan &plan, const std::uint8_t *data, std::size_t size,
                       const T *decoded) {
    if (checked(plan.sample, data, size, nullptr) != (decoded != nullptr)) std::abort();
    vexar_test::Owned<T> keys;
    vexar::cdr::resetToInitialValues(plan.key, keys.get());
    if (checked(plan.keyOfSample, data, size, keys.get()) != (decoded != nullptr)) std::abort();
    if (decoded != nullptr && keyOf(plan, keys.sample) != keyOf(plan, *decoded)) std::abort();
}

template <typename T>
int decode(const vexar::plugin::TypePlan &plan, const std::uint8_t *data, std::size_t size) {
    vexar_test::Owned<T> first, second;
    bool decoded =
        Plugin<T>::fromBuffer(first.get(), reinterpret_cast<const char *>(data), static_cast<DDS_UnsignedLong>(size));
    if (decoded) {
        std::vector<char> encoded = encode(first.sample);
        if (!Plugin<T>::fromBuffer(second.get(), encoded.data(), static_cast<DDS_UnsignedLong>(encoded.size())))
            std::abort();
        if (encode(second.sample) != encoded) std::abort();
    }
    expectCheckAgrees(plan, data, size, decoded ? first.get() : nullptr);
    return 0;
}

}  // namespace vexar_fuzz

// The fuzz target of Type.
#define VEXAR_DECODER_FUZZ_TARGET(Type)                                                                     \
    extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {                     \
        const vexar::plugin::TypePlan &plan = vexar::plugin::TypePlugin<Type, Type##_get_typecode>::plan(); \
        return vexar_fuzz::decode<Type>(plan, data, size);                                                  \
    }
