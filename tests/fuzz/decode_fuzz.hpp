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

#include "platform/type_plugin.hpp"
#include "type/vexarPlugin.h"

namespace vexar_fuzz {

template <typename T>
struct Functions {
    DDS_Boolean (*initialize)(T *);
    void (*finalize)(T *);
    DDS_Boolean (*fromBuffer)(T *, const char *, DDS_UnsignedLong);
    DDS_Boolean (*toBuffer)(char *, DDS_UnsignedLong *, const T *);
};

template <typename T>
std::vector<char> encode(const Functions<T> &f, const T &sample) {
    DDS_UnsignedLong length = 0;
    if (!f.toBuffer(nullptr, &length, &sample)) std::abort();
    std::vector<char> bytes(length);
    if (!f.toBuffer(bytes.data(), &length, &sample) || length != bytes.size()) std::abort();
    return bytes;
}

// The key form of `sample`, big-endian.
template <typename T>
std::vector<unsigned char> keyOf(const vexar::cdr::TypePlan &plan, const T &sample) {
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
    return vexar::cdr::readEncapsulationHeader(stream) && vexar::cdr::check(stream, form, kept);
}

template <typename T>
void expectCheckAgrees(const Functions<T> &f, const vexar::cdr::TypePlan &plan, const std::uint8_t *data,
                       std::size_t size, const T *decoded) {
    if (checked(plan.sample, data, size, nullptr) != (decoded != nullptr)) std::abort();
    T keys{};
    if (!f.initialize(&keys)) std::abort();
    vexar::cdr::resetToInitialValues(plan.key, &keys);
    if (checked(plan.keyOfSample, data, size, &keys) != (decoded != nullptr)) std::abort();
    if (decoded != nullptr && keyOf(plan, keys) != keyOf(plan, *decoded)) std::abort();
    f.finalize(&keys);
}

template <typename T>
int decode(const Functions<T> &f, const vexar::cdr::TypePlan &plan, const std::uint8_t *data, std::size_t size) {
    T first{}, second{};
    if (!f.initialize(&first) || !f.initialize(&second)) std::abort();
    bool decoded = f.fromBuffer(&first, reinterpret_cast<const char *>(data), static_cast<DDS_UnsignedLong>(size));
    if (decoded) {
        std::vector<char> encoded = encode(f, first);
        if (!f.fromBuffer(&second, encoded.data(), static_cast<DDS_UnsignedLong>(encoded.size()))) std::abort();
        if (encode(f, second) != encoded) std::abort();
    }
    expectCheckAgrees(f, plan, data, size, decoded ? &first : nullptr);
    f.finalize(&first);
    f.finalize(&second);
    return 0;
}

}  // namespace vexar_fuzz

// The fuzz target of Type.
#define VEXAR_DECODER_FUZZ_TARGET(Type)                                                               \
    extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {               \
        static const vexar_fuzz::Functions<Type> functions = {                                        \
            Type##_initialize, Type##_finalize, Type##Plugin_deserialize_from_cdr_buffer,             \
            Type##Plugin_serialize_to_cdr_buffer};                                                    \
        const vexar::cdr::TypePlan &plan = vexar::cdr::TypePlugin<Type, Type##_get_typecode>::plan(); \
        return vexar_fuzz::decode(functions, plan, data, size);                                       \
    }
