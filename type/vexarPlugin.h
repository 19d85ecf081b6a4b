/* The encoding plugin functions of every data type: serialization to and
 * from CDR, serialized sizes, and keys.
 *
 * Every type has the same family, named <Type>Plugin_<operation>. Mutable
 * types (LogMessage, State, Command, CommandRequest, CommandResponse,
 * Statistics) are
 * encoded as parameter lists (PL_CDR), the others as plain CDR. Serializers
 * and readers return DDS_BOOLEAN_TRUE on success and FALSE at the first
 * failure (no room, a bad encapsulation identifier, a string or sequence
 * over its bound, an unknown must-understand member); they report nothing.
 *
 * Common arguments:
 *   endpoint_data          the endpoint's plugin state; may be null
 *   stream                 platform/cdr/cdr_stream.h
 *   *_encapsulation        whether the 4-byte encapsulation header is written
 *                          or read; a written header restarts alignment after it
 *   encapsulation_id       0 CDR_BE, 1 CDR_LE, 2 PL_CDR_BE, 3 PL_CDR_LE; a
 *                          mutable type writes 0 as 2 and 1 as 3
 *   *_sample / *_key       whether the body is written or read
 *   endpoint_plugin_qos    reserved for the DDS bridge; may be null
 *   current_alignment      the byte position at which the value starts
 *
 * Operations:
 *   serialize, deserialize_sample, skip, deserialize
 *       deserialize also fails when a value read had no valid meaning (an
 *       enumeration out of range), which deserialize_sample lets pass with the
 *       field unchanged. A mutable struct is put back to its initial values
 *       (without allocation) before reading, so absent members keep them;
 *       strings are read into the buffers the sample already holds.
 *   serialize_to_cdr_buffer(buffer, length, sample)
 *       a null buffer stores the serialized size in *length; otherwise writes
 *       the sample little-endian with its header and stores the bytes written.
 *   deserialize_from_cdr_buffer(sample, buffer, length)
 *       reads one encapsulated sample, as deserialize.
 *   get_serialized_sample_max_size(_ex), _min_size, _size, get_serialized_key_max_size(_ex)
 *       sizes in bytes from current_alignment; an invalid encapsulation id
 *       with the header included gives 1. The _ex forms report overflow; the
 *       plain max form then returns OBLX_TYPEPLUGIN_MAX_SIZE_OVERFLOW.
 *   get_key_kind, serialize_key, deserialize_key_sample, deserialize_key,
 *   serialized_sample_to_key, instance_to_key, key_to_instance
 *       the key form holds only the key members (a mutable type's as a
 *       parameter list); an unkeyed type's key is the whole sample.
 *   instance_to_keyhash, serialized_sample_to_keyhash
 *       the key serialized big-endian without header: its bytes padded with
 *       zeros when the key's maximum size is at most 16, else their MD5. */
#ifndef VEXAR_TYPE_VEXARPLUGIN_H
#define VEXAR_TYPE_VEXARPLUGIN_H

#include "platform/cdr/cdr_stream.h"
#include "platform/plugin/type_plugin.h"
#include "type/vexar.h"

VEXAR_BEGIN_DECLS

