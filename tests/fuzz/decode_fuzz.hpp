// The body of every decoder fuzz target: decode arbitrary bytes into a
// sample; whatever decodes must encode, and decode again to the same bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

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

template <typename T>
int decode(const Functions<T> &f, const std::uint8_t *data, std::size_t size) {
    T first{}, second{};
    if (!f.initialize(&first) || !f.initialize(&second)) std::abort();
    if (f.fromBuffer(&first, reinterpret_cast<const char *>(data), static_cast<DDS_UnsignedLong>(size))) {
        std::vector<char> encoded = encode(f, first);
        if (!f.fromBuffer(&second, encoded.data(), static_cast<DDS_UnsignedLong>(encoded.size()))) std::abort();
        if (encode(f, second) != encoded) std::abort();
    }
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
        return vexar_fuzz::decode(functions, data, size);                                             \
    }
