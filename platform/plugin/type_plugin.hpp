// The plugin functions of one data type, over its type code.
//
// TypePlugin<Sample, getter> implements every <Type>Plugin_ operation once
// for all types with the encoding walker (platform/cdr/encoding.hpp): the encapsulation
// header, the header form, sizes and keys. VEXAR_DEFINE_PLUGIN_OPERATIONS
// emits the C functions of one type as thin wrappers.
#pragma once

#include <cstdint>

#include "platform/cdr/cdr_stream.hpp"
#include "platform/cdr/encoding.hpp"
#include "platform/types/sample_ops.hpp"
#include "platform/plugin/type_plugin.h"

namespace vexar::plugin {

// Parameter headers stay short while the largest sample fits their 16-bit length.
inline constexpr std::uint64_t kExtendedHeaderThreshold = 65536;
inline constexpr DDS_UnsignedShort kLastEncapsulationId = OBLX_CDR_ENCAPSULATION_PL_CDR_LE;

// What a type's functions need again and again, worked out once: its
// sizes and the compiled plans of its sample and key forms.
struct TypePlan {
    const DDS_TypeCode *type;
    std::uint64_t maxSize;     // without encapsulation, from position 0
    std::uint64_t keyMaxSize;  // likewise, of the key form
    bool isMutableStruct;      // read into a sample put back to its initial values
    bool keyed;
    cdr::Plan sample;       // the whole sample
    cdr::Plan key;          // the key form
    cdr::Plan keyOfSample;  // the whole sample read for its key members
};

TypePlan makeTypePlan(const DDS_TypeCode &type) noexcept;

// The identifier a type writes for a requested one: parameter-list types
// write 0 and 1 as 2 and 3. False for identifiers outside 0..3.
bool encapsulationIdFor(const TypePlan &plan, DDS_UnsignedShort requested, DDS_UnsignedShort &written) noexcept;

// A size with the encapsulation header when asked: the header from
// `alignment`, then the body from 0. 1 for an invalid identifier; 0 stays 0
// (a sample that cannot be written).
template <typename BodySize>
std::uint64_t sizeWithEncapsulation(bool includeEncapsulation, DDS_UnsignedShort id, std::uint64_t alignment,
                                    BodySize bodySize) noexcept {
    if (!includeEncapsulation) return bodySize(alignment);
    if (id > kLastEncapsulationId) return 1;
    std::uint64_t header = (alignment + 1) / 2 * 2 + OBLX_CDR_ENCAPSULATION_HEADER_SIZE - alignment;
    std::uint64_t body = bodySize(0);
    return body == 0 ? 0 : header + body;
}

// Writes or reads the encapsulation header around a body: the stream's byte
// order follows the identifier and alignment restarts after it.
bool writeEncapsulationHeader(OBLX_CdrStream &stream, const TypePlan &plan, DDS_UnsignedShort requested) noexcept;
bool readEncapsulationHeader(OBLX_CdrStream &stream) noexcept;

// Serializes `key` big-endian into a scratch buffer and hashes it.
bool keyHash(const TypePlan &plan, const void *instance, DDS_KeyHash_t &hash) noexcept;

template <typename Sample, const DDS_TypeCode *(*TypeCode)()>
class TypePlugin {
public:
    static const TypePlan &plan() noexcept {
        static const TypePlan plan = makeTypePlan(*TypeCode());
        return plan;
    }

    static DDS_Boolean serialize(const Sample *sample, OBLX_CdrStream *stream, DDS_Boolean withEncapsulation,
                                 DDS_UnsignedShort id, DDS_Boolean withBody) noexcept {
        return write(sample, stream, withEncapsulation, id, withBody, plan().sample);
    }

    static DDS_Boolean serializeKey(const Sample *sample, OBLX_CdrStream *stream, DDS_Boolean withEncapsulation,
                                    DDS_UnsignedShort id, DDS_Boolean withBody) noexcept {
        return write(sample, stream, withEncapsulation, id, withBody, plan().key);
    }