#define QTV_VX_DECLARE_PLUGIN_OPERATIONS(Type)                                                                       \
    VEXAR_API DDS_Boolean Type##Plugin_serialize(OBLX_TypePluginEndpointData *endpoint_data, const Type *sample,     \
                                                 OBLX_CdrStream *stream, DDS_Boolean serialize_encapsulation,        \
                                                 DDS_UnsignedShort encapsulation_id, DDS_Boolean serialize_sample,   \
                                                 void *endpoint_plugin_qos);                                         \
    VEXAR_API DDS_Boolean Type##Plugin_deserialize_sample(                                                           \
        OBLX_TypePluginEndpointData *endpoint_data, Type *sample, OBLX_CdrStream *stream,                            \
        DDS_Boolean deserialize_encapsulation, DDS_Boolean deserialize_sample, void *endpoint_plugin_qos);           \
    VEXAR_API DDS_Boolean Type##Plugin_deserialize(                                                                  \
        OBLX_TypePluginEndpointData *endpoint_data, Type **sample, DDS_Boolean *drop_sample, OBLX_CdrStream *stream, \
        DDS_Boolean deserialize_encapsulation, DDS_Boolean deserialize_sample, void *endpoint_plugin_qos);           \
    VEXAR_API DDS_Boolean Type##Plugin_skip(OBLX_TypePluginEndpointData *endpoint_data, OBLX_CdrStream *stream,      \
                                            DDS_Boolean skip_encapsulation, DDS_Boolean skip_sample,                 \
                                            void *endpoint_plugin_qos);                                              \
    VEXAR_API DDS_Boolean Type##Plugin_serialize_to_cdr_buffer(char *buffer, DDS_UnsignedLong *length,               \
                                                               const Type *sample);                                  \
    VEXAR_API DDS_Boolean Type##Plugin_deserialize_from_cdr_buffer(Type *sample, const char *buffer,                 \
                                                                   DDS_UnsignedLong length);                         \
    VEXAR_API DDS_UnsignedLong Type##Plugin_get_serialized_sample_max_size_ex(                                       \
        OBLX_TypePluginEndpointData *endpoint_data, DDS_Boolean *overflow, DDS_Boolean include_encapsulation,        \
        DDS_UnsignedShort encapsulation_id, DDS_UnsignedLong current_alignment);                                     \
    VEXAR_API DDS_UnsignedLong Type##Plugin_get_serialized_sample_max_size(                                          \
        OBLX_TypePluginEndpointData *endpoint_data, DDS_Boolean include_encapsulation,                               \
        DDS_UnsignedShort encapsulation_id, DDS_UnsignedLong current_alignment);                                     \
    VEXAR_API DDS_UnsignedLong Type##Plugin_get_serialized_sample_min_size(                                          \
        OBLX_TypePluginEndpointData *endpoint_data, DDS_Boolean include_encapsulation,                               \
        DDS_UnsignedShort encapsulation_id, DDS_UnsignedLong current_alignment);                                     \
    VEXAR_API DDS_UnsignedLong Type##Plugin_get_serialized_sample_size(                                              \
        OBLX_TypePluginEndpointData *endpoint_data, DDS_Boolean include_encapsulation,                               \
        DDS_UnsignedShort encapsulation_id, DDS_UnsignedLong current_alignment, const Type *sample);                 \
    VEXAR_API DDS_UnsignedLong Type##Plugin_get_serialized_key_max_size_ex(                                          \
        OBLX_TypePluginEndpointData *endpoint_data, DDS_Boolean *overflow, DDS_Boolean include_encapsulation,        \
        DDS_UnsignedShort encapsulation_id, DDS_UnsignedLong current_alignment);                                     \
    VEXAR_API DDS_UnsignedLong Type##Plugin_get_serialized_key_max_size(                                             \
        OBLX_TypePluginEndpointData *endpoint_data, DDS_Boolean include_encapsulation,                               \
        DDS_UnsignedShort encapsulation_id, DDS_UnsignedLong current_alignment);                                     \
    VEXAR_API OBLX_TypePluginKeyKind Type##Plugin_get_key_kind(void);                                                \
    VEXAR_API DDS_Boolean Type##Plugin_serialize_key(OBLX_TypePluginEndpointData *endpoint_data, const Type *sample, \
                                                     OBLX_CdrStream *stream, DDS_Boolean serialize_encapsulation,    \
                                                     DDS_UnsignedShort encapsulation_id, DDS_Boolean serialize_key,  \
                                                     void *endpoint_plugin_qos);                                     \
    VEXAR_API DDS_Boolean Type##Plugin_deserialize_key_sample(                                                       \
        OBLX_TypePluginEndpointData *endpoint_data, Type *sample, OBLX_CdrStream *stream,                            \
        DDS_Boolean deserialize_encapsulation, DDS_Boolean deserialize_key, void *endpoint_plugin_qos);              \
    VEXAR_API DDS_Boolean Type##Plugin_deserialize_key(                                                              \
        OBLX_TypePluginEndpointData *endpoint_data, Type **sample, DDS_Boolean *drop_sample, OBLX_CdrStream *stream, \
        DDS_Boolean deserialize_encapsulation, DDS_Boolean deserialize_key, void *endpoint_plugin_qos);              \
    VEXAR_API DDS_Boolean Type##Plugin_serialized_sample_to_key(                                                     \
        OBLX_TypePluginEndpointData *endpoint_data, Type *sample, OBLX_CdrStream *stream,                            \
        DDS_Boolean deserialize_encapsulation, DDS_Boolean deserialize_key, void *endpoint_plugin_qos);              \
    VEXAR_API DDS_Boolean Type##Plugin_instance_to_key(OBLX_TypePluginEndpointData *endpoint_data, Type *key,        \
                                                       const Type *instance);                                        \
    VEXAR_API DDS_Boolean Type##Plugin_key_to_instance(OBLX_TypePluginEndpointData *endpoint_data, Type *instance,   \
                                                       const Type *key);                                             \
    VEXAR_API DDS_Boolean Type##Plugin_instance_to_keyhash(OBLX_TypePluginEndpointData *endpoint_data,               \
                                                           DDS_KeyHash_t *keyhash, const Type *instance);            \
    VEXAR_API DDS_Boolean Type##Plugin_serialized_sample_to_keyhash(                                                 \
        OBLX_TypePluginEndpointData *endpoint_data, OBLX_CdrStream *stream, DDS_KeyHash_t *keyhash,                  \
        DDS_Boolean deserialize_encapsulation, void *endpoint_plugin_qos)

