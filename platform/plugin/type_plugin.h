/* What every type plugin's functions share: the endpoint data they are
 * called with, the key kinds and the key hash record; and the plugin record
 * through which the DDS bridge calls one type's functions without knowing
 * the type. */
#ifndef VEXAR_PLATFORM_TYPE_PLUGIN_H
#define VEXAR_PLATFORM_TYPE_PLUGIN_H

#include "platform/cdr/cdr_stream.h"
#include "platform/dds_types.h"
#include "platform/types/typecode.h"

VEXAR_BEGIN_DECLS

/* Per-endpoint state that the DDS bridge keeps for a plugin (sample pools,
 * the key-hash stream, the writer's maximum sample size). Every plugin
 * function accepts null here and then works from the type alone. */
typedef struct OBLX_TypePluginEndpointData OBLX_TypePluginEndpointData;

/* How the instances of a type are told apart. */
typedef enum OBLX_TypePluginKeyKind {
    OBLX_TYPEPLUGIN_NO_KEY = 0,   /* all samples are one instance */
    OBLX_TYPEPLUGIN_GUID_KEY = 1, /* one instance per writer */
    OBLX_TYPEPLUGIN_USER_KEY = 2  /* the type's key members name the instance */
} OBLX_TypePluginKeyKind;

/* The 16-byte key hash that names an instance on the wire. */
#define DDS_KEYHASH_LENGTH 16
typedef struct DDS_KeyHash_t {
    DDS_Octet value[DDS_KEYHASH_LENGTH];
    DDS_UnsignedLong length; /* 16 once computed */
} DDS_KeyHash_t;

/* Returned by get_serialized_sample_max_size when the size does not fit. */
#define OBLX_TYPEPLUGIN_MAX_SIZE_OVERFLOW 2147482623u

/* ---- The plugin record ---------------------------------------------------
 *
 * One record per registered type, made by <Type>Plugin_new and freed by
 * <Type>Plugin_delete. Its slots are the type's plugin functions behind
 * adapters that take samples and keys as void *, so the bridge serves every
 * type through one record. Endpoint data may be null wherever a plugin
 * function takes it: the functions then work from the type alone. */

/* Per-participant state; a type keeps nothing of its own per participant. */
typedef struct OBLX_TypePluginParticipantData OBLX_TypePluginParticipantData;

typedef enum OBLX_TypePluginEndpointKind {
    OBLX_TYPEPLUGIN_ENDPOINT_WRITER = 0,
    OBLX_TYPEPLUGIN_ENDPOINT_READER = 1
} OBLX_TypePluginEndpointKind;

typedef OBLX_TypePluginParticipantData *(*OBLX_TypePluginOnParticipantAttachedFunction)(void *registration_data);
typedef void (*OBLX_TypePluginOnParticipantDetachedFunction)(OBLX_TypePluginParticipantData *participant_data);
typedef OBLX_TypePluginEndpointData *(*OBLX_TypePluginOnEndpointAttachedFunction)(
    OBLX_TypePluginParticipantData *participant_data, OBLX_TypePluginEndpointKind kind);
typedef void (*OBLX_TypePluginOnEndpointDetachedFunction)(OBLX_TypePluginEndpointData *endpoint_data);
/* copy_sample, instance_to_key, key_to_instance: dst from src. */
typedef DDS_Boolean (*OBLX_TypePluginCopyFunction)(OBLX_TypePluginEndpointData *endpoint_data, void *dst,
                                                   const void *src);
/* create_sample, get_sample, get_key. */
typedef void *(*OBLX_TypePluginGetSampleFunction)(OBLX_TypePluginEndpointData *endpoint_data);
/* destroy_sample, return_sample, return_key. */
typedef void (*OBLX_TypePluginReturnSampleFunction)(OBLX_TypePluginEndpointData *endpoint_data, void *sample);
typedef DDS_Boolean (*OBLX_TypePluginInstanceToKeyHashFunction)(OBLX_TypePluginEndpointData *endpoint_data,
                                                                DDS_KeyHash_t *keyhash, const void *instance);
typedef DDS_Boolean (*OBLX_TypePluginSerializedSampleToKeyHashFunction)(OBLX_TypePluginEndpointData *endpoint_data,
                                                                        OBLX_CdrStream *stream, DDS_KeyHash_t *keyhash,
                                                                        DDS_Boolean deserialize_encapsulation,
                                                                        void *endpoint_plugin_qos);
