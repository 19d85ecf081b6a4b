// Type support and typed endpoints, written once for every topic type.
//
// TypeSupport<Traits>, TypedWriter<Traits> and TypedReader<Traits> hold the
// few operations that do more than forward: registration, the checked casts
// between typed and untyped endpoints, and the read-or-take core with its
// loan protocol. VEXAR_DEFINE_TOPIC_TYPE_SUPPORT(Type) derives the traits of
// one type from its C names and emits the C functions of type/vexarSupport.h
// as thin wrappers.
#pragma once

#include "platform/log/report.h"
#include "type/vexarPlugin.h"
#include "type/vexarSupport.h"

namespace vexar::typed {

inline DDS_ReturnCode_t okOrError(bool succeeded) noexcept { return succeeded ? DDS_RETCODE_OK : DDS_RETCODE_ERROR; }

// Registration with a participant. The plugin record exists only for the
// call: the participant keeps a copy of it.
template <typename Traits>
struct TypeSupport {
    static DDS_ReturnCode_t registerType(DDS_DomainParticipant *participant, const char *typeName) noexcept {
        if (participant == nullptr) return DDS_RETCODE_ERROR;
        OBLX_TypePlugin *plugin = Traits::newPlugin();
        if (plugin == nullptr) return DDS_RETCODE_ERROR;
        DDS_ReturnCode_t result = DDS_DomainParticipant_register_type(participant, typeName, plugin, nullptr);
        Traits::deletePlugin(plugin);
        return result;
    }

    static DDS_ReturnCode_t unregisterType(DDS_DomainParticipant *participant, const char *typeName) noexcept {
        if (participant == nullptr) return DDS_RETCODE_ERROR;
        return DDS_DomainParticipant_unregister_type(participant, typeName);
    }
};

// A typed endpoint is the untyped one seen through its type: the same
// pointer, handed out only once the middleware confirms the type.
template <typename Typed, typename Untyped>
struct EndpointCast {
    // The report texts and context names of one endpoint kind.
    struct Names {
        const char *nullEndpoint;
        const char *wrongType;
        const char *narrowContext;
        const char *widenContext;
    };

    template <DDS_Boolean (*compareType)(Untyped *, const char *)>
    static Typed *narrow(Untyped *endpoint, const char *typeName, const Names &names) noexcept {
        if (endpoint == nullptr) {
            OBLX_Report_badParameter(names.narrowContext, names.nullEndpoint);
            return nullptr;
        }
        if (!compareType(endpoint, typeName)) {
            OBLX_Report_badParameter(names.narrowContext, names.wrongType);
            return nullptr;
        }
        return reinterpret_cast<Typed *>(endpoint);
    }

    static Untyped *widen(Typed *endpoint, const Names &names) noexcept {
        if (endpoint == nullptr) OBLX_Report_badParameter(names.widenContext, names.nullEndpoint);
        return untyped(endpoint);
    }

    // For forwarding: a null endpoint stays null and the untyped operation
    // reports it.
    static Untyped *untyped(Typed *endpoint) noexcept { return reinterpret_cast<Untyped *>(endpoint); }
};

template <typename Traits>
struct TypedWriter : EndpointCast<typename Traits::Writer, DDS_DataWriter> {
    using Cast = EndpointCast<typename Traits::Writer, DDS_DataWriter>;
    static constexpr typename Cast::Names names{"null writer", "wrong type writer", "TDataWriter_narrow",
                                                "TDataWriter_as_datawriter"};

    static typename Traits::Writer *narrow(DDS_DataWriter *writer) noexcept {
        return Cast::template narrow<DDS_DataWriter_compare_typeI>(writer, Traits::typeName, names);
    }
    static DDS_DataWriter *asDataWriter(typename Traits::Writer *writer) noexcept { return Cast::widen(writer, names); }
};

template <typename Traits>
struct TypedReader : EndpointCast<typename Traits::Reader, DDS_DataReader> {
    using Cast = EndpointCast<typename Traits::Reader, DDS_DataReader>;
    using Reader = typename Traits::Reader;
    using Seq = typename Traits::Seq;
    using SeqOps = typename Traits::SeqOps;
    static constexpr DDS_Long elementSize = sizeof(typename Traits::Sample);
    static constexpr typename Cast::Names names{"null reader", "wrong type reader", "TDataReader_narrow",
                                                "TDataReader_as_datareader"};

