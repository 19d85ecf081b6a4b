// The data writer on Cyclone: listener, status, and the untyped write,
// register, unregister, dispose and key operations.
//
// Registration is local in Cyclone (nothing goes on the wire), so the
// timestamp of register_instance_w_timestamp has no effect.
#include "platform/dds/entity.hpp"

#include "platform/dds/endpoint_listener.hpp"
#include "platform/dds/qos_cyclone.hpp"
#include "platform/dds/write_batching.hpp"

namespace vexar::dds {
namespace {

// The source timestamp to stamp with: `given`, or now when it is null.
// Empty, reported, for an invalid time.
std::optional<dds_time_t> timestampOf(const DDS_Time_t *given, const char *context) noexcept {
    if (given == nullptr) return dds_time();
    std::optional<dds_time_t> time = toCycloneTime(*given);
    if (!time) OBLX_Report_badParameter(context, "source_timestamp");
    return time;
}

// The timestamp that write parameters carry; DDS_TIME_INVALID means now.
const DDS_Time_t *timestampIn(const DDS_WriteParams_t &params) noexcept {
    const DDS_Time_t &time = params.source_timestamp;
    bool invalid = time.sec == DDS_TIME_INVALID_SEC && time.nanosec == DDS_TIME_INVALID_NSEC;
    return invalid ? nullptr : &time;
}

// A writer, and a sample or a handle that names its instance. A given
// handle must be the sample's own when both are there.
bool checkInstance(DDS_DataWriterImpl *writer, const void *sample, DDS_InstanceHandle_t handle, const char *context,
                   bool sampleRequired = false) noexcept {
    if (checked(writer, context) == nullptr) return false;
    if (sample == nullptr && (sampleRequired || handle == DDS_HANDLE_NIL)) {
        OBLX_Report_badParameter(context, "instance_data");
        return false;
    }
    if (sample != nullptr && handle != DDS_HANDLE_NIL && dds_lookup_instance(writer->handle, sample) != handle) {
        OBLX_Report_badParameter(context, "handle (not the sample's instance)");
        return false;
    }
    return true;
}

// The result of a write, dispose or unregister that went to Cyclone.
DDS_ReturnCode_t sent(const DDS_DataWriterImpl &writer, dds_return_t result, const char *context,
                      const char *operation) noexcept {
    flushUnbatched(writer.handle, writer.batched.load(std::memory_order_relaxed));
    return result < 0 ? reportCycloneFailure(context, operation, result) : DDS_RETCODE_OK;
}

DDS_ReturnCode_t write(DDS_DataWriterImpl *writer, const void *sample, DDS_InstanceHandle_t handle,
                       const DDS_Time_t *timestamp, const char *context) noexcept {
    if (!checkInstance(writer, sample, handle, context, true)) return DDS_RETCODE_BAD_PARAMETER;
    std::optional<dds_time_t> time = timestampOf(timestamp, context);
    if (!time) return DDS_RETCODE_BAD_PARAMETER;
    dds_return_t result = dds_write_ts(writer->handle, sample, *time);
    // A full history of a reliable writer is a time-out, not a failure to report.
    if (result == -DDS_RETCODE_TIMEOUT) return DDS_RETCODE_TIMEOUT;
    return sent(*writer, result, context, "dds_write_ts");
}

DDS_InstanceHandle_t registerInstance(DDS_DataWriterImpl *writer, const void *sample, const DDS_Time_t *timestamp,
                                      const char *context) noexcept {
    if (checked(writer, context) == nullptr) return DDS_HANDLE_NIL;
    if (!isGiven(sample, context, "instance_data")) return DDS_HANDLE_NIL;
    if (!timestampOf(timestamp, context)) return DDS_HANDLE_NIL;
    dds_instance_handle_t handle = DDS_HANDLE_NIL;
    dds_return_t result = dds_register_instance(writer->handle, &handle, sample);
    if (result < 0) {
        reportCycloneFailure(context, "dds_register_instance", result);
        return DDS_HANDLE_NIL;
    }
    return handle;
}

DDS_ReturnCode_t unregisterInstance(DDS_DataWriterImpl *writer, const void *sample, DDS_InstanceHandle_t handle,
                                    const DDS_Time_t *timestamp, const char *context) noexcept {
    if (!checkInstance(writer, sample, handle, context)) return DDS_RETCODE_BAD_PARAMETER;
    std::optional<dds_time_t> time = timestampOf(timestamp, context);
    if (!time) return DDS_RETCODE_BAD_PARAMETER;
    if (handle != DDS_HANDLE_NIL) {
        return sent(*writer, dds_unregister_instance_ih_ts(writer->handle, handle, *time), context,
                    "dds_unregister_instance_ih_ts");
    }
    return sent(*writer, dds_unregister_instance_ts(writer->handle, sample, *time), context,
                "dds_unregister_instance_ts");
}

DDS_ReturnCode_t dispose(DDS_DataWriterImpl *writer, const void *sample, DDS_InstanceHandle_t handle,
                         const DDS_Time_t *timestamp, const char *context) noexcept {
    if (!checkInstance(writer, sample, handle, context)) return DDS_RETCODE_BAD_PARAMETER;
    std::optional<dds_time_t> time = timestampOf(timestamp, context);
    if (!time) return DDS_RETCODE_BAD_PARAMETER;
    if (handle != DDS_HANDLE_NIL) {
        return sent(*writer, dds_dispose_ih_ts(writer->handle, handle, *time), context, "dds_dispose_ih_ts");
    }
    return sent(*writer, dds_dispose_ts(writer->handle, sample, *time), context, "dds_dispose_ts");
}

}  // namespace

}  // namespace vexar::dds

