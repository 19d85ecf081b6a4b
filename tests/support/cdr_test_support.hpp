// Shared helpers of the encoding tests: hand-built wire bytes, the plugin
// functions of each type behind one template, owned samples with test values.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "type/vexarPlugin.h"

namespace vexar_test {

using Bytes = std::vector<unsigned char>;

// Owns a pointer that `Release` gives back.
template <auto Release>
struct Releaser {
    void operator()(auto *pointer) const { Release(pointer); }
};

// Builds CDR bytes by hand in one byte order; the test writes every header,
// length and padding byte itself.
class WireBytes {
public:
    explicit WireBytes(bool bigEndian) : bigEndian_(bigEndian) {}

    // The encapsulation header: identifier big-endian, options 0.
    WireBytes &encapsulation(unsigned id) { return octets({id >> 8, id & 0xFFu, 0, 0}); }
    WireBytes &u32(std::uint32_t v) { return put(v, 4); }
    WireBytes &i32(std::int32_t v) { return put(static_cast<std::uint32_t>(v), 4); }
    WireBytes &i32s(std::initializer_list<std::int32_t> values) {
        for (std::int32_t v : values) i32(v);
        return *this;
    }
    WireBytes &u64(std::uint64_t v) { return put(v, 8); }
    // A short parameter header.
    WireBytes &pid(std::uint16_t id, std::uint16_t length) { return put(id, 2).put(length, 2); }
    WireBytes &sentinel() { return pid(0x7F02, 0); }
    // A string's length (counting the NUL), characters and NUL; no padding.
    WireBytes &str(const std::string &text) {
        u32(static_cast<std::uint32_t>(text.size() + 1));
        bytes.insert(bytes.end(), text.begin(), text.end());
        bytes.push_back(0);
        return *this;
    }
    WireBytes &pad(size_t count) {
        bytes.insert(bytes.end(), count, 0);
        return *this;
    }
    WireBytes &octets(std::initializer_list<unsigned> values) {
        for (unsigned v : values) bytes.push_back(static_cast<unsigned char>(v));
        return *this;
    }

