// The data reader on Cyclone: listener, status, read conditions, the next
// sample, and the key operations. Read and take are in reader_read.cpp.
#include "platform/dds/entity.hpp"

#include "platform/dds/endpoint_listener.hpp"
#include "platform/dds/sample_states.hpp"

namespace vexar::dds {
namespace {

// Cyclone creates and deletes a condition under its reader lock and then
// its cache lock; the loan mutex keeps that apart from a loaned take, which
// takes them the other way round (see reader_read.cpp).
DDS_ReadCondition *createReadCondition(DDS_DataReaderImpl &reader, std::uint32_t states, const char *context) {
    auto condition = std::make_unique<DDS_ReadConditionImpl>(reader, states);
    {
        std::lock_guard lock(reader.loanMutex);
        condition->handle = dds_create_readcondition(reader.handle, states);
    }
    if (condition->handle < 0) {
        reportCycloneFailure(context, "dds_create_readcondition", condition->handle);
        return nullptr;
    }
    std::lock_guard lock(reader.subscriber.participant->mutex);
    reader.conditions.push_back(std::move(condition));
    return reader.conditions.back().get();
}

DDS_ReturnCode_t deleteReadCondition(DDS_DataReaderImpl &reader, DDS_ReadConditionImpl *condition,
                                     const char *context) {
    std::unique_ptr<DDS_ReadConditionImpl> owned;
    {
        std::lock_guard lock(reader.subscriber.participant->mutex);
        owned = unlink(reader.conditions, condition);
    }
    if (owned == nullptr) {
        reportBadEntity(context, "condition (of another reader)");
        return DDS_RETCODE_PRECONDITION_NOT_MET;
    }
    dds_return_t deleted = 0;
    {
        std::lock_guard lock(reader.loanMutex);
        deleted = dds_delete(owned->handle);
    }
    return deleted < 0 ? reportCycloneFailure(context, "dds_delete", deleted) : DDS_RETCODE_OK;
}

DDS_ReturnCode_t readOrTakeNextSample(DDS_DataReaderImpl &reader, void *sample, DDS_SampleInfo &info, bool take,
                                      const char *context) noexcept {
    void *samples[1] = {sample};
    dds_sample_info_t cycloneInfo;
    dds_return_t result = take ? dds_take_next(reader.handle, samples, &cycloneInfo)
                               : dds_read_next(reader.handle, samples, &cycloneInfo);
    if (result < 0) return reportCycloneFailure(context, take ? "dds_take_next" : "dds_read_next", result);
    if (result == 0) return DDS_RETCODE_NO_DATA;
    info = fromCyclone(cycloneInfo);
    return DDS_RETCODE_OK;
}

}  // namespace
}  // namespace vexar::dds

using namespace vexar::dds;

