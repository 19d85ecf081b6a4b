/* Type support and typed endpoints of the five topic types: LogMessage,
 * State, CommandRequest, CommandResponse and Statistics.
 *
 * Each type has the same three families, told once here and declared per
 * type by one macro each.
 *
 * ---- <Type>TypeSupport_* ----------------------------------------------------
 *   register_type(participant, type_name)
 *       registers the type with the participant under `type_name` (the
 *       caller's choice; the type's own name stays <Type>TYPENAME). A null
 *       participant or a plugin that cannot be made gives DDS_RETCODE_ERROR;
 *       otherwise the participant's result. The participant keeps its own
 *       copy of the plugin record.
 *   unregister_type(participant, type_name)
 *       DDS_RETCODE_ERROR for a null participant, else the participant's result.
 *   get_type_name()                   <Type>TYPENAME
 *   get_typecode()                    <Type>_get_typecode()
 *   create_data(), create_data_ex(allocatePointers), create_data_w_params(params)
 *       a new heap sample, initialized; null on failure.
 *   delete_data(sample), delete_data_ex(sample, deletePointers), delete_data_w_params(sample, params)
 *       finalizes and frees a sample made by create_data; always DDS_RETCODE_OK.
 *   initialize_data(sample), initialize_data_ex(sample, allocatePointers),
 *   initialize_data_w_params(sample, params)
 *       <Type>_initialize, _initialize_ex(sample, allocatePointers, true),
 *       _initialize_w_params; always DDS_RETCODE_OK, whatever they did.
 *   finalize_data(sample), finalize_data_ex(sample, deletePointers),
 *   finalize_data_w_params(sample, params)
 *       the matching <Type>_finalize; always DDS_RETCODE_OK.
 *   copy_data(dst, src)               <Type>_copy; DDS_RETCODE_ERROR when it fails.
 *   print_data(sample)                prints the sample on standard output.
 *   serialize_data_to_cdr_buffer(buffer, length, sample)
 *       a null buffer stores the serialized size in *length; otherwise writes
 *       the encapsulated sample into `buffer` of *length bytes and stores the
 *       bytes written. DDS_RETCODE_ERROR when it does not fit or fails.
 *   deserialize_data_from_cdr_buffer(sample, buffer, length)
 *       reads one encapsulated sample into an initialized one; DDS_RETCODE_ERROR
 *       when the bytes are not a valid sample.
 *   finalize()                        nothing to release: kept for symmetry.
 *
 * ---- <Type>DataWriter_* -----------------------------------------------------
 * A typed writer is the untyped writer itself, seen through its type: the
 * two pointers are the same object, so narrow and as_datawriter are checked
 * casts. (The record's one member would be the untyped writer, whose layout
 * is the DDS bridge's own; so the typed record is declared, not defined.)
 *   narrow(writer)
 *       the typed writer, or null for a null writer ("null writer") or a
 *       writer of another type ("wrong type writer"), reported as bad
 *       parameters under "TDataWriter_narrow".
 *   as_datawriter(writer)             the untyped writer; null reported as "null writer".
 *   register_instance(_w_timestamp, _w_params), unregister_instance(...),
 *   write(...), dispose(...), get_key_value, lookup_instance
 *       forward to the untyped operations of platform/dds/data_writer.h, which
 *       tell handles, timestamps and results. The _w_timestamp forms stamp
 *       the sample with the time that readers see in
 *       DDS_SampleInfo.source_timestamp.
 *
 * ---- <Type>DataReader_* -----------------------------------------------------
 * A typed reader is the untyped reader in the same way.
 *   narrow(reader), as_datareader(reader)
 *       as for writers, with "null reader", "wrong type reader" and
 *       "TDataReader_narrow" / "TDataReader_as_datareader".
 *   read, take and their _w_condition, _instance, _instance_w_condition forms
 *       fill `received_data` with at most `max_samples` samples
 *       (DDS_LENGTH_UNLIMITED for all) and `info_seq` with their infos:
 *         - an empty owning sequence (maximum 0) receives the reader's own
 *           samples on loan, without copying: it becomes non-owning with
 *           length and maximum equal to the count, and info_seq is loaned
 *           the infos. Give both back with return_loan before reusing them.
 *         - an owning sequence with a buffer (maximum > 0) receives copies,
 *           at most its maximum, and keeps its buffer; its length becomes the
 *           count.
 *         - a sequence that holds a loan is refused (DDS_RETCODE_PRECONDITION_NOT_MET).
 *       DDS_RETCODE_NO_DATA when nothing matched, with received_data's
 *       length 0; DDS_RETCODE_BAD_PARAMETER for a null received_data.
 *   read_next_instance, take_next_instance and their _w_condition forms
 *       as the _instance forms, for the instance with the least handle
 *       above `previous_handle` (DDS_HANDLE_NIL: the least of all) among
 *       those with samples that the masks or the condition select. So an
 *       application visits every instance in handle order by passing the
 *       handle of the last one read (from its infos) until
 *       DDS_RETCODE_NO_DATA. Samples of the instances passed over keep their
 *       states; an unkeyed type has one instance.
 *   read_next_sample, take_next_sample(reader, sample, info)
 *       the next unread sample decoded into `sample` (initialized), with its
 *       info; DDS_RETCODE_NO_DATA when there is none.
 *   return_loan(reader, received_data, info_seq)
 *       gives back what a read or take lent; DDS_RETCODE_OK at once when
 *       both sequences own their memory (nothing is on loan). Leaves both
 *       sequences empty and owning. DDS_RETCODE_BAD_PARAMETER for a null
 *       sequence.
 *   get_key_value, lookup_instance    as for writers, for the reader's instances.
 *   add_sample_to_remote_writer_queue
 *       always DDS_RETCODE_UNSUPPORTED (reported): Cyclone cannot inject a
 *       sample as if a remote writer had sent it.
 *
 * Misuse is reported through the middleware logger; no operation prints
 * otherwise, except print_data. */