    static Reader *narrow(DDS_DataReader *reader) noexcept {
        return Cast::template narrow<DDS_DataReader_compare_typeI>(reader, Traits::typeName, names);
    }
    static DDS_DataReader *asDataReader(Reader *reader) noexcept { return Cast::widen(reader, names); }

    // Read or take through `untypedForm` (one of the untyped operations of
    // platform/dds/data_reader.h), whose own arguments (states, handle,
    // condition, take flag) follow the common ones in `selection`. The
    // middleware either lends its samples (an empty owning sequence) or
    // copies into the sequence's buffer.
    template <auto untypedForm, typename... Selection>
    static DDS_ReturnCode_t readOrTake(const char *context, Reader *self, Seq *receivedData, DDS_SampleInfoSeq *infoSeq,
                                       DDS_Long maxSamples, Selection... selection) noexcept {
        if (receivedData == nullptr) {
            OBLX_Report_badParameter(context, "received_data");
            return DDS_RETCODE_BAD_PARAMETER;
        }
        DDS_Boolean isLoan = DDS_BOOLEAN_TRUE;
        void **lentSamples = nullptr;
        DDS_Long count = 0;
        DDS_ReturnCode_t result =
            untypedForm(Cast::untyped(self), &isLoan, &lentSamples, &count, infoSeq, SeqOps::getLength(receivedData),
                        SeqOps::getMaximum(receivedData), SeqOps::hasOwnership(receivedData),
                        SeqOps::getContiguousBuffer(receivedData), elementSize, maxSamples, selection...);
        if (result == DDS_RETCODE_NO_DATA) {
            SeqOps::setLength(receivedData, 0);
            return result;
        }
        if (result != DDS_RETCODE_OK) return result;
        if (isLoan) return holdLoan(self, receivedData, infoSeq, lentSamples, count);
        return okOrError(SeqOps::setLength(receivedData, count));
    }

    static DDS_ReturnCode_t returnLoan(Reader *self, Seq *receivedData, DDS_SampleInfoSeq *infoSeq) noexcept {
        const char *context = "TDataReader_return_loan";
        if (receivedData == nullptr || infoSeq == nullptr) {
            OBLX_Report_badParameter(context, receivedData == nullptr ? "received_data" : "info_seq");
            return DDS_RETCODE_BAD_PARAMETER;
        }
        if (SeqOps::hasOwnership(receivedData) && DDS_SampleInfoSeq_has_ownership(infoSeq)) return DDS_RETCODE_OK;
        DDS_ReturnCode_t result = DDS_DataReader_return_loan_untypedI(
            Cast::untyped(self), reinterpret_cast<void **>(SeqOps::getDiscontiguousBuffer(receivedData)),
            SeqOps::getMaximum(receivedData), infoSeq);
        if (result != DDS_RETCODE_OK) return result;
        if (!SeqOps::unloan(receivedData)) {
            OBLX_Report_failure(context, "unloan sequence");
            return DDS_RETCODE_ERROR;
        }
        return DDS_RETCODE_OK;
    }

private:
    // The lent pointer array becomes the sequence's buffer; if the sequence
    // refuses it, the samples go straight back to the middleware.
    static DDS_ReturnCode_t holdLoan(Reader *self, Seq *receivedData, DDS_SampleInfoSeq *infoSeq, void **lentSamples,
                                     DDS_Long count) noexcept {
        auto **samples = reinterpret_cast<typename Traits::Sample **>(lentSamples);
        if (SeqOps::loanDiscontiguous(receivedData, samples, count, count)) return DDS_RETCODE_OK;
        DDS_DataReader_return_loan_untypedI(Cast::untyped(self), lentSamples, count, infoSeq);
        return DDS_RETCODE_ERROR;
    }
};

}  // namespace vexar::typed