extern "C" {

DDS_Entity *DDS_DataReader_as_entity(DDS_DataReader *self) { return checked(self, "DDS_DataReader_as_entity"); }

DDS_TopicDescription *DDS_DataReader_get_topicdescription(DDS_DataReader *self) {
    return checked(self, "DDS_DataReader_get_topicdescription") != nullptr ? &self->description : nullptr;
}

DDS_Subscriber *DDS_DataReader_get_subscriber(DDS_DataReader *self) {
    return checked(self, "DDS_DataReader_get_subscriber") != nullptr ? &self->subscriber : nullptr;
}

DDS_ReturnCode_t DDS_DataReader_get_qos(DDS_DataReader *self, DDS_DataReaderQos *qos) {
    const char *context = "DDS_DataReader_get_qos";
    if (checked(self, context) == nullptr) return DDS_RETCODE_BAD_PARAMETER;
    return readQos(self->handle, qos, context);
}

DDS_ReturnCode_t DDS_DataReader_set_listener(DDS_DataReader *self, const DDS_DataReaderListener *listener,
                                             DDS_StatusMask mask) {
    const char *context = "DDS_DataReader_set_listener";
    if (checked(self, context) == nullptr) return DDS_RETCODE_BAD_PARAMETER;
    return installListener(*self, listener, mask, context);
}

DDS_DataReaderListener DDS_DataReader_get_listener(DDS_DataReader *self) {
    if (checked(self, "DDS_DataReader_get_listener") == nullptr) return DDS_DataReaderListener_INITIALIZER;
    return self->listener.get();
}

DDS_ReturnCode_t DDS_DataReader_get_subscription_matched_status(DDS_DataReader *self,
                                                                DDS_SubscriptionMatchedStatus *status) {
    const char *context = "DDS_DataReader_get_subscription_matched_status";
    if (checked(self, context) == nullptr) return DDS_RETCODE_BAD_PARAMETER;
    return readMatchedStatus(self->handle, status, dds_get_subscription_matched_status, context);
}

DDS_ReturnCode_t DDS_DataReader_get_sample_lost_status(DDS_DataReader *self, DDS_SampleLostStatus *status) {
    const char *context = "DDS_DataReader_get_sample_lost_status";
    if (checked(self, context) == nullptr || !isGiven(status, context, "status")) return DDS_RETCODE_BAD_PARAMETER;
    dds_sample_lost_status_t lost;
    dds_return_t result = dds_get_sample_lost_status(self->handle, &lost);
    if (result < 0) return reportCycloneFailure(context, "dds_get_sample_lost_status", result);
    *status = {static_cast<DDS_Long>(lost.total_count), static_cast<DDS_Long>(lost.total_count_change)};
    return DDS_RETCODE_OK;
}

DDS_Boolean DDS_DataReader_compare_typeI(DDS_DataReader *self, const char *type_name) {
    if (checked(self, "DDS_DataReader_compare_typeI") == nullptr) return DDS_BOOLEAN_FALSE;
    return isOfType(self->description, type_name) ? DDS_BOOLEAN_TRUE : DDS_BOOLEAN_FALSE;
}

DDS_ReadCondition *DDS_DataReader_create_readcondition(DDS_DataReader *self, DDS_SampleStateMask sample_states,
                                                       DDS_ViewStateMask view_states,
                                                       DDS_InstanceStateMask instance_states) {
    const char *context = "DDS_DataReader_create_readcondition";
    if (checked(self, context) == nullptr) return nullptr;
    std::optional<std::uint32_t> states = toCycloneStates(sample_states, view_states, instance_states);
    if (!states) {
        OBLX_Report_badParameter(context, "states (select nothing)");
        return nullptr;
    }
    return guarded(context, static_cast<DDS_ReadCondition *>(nullptr),
                   [&] { return createReadCondition(*self, *states, context); });
}

DDS_ReturnCode_t DDS_DataReader_delete_readcondition(DDS_DataReader *self, DDS_ReadCondition *condition) {
    const char *context = "DDS_DataReader_delete_readcondition";
    if (checked(self, context) == nullptr || checked(condition, context, "condition") == nullptr) {
        return DDS_RETCODE_BAD_PARAMETER;
    }
    return guarded(context, DDS_RETCODE_ERROR, [&] { return deleteReadCondition(*self, condition, context); });
}

DDS_ReturnCode_t DDS_DataReader_read_or_take_next_sample_untypedI(DDS_DataReader *self, void *received_data,
                                                                  DDS_SampleInfo *sample_info, DDS_Boolean take) {
    const char *context = "DDS_DataReader_read_or_take_next_sample_untypedI";
    if (checked(self, context) == nullptr) return DDS_RETCODE_BAD_PARAMETER;
    if (received_data == nullptr || sample_info == nullptr) {
        OBLX_Report_badParameter(context, received_data == nullptr ? "received_data" : "sample_info");
        return DDS_RETCODE_BAD_PARAMETER;
    }
    return readOrTakeNextSample(*self, received_data, *sample_info, take != DDS_BOOLEAN_FALSE, context);
}

DDS_ReturnCode_t DDS_DataReader_get_key_value_untypedI(DDS_DataReader *self, void *key_holder,
                                                       DDS_InstanceHandle_t handle) {
    const char *context = "DDS_DataReader_get_key_value_untypedI";
    if (checked(self, context) == nullptr) return DDS_RETCODE_BAD_PARAMETER;
    return getKeyValue(*self, key_holder, handle, context);
}

DDS_InstanceHandle_t DDS_DataReader_lookup_instance_untypedI(DDS_DataReader *self, const void *key_holder) {
    const char *context = "DDS_DataReader_lookup_instance_untypedI";
    if (checked(self, context) == nullptr) return DDS_HANDLE_NIL;
    return lookupInstance(*self, key_holder, context);
}

DDS_ReturnCode_t DDS_DataReader_add_sample_to_remote_writer_queue_untypedI(DDS_DataReader *, const void *,
                                                                           const DDS_GUID_t *) {
    OBLX_Report_unsupported("DDS_DataReader_add_sample_to_remote_writer_queue_untypedI",
                            "injecting a sample as if a remote writer had sent it");
    return DDS_RETCODE_UNSUPPORTED;
}

}  // extern "C"