#ifndef VEXAR_TYPE_VEXARSUPPORT_H
#define VEXAR_TYPE_VEXARSUPPORT_H

#include "platform/dds/data_reader.h"
#include "platform/dds/data_writer.h"
#include "platform/dds/domain_participant.h"
#include "platform/dds/sample_info.h"
#include "platform/types/type_params.h"
#include "platform/types/typecode.h"
#include "type/vexar.h"

VEXAR_BEGIN_DECLS

#define QTV_VX_DECLARE_TYPE_SUPPORT(Type)                                                                             \
    VEXAR_API DDS_ReturnCode_t Type##TypeSupport_register_type(DDS_DomainParticipant *participant,                    \
                                                               const char *type_name);                                \
    VEXAR_API DDS_ReturnCode_t Type##TypeSupport_unregister_type(DDS_DomainParticipant *participant,                  \
                                                                 const char *type_name);                              \
    VEXAR_API const char *Type##TypeSupport_get_type_name(void);                                                      \
    VEXAR_API const DDS_TypeCode *Type##TypeSupport_get_typecode(void);                                               \
    VEXAR_API Type *Type##TypeSupport_create_data(void);                                                              \
    VEXAR_API Type *Type##TypeSupport_create_data_ex(DDS_Boolean allocatePointers);                                   \
    VEXAR_API Type *Type##TypeSupport_create_data_w_params(const DDS_TypeAllocationParams_t *alloc_params);           \
    VEXAR_API DDS_ReturnCode_t Type##TypeSupport_delete_data(Type *a_data);                                           \
    VEXAR_API DDS_ReturnCode_t Type##TypeSupport_delete_data_ex(Type *a_data, DDS_Boolean deletePointers);            \
    VEXAR_API DDS_ReturnCode_t Type##TypeSupport_delete_data_w_params(                                                \
        Type *a_data, const DDS_TypeDeallocationParams_t *dealloc_params);                                            \
    VEXAR_API DDS_ReturnCode_t Type##TypeSupport_initialize_data(Type *a_data);                                       \
    VEXAR_API DDS_ReturnCode_t Type##TypeSupport_initialize_data_ex(Type *a_data, DDS_Boolean allocatePointers);      \
    VEXAR_API DDS_ReturnCode_t Type##TypeSupport_initialize_data_w_params(                                            \
        Type *a_data, const DDS_TypeAllocationParams_t *alloc_params);                                                \
    VEXAR_API DDS_ReturnCode_t Type##TypeSupport_finalize_data(Type *a_data);                                         \
    VEXAR_API DDS_ReturnCode_t Type##TypeSupport_finalize_data_ex(Type *a_data, DDS_Boolean deletePointers);          \
    VEXAR_API DDS_ReturnCode_t Type##TypeSupport_finalize_data_w_params(                                              \
        Type *a_data, const DDS_TypeDeallocationParams_t *dealloc_params);                                            \
    VEXAR_API DDS_ReturnCode_t Type##TypeSupport_copy_data(Type *dst_data, const Type *src_data);                     \
    VEXAR_API void Type##TypeSupport_print_data(const Type *a_data);                                                  \
    VEXAR_API DDS_ReturnCode_t Type##TypeSupport_serialize_data_to_cdr_buffer(char *buffer, DDS_UnsignedLong *length, \
                                                                              const Type *a_data);                    \
    VEXAR_API DDS_ReturnCode_t Type##TypeSupport_deserialize_data_from_cdr_buffer(Type *a_data, const char *buffer,   \
                                                                                  DDS_UnsignedLong length);           \
    VEXAR_API void Type##TypeSupport_finalize(void)