// The traits of one topic type, from its C names.
#define VEXAR_TOPIC_TYPE_TRAITS(Type)                                                           \
    struct Type##_SupportTraits {                                                               \
        using Sample = Type;                                                                    \
        using Seq = Type##Seq;                                                                  \
        using Writer = Type##DataWriter;                                                        \
        using Reader = Type##DataReader;                                                        \
        static constexpr const char *typeName = Type##TYPENAME;                                 \
        static constexpr auto newPlugin = Type##Plugin_new;                                     \
        static constexpr auto deletePlugin = Type##Plugin_delete;                               \
        struct SeqOps {                                                                         \
            static constexpr auto getLength = Type##Seq_get_length;                             \
            static constexpr auto getMaximum = Type##Seq_get_maximum;                           \
            static constexpr auto setLength = Type##Seq_set_length;                             \
            static constexpr auto hasOwnership = Type##Seq_has_ownership;                       \
            static constexpr auto getContiguousBuffer = Type##Seq_get_contiguous_bufferI;       \
            static constexpr auto getDiscontiguousBuffer = Type##Seq_get_discontiguous_bufferI; \
            static constexpr auto loanDiscontiguous = Type##Seq_loan_discontiguous;             \
            static constexpr auto unloan = Type##Seq_unloan;                                    \
        };                                                                                      \
    }