QTV_VX_DECLARE_PLUGIN_OPERATIONS(QTV_VX_HostAndAppId);
QTV_VX_DECLARE_PLUGIN_OPERATIONS(QTV_VX_LogMessage);
QTV_VX_DECLARE_PLUGIN_OPERATIONS(QTV_VX_ADMIN_QTVLoggerVerbosity);
QTV_VX_DECLARE_PLUGIN_OPERATIONS(QTV_VX_ADMIN_QTVLoggerCategory);
QTV_VX_DECLARE_PLUGIN_OPERATIONS(QTV_VX_ADMIN_QTVLoggerPrintFormat);
QTV_VX_DECLARE_PLUGIN_OPERATIONS(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity);
QTV_VX_DECLARE_PLUGIN_OPERATIONS(QTV_VX_ADMIN_StateKind);
QTV_VX_DECLARE_PLUGIN_OPERATIONS(QTV_VX_ADMIN_State);
QTV_VX_DECLARE_PLUGIN_OPERATIONS(QTV_VX_ADMIN_CommandKind);
QTV_VX_DECLARE_PLUGIN_OPERATIONS(QTV_VX_ADMIN_Command);
QTV_VX_DECLARE_PLUGIN_OPERATIONS(QTV_VX_ADMIN_CommandRequest);
QTV_VX_DECLARE_PLUGIN_OPERATIONS(QTV_VX_ADMIN_CommandResult);
QTV_VX_DECLARE_PLUGIN_OPERATIONS(QTV_VX_ADMIN_CommandResponse);
QTV_VX_DECLARE_PLUGIN_OPERATIONS(QTV_VX_ADMIN_Statistics);

/* ---- Plugin records of the topic types --------------------------------
 *
 * The five topic types (LogMessage, State, CommandRequest, CommandResponse,
 * Statistics) also have a plugin record (platform/plugin/type_plugin.h) and the functions that
 * fill it. A key holder is a sample of the same type.
 *
 *   <Type>PluginSupport_create_data_w_params(params), _create_data_ex(allocate_pointers), _create_data()
 *       a heap sample initialized as <Type>_initialize_w_params / _initialize_ex;
 *       null when allocation or initialization fails.
 *   <Type>PluginSupport_destroy_data_w_params(sample, params), _destroy_data_ex(sample, deallocate_pointers),
 *   _destroy_data(sample)
 *       finalize and free; null is accepted.
 *   <Type>PluginSupport_create_key_ex, _create_key, _destroy_key_ex, _destroy_key
 *       the same for key holders.
 *   <Type>PluginSupport_copy_data(dst, src)        <Type>_copy
 *   <Type>PluginSupport_print_data(sample, description, indent)
 *       prints the sample on standard output, one member a line (nested
 *       members three spaces deeper per level), under `description` when it
 *       is not null.
 *   <Type>Plugin_on_participant_attached(registration_data), _on_participant_detached(participant_data)
 *       default participant data; nothing of the type is kept per participant.
 *   <Type>Plugin_on_endpoint_attached(participant_data, kind)
 *       default endpoint data with the support functions as sample and key
 *       factories, a key-hash stream sized by get_serialized_key_max_size for
 *       a keyed type and, for a writer, the largest serialized sample without
 *       encapsulation; null when any of it fails.
 *   <Type>Plugin_on_endpoint_detached(endpoint_data)  deletes it.
 *   <Type>Plugin_return_sample(endpoint_data, sample)
 *       finalizes the optional members and puts the sample back in the pool.
 *   <Type>Plugin_copy_sample(endpoint_data, dst, src) <Type>PluginSupport_copy_data
 *   <Type>Plugin_new()                 a heap plugin record of the type; null
 *                                      when out of memory.
 *   <Type>Plugin_delete(plugin)        frees it; null is accepted. */