#define QTV_VX_DECLARE_DATA_WRITER(Type)                                                                               \
    typedef struct Type##DataWriter Type##DataWriter;                                                                  \
    VEXAR_API Type##DataWriter *Type##DataWriter_narrow(DDS_DataWriter *writer);                                       \
    VEXAR_API DDS_DataWriter *Type##DataWriter_as_datawriter(Type##DataWriter *writer);                                \
    VEXAR_API DDS_InstanceHandle_t Type##DataWriter_register_instance(Type##DataWriter *self,                          \
                                                                      const Type *instance_data);                      \
    VEXAR_API DDS_InstanceHandle_t Type##DataWriter_register_instance_w_timestamp(                                     \
        Type##DataWriter *self, const Type *instance_data, const DDS_Time_t *source_timestamp);                        \
    VEXAR_API DDS_InstanceHandle_t Type##DataWriter_register_instance_w_params(                                        \
        Type##DataWriter *self, const Type *instance_data, const DDS_WriteParams_t *params);                           \
    VEXAR_API DDS_ReturnCode_t Type##DataWriter_unregister_instance(Type##DataWriter *self, const Type *instance_data, \
                                                                    DDS_InstanceHandle_t handle);                      \
    VEXAR_API DDS_ReturnCode_t Type##DataWriter_unregister_instance_w_timestamp(                                       \
        Type##DataWriter *self, const Type *instance_data, DDS_InstanceHandle_t handle,                                \
        const DDS_Time_t *source_timestamp);                                                                           \
    VEXAR_API DDS_ReturnCode_t Type##DataWriter_unregister_instance_w_params(                                          \
        Type##DataWriter *self, const Type *instance_data, const DDS_WriteParams_t *params);                           \
    VEXAR_API DDS_ReturnCode_t Type##DataWriter_write(Type##DataWriter *self, const Type *instance_data,               \
                                                      DDS_InstanceHandle_t handle);                                    \
    VEXAR_API DDS_ReturnCode_t Type##DataWriter_write_w_timestamp(Type##DataWriter *self, const Type *instance_data,   \
                                                                  DDS_InstanceHandle_t handle,                         \
                                                                  const DDS_Time_t *source_timestamp);                 \
    VEXAR_API DDS_ReturnCode_t Type##DataWriter_write_w_params(Type##DataWriter *self, const Type *instance_data,      \
                                                               const DDS_WriteParams_t *params);                       \
    VEXAR_API DDS_ReturnCode_t Type##DataWriter_dispose(Type##DataWriter *self, const Type *instance_data,             \
                                                        DDS_InstanceHandle_t handle);                                  \
    VEXAR_API DDS_ReturnCode_t Type##DataWriter_dispose_w_timestamp(Type##DataWriter *self, const Type *instance_data, \
                                                                    DDS_InstanceHandle_t handle,                       \
                                                                    const DDS_Time_t *source_timestamp);               \
    VEXAR_API DDS_ReturnCode_t Type##DataWriter_dispose_w_params(Type##DataWriter *self, const Type *instance_data,    \
                                                                 const DDS_WriteParams_t *params);                     \
    VEXAR_API DDS_ReturnCode_t Type##DataWriter_get_key_value(Type##DataWriter *self, Type *key_holder,                \
                                                              DDS_InstanceHandle_t handle);                            \
    VEXAR_API DDS_InstanceHandle_t Type##DataWriter_lookup_instance(Type##DataWriter *self, const Type *key_holder)

/* read<suffix> and take<suffix>: the sequence forms share their first four
 * parameters; the variadic part is the form's own. */