    static DDS_Boolean deserializeSample(Sample *sample, OBLX_CdrStream *stream, DDS_Boolean withEncapsulation,
                                         DDS_Boolean withBody) noexcept {
        return read(sample, stream, withEncapsulation, withBody, plan().sample, true);
    }

    static DDS_Boolean deserializeKeySample(Sample *sample, OBLX_CdrStream *stream, DDS_Boolean withEncapsulation,
                                            DDS_Boolean withBody) noexcept {
        return read(sample, stream, withEncapsulation, withBody, plan().key, false);
    }

    static DDS_Boolean serializedSampleToKey(Sample *sample, OBLX_CdrStream *stream, DDS_Boolean withEncapsulation,
                                             DDS_Boolean withBody) noexcept {
        return read(sample, stream, withEncapsulation, withBody, plan().keyOfSample, false);
    }

    // As deserializeSample, failing also on a value without meaning.
    static DDS_Boolean deserialize(Sample **sample, DDS_Boolean *dropSample, OBLX_CdrStream *stream,
                                   DDS_Boolean withEncapsulation, DDS_Boolean withBody) noexcept {
        return readChecked(sample, dropSample, stream, withEncapsulation, withBody, plan().sample, true);
    }

    static DDS_Boolean deserializeKey(Sample **sample, DDS_Boolean *dropSample, OBLX_CdrStream *stream,
                                      DDS_Boolean withEncapsulation, DDS_Boolean withBody) noexcept {
        return readChecked(sample, dropSample, stream, withEncapsulation, withBody, plan().key, false);
    }

    static DDS_Boolean skip(OBLX_CdrStream *stream, DDS_Boolean withEncapsulation, DDS_Boolean withBody) noexcept {
        if (stream == nullptr) return DDS_BOOLEAN_FALSE;
        DDS_UnsignedLong origin = stream->alignmentOrigin;
        if (withEncapsulation && !readEncapsulationHeader(*stream)) return DDS_BOOLEAN_FALSE;
        bool skipped = !withBody || cdr::deserialize(*stream, plan().sample, nullptr);
        stream->alignmentOrigin = origin;
        return skipped;
    }

    static DDS_Boolean serializeToCdrBuffer(char *buffer, DDS_UnsignedLong *length, const Sample *sample) noexcept {
        if (length == nullptr || sample == nullptr) return DDS_BOOLEAN_FALSE;
        if (buffer == nullptr) {
            *length = sampleSize(DDS_BOOLEAN_TRUE, OBLX_CDR_ENCAPSULATION_CDR_LE, 0, sample);
            return *length != 0;
        }
        OBLX_CdrStream stream;
        cdr::init(stream, reinterpret_cast<unsigned char *>(buffer), *length);
        if (!serialize(sample, &stream, DDS_BOOLEAN_TRUE, OBLX_CDR_ENCAPSULATION_CDR_LE, DDS_BOOLEAN_TRUE))
            return DDS_BOOLEAN_FALSE;
        *length = stream.position;
        return DDS_BOOLEAN_TRUE;
    }

    static DDS_Boolean deserializeFromCdrBuffer(Sample *sample, const char *buffer, DDS_UnsignedLong length) noexcept {
        OBLX_CdrStream stream;
        cdr::init(stream, reinterpret_cast<unsigned char *>(const_cast<char *>(buffer)), length);
        return deserialize(&sample, nullptr, &stream, DDS_BOOLEAN_TRUE, DDS_BOOLEAN_TRUE);
    }

    static DDS_UnsignedLong maxSizeEx(DDS_Boolean *overflow, DDS_Boolean withEncapsulation, DDS_UnsignedShort id,
                                      DDS_UnsignedLong alignment, bool keyForm) noexcept {
        std::uint64_t size = sizeWithEncapsulation(withEncapsulation, id, alignment, [&](std::uint64_t start) {
            if (start % 8 == 0) return keyForm ? plan().keyMaxSize : plan().maxSize;
            return cdr::boundSize(*plan().type, cdr::Bound::largest, start, keyForm);
        });
        return clampSize(size, overflow);
    }