// The C functions of <Type>TypeSupport_*.
#define VEXAR_DEFINE_TYPE_SUPPORT_FUNCTIONS(Type)                                                                   \
    using Type##_TypeSupport = ::vexar::typed::TypeSupport<Type##_SupportTraits>;                                   \
    extern "C" {                                                                                                    \
    DDS_ReturnCode_t Type##TypeSupport_register_type(DDS_DomainParticipant *participant, const char *type_name) {   \
        return Type##_TypeSupport::registerType(participant, type_name);                                            \
    }                                                                                                               \
    DDS_ReturnCode_t Type##TypeSupport_unregister_type(DDS_DomainParticipant *participant, const char *type_name) { \
        return Type##_TypeSupport::unregisterType(participant, type_name);                                          \
    }                                                                                                               \
    const char *Type##TypeSupport_get_type_name(void) { return Type##TYPENAME; }                                    \
    const DDS_TypeCode *Type##TypeSupport_get_typecode(void) { return Type##_get_typecode(); }                      \
    Type *Type##TypeSupport_create_data(void) { return Type##PluginSupport_create_data(); }                         \
    Type *Type##TypeSupport_create_data_ex(DDS_Boolean allocatePointers) {                                          \
        return Type##PluginSupport_create_data_ex(allocatePointers);                                                \
    }                                                                                                               \
    Type *Type##TypeSupport_create_data_w_params(const DDS_TypeAllocationParams_t *alloc_params) {                  \
        return Type##PluginSupport_create_data_w_params(alloc_params);                                              \
    }                                                                                                               \
    DDS_ReturnCode_t Type##TypeSupport_delete_data(Type *a_data) {                                                  \
        Type##PluginSupport_destroy_data(a_data);                                                                   \
        return DDS_RETCODE_OK;                                                                                      \
    }                                                                                                               \
    DDS_ReturnCode_t Type##TypeSupport_delete_data_ex(Type *a_data, DDS_Boolean deletePointers) {                   \
        Type##PluginSupport_destroy_data_ex(a_data, deletePointers);                                                \
        return DDS_RETCODE_OK;                                                                                      \
    }                                                                                                               \
    DDS_ReturnCode_t Type##TypeSupport_delete_data_w_params(Type *a_data,                                           \
                                                            const DDS_TypeDeallocationParams_t *dealloc_params) {   \
        Type##PluginSupport_destroy_data_w_params(a_data, dealloc_params);                                          \
        return DDS_RETCODE_OK;                                                                                      \
    }                                                                                                               \
    DDS_ReturnCode_t Type##TypeSupport_initialize_data(Type *a_data) {                                              \
        Type##_initialize(a_data);                                                                                  \
        return DDS_RETCODE_OK;                                                                                      \
    }                                                                                                               \
    DDS_ReturnCode_t Type##TypeSupport_initialize_data_ex(Type *a_data, DDS_Boolean allocatePointers) {             \
        Type##_initialize_ex(a_data, allocatePointers, DDS_BOOLEAN_TRUE);                                           \
        return DDS_RETCODE_OK;                                                                                      \
    }                                                                                                               \
    DDS_ReturnCode_t Type##TypeSupport_initialize_data_w_params(Type *a_data,                                       \
                                                                const DDS_TypeAllocationParams_t *alloc_params) {   \
        Type##_initialize_w_params(a_data, alloc_params);                                                           \
        return DDS_RETCODE_OK;                                                                                      \
    }                                                                                                               \
    DDS_ReturnCode_t Type##TypeSupport_finalize_data(Type *a_data) {                                                \
        Type##_finalize(a_data);                                                                                    \
        return DDS_RETCODE_OK;                                                                                      \
    }                                                                                                               \
    DDS_ReturnCode_t Type##TypeSupport_finalize_data_ex(Type *a_data, DDS_Boolean deletePointers) {                 \
        Type##_finalize_ex(a_data, deletePointers);                                                                 \
        return DDS_RETCODE_OK;                                                                                      \
    }                                                                                                               \
    DDS_ReturnCode_t Type##TypeSupport_finalize_data_w_params(Type *a_data,                                         \
                                                              const DDS_TypeDeallocationParams_t *dealloc_params) { \
        Type##_finalize_w_params(a_data, dealloc_params);                                                           \
        return DDS_RETCODE_OK;                                                                                      \
    }                                                                                                               \
    DDS_ReturnCode_t Type##TypeSupport_copy_data(Type *dst_data, const Type *src_data) {                            \
        return ::vexar::typed::okOrError(Type##_copy(dst_data, src_data));                                          \
    }                                                                                                               \
    void Type##TypeSupport_print_data(const Type *a_data) { Type##PluginSupport_print_data(a_data, nullptr, 0); }   \
    DDS_ReturnCode_t Type##TypeSupport_serialize_data_to_cdr_buffer(char *buffer, DDS_UnsignedLong *length,         \
                                                                    const Type *a_data) {                           \
        return ::vexar::typed::okOrError(Type##Plugin_serialize_to_cdr_buffer(buffer, length, a_data));             \
    }                                                                                                               \
    DDS_ReturnCode_t Type##TypeSupport_deserialize_data_from_cdr_buffer(Type *a_data, const char *buffer,           \
                                                                        DDS_UnsignedLong length) {                  \
        return ::vexar::typed::okOrError(Type##Plugin_deserialize_from_cdr_buffer(a_data, buffer, length));         \
    }                                                                                                               \
    void Type##TypeSupport_finalize(void) {}                                                                        \
    }