    Bytes bytes;

private:
    WireBytes &put(std::uint64_t v, int size) {
        for (int i = 0; i < size; ++i) {
            int shift = bigEndian_ ? 8 * (size - 1 - i) : 8 * i;
            bytes.push_back(static_cast<unsigned char>(v >> shift));
        }
        return *this;
    }
    bool bigEndian_;
};

// One type's sample and plugin functions, for typed tests.
template <typename T>
struct Plugin;

#define VEXAR_TEST_PLUGIN(T)                                                            \
    template <>                                                                         \
    struct Plugin<T> {                                                                  \
        static constexpr auto initialize = T##_initialize;                              \
        static constexpr auto finalize = T##_finalize;                                  \
        static constexpr auto copy = T##_copy;                                          \
        static constexpr auto serialize = T##Plugin_serialize;                          \
        static constexpr auto skip = T##Plugin_skip;                                    \
        static constexpr auto fromBuffer = T##Plugin_deserialize_from_cdr_buffer;       \
        static constexpr auto toBuffer = T##Plugin_serialize_to_cdr_buffer;             \
        static constexpr auto maxSize = T##Plugin_get_serialized_sample_max_size;       \
        static constexpr auto minSize = T##Plugin_get_serialized_sample_min_size;       \
        static constexpr auto sampleSize = T##Plugin_get_serialized_sample_size;        \
        static constexpr auto instanceToKeyhash = T##Plugin_instance_to_keyhash;        \
        static constexpr auto sampleToKeyhash = T##Plugin_serialized_sample_to_keyhash; \
    }

VEXAR_TEST_PLUGIN(QTV_VX_HostAndAppId);
VEXAR_TEST_PLUGIN(QTV_VX_LogMessage);
VEXAR_TEST_PLUGIN(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity);
VEXAR_TEST_PLUGIN(QTV_VX_ADMIN_StateKind);
VEXAR_TEST_PLUGIN(QTV_VX_ADMIN_State);
VEXAR_TEST_PLUGIN(QTV_VX_ADMIN_Command);
VEXAR_TEST_PLUGIN(QTV_VX_ADMIN_CommandRequest);
VEXAR_TEST_PLUGIN(QTV_VX_ADMIN_CommandResponse);
VEXAR_TEST_PLUGIN(QTV_VX_ADMIN_Statistics);

// An initialized sample that finalizes itself.
template <typename T>
struct Owned {
    T sample{};
    Owned() { Plugin<T>::initialize(&sample); }
    ~Owned() { Plugin<T>::finalize(&sample); }
    Owned(const Owned &) = delete;
    Owned &operator=(const Owned &) = delete;
    T *get() { return &sample; }
    T *operator->() { return &sample; }
};

inline void setText(char *buffer, const std::string &text) { std::strcpy(buffer, text.c_str()); }

inline void setEnum(void *field, std::int32_t value) { std::memcpy(field, &value, sizeof value); }

inline void appendVerbosity(QTV_VX_ADMIN_Command &command, std::int32_t category, std::int32_t verbosity) {
    QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq *seq = &command._u.categoryAndVerbosity;
    DDS_Long length = QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq_get_length(seq);
    QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq_set_length(seq, length + 1);
    auto *element = QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq_get_reference(seq, length);
    setEnum(&element->category, category);
    setEnum(&element->verbosity, verbosity);
}

// Test values: every field away from its initial value.
inline void fill(QTV_VX_HostAndAppId &s) { s = {0x01020304, -2}; }
inline void fill(QTV_VX_LogMessage &s) {
    fill(s.hostAndAppId);
    s.level = 300;
    setText(s.category, "com.example");
    setText(s.message, "disk almost full");
}
inline void fill(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity &s) {
    s = {QTV_VX_OBLX_CONFIG_LOG_CATEGORY_DATABASE, QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_WARNING};
}
inline void fill(QTV_VX_ADMIN_StateKind &s) { s = QTV_VX_STATE_SHUTTING_DOWN; }
inline void fill(QTV_VX_ADMIN_State &s) {
    fill(s.hostAndAppId);
    s.administrationDomainId = 7;
    s.state = QTV_VX_STATE_OPERATIONAL;
    setText(s.applicationKind, "app");
    s.filterLevel = 600;
    for (int i = 0; i < QTV_VX_ADMIN_STATE_VERBOSITIES_LENGTH; ++i) {
        setEnum(&s.qtvLoggerVerbosities[i].category, i);
        setEnum(&s.qtvLoggerVerbosities[i].verbosity, i + 1);
    }
    s.qtvLoggerPrintFormat = QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_VERBOSE;
}
inline void fill(QTV_VX_ADMIN_Command &s) {
    s._d = QTV_VX_SET_QTV_LOGGER_LEVEL;
    appendVerbosity(s, 1, 3);
    appendVerbosity(s, 4, 5);
}
inline void fill(QTV_VX_ADMIN_CommandRequest &s) {
    s.targetHostAndAppId = {11, 12};
    s.originatorHostAndAppId = {21, 22};
    s.invocation = 42;
    fill(s.command);
}
inline void fill(QTV_VX_ADMIN_CommandResponse &s) {
    s.hostAndAppId = {11, 12};
    s.originatorHostAndAppId = {21, 22};
    s.invocation = 42;
    s.commandResult = QTV_VX_COMMAND_RESULT_NOT_SUPPORTED;
    setText(s.message, "no such category");
}
// Counts past 32 bits, each with its own high and low words.
inline void fill(QTV_VX_ADMIN_Statistics &s) {
    s.hostAndAppId = {11, 12};
    s.accepted = 0x0000000100000002ull;
    s.refused = 0x0000000300000004ull;
    s.dropped = 0x0000000500000006ull;
    s.published = 0x0000000700000008ull;
    s.failed = 0x000000090000000Aull;
    s.discarded = 0x0000000B0000000Cull;
}

// An owned sample holding the test values.
template <typename T>
struct Filled : Owned<T> {
    Filled() { fill(this->sample); }
};

// Serializes with the stream API: encapsulation `id`, the whole sample.
template <typename T>
Bytes serialized(const T &sample, DDS_UnsignedShort id) {
    Bytes buffer(8192);
    OBLX_CdrStream stream;
    OBLX_CdrStream_init(&stream, buffer.data(), static_cast<DDS_UnsignedLong>(buffer.size()));
    if (!Plugin<T>::serialize(nullptr, &sample, &stream, DDS_BOOLEAN_TRUE, id, DDS_BOOLEAN_TRUE, nullptr)) return {};
    buffer.resize(OBLX_CdrStream_getPosition(&stream));
    return buffer;
}

// Reads one encapsulated sample from exactly `bytes` (a heap copy of that
// size, so a read past the end is caught by AddressSanitizer).
template <typename T>
bool deserialized(T &sample, const Bytes &bytes) {
    std::vector<char> exact(bytes.begin(), bytes.end());
    return Plugin<T>::fromBuffer(&sample, exact.data(), static_cast<DDS_UnsignedLong>(exact.size()));
}

}  // namespace vexar_test
