/* The data writer: its listener and status, and the untyped operations that
 * the typed writers (<Type>DataWriter_*) forward to. Samples are passed as
 * untyped pointers to C samples of the writer's type; the typed layer
 * checks the type.
 *
 * Instance handles: DDS_HANDLE_NIL lets the writer find the instance from
 * the sample's key; any other handle must be the one that register_instance
 * or lookup_instance gave for the sample's key, else the call returns
 * DDS_RETCODE_BAD_PARAMETER.
 *
 * Timestamps: the _w_timestamp forms stamp the sample with `source_timestamp`
 * (which readers see in DDS_SampleInfo.source_timestamp); the others use the
 * current time. A timestamp must be a valid, non-negative time. */
#ifndef VEXAR_PLATFORM_DATA_WRITER_H
#define VEXAR_PLATFORM_DATA_WRITER_H

#include "platform/dds/entity.h"
#include "platform/dds/listener.h"
#include "platform/dds/qos.h"

VEXAR_BEGIN_DECLS

/* What the _w_params forms take: the instance handle and the source
 * timestamp (DDS_TIME_INVALID_SEC/_NSEC for the current time). */
typedef struct DDS_WriteParams_t {
    DDS_InstanceHandle_t handle;
    DDS_Time_t source_timestamp;
} DDS_WriteParams_t;

#define DDS_WRITEPARAMS_DEFAULT                                         \
    {                                                                   \
        DDS_HANDLE_NIL, { DDS_TIME_INVALID_SEC, DDS_TIME_INVALID_NSEC } \
    }

VEXAR_API DDS_Entity *DDS_DataWriter_as_entity(DDS_DataWriter *self);
VEXAR_API DDS_Topic *DDS_DataWriter_get_topic(DDS_DataWriter *self);
VEXAR_API DDS_Publisher *DDS_DataWriter_get_publisher(DDS_DataWriter *self);
/* The writer's QoS into `qos`, an initialized record, as the writer was
 * created with it (platform/dds/qos.h says where Cyclone holds otherwise). */
VEXAR_API DDS_ReturnCode_t DDS_DataWriter_get_qos(DDS_DataWriter *self, DDS_DataWriterQos *qos);

/* Sends at once what a batched writer (QoS batch.enable) has packed so far;
 * see platform/dds/qos.h. Harmless on any writer. */
VEXAR_API DDS_ReturnCode_t DDS_DataWriter_flush(DDS_DataWriter *self);

/* Waits until every sample written so far is acknowledged by the matched
 * reliable readers, at most `max_wait` (DDS_DURATION_INFINITE: without
 * limit). DDS_RETCODE_OK, DDS_RETCODE_TIMEOUT when some sample is still
 * unacknowledged then (not reported), DDS_RETCODE_BAD_PARAMETER for a null
 * or invalid duration. Send what a batched writer holds first (flush). */
VEXAR_API DDS_ReturnCode_t DDS_DataWriter_wait_for_acknowledgments(DDS_DataWriter *self,
                                                                   const DDS_Duration_t *max_wait);

/* Replaces the listener: `listener` null (or mask 0) removes it. The record
 * is copied. Waits for a callback in progress, so never call it from the
 * writer's own callback. */
VEXAR_API DDS_ReturnCode_t DDS_DataWriter_set_listener(DDS_DataWriter *self, const DDS_DataWriterListener *listener,
                                                       DDS_StatusMask mask);
/* The installed listener, or an empty one. */
VEXAR_API DDS_DataWriterListener DDS_DataWriter_get_listener(DDS_DataWriter *self);

/* Reads (and resets the _change fields of) the publication-matched status. */
VEXAR_API DDS_ReturnCode_t DDS_DataWriter_get_publication_matched_status(DDS_DataWriter *self,
                                                                         DDS_PublicationMatchedStatus *status);

/* Whether the writer's type is the one named `type_name` (the type's own
 * name, as its plugin record carries it, whatever name the type was
 * registered under). */
VEXAR_API DDS_Boolean DDS_DataWriter_compare_typeI(DDS_DataWriter *self, const char *type_name);

/* ---- Untyped operations ---------------------------------------------------- */

VEXAR_API DDS_ReturnCode_t DDS_DataWriter_write_untypedI(DDS_DataWriter *self, const void *instance_data,
                                                         DDS_InstanceHandle_t handle);
VEXAR_API DDS_ReturnCode_t DDS_DataWriter_write_w_timestamp_untypedI(DDS_DataWriter *self, const void *instance_data,
                                                                     DDS_InstanceHandle_t handle,
                                                                     const DDS_Time_t *source_timestamp);
VEXAR_API DDS_ReturnCode_t DDS_DataWriter_write_w_params_untypedI(DDS_DataWriter *self, const void *instance_data,
                                                                  const DDS_WriteParams_t *params);

/* The instance's handle, DDS_HANDLE_NIL on failure (reported). */
VEXAR_API DDS_InstanceHandle_t DDS_DataWriter_register_instance_untypedI(DDS_DataWriter *self,
                                                                         const void *instance_data);
VEXAR_API DDS_InstanceHandle_t DDS_DataWriter_register_instance_w_timestamp_untypedI(
    DDS_DataWriter *self, const void *instance_data, const DDS_Time_t *source_timestamp);
VEXAR_API DDS_InstanceHandle_t DDS_DataWriter_register_instance_w_params_untypedI(DDS_DataWriter *self,
                                                                                  const void *instance_data,
                                                                                  const DDS_WriteParams_t *params);

/* `instance_data` may be null when `handle` is given. */
VEXAR_API DDS_ReturnCode_t DDS_DataWriter_unregister_instance_untypedI(DDS_DataWriter *self, const void *instance_data,
                                                                       DDS_InstanceHandle_t handle);
VEXAR_API DDS_ReturnCode_t DDS_DataWriter_unregister_instance_w_timestamp_untypedI(DDS_DataWriter *self,
                                                                                   const void *instance_data,
                                                                                   DDS_InstanceHandle_t handle,
                                                                                   const DDS_Time_t *source_timestamp);
VEXAR_API DDS_ReturnCode_t DDS_DataWriter_unregister_instance_w_params_untypedI(DDS_DataWriter *self,
                                                                                const void *instance_data,
                                                                                const DDS_WriteParams_t *params);

/* `instance_data` may be null when `handle` is given. */
VEXAR_API DDS_ReturnCode_t DDS_DataWriter_dispose_untypedI(DDS_DataWriter *self, const void *instance_data,
                                                           DDS_InstanceHandle_t handle);
VEXAR_API DDS_ReturnCode_t DDS_DataWriter_dispose_w_timestamp_untypedI(DDS_DataWriter *self, const void *instance_data,
                                                                       DDS_InstanceHandle_t handle,
                                                                       const DDS_Time_t *source_timestamp);
VEXAR_API DDS_ReturnCode_t DDS_DataWriter_dispose_w_params_untypedI(DDS_DataWriter *self, const void *instance_data,
                                                                    const DDS_WriteParams_t *params);

/* Fills the key members of `key_holder` (an initialized sample, whose other
 * members are reset) with the instance's key. */
VEXAR_API DDS_ReturnCode_t DDS_DataWriter_get_key_value_untypedI(DDS_DataWriter *self, void *key_holder,
                                                                 DDS_InstanceHandle_t handle);
/* The handle of the instance with `key_holder`'s key, DDS_HANDLE_NIL when the
 * writer does not know it. */
VEXAR_API DDS_InstanceHandle_t DDS_DataWriter_lookup_instance_untypedI(DDS_DataWriter *self, const void *key_holder);

VEXAR_END_DECLS

#endif