using namespace vexar::dds;

extern "C" {

DDS_Entity *DDS_DataWriter_as_entity(DDS_DataWriter *self) { return checked(self, "DDS_DataWriter_as_entity"); }

DDS_Topic *DDS_DataWriter_get_topic(DDS_DataWriter *self) {
    return checked(self, "DDS_DataWriter_get_topic") != nullptr ? &self->topic : nullptr;
}

DDS_Publisher *DDS_DataWriter_get_publisher(DDS_DataWriter *self) {
    return checked(self, "DDS_DataWriter_get_publisher") != nullptr ? &self->publisher : nullptr;
}

DDS_ReturnCode_t DDS_DataWriter_get_qos(DDS_DataWriter *self, DDS_DataWriterQos *qos) {
    const char *context = "DDS_DataWriter_get_qos";
    if (checked(self, context) == nullptr) return DDS_RETCODE_BAD_PARAMETER;
    DDS_ReturnCode_t result = readQos(self->handle, qos, context);
    if (result != DDS_RETCODE_OK) return result;
    qos->batch.enable = self->batched.load() ? DDS_BOOLEAN_TRUE : DDS_BOOLEAN_FALSE;
    qos->durability_service = self->durabilityService;
    return result;
}

DDS_ReturnCode_t DDS_DataWriter_flush(DDS_DataWriter *self) {
    if (checked(self, "DDS_DataWriter_flush") == nullptr) return DDS_RETCODE_BAD_PARAMETER;
    dds_write_flush(self->handle);
    return DDS_RETCODE_OK;
}

DDS_ReturnCode_t DDS_DataWriter_wait_for_acknowledgments(DDS_DataWriter *self, const DDS_Duration_t *max_wait) {
    const char *context = "DDS_DataWriter_wait_for_acknowledgments";
    if (checked(self, context) == nullptr) return DDS_RETCODE_BAD_PARAMETER;
    std::optional<dds_duration_t> timeout = max_wait != nullptr ? toCycloneDuration(*max_wait) : std::nullopt;
    if (!timeout) {
        OBLX_Report_badParameter(context, "max_wait");
        return DDS_RETCODE_BAD_PARAMETER;
    }
    dds_return_t result = dds_wait_for_acks(self->handle, *timeout);
    // Readers that are slow to acknowledge are the caller's to judge.
    if (result == -DDS_RETCODE_TIMEOUT) return DDS_RETCODE_TIMEOUT;
    return result < 0 ? reportCycloneFailure(context, "dds_wait_for_acks", result) : DDS_RETCODE_OK;
}

DDS_ReturnCode_t DDS_DataWriter_set_listener(DDS_DataWriter *self, const DDS_DataWriterListener *listener,
                                             DDS_StatusMask mask) {
    const char *context = "DDS_DataWriter_set_listener";
    if (checked(self, context) == nullptr) return DDS_RETCODE_BAD_PARAMETER;
    return installListener(*self, listener, mask, context);
}

DDS_DataWriterListener DDS_DataWriter_get_listener(DDS_DataWriter *self) {
    if (checked(self, "DDS_DataWriter_get_listener") == nullptr) return DDS_DataWriterListener_INITIALIZER;
    return self->listener.get();
}

DDS_ReturnCode_t DDS_DataWriter_get_publication_matched_status(DDS_DataWriter *self,
                                                               DDS_PublicationMatchedStatus *status) {
    const char *context = "DDS_DataWriter_get_publication_matched_status";
    if (checked(self, context) == nullptr) return DDS_RETCODE_BAD_PARAMETER;
    return readMatchedStatus(self->handle, status, dds_get_publication_matched_status, context);
}

DDS_Boolean DDS_DataWriter_compare_typeI(DDS_DataWriter *self, const char *type_name) {
    if (checked(self, "DDS_DataWriter_compare_typeI") == nullptr) return DDS_BOOLEAN_FALSE;
    return isOfType(self->topic, type_name) ? DDS_BOOLEAN_TRUE : DDS_BOOLEAN_FALSE;
}

DDS_ReturnCode_t DDS_DataWriter_write_untypedI(DDS_DataWriter *self, const void *instance_data,
                                               DDS_InstanceHandle_t handle) {
    return write(self, instance_data, handle, nullptr, "DDS_DataWriter_write_untypedI");
}

DDS_ReturnCode_t DDS_DataWriter_write_w_timestamp_untypedI(DDS_DataWriter *self, const void *instance_data,
                                                           DDS_InstanceHandle_t handle,
                                                           const DDS_Time_t *source_timestamp) {
    const char *context = "DDS_DataWriter_write_w_timestamp_untypedI";
    if (!isGiven(source_timestamp, context, "source_timestamp")) return DDS_RETCODE_BAD_PARAMETER;
    return write(self, instance_data, handle, source_timestamp, context);
}

DDS_ReturnCode_t DDS_DataWriter_write_w_params_untypedI(DDS_DataWriter *self, const void *instance_data,
                                                        const DDS_WriteParams_t *params) {
    const char *context = "DDS_DataWriter_write_w_params_untypedI";
    if (!isGiven(params, context, "params")) return DDS_RETCODE_BAD_PARAMETER;
    return write(self, instance_data, params->handle, timestampIn(*params), context);
}

DDS_InstanceHandle_t DDS_DataWriter_register_instance_untypedI(DDS_DataWriter *self, const void *instance_data) {
    return registerInstance(self, instance_data, nullptr, "DDS_DataWriter_register_instance_untypedI");
}

DDS_InstanceHandle_t DDS_DataWriter_register_instance_w_timestamp_untypedI(DDS_DataWriter *self,
                                                                           const void *instance_data,
                                                                           const DDS_Time_t *source_timestamp) {
    const char *context = "DDS_DataWriter_register_instance_w_timestamp_untypedI";
    if (!isGiven(source_timestamp, context, "source_timestamp")) return DDS_HANDLE_NIL;
    return registerInstance(self, instance_data, source_timestamp, context);
}

DDS_InstanceHandle_t DDS_DataWriter_register_instance_w_params_untypedI(DDS_DataWriter *self, const void *instance_data,
                                                                        const DDS_WriteParams_t *params) {
    const char *context = "DDS_DataWriter_register_instance_w_params_untypedI";
    if (!isGiven(params, context, "params")) return DDS_HANDLE_NIL;
    return registerInstance(self, instance_data, timestampIn(*params), context);
}

DDS_ReturnCode_t DDS_DataWriter_unregister_instance_untypedI(DDS_DataWriter *self, const void *instance_data,
                                                             DDS_InstanceHandle_t handle) {
    return unregisterInstance(self, instance_data, handle, nullptr, "DDS_DataWriter_unregister_instance_untypedI");
}

DDS_ReturnCode_t DDS_DataWriter_unregister_instance_w_timestamp_untypedI(DDS_DataWriter *self,
                                                                         const void *instance_data,
                                                                         DDS_InstanceHandle_t handle,
                                                                         const DDS_Time_t *source_timestamp) {
    const char *context = "DDS_DataWriter_unregister_instance_w_timestamp_untypedI";
    if (!isGiven(source_timestamp, context, "source_timestamp")) return DDS_RETCODE_BAD_PARAMETER;
    return unregisterInstance(self, instance_data, handle, source_timestamp, context);
}

DDS_ReturnCode_t DDS_DataWriter_unregister_instance_w_params_untypedI(DDS_DataWriter *self, const void *instance_data,
                                                                      const DDS_WriteParams_t *params) {
    const char *context = "DDS_DataWriter_unregister_instance_w_params_untypedI";
    if (!isGiven(params, context, "params")) return DDS_RETCODE_BAD_PARAMETER;
    return unregisterInstance(self, instance_data, params->handle, timestampIn(*params), context);
}

DDS_ReturnCode_t DDS_DataWriter_dispose_untypedI(DDS_DataWriter *self, const void *instance_data,
                                                 DDS_InstanceHandle_t handle) {
    return dispose(self, instance_data, handle, nullptr, "DDS_DataWriter_dispose_untypedI");
}

DDS_ReturnCode_t DDS_DataWriter_dispose_w_timestamp_untypedI(DDS_DataWriter *self, const void *instance_data,
                                                             DDS_InstanceHandle_t handle,
                                                             const DDS_Time_t *source_timestamp) {
    const char *context = "DDS_DataWriter_dispose_w_timestamp_untypedI";
    if (!isGiven(source_timestamp, context, "source_timestamp")) return DDS_RETCODE_BAD_PARAMETER;
    return dispose(self, instance_data, handle, source_timestamp, context);
}

DDS_ReturnCode_t DDS_DataWriter_dispose_w_params_untypedI(DDS_DataWriter *self, const void *instance_data,
                                                          const DDS_WriteParams_t *params) {
    const char *context = "DDS_DataWriter_dispose_w_params_untypedI";
    if (!isGiven(params, context, "params")) return DDS_RETCODE_BAD_PARAMETER;
    return dispose(self, instance_data, params->handle, timestampIn(*params), context);
}

DDS_ReturnCode_t DDS_DataWriter_get_key_value_untypedI(DDS_DataWriter *self, void *key_holder,
                                                       DDS_InstanceHandle_t handle) {
    const char *context = "DDS_DataWriter_get_key_value_untypedI";
    if (checked(self, context) == nullptr) return DDS_RETCODE_BAD_PARAMETER;
    return getKeyValue(*self, key_holder, handle, context);
}

DDS_InstanceHandle_t DDS_DataWriter_lookup_instance_untypedI(DDS_DataWriter *self, const void *key_holder) {
    const char *context = "DDS_DataWriter_lookup_instance_untypedI";
    if (checked(self, context) == nullptr) return DDS_HANDLE_NIL;
    return lookupInstance(*self, key_holder, context);
}

}  // extern "C"