    static DDS_UnsignedLong maxSize(DDS_Boolean withEncapsulation, DDS_UnsignedShort id, DDS_UnsignedLong alignment,
                                    bool keyForm) noexcept {
        DDS_Boolean overflow;
        DDS_UnsignedLong size = maxSizeEx(&overflow, withEncapsulation, id, alignment, keyForm);
        return overflow ? OBLX_TYPEPLUGIN_MAX_SIZE_OVERFLOW : size;
    }

    static DDS_UnsignedLong minSize(DDS_Boolean withEncapsulation, DDS_UnsignedShort id,
                                    DDS_UnsignedLong alignment) noexcept {
        std::uint64_t size = sizeWithEncapsulation(withEncapsulation, id, alignment, [](std::uint64_t start) {
            return cdr::boundSize(*plan().type, cdr::Bound::smallest, start, false);
        });
        return clampSize(size, nullptr);
    }

    static DDS_UnsignedLong sampleSize(DDS_Boolean withEncapsulation, DDS_UnsignedShort id, DDS_UnsignedLong alignment,
                                       const Sample *sample) noexcept {
        if (sample == nullptr) return 0;
        std::uint64_t size = sizeWithEncapsulation(withEncapsulation, id, alignment, [&](std::uint64_t start) {
            return cdr::serializedSize(plan().sample, sample, start);
        });
        return clampSize(size, nullptr);
    }

    static OBLX_TypePluginKeyKind keyKind() noexcept {
        return plan().keyed ? OBLX_TYPEPLUGIN_USER_KEY : OBLX_TYPEPLUGIN_NO_KEY;
    }

    static DDS_Boolean copyKey(Sample *dst, const Sample *src) noexcept {
        return dst != nullptr && src != nullptr && cdr::copyKeyMembers(*plan().type, dst, src);
    }

    static DDS_Boolean instanceToKeyhash(DDS_KeyHash_t *hash, const Sample *instance) noexcept {
        return hash != nullptr && instance != nullptr && keyHash(plan(), instance, *hash);
    }

    // Reads the key members of a serialized sample into a scratch key
    // holder and hashes them.
    static DDS_Boolean serializedSampleToKeyhash(OBLX_CdrStream *stream, DDS_KeyHash_t *hash,
                                                 DDS_Boolean withEncapsulation) noexcept {
        if (hash == nullptr) return DDS_BOOLEAN_FALSE;
        ScratchSample holder;
        return holder.ready && serializedSampleToKey(&holder.value, stream, withEncapsulation, DDS_BOOLEAN_TRUE) &&
               keyHash(plan(), &holder.value, *hash);
    }

private:
    // A sample that lives for one call. A keyed type's holder needs no
    // buffers: only its key members are read, and no key holds a string.
    struct ScratchSample {
        Sample value{};
        bool ready;
        ScratchSample() noexcept {
            DDS_TypeAllocationParams_t params = DDS_TYPE_ALLOCATION_PARAMS_DEFAULT;
            params.allocate_memory = plan().keyed ? DDS_BOOLEAN_FALSE : DDS_BOOLEAN_TRUE;
            ready = ::vexar::types::sample::initialize(*plan().type, &value, params);
        }
        ~ScratchSample() {
            const DDS_TypeDeallocationParams_t params = DDS_TYPE_DEALLOCATION_PARAMS_DEFAULT;
            ::vexar::types::sample::finalize(*plan().type, &value, params);
        }
    };

    static DDS_UnsignedLong clampSize(std::uint64_t size, DDS_Boolean *overflow) noexcept {
        bool overflowed = size > UINT32_MAX;
        if (overflow != nullptr) *overflow = overflowed ? DDS_BOOLEAN_TRUE : DDS_BOOLEAN_FALSE;
        return overflowed ? UINT32_MAX : static_cast<DDS_UnsignedLong>(size);
    }