// The C functions of <Type>DataWriter_*.
#define VEXAR_DEFINE_DATA_WRITER_FUNCTIONS(Type)                                                                       \
    using Type##_TypedWriter = ::vexar::typed::TypedWriter<Type##_SupportTraits>;                                      \
    extern "C" {                                                                                                       \
    Type##DataWriter *Type##DataWriter_narrow(DDS_DataWriter *writer) { return Type##_TypedWriter::narrow(writer); }   \
    DDS_DataWriter *Type##DataWriter_as_datawriter(Type##DataWriter *writer) {                                         \
        return Type##_TypedWriter::asDataWriter(writer);                                                               \
    }                                                                                                                  \
    DDS_InstanceHandle_t Type##DataWriter_register_instance(Type##DataWriter *self, const Type *instance_data) {       \
        return DDS_DataWriter_register_instance_untypedI(Type##_TypedWriter::untyped(self), instance_data);            \
    }                                                                                                                  \
    DDS_InstanceHandle_t Type##DataWriter_register_instance_w_timestamp(Type##DataWriter *self,                        \
                                                                        const Type *instance_data,                     \
                                                                        const DDS_Time_t *source_timestamp) {          \
        return DDS_DataWriter_register_instance_w_timestamp_untypedI(Type##_TypedWriter::untyped(self), instance_data, \
                                                                     source_timestamp);                                \
    }                                                                                                                  \
    DDS_InstanceHandle_t Type##DataWriter_register_instance_w_params(Type##DataWriter *self,                           \
                                                                     const Type *instance_data,                        \
                                                                     const DDS_WriteParams_t *params) {                \
        return DDS_DataWriter_register_instance_w_params_untypedI(Type##_TypedWriter::untyped(self), instance_data,    \
                                                                  params);                                             \
    }                                                                                                                  \
    DDS_ReturnCode_t Type##DataWriter_unregister_instance(Type##DataWriter *self, const Type *instance_data,           \
                                                          DDS_InstanceHandle_t handle) {                               \
        return DDS_DataWriter_unregister_instance_untypedI(Type##_TypedWriter::untyped(self), instance_data, handle);  \
    }                                                                                                                  \
    DDS_ReturnCode_t Type##DataWriter_unregister_instance_w_timestamp(Type##DataWriter *self,                          \
                                                                      const Type *instance_data,                       \
                                                                      DDS_InstanceHandle_t handle,                     \
                                                                      const DDS_Time_t *source_timestamp) {            \
        return DDS_DataWriter_unregister_instance_w_timestamp_untypedI(Type##_TypedWriter::untyped(self),              \
                                                                       instance_data, handle, source_timestamp);       \
    }                                                                                                                  \
    DDS_ReturnCode_t Type##DataWriter_unregister_instance_w_params(Type##DataWriter *self, const Type *instance_data,  \
                                                                   const DDS_WriteParams_t *params) {                  \
        return DDS_DataWriter_unregister_instance_w_params_untypedI(Type##_TypedWriter::untyped(self), instance_data,  \
                                                                    params);                                           \
    }                                                                                                                  \
    DDS_ReturnCode_t Type##DataWriter_write(Type##DataWriter *self, const Type *instance_data,                         \
                                            DDS_InstanceHandle_t handle) {                                             \
        return DDS_DataWriter_write_untypedI(Type##_TypedWriter::untyped(self), instance_data, handle);                \
    }                                                                                                                  \
    DDS_ReturnCode_t Type##DataWriter_write_w_timestamp(Type##DataWriter *self, const Type *instance_data,             \
                                                        DDS_InstanceHandle_t handle,                                   \
                                                        const DDS_Time_t *source_timestamp) {                          \
        return DDS_DataWriter_write_w_timestamp_untypedI(Type##_TypedWriter::untyped(self), instance_data, handle,     \
                                                         source_timestamp);                                            \
    }                                                                                                                  \
    DDS_ReturnCode_t Type##DataWriter_write_w_params(Type##DataWriter *self, const Type *instance_data,                \
                                                     const DDS_WriteParams_t *params) {                                \
        return DDS_DataWriter_write_w_params_untypedI(Type##_TypedWriter::untyped(self), instance_data, params);       \
    }                                                                                                                  \
    DDS_ReturnCode_t Type##DataWriter_dispose(Type##DataWriter *self, const Type *instance_data,                       \
                                              DDS_InstanceHandle_t handle) {                                           \
        return DDS_DataWriter_dispose_untypedI(Type##_TypedWriter::untyped(self), instance_data, handle);              \
    }                                                                                                                  \
    DDS_ReturnCode_t Type##DataWriter_dispose_w_timestamp(Type##DataWriter *self, const Type *instance_data,           \
                                                          DDS_InstanceHandle_t handle,                                 \
                                                          const DDS_Time_t *source_timestamp) {                        \
        return DDS_DataWriter_dispose_w_timestamp_untypedI(Type##_TypedWriter::untyped(self), instance_data, handle,   \
                                                           source_timestamp);                                          \
    }                                                                                                                  \
    DDS_ReturnCode_t Type##DataWriter_dispose_w_params(Type##DataWriter *self, const Type *instance_data,              \
                                                       const DDS_WriteParams_t *params) {                              \
        return DDS_DataWriter_dispose_w_params_untypedI(Type##_TypedWriter::untyped(self), instance_data, params);     \
    }                                                                                                                  \
    DDS_ReturnCode_t Type##DataWriter_get_key_value(Type##DataWriter *self, Type *key_holder,                          \
                                                    DDS_InstanceHandle_t handle) {                                     \
        return DDS_DataWriter_get_key_value_untypedI(Type##_TypedWriter::untyped(self), key_holder, handle);           \
    }                                                                                                                  \
    DDS_InstanceHandle_t Type##DataWriter_lookup_instance(Type##DataWriter *self, const Type *key_holder) {            \
        return DDS_DataWriter_lookup_instance_untypedI(Type##_TypedWriter::untyped(self), key_holder);                 \
    }                                                                                                                  \
    }