/* serialize, serialize_key. */
typedef DDS_Boolean (*OBLX_TypePluginSerializeFunction)(OBLX_TypePluginEndpointData *endpoint_data, const void *sample,
                                                        OBLX_CdrStream *stream, DDS_Boolean serialize_encapsulation,
                                                        DDS_UnsignedShort encapsulation_id,
                                                        DDS_Boolean serialize_sample, void *endpoint_plugin_qos);
/* deserialize, deserialize_key: read into *sample. */
typedef DDS_Boolean (*OBLX_TypePluginDeserializeFunction)(OBLX_TypePluginEndpointData *endpoint_data, void **sample,
                                                          DDS_Boolean *drop_sample, OBLX_CdrStream *stream,
                                                          DDS_Boolean deserialize_encapsulation,
                                                          DDS_Boolean deserialize_sample, void *endpoint_plugin_qos);
typedef DDS_Boolean (*OBLX_TypePluginDeserializeSampleFunction)(OBLX_TypePluginEndpointData *endpoint_data,
                                                                void *sample, OBLX_CdrStream *stream,
                                                                DDS_Boolean deserialize_encapsulation,
                                                                DDS_Boolean deserialize_sample,
                                                                void *endpoint_plugin_qos);
/* The max and min sample sizes and the key's max size. */
typedef DDS_UnsignedLong (*OBLX_TypePluginGetBoundSizeFunction)(OBLX_TypePluginEndpointData *endpoint_data,
                                                                DDS_Boolean include_encapsulation,
                                                                DDS_UnsignedShort encapsulation_id,
                                                                DDS_UnsignedLong current_alignment);
typedef DDS_UnsignedLong (*OBLX_TypePluginGetSampleSizeFunction)(OBLX_TypePluginEndpointData *endpoint_data,
                                                                 DDS_Boolean include_encapsulation,
                                                                 DDS_UnsignedShort encapsulation_id,
                                                                 DDS_UnsignedLong current_alignment,
                                                                 const void *sample);
typedef OBLX_TypePluginKeyKind (*OBLX_TypePluginGetKeyKindFunction)(void);
/* A buffer for `size` serialized bytes, and its return. */
typedef void *(*OBLX_TypePluginGetBufferFunction)(OBLX_TypePluginEndpointData *endpoint_data, DDS_UnsignedLong size);
typedef void (*OBLX_TypePluginReturnBufferFunction)(OBLX_TypePluginEndpointData *endpoint_data, void *buffer);

typedef struct OBLX_TypePlugin {
    OBLX_TypePluginOnParticipantAttachedFunction on_participant_attached;
    OBLX_TypePluginOnParticipantDetachedFunction on_participant_detached;
    OBLX_TypePluginOnEndpointAttachedFunction on_endpoint_attached;
    OBLX_TypePluginOnEndpointDetachedFunction on_endpoint_detached;
    OBLX_TypePluginCopyFunction copy_sample;
    OBLX_TypePluginGetSampleFunction create_sample;     /* OBLX_TypePluginDefaultEndpointData_createSample */
    OBLX_TypePluginReturnSampleFunction destroy_sample; /* OBLX_TypePluginDefaultEndpointData_deleteSample */
    OBLX_TypePluginInstanceToKeyHashFunction instance_to_keyhash;
    OBLX_TypePluginSerializedSampleToKeyHashFunction serialized_sample_to_keyhash;
    OBLX_TypePluginSerializeFunction serialize;
    OBLX_TypePluginDeserializeFunction deserialize;
    OBLX_TypePluginGetSampleFunction get_sample; /* OBLX_TypePluginDefaultEndpointData_getSample */
    OBLX_TypePluginReturnSampleFunction return_sample;
    OBLX_TypePluginGetBoundSizeFunction get_serialized_sample_max_size;
    OBLX_TypePluginGetBoundSizeFunction get_serialized_sample_min_size;
    OBLX_TypePluginGetSampleSizeFunction get_serialized_sample_size;
    OBLX_TypePluginGetKeyKindFunction get_key_kind;
    OBLX_TypePluginGetSampleFunction get_key;       /* OBLX_TypePluginDefaultEndpointData_getKey */
    OBLX_TypePluginReturnSampleFunction return_key; /* OBLX_TypePluginDefaultEndpointData_returnKey */
    OBLX_TypePluginGetBoundSizeFunction get_serialized_key_max_size;
    OBLX_TypePluginCopyFunction instance_to_key;
    OBLX_TypePluginCopyFunction key_to_instance;
    OBLX_TypePluginSerializeFunction serialize_key;
    OBLX_TypePluginDeserializeFunction deserialize_key;
    OBLX_TypePluginDeserializeSampleFunction deserialize_key_sample;
    void (*reserved)(void); /* always null */
    const DDS_TypeCode *type_code;
    OBLX_TypePluginGetBufferFunction get_buffer;       /* OBLX_TypePlugin_getBuffer */
    OBLX_TypePluginReturnBufferFunction return_buffer; /* OBLX_TypePlugin_returnBuffer */
    const char *type_name;                             /* the type's own name, whatever name it is registered under */
    size_t sample_size;                                /* sizeof the C sample */
} OBLX_TypePlugin;

