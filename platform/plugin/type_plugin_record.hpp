// The plugin record of one topic type and its support functions.
//
// PluginRecord<Sample, getter> implements the support functions (sample and
// key creation, copy, print) and the attach functions once for all types;
// `erased<Sample, function>` turns one of the type's plugin functions into
// the void *-taking adapter that a record slot holds. VEXAR_DEFINE_PLUGIN_RECORD
// emits the C functions of one type and its <Type>Plugin_new.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

#include "platform/types/sample_ops.hpp"
#include "platform/types/sample_printer.hpp"
#include "platform/plugin/type_plugin.h"
#include "platform/plugin/type_plugin.hpp"

namespace vexar::plugin {

// How one argument of a typed plugin function appears in the record: a
// pointer to the sample type becomes a pointer to void; others stay.
template <typename Sample, typename Argument>
struct ErasedArgument {
    using Type = Argument;
    static Argument typed(Argument value) noexcept { return value; }
};

template <typename Sample>
struct ErasedArgument<Sample, Sample *> {
    using Type = void *;
    static Sample *typed(void *value) noexcept { return static_cast<Sample *>(value); }
};

template <typename Sample>
struct ErasedArgument<Sample, const Sample *> {
    using Type = const void *;
    static const Sample *typed(const void *value) noexcept { return static_cast<const Sample *>(value); }
};

// A sample passed by address (deserialize may replace it): the typed
// function sees a Sample * of its own, copied back when the call ends.
template <typename Sample>
struct ErasedArgument<Sample, Sample **> {
    using Type = void **;
    class OutSample {
    public:
        explicit OutSample(void **slot) noexcept
            : slot_(slot), sample_(slot != nullptr ? static_cast<Sample *>(*slot) : nullptr) {}
        OutSample(const OutSample &) = delete;
        OutSample &operator=(const OutSample &) = delete;
        ~OutSample() {
            if (slot_ != nullptr) *slot_ = sample_;
        }
        operator Sample **() noexcept { return slot_ != nullptr ? &sample_ : nullptr; }

    private:
        void **slot_;
        Sample *sample_;
    };
    static OutSample typed(void **value) noexcept { return OutSample(value); }
};

template <typename Sample, auto Function>
struct Erased;

template <typename Sample, typename Result, typename... Arguments, Result (*Function)(Arguments...)>
struct Erased<Sample, Function> {
    static Result call(typename ErasedArgument<Sample, Arguments>::Type... arguments) noexcept {
        return Function(ErasedArgument<Sample, Arguments>::typed(arguments)...);
    }
};

// The void *-taking adapter of a typed plugin function.
template <typename Sample, auto Function>
inline constexpr auto erased = &Erased<Sample, Function>::call;

inline OBLX_TypePlugin *copyToHeap(const OBLX_TypePlugin &record) noexcept {
    return new (std::nothrow) OBLX_TypePlugin(record);
}

template <typename Sample, const DDS_TypeCode *(*TypeCode)()>
struct PluginRecord {
    // A heap sample initialized with `params`; null when either fails.
    static Sample *createData(const DDS_TypeAllocationParams_t *params) noexcept {
        if (params == nullptr) return nullptr;
        auto *created = static_cast<Sample *>(std::calloc(1, sizeof(Sample)));
        if (created != nullptr && !types::sample::initialize(*TypeCode(), created, *params)) {
            destroyDataEx(created, DDS_BOOLEAN_TRUE);
            return nullptr;
        }
        return created;
    }

    static Sample *createDataEx(DDS_Boolean allocatePointers) noexcept {
        DDS_TypeAllocationParams_t params = DDS_TYPE_ALLOCATION_PARAMS_DEFAULT;
        params.allocate_pointers = allocatePointers;
        return createData(&params);
    }

    static void destroyData(Sample *sample, const DDS_TypeDeallocationParams_t *params) noexcept {
        if (sample == nullptr || params == nullptr) return;
        types::sample::finalize(*TypeCode(), sample, *params);
        std::free(sample);
    }

    static void destroyDataEx(Sample *sample, DDS_Boolean deletePointers) noexcept {
        DDS_TypeDeallocationParams_t params = DDS_TYPE_DEALLOCATION_PARAMS_DEFAULT;
        params.delete_pointers = deletePointers;
        destroyData(sample, &params);
    }

    static DDS_Boolean copyData(Sample *dst, const Sample *src) noexcept {
        return dst != nullptr && src != nullptr && types::sample::copy(*TypeCode(), dst, src);
    }

    static void printData(const Sample *sample, const char *description, unsigned indent) noexcept {
        std::string text =
            types::sample::print(*TypeCode(), sample, types::sample::PrintLayout::lines, description, indent);
        std::fputs(text.c_str(), stdout);
    }