#define QTV_VX_DECLARE_READ_AND_TAKE(Type, suffix, ...)                                                         \
    VEXAR_API DDS_ReturnCode_t Type##DataReader_read##suffix(Type##DataReader *self, Type##Seq *received_data,  \
                                                             DDS_SampleInfoSeq *info_seq, DDS_Long max_samples, \
                                                             __VA_ARGS__);                                      \
    VEXAR_API DDS_ReturnCode_t Type##DataReader_take##suffix(Type##DataReader *self, Type##Seq *received_data,  \
                                                             DDS_SampleInfoSeq *info_seq, DDS_Long max_samples, \
                                                             __VA_ARGS__)

#define QTV_VX_DECLARE_DATA_READER(Type)                                                                             \
    typedef struct Type##DataReader Type##DataReader;                                                                \
    VEXAR_API Type##DataReader *Type##DataReader_narrow(DDS_DataReader *reader);                                     \
    VEXAR_API DDS_DataReader *Type##DataReader_as_datareader(Type##DataReader *reader);                              \
    QTV_VX_DECLARE_READ_AND_TAKE(Type, , DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,           \
                                 DDS_InstanceStateMask instance_states);                                             \
    QTV_VX_DECLARE_READ_AND_TAKE(Type, _w_condition, DDS_ReadCondition *condition);                                  \
    QTV_VX_DECLARE_READ_AND_TAKE(Type, _instance, DDS_InstanceHandle_t a_handle, DDS_SampleStateMask sample_states,  \
                                 DDS_ViewStateMask view_states, DDS_InstanceStateMask instance_states);              \
    QTV_VX_DECLARE_READ_AND_TAKE(Type, _instance_w_condition, DDS_InstanceHandle_t a_handle,                         \
                                 DDS_ReadCondition *condition);                                                      \
    QTV_VX_DECLARE_READ_AND_TAKE(Type, _next_instance, DDS_InstanceHandle_t previous_handle,                         \
                                 DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,                   \
                                 DDS_InstanceStateMask instance_states);                                             \
    QTV_VX_DECLARE_READ_AND_TAKE(Type, _next_instance_w_condition, DDS_InstanceHandle_t previous_handle,             \
                                 DDS_ReadCondition *condition);                                                      \
    VEXAR_API DDS_ReturnCode_t Type##DataReader_read_next_sample(Type##DataReader *self, Type *received_data,        \
                                                                 DDS_SampleInfo *sample_info);                       \
    VEXAR_API DDS_ReturnCode_t Type##DataReader_take_next_sample(Type##DataReader *self, Type *received_data,        \
                                                                 DDS_SampleInfo *sample_info);                       \
    VEXAR_API DDS_ReturnCode_t Type##DataReader_return_loan(Type##DataReader *self, Type##Seq *received_data,        \
                                                            DDS_SampleInfoSeq *info_seq);                            \
    VEXAR_API DDS_ReturnCode_t Type##DataReader_get_key_value(Type##DataReader *self, Type *key_holder,              \
                                                              DDS_InstanceHandle_t handle);                          \
    VEXAR_API DDS_InstanceHandle_t Type##DataReader_lookup_instance(Type##DataReader *self, const Type *key_holder); \
    VEXAR_API DDS_ReturnCode_t Type##DataReader_add_sample_to_remote_writer_queue(                                   \
        Type##DataReader *self, const Type *sample, const DDS_GUID_t *remote_writer_guid)

/* The three families of one topic type. */
#define QTV_VX_DECLARE_TOPIC_TYPE_SUPPORT(Type) \
    QTV_VX_DECLARE_TYPE_SUPPORT(Type);          \
    QTV_VX_DECLARE_DATA_WRITER(Type);           \
    QTV_VX_DECLARE_DATA_READER(Type)

QTV_VX_DECLARE_TOPIC_TYPE_SUPPORT(QTV_VX_LogMessage);
QTV_VX_DECLARE_TOPIC_TYPE_SUPPORT(QTV_VX_ADMIN_State);
QTV_VX_DECLARE_TOPIC_TYPE_SUPPORT(QTV_VX_ADMIN_CommandRequest);
QTV_VX_DECLARE_TOPIC_TYPE_SUPPORT(QTV_VX_ADMIN_CommandResponse);
QTV_VX_DECLARE_TOPIC_TYPE_SUPPORT(QTV_VX_ADMIN_Statistics);

VEXAR_END_DECLS

#endif