    static DDS_Boolean write(const Sample *sample, OBLX_CdrStream *stream, DDS_Boolean withEncapsulation,
                             DDS_UnsignedShort id, DDS_Boolean withBody, const cdr::Plan &form) noexcept {
        if (stream == nullptr || (withBody && sample == nullptr)) return DDS_BOOLEAN_FALSE;
        DDS_UnsignedLong origin = stream->alignmentOrigin;
        if (withEncapsulation && !writeEncapsulationHeader(*stream, plan(), id)) return DDS_BOOLEAN_FALSE;
        bool written = !withBody || cdr::serialize(*stream, form, sample);
        stream->alignmentOrigin = origin;
        return written;
    }

    // A whole mutable struct is put back to its initial values first
    // (`whole`), so that members missing from the bytes keep them.
    static DDS_Boolean read(Sample *sample, OBLX_CdrStream *stream, DDS_Boolean withEncapsulation, DDS_Boolean withBody,
                            const cdr::Plan &form, bool whole) noexcept {
        if (stream == nullptr || (withBody && sample == nullptr)) return DDS_BOOLEAN_FALSE;
        DDS_UnsignedLong origin = stream->alignmentOrigin;
        if (withEncapsulation && !readEncapsulationHeader(*stream)) return DDS_BOOLEAN_FALSE;
        bool readOk = true;
        if (withBody) {
            if (whole && plan().isMutableStruct) cdr::resetToInitialValues(form, sample);
            readOk = cdr::deserialize(*stream, form, sample);
        }
        stream->alignmentOrigin = origin;
        return readOk;
    }

    static DDS_Boolean readChecked(Sample **sample, DDS_Boolean *dropSample, OBLX_CdrStream *stream,
                                   DDS_Boolean withEncapsulation, DDS_Boolean withBody, const cdr::Plan &form,
                                   bool whole) noexcept {
        if (dropSample != nullptr) *dropSample = DDS_BOOLEAN_FALSE;
        if (sample == nullptr || stream == nullptr) return DDS_BOOLEAN_FALSE;
        stream->unassignable = DDS_BOOLEAN_FALSE;
        return read(*sample, stream, withEncapsulation, withBody, form, whole) && !stream->unassignable;
    }
};

}  // namespace vexar::plugin