    // The endpoint data's sample and key factory (a key holder is a sample).
    static void *createForEndpoint() noexcept { return createDataEx(DDS_BOOLEAN_TRUE); }
    static void destroyForEndpoint(void *sample) noexcept {
        destroyDataEx(static_cast<Sample *>(sample), DDS_BOOLEAN_TRUE);
    }

    // Default endpoint data, with a key-hash stream for a keyed type and the
    // largest sample size for a writer; null when any of it fails.
    static OBLX_TypePluginEndpointData *attachEndpoint(OBLX_TypePluginParticipantData *participantData,
                                                       OBLX_TypePluginEndpointKind kind) noexcept {
        using Encoding = plugin::TypePlugin<Sample, TypeCode>;
        const OBLX_TypePluginSampleFactory factory{createForEndpoint, destroyForEndpoint};
        OBLX_TypePluginEndpointData *data =
            OBLX_TypePluginDefaultEndpointData_new(participantData, kind, factory, factory);
        if (data == nullptr) return nullptr;
        bool keyed = Encoding::keyKind() != OBLX_TYPEPLUGIN_NO_KEY;
        DDS_UnsignedLong keyMaxSize = Encoding::maxSize(DDS_BOOLEAN_FALSE, 0, 0, true);
        if (keyed && !OBLX_TypePluginDefaultEndpointData_createKeyHashStream(data, keyMaxSize)) {
            OBLX_TypePluginDefaultEndpointData_delete(data);
            return nullptr;
        }
        if (kind == OBLX_TYPEPLUGIN_ENDPOINT_WRITER) {
            OBLX_TypePluginDefaultEndpointData_setMaxSerializedSampleSize(
                data, Encoding::maxSize(DDS_BOOLEAN_FALSE, 0, 0, false));
        }
        return data;
    }

    static void returnSample(OBLX_TypePluginEndpointData *endpointData, Sample *sample) noexcept {
        if (sample == nullptr) return;
        const DDS_TypeDeallocationParams_t params = DDS_TYPE_DEALLOCATION_PARAMS_DEFAULT;
        types::sample::finalizeOptionalMembers(*TypeCode(), sample, params);
        OBLX_TypePluginDefaultEndpointData_returnSample(endpointData, sample);
    }
};

}  // namespace vexar::plugin