#define QTV_VX_DECLARE_PLUGIN_RECORD(Type)                                                                           \
    VEXAR_API Type *Type##PluginSupport_create_data_w_params(const DDS_TypeAllocationParams_t *alloc_params);        \
    VEXAR_API Type *Type##PluginSupport_create_data_ex(DDS_Boolean allocate_pointers);                               \
    VEXAR_API Type *Type##PluginSupport_create_data(void);                                                           \
    VEXAR_API void Type##PluginSupport_destroy_data_w_params(Type *sample,                                           \
                                                             const DDS_TypeDeallocationParams_t *dealloc_params);    \
    VEXAR_API void Type##PluginSupport_destroy_data_ex(Type *sample, DDS_Boolean deallocate_pointers);               \
    VEXAR_API void Type##PluginSupport_destroy_data(Type *sample);                                                   \
    VEXAR_API DDS_Boolean Type##PluginSupport_copy_data(Type *dst, const Type *src);                                 \
    VEXAR_API void Type##PluginSupport_print_data(const Type *sample, const char *description, unsigned int indent); \
    VEXAR_API Type *Type##PluginSupport_create_key_ex(DDS_Boolean allocate_pointers);                                \
    VEXAR_API Type *Type##PluginSupport_create_key(void);                                                            \
    VEXAR_API void Type##PluginSupport_destroy_key_ex(Type *key, DDS_Boolean deallocate_pointers);                   \
    VEXAR_API void Type##PluginSupport_destroy_key(Type *key);                                                       \
    VEXAR_API OBLX_TypePluginParticipantData *Type##Plugin_on_participant_attached(void *registration_data);         \
    VEXAR_API void Type##Plugin_on_participant_detached(OBLX_TypePluginParticipantData *participant_data);           \
    VEXAR_API OBLX_TypePluginEndpointData *Type##Plugin_on_endpoint_attached(                                        \
        OBLX_TypePluginParticipantData *participant_data, OBLX_TypePluginEndpointKind kind);                         \
    VEXAR_API void Type##Plugin_on_endpoint_detached(OBLX_TypePluginEndpointData *endpoint_data);                    \
    VEXAR_API void Type##Plugin_return_sample(OBLX_TypePluginEndpointData *endpoint_data, Type *sample);             \
    VEXAR_API DDS_Boolean Type##Plugin_copy_sample(OBLX_TypePluginEndpointData *endpoint_data, Type *dst,            \
                                                   const Type *src);                                                 \
    VEXAR_API OBLX_TypePlugin *Type##Plugin_new(void);                                                               \
    VEXAR_API void Type##Plugin_delete(OBLX_TypePlugin *plugin)

QTV_VX_DECLARE_PLUGIN_RECORD(QTV_VX_LogMessage);
QTV_VX_DECLARE_PLUGIN_RECORD(QTV_VX_ADMIN_State);
QTV_VX_DECLARE_PLUGIN_RECORD(QTV_VX_ADMIN_CommandRequest);
QTV_VX_DECLARE_PLUGIN_RECORD(QTV_VX_ADMIN_CommandResponse);
QTV_VX_DECLARE_PLUGIN_RECORD(QTV_VX_ADMIN_Statistics);

VEXAR_END_DECLS

#endif