// The C plugin functions of Type.
#define VEXAR_DEFINE_PLUGIN_OPERATIONS(Type)                                                                           \
    extern "C" {                                                                                                       \
    DDS_Boolean Type##Plugin_serialize(OBLX_TypePluginEndpointData *, const Type *sample, OBLX_CdrStream *stream,      \
                                       DDS_Boolean serialize_encapsulation, DDS_UnsignedShort encapsulation_id,        \
                                       DDS_Boolean serialize_sample, void *) {                                         \
        return ::vexar::plugin::TypePlugin<Type, Type##_get_typecode>::serialize(                                      \
            sample, stream, serialize_encapsulation, encapsulation_id, serialize_sample);                              \
    }                                                                                                                  \
    DDS_Boolean Type##Plugin_deserialize_sample(OBLX_TypePluginEndpointData *, Type *sample, OBLX_CdrStream *stream,   \
                                                DDS_Boolean deserialize_encapsulation, DDS_Boolean deserialize_sample, \
                                                void *) {                                                              \
        return ::vexar::plugin::TypePlugin<Type, Type##_get_typecode>::deserializeSample(                              \
            sample, stream, deserialize_encapsulation, deserialize_sample);                                            \
    }                                                                                                                  \
    DDS_Boolean Type##Plugin_deserialize(OBLX_TypePluginEndpointData *, Type **sample, DDS_Boolean *drop_sample,       \
                                         OBLX_CdrStream *stream, DDS_Boolean deserialize_encapsulation,                \
                                         DDS_Boolean deserialize_sample, void *) {                                     \
        return ::vexar::plugin::TypePlugin<Type, Type##_get_typecode>::deserialize(                                    \
            sample, drop_sample, stream, deserialize_encapsulation, deserialize_sample);                               \
    }                                                                                                                  \
    DDS_Boolean Type##Plugin_skip(OBLX_TypePluginEndpointData *, OBLX_CdrStream *stream,                               \
                                  DDS_Boolean skip_encapsulation, DDS_Boolean skip_sample, void *) {                   \
        return ::vexar::plugin::TypePlugin<Type, Type##_get_typecode>::skip(stream, skip_encapsulation, skip_sample);  \
    }                                                                                                                  \
    DDS_Boolean Type##Plugin_serialize_to_cdr_buffer(char *buffer, DDS_UnsignedLong *length, const Type *sample) {     \
        return ::vexar::plugin::TypePlugin<Type, Type##_get_typecode>::serializeToCdrBuffer(buffer, length, sample);   \
    }                                                                                                                  \
    DDS_Boolean Type##Plugin_deserialize_from_cdr_buffer(Type *sample, const char *buffer, DDS_UnsignedLong length) {  \
        return ::vexar::plugin::TypePlugin<Type, Type##_get_typecode>::deserializeFromCdrBuffer(sample, buffer,        \
                                                                                                length);               \
    }                                                                                                                  \
    DDS_UnsignedLong Type##Plugin_get_serialized_sample_max_size_ex(OBLX_TypePluginEndpointData *,                     \
                                                                    DDS_Boolean *overflow,                             \
                                                                    DDS_Boolean include_encapsulation,                 \
                                                                    DDS_UnsignedShort encapsulation_id,                \
                                                                    DDS_UnsignedLong current_alignment) {              \
        return ::vexar::plugin::TypePlugin<Type, Type##_get_typecode>::maxSizeEx(                                      \
            overflow, include_encapsulation, encapsulation_id, current_alignment, false);                              \
    }                                                                                                                  \
    DDS_UnsignedLong Type##Plugin_get_serialized_sample_max_size(OBLX_TypePluginEndpointData *,                        \
                                                                 DDS_Boolean include_encapsulation,                    \
                                                                 DDS_UnsignedShort encapsulation_id,                   \
                                                                 DDS_UnsignedLong current_alignment) {                 \
        return ::vexar::plugin::TypePlugin<Type, Type##_get_typecode>::maxSize(                                        \
            include_encapsulation, encapsulation_id, current_alignment, false);                                        \
    }                                                                                                                  \
    DDS_UnsignedLong Type##Plugin_get_serialized_sample_min_size(OBLX_TypePluginEndpointData *,                        \
                                                                 DDS_Boolean include_encapsulation,                    \
                                                                 DDS_UnsignedShort encapsulation_id,                   \
                                                                 DDS_UnsignedLong current_alignment) {                 \
        return ::vexar::plugin::TypePlugin<Type, Type##_get_typecode>::minSize(include_encapsulation,                  \
                                                                               encapsulation_id, current_alignment);   \
    }                                                                                                                  \
    DDS_UnsignedLong Type##Plugin_get_serialized_sample_size(OBLX_TypePluginEndpointData *,                            \
                                                             DDS_Boolean include_encapsulation,                        \
                                                             DDS_UnsignedShort encapsulation_id,                       \
                                                             DDS_UnsignedLong current_alignment, const Type *sample) { \
        return ::vexar::plugin::TypePlugin<Type, Type##_get_typecode>::sampleSize(                                     \
            include_encapsulation, encapsulation_id, current_alignment, sample);                                       \
    }                                                                                                                  \
    DDS_UnsignedLong Type##Plugin_get_serialized_key_max_size_ex(OBLX_TypePluginEndpointData *, DDS_Boolean *overflow, \
                                                                 DDS_Boolean include_encapsulation,                    \
                                                                 DDS_UnsignedShort encapsulation_id,                   \
                                                                 DDS_UnsignedLong current_alignment) {                 \
        return ::vexar::plugin::TypePlugin<Type, Type##_get_typecode>::maxSizeEx(                                      \
            overflow, include_encapsulation, encapsulation_id, current_alignment, true);                               \
    }                                                                                                                  \
    DDS_UnsignedLong Type##Plugin_get_serialized_key_max_size(OBLX_TypePluginEndpointData *,                           \
                                                              DDS_Boolean include_encapsulation,                       \
                                                              DDS_UnsignedShort encapsulation_id,                      \
                                                              DDS_UnsignedLong current_alignment) {                    \
        return ::vexar::plugin::TypePlugin<Type, Type##_get_typecode>::maxSize(                                        \
            include_encapsulation, encapsulation_id, current_alignment, true);                                         \
    }                                                                                                                  \
    OBLX_TypePluginKeyKind Type##Plugin_get_key_kind(void) {                                                           \
        return ::vexar::plugin::TypePlugin<Type, Type##_get_typecode>::keyKind();                                      \
    }                                                                                                                  \
    DDS_Boolean Type##Plugin_serialize_key(OBLX_TypePluginEndpointData *, const Type *sample, OBLX_CdrStream *stream,  \
                                           DDS_Boolean serialize_encapsulation, DDS_UnsignedShort encapsulation_id,    \
                                           DDS_Boolean serialize_key, void *) {                                        \
        return ::vexar::plugin::TypePlugin<Type, Type##_get_typecode>::serializeKey(                                   \
            sample, stream, serialize_encapsulation, encapsulation_id, serialize_key);                                 \
    }                                                                                                                  \
    DDS_Boolean Type##Plugin_deserialize_key_sample(OBLX_TypePluginEndpointData *, Type *sample,                       \
                                                    OBLX_CdrStream *stream, DDS_Boolean deserialize_encapsulation,     \
                                                    DDS_Boolean deserialize_key, void *) {                             \
        return ::vexar::plugin::TypePlugin<Type, Type##_get_typecode>::deserializeKeySample(                           \
            sample, stream, deserialize_encapsulation, deserialize_key);                                               \
    }                                                                                                                  \
    DDS_Boolean Type##Plugin_deserialize_key(OBLX_TypePluginEndpointData *, Type **sample, DDS_Boolean *drop_sample,   \
                                             OBLX_CdrStream *stream, DDS_Boolean deserialize_encapsulation,            \
                                             DDS_Boolean deserialize_key, void *) {                                    \
        return ::vexar::plugin::TypePlugin<Type, Type##_get_typecode>::deserializeKey(                                 \
            sample, drop_sample, stream, deserialize_encapsulation, deserialize_key);                                  \
    }                                                                                                                  \
    DDS_Boolean Type##Plugin_serialized_sample_to_key(OBLX_TypePluginEndpointData *, Type *sample,                     \
                                                      OBLX_CdrStream *stream, DDS_Boolean deserialize_encapsulation,   \
                                                      DDS_Boolean deserialize_key, void *) {                           \
        return ::vexar::plugin::TypePlugin<Type, Type##_get_typecode>::serializedSampleToKey(                          \
            sample, stream, deserialize_encapsulation, deserialize_key);                                               \
    }                                                                                                                  \
    DDS_Boolean Type##Plugin_instance_to_key(OBLX_TypePluginEndpointData *, Type *key, const Type *instance) {         \
        return ::vexar::plugin::TypePlugin<Type, Type##_get_typecode>::copyKey(key, instance);                         \
    }                                                                                                                  \
    DDS_Boolean Type##Plugin_key_to_instance(OBLX_TypePluginEndpointData *, Type *instance, const Type *key) {         \
        return ::vexar::plugin::TypePlugin<Type, Type##_get_typecode>::copyKey(instance, key);                         \
    }                                                                                                                  \
    DDS_Boolean Type##Plugin_instance_to_keyhash(OBLX_TypePluginEndpointData *, DDS_KeyHash_t *keyhash,                \
                                                 const Type *instance) {                                               \
        return ::vexar::plugin::TypePlugin<Type, Type##_get_typecode>::instanceToKeyhash(keyhash, instance);           \
    }                                                                                                                  \
    DDS_Boolean Type##Plugin_serialized_sample_to_keyhash(OBLX_TypePluginEndpointData *, OBLX_CdrStream *stream,       \
                                                          DDS_KeyHash_t *keyhash,                                      \
                                                          DDS_Boolean deserialize_encapsulation, void *) {             \
        return ::vexar::plugin::TypePlugin<Type, Type##_get_typecode>::serializedSampleToKeyhash(                      \
            stream, keyhash, deserialize_encapsulation);                                                               \
    }                                                                                                                  \
    }
