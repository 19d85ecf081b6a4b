#include "platform/runtime/dds_string.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

extern "C" {

char *DDS_String_alloc(size_t length) {
    if (length == SIZE_MAX) return nullptr;  // no room for the terminator
    // Only the terminator is set: zeroing bounds of kilobytes per sample
    // dominated the receive path, and nothing reads past the terminator.
    auto *text = static_cast<char *>(std::malloc(length + 1));
    if (text != nullptr) text[0] = '\0';
    return text;
}

char *DDS_String_dup(const char *text) {
    if (text == nullptr) return nullptr;
    const size_t size = std::strlen(text) + 1;
    auto *copy = static_cast<char *>(std::malloc(size));
    if (copy != nullptr) std::memcpy(copy, text, size);
    return copy;
}

void DDS_String_free(char *text) { std::free(text); }

char *DDS_String_copy_bounded(char *dst, const char *src, size_t capacity) {
    if (dst == nullptr || src == nullptr || capacity == 0) return nullptr;
    const size_t length = strnlen(src, capacity);
    if (length == capacity) return nullptr;  // the terminator would not fit
    // memmove: copying a string onto itself or a part of it is harmless.
    std::memmove(dst, src, length + 1);
    return dst;
}

}  // extern "C"