/* ---- Default participant and endpoint data -------------------------------
 *
 * What the per-type attach functions build on. Endpoint data keeps the
 * endpoint's kind, its sample and key factories with a pool of each, for a
 * keyed type a key-hash stream, and for a writer the type's largest
 * serialized sample (without encapsulation), which decides the parameter
 * header form. Pools and the stream are the endpoint's own: one thread at a
 * time uses one endpoint's stream. Every function accepts null endpoint
 * data and then does nothing or returns null / 0. */

/* Creates and destroys one sample (or key holder) of the endpoint's type. */
typedef struct OBLX_TypePluginSampleFactory {
    void *(*create)(void);
    void (*destroy)(void *sample);
} OBLX_TypePluginSampleFactory;

VEXAR_API OBLX_TypePluginParticipantData *OBLX_TypePluginDefaultParticipantData_new(void *registration_data);
VEXAR_API void OBLX_TypePluginDefaultParticipantData_delete(OBLX_TypePluginParticipantData *participant_data);

/* Null when out of memory or a factory lacks a function. */
VEXAR_API OBLX_TypePluginEndpointData *
OBLX_TypePluginDefaultEndpointData_new(OBLX_TypePluginParticipantData *participant_data,
                                       OBLX_TypePluginEndpointKind kind, OBLX_TypePluginSampleFactory samples,
                                       OBLX_TypePluginSampleFactory keys);
/* Destroys the pooled samples and keys, and the key-hash stream. */
VEXAR_API void OBLX_TypePluginDefaultEndpointData_delete(OBLX_TypePluginEndpointData *endpoint_data);
/* READER for null. */
VEXAR_API OBLX_TypePluginEndpointKind
OBLX_TypePluginDefaultEndpointData_getKind(const OBLX_TypePluginEndpointData *endpoint_data);

/* A stream over a zeroed buffer of `size` bytes, replacing any earlier one. */
VEXAR_API DDS_Boolean OBLX_TypePluginDefaultEndpointData_createKeyHashStream(OBLX_TypePluginEndpointData *endpoint_data,
                                                                             DDS_UnsignedLong size);
/* Null when none was created. */
VEXAR_API OBLX_CdrStream *
OBLX_TypePluginDefaultEndpointData_getKeyHashStream(OBLX_TypePluginEndpointData *endpoint_data);

VEXAR_API void OBLX_TypePluginDefaultEndpointData_setMaxSerializedSampleSize(OBLX_TypePluginEndpointData *endpoint_data,
                                                                             DDS_UnsignedLong size);
/* 0 for a reader. */
VEXAR_API DDS_UnsignedLong
OBLX_TypePluginDefaultEndpointData_getMaxSerializedSampleSize(const OBLX_TypePluginEndpointData *endpoint_data);

/* A new sample from the factory, and its destruction. */
VEXAR_API void *OBLX_TypePluginDefaultEndpointData_createSample(OBLX_TypePluginEndpointData *endpoint_data);
VEXAR_API void OBLX_TypePluginDefaultEndpointData_deleteSample(OBLX_TypePluginEndpointData *endpoint_data,
                                                               void *sample);
/* A sample from the pool (a new one when the pool is empty), and back. */
VEXAR_API void *OBLX_TypePluginDefaultEndpointData_getSample(OBLX_TypePluginEndpointData *endpoint_data);
VEXAR_API void OBLX_TypePluginDefaultEndpointData_returnSample(OBLX_TypePluginEndpointData *endpoint_data,
                                                               void *sample);
/* The same for key holders. */
VEXAR_API void *OBLX_TypePluginDefaultEndpointData_getKey(OBLX_TypePluginEndpointData *endpoint_data);
VEXAR_API void OBLX_TypePluginDefaultEndpointData_returnKey(OBLX_TypePluginEndpointData *endpoint_data, void *key);

/* A heap buffer of `size` bytes aligned for any CDR value, and its release.
 * The endpoint data is not used. */
VEXAR_API void *OBLX_TypePlugin_getBuffer(OBLX_TypePluginEndpointData *endpoint_data, DDS_UnsignedLong size);
VEXAR_API void OBLX_TypePlugin_returnBuffer(OBLX_TypePluginEndpointData *endpoint_data, void *buffer);

VEXAR_END_DECLS

#endif