// One read-or-take form: `name` (read_w_condition, ...), the untyped form it
// goes through, its context name, the take flag, and its own parameters and
// their names.
#define VEXAR_DEFINE_READ_OR_TAKE(Type, name, untypedForm, context, take, parameters, arguments)      \
    DDS_ReturnCode_t Type##DataReader_##name(Type##DataReader *self, Type##Seq *received_data,        \
                                             DDS_SampleInfoSeq *info_seq,                             \
                                             DDS_Long max_samples VEXAR_UNPACK parameters) {          \
        return Type##_TypedReader::readOrTake<untypedForm>(context, self, received_data, info_seq,    \
                                                           max_samples VEXAR_UNPACK arguments, take); \
    }
#define VEXAR_UNPACK(...) , __VA_ARGS__

#define VEXAR_STATE_PARAMETERS \
    (DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states, DDS_InstanceStateMask instance_states)
#define VEXAR_STATE_ARGUMENTS (sample_states, view_states, instance_states)

// Every read and take form, each once for reading and once for taking.
#define VEXAR_DEFINE_READ_OR_TAKE_PAIR(Type, suffix, untypedForm, context, parameters, arguments)                 \
    VEXAR_DEFINE_READ_OR_TAKE(Type, read##suffix, untypedForm, context, DDS_BOOLEAN_FALSE, parameters, arguments) \
    VEXAR_DEFINE_READ_OR_TAKE(Type, take##suffix, untypedForm, context, DDS_BOOLEAN_TRUE, parameters, arguments)

#define VEXAR_DEFINE_READ_OR_TAKE_FORMS(Type)                                                                \
    VEXAR_DEFINE_READ_OR_TAKE_PAIR(Type, , DDS_DataReader_read_or_take_untypedI, "TDataReader_read_or_take", \
                                   VEXAR_STATE_PARAMETERS, VEXAR_STATE_ARGUMENTS)                            \
    VEXAR_DEFINE_READ_OR_TAKE_PAIR(Type, _w_condition, DDS_DataReader_read_or_take_w_condition_untypedI,     \
                                   "TDataReader_read_or_take_w_conditionI", (DDS_ReadCondition * condition), \
                                   (condition))                                                              \
    VEXAR_DEFINE_READ_OR_TAKE_PAIR(Type, _instance, DDS_DataReader_read_or_take_instance_untypedI,           \
                                   "TDataReader_read_or_take_instanceI",                                     \
                                   (DDS_InstanceHandle_t a_handle, DDS_SampleStateMask sample_states,        \
                                    DDS_ViewStateMask view_states, DDS_InstanceStateMask instance_states),   \
                                   (a_handle, sample_states, view_states, instance_states))                  \
    VEXAR_DEFINE_READ_OR_TAKE_PAIR(                                                                          \
        Type, _instance_w_condition, DDS_DataReader_read_or_take_instance_w_condition_untypedI,              \
        "TDataReader_read_or_take_instance_w_conditionI",                                                    \
        (DDS_InstanceHandle_t a_handle, DDS_ReadCondition * condition), (a_handle, condition))               \
    VEXAR_DEFINE_READ_OR_TAKE_PAIR(Type, _next_instance, DDS_DataReader_read_or_take_next_instance_untypedI, \
                                   "TDataReader_read_or_take_next_instanceI",                                \
                                   (DDS_InstanceHandle_t previous_handle, DDS_SampleStateMask sample_states, \
                                    DDS_ViewStateMask view_states, DDS_InstanceStateMask instance_states),   \
                                   (previous_handle, sample_states, view_states, instance_states))           \
    VEXAR_DEFINE_READ_OR_TAKE_PAIR(                                                                          \
        Type, _next_instance_w_condition, DDS_DataReader_read_or_take_next_instance_w_condition_untypedI,    \
        "TDataReader_read_or_take_next_instance_w_conditionI",                                               \
        (DDS_InstanceHandle_t previous_handle, DDS_ReadCondition * condition), (previous_handle, condition))

// The C functions of <Type>DataReader_*.
#define VEXAR_DEFINE_DATA_READER_FUNCTIONS(Type)                                                                     \
    using Type##_TypedReader = ::vexar::typed::TypedReader<Type##_SupportTraits>;                                    \
    extern "C" {                                                                                                     \
    Type##DataReader *Type##DataReader_narrow(DDS_DataReader *reader) { return Type##_TypedReader::narrow(reader); } \
    DDS_DataReader *Type##DataReader_as_datareader(Type##DataReader *reader) {                                       \
        return Type##_TypedReader::asDataReader(reader);                                                             \
    }                                                                                                                \
    VEXAR_DEFINE_READ_OR_TAKE_FORMS(Type)                                                                            \
    DDS_ReturnCode_t Type##DataReader_read_next_sample(Type##DataReader *self, Type *received_data,                  \
                                                       DDS_SampleInfo *sample_info) {                                \
        return DDS_DataReader_read_or_take_next_sample_untypedI(Type##_TypedReader::untyped(self), received_data,    \
                                                                sample_info, DDS_BOOLEAN_FALSE);                     \
    }                                                                                                                \
    DDS_ReturnCode_t Type##DataReader_take_next_sample(Type##DataReader *self, Type *received_data,                  \
                                                       DDS_SampleInfo *sample_info) {                                \
        return DDS_DataReader_read_or_take_next_sample_untypedI(Type##_TypedReader::untyped(self), received_data,    \
                                                                sample_info, DDS_BOOLEAN_TRUE);                      \
    }                                                                                                                \
    DDS_ReturnCode_t Type##DataReader_return_loan(Type##DataReader *self, Type##Seq *received_data,                  \
                                                  DDS_SampleInfoSeq *info_seq) {                                     \
        return Type##_TypedReader::returnLoan(self, received_data, info_seq);                                        \
    }                                                                                                                \
    DDS_ReturnCode_t Type##DataReader_get_key_value(Type##DataReader *self, Type *key_holder,                        \
                                                    DDS_InstanceHandle_t handle) {                                   \
        return DDS_DataReader_get_key_value_untypedI(Type##_TypedReader::untyped(self), key_holder, handle);         \
    }                                                                                                                \
    DDS_InstanceHandle_t Type##DataReader_lookup_instance(Type##DataReader *self, const Type *key_holder) {          \
        return DDS_DataReader_lookup_instance_untypedI(Type##_TypedReader::untyped(self), key_holder);               \
    }                                                                                                                \
    DDS_ReturnCode_t Type##DataReader_add_sample_to_remote_writer_queue(Type##DataReader *self, const Type *sample,  \
                                                                        const DDS_GUID_t *remote_writer_guid) {      \
        return DDS_DataReader_add_sample_to_remote_writer_queue_untypedI(Type##_TypedReader::untyped(self), sample,  \
                                                                         remote_writer_guid);                        \
    }                                                                                                                \
    }

// Everything of type/vexarSupport.h for one topic type.
#define VEXAR_DEFINE_TOPIC_TYPE_SUPPORT(Type) \
    VEXAR_TOPIC_TYPE_TRAITS(Type);            \
    VEXAR_DEFINE_TYPE_SUPPORT_FUNCTIONS(Type) \
    VEXAR_DEFINE_DATA_WRITER_FUNCTIONS(Type)  \
    VEXAR_DEFINE_DATA_READER_FUNCTIONS(Type)