// The support, attach and record functions of Type.
#define VEXAR_DEFINE_PLUGIN_RECORD(Type)                                                                               \
    extern "C" {                                                                                                       \
    Type *Type##PluginSupport_create_data_w_params(const DDS_TypeAllocationParams_t *alloc_params) {                   \
        return ::vexar::plugin::PluginRecord<Type, Type##_get_typecode>::createData(alloc_params);                     \
    }                                                                                                                  \
    Type *Type##PluginSupport_create_data_ex(DDS_Boolean allocate_pointers) {                                          \
        return ::vexar::plugin::PluginRecord<Type, Type##_get_typecode>::createDataEx(allocate_pointers);              \
    }                                                                                                                  \
    Type *Type##PluginSupport_create_data(void) { return Type##PluginSupport_create_data_ex(DDS_BOOLEAN_TRUE); }       \
    void Type##PluginSupport_destroy_data_w_params(Type *sample, const DDS_TypeDeallocationParams_t *dealloc_params) { \
        ::vexar::plugin::PluginRecord<Type, Type##_get_typecode>::destroyData(sample, dealloc_params);                 \
    }                                                                                                                  \
    void Type##PluginSupport_destroy_data_ex(Type *sample, DDS_Boolean deallocate_pointers) {                          \
        ::vexar::plugin::PluginRecord<Type, Type##_get_typecode>::destroyDataEx(sample, deallocate_pointers);          \
    }                                                                                                                  \
    void Type##PluginSupport_destroy_data(Type *sample) {                                                              \
        Type##PluginSupport_destroy_data_ex(sample, DDS_BOOLEAN_TRUE);                                                 \
    }                                                                                                                  \
    DDS_Boolean Type##PluginSupport_copy_data(Type *dst, const Type *src) {                                            \
        return ::vexar::plugin::PluginRecord<Type, Type##_get_typecode>::copyData(dst, src);                           \
    }                                                                                                                  \
    void Type##PluginSupport_print_data(const Type *sample, const char *description, unsigned int indent) {            \
        ::vexar::plugin::PluginRecord<Type, Type##_get_typecode>::printData(sample, description, indent);              \
    }                                                                                                                  \
    Type *Type##PluginSupport_create_key_ex(DDS_Boolean allocate_pointers) {                                           \
        return Type##PluginSupport_create_data_ex(allocate_pointers);                                                  \
    }                                                                                                                  \
    Type *Type##PluginSupport_create_key(void) { return Type##PluginSupport_create_data(); }                           \
    void Type##PluginSupport_destroy_key_ex(Type *key, DDS_Boolean deallocate_pointers) {                              \
        Type##PluginSupport_destroy_data_ex(key, deallocate_pointers);                                                 \
    }                                                                                                                  \
    void Type##PluginSupport_destroy_key(Type *key) { Type##PluginSupport_destroy_data(key); }                         \
    OBLX_TypePluginParticipantData *Type##Plugin_on_participant_attached(void *registration_data) {                    \
        return OBLX_TypePluginDefaultParticipantData_new(registration_data);                                           \
    }                                                                                                                  \
    void Type##Plugin_on_participant_detached(OBLX_TypePluginParticipantData *participant_data) {                      \
        OBLX_TypePluginDefaultParticipantData_delete(participant_data);                                                \
    }                                                                                                                  \
    OBLX_TypePluginEndpointData *Type##Plugin_on_endpoint_attached(OBLX_TypePluginParticipantData *participant_data,   \
                                                                   OBLX_TypePluginEndpointKind kind) {                 \
        return ::vexar::plugin::PluginRecord<Type, Type##_get_typecode>::attachEndpoint(participant_data, kind);       \
    }                                                                                                                  \
    void Type##Plugin_on_endpoint_detached(OBLX_TypePluginEndpointData *endpoint_data) {                               \
        OBLX_TypePluginDefaultEndpointData_delete(endpoint_data);                                                      \
    }                                                                                                                  \
    void Type##Plugin_return_sample(OBLX_TypePluginEndpointData *endpoint_data, Type *sample) {                        \
        ::vexar::plugin::PluginRecord<Type, Type##_get_typecode>::returnSample(endpoint_data, sample);                 \
    }                                                                                                                  \
    DDS_Boolean Type##Plugin_copy_sample(OBLX_TypePluginEndpointData *, Type *dst, const Type *src) {                  \
        return Type##PluginSupport_copy_data(dst, src);                                                                \
    }                                                                                                                  \
    OBLX_TypePlugin *Type##Plugin_new(void) {                                                                          \
        using ::vexar::plugin::erased;                                                                                 \
        return ::vexar::plugin::copyToHeap(OBLX_TypePlugin{                                                            \
            .on_participant_attached = Type##Plugin_on_participant_attached,                                           \
            .on_participant_detached = Type##Plugin_on_participant_detached,                                           \
            .on_endpoint_attached = Type##Plugin_on_endpoint_attached,                                                 \
            .on_endpoint_detached = Type##Plugin_on_endpoint_detached,                                                 \
            .copy_sample = erased<Type, Type##Plugin_copy_sample>,                                                     \
            .create_sample = OBLX_TypePluginDefaultEndpointData_createSample,                                          \
            .destroy_sample = OBLX_TypePluginDefaultEndpointData_deleteSample,                                         \
            .instance_to_keyhash = erased<Type, Type##Plugin_instance_to_keyhash>,                                     \
            .serialized_sample_to_keyhash = Type##Plugin_serialized_sample_to_keyhash,                                 \
            .serialize = erased<Type, Type##Plugin_serialize>,                                                         \
            .deserialize = erased<Type, Type##Plugin_deserialize>,                                                     \
            .get_sample = OBLX_TypePluginDefaultEndpointData_getSample,                                                \
            .return_sample = erased<Type, Type##Plugin_return_sample>,                                                 \
            .get_serialized_sample_max_size = Type##Plugin_get_serialized_sample_max_size,                             \
            .get_serialized_sample_min_size = Type##Plugin_get_serialized_sample_min_size,                             \
            .get_serialized_sample_size = erased<Type, Type##Plugin_get_serialized_sample_size>,                       \
            .get_key_kind = Type##Plugin_get_key_kind,                                                                 \
            .get_key = OBLX_TypePluginDefaultEndpointData_getKey,                                                      \
            .return_key = OBLX_TypePluginDefaultEndpointData_returnKey,                                                \
            .get_serialized_key_max_size = Type##Plugin_get_serialized_key_max_size,                                   \
            .instance_to_key = erased<Type, Type##Plugin_instance_to_key>,                                             \
            .key_to_instance = erased<Type, Type##Plugin_key_to_instance>,                                             \
            .serialize_key = erased<Type, Type##Plugin_serialize_key>,                                                 \
            .deserialize_key = erased<Type, Type##Plugin_deserialize_key>,                                             \
            .deserialize_key_sample = erased<Type, Type##Plugin_deserialize_key_sample>,                               \
            .reserved = nullptr,                                                                                       \
            .type_code = Type##_get_typecode(),                                                                        \
            .get_buffer = OBLX_TypePlugin_getBuffer,                                                                   \
            .return_buffer = OBLX_TypePlugin_returnBuffer,                                                             \
            .type_name = Type##TYPENAME,                                                                               \
            .sample_size = sizeof(Type),                                                                               \
        });                                                                                                            \
    }                                                                                                                  \
    void Type##Plugin_delete(OBLX_TypePlugin *plugin) { delete plugin; }                                               \
    }
