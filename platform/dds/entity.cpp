// What every entity shares: kind checks, result and time conversions,
// plugin endpoint data, and the operations on any entity.
#include "platform/dds/entity.hpp"

#include <cstdio>
#include <cstring>

#include "platform/log/report.h"

namespace vexar::dds {

DDS_ReturnCode_t fromCycloneResult(dds_return_t result) noexcept {
    if (result >= 0) return DDS_RETCODE_OK;
    if (result >= -DDS_RETCODE_ILLEGAL_OPERATION) return -result;
    return DDS_RETCODE_ERROR;
}

std::optional<dds_time_t> toCycloneTime(const DDS_Time_t &time) noexcept {
    if (time.sec < 0 || time.nanosec >= kNanosecondsPerSecond) return std::nullopt;
    return static_cast<dds_time_t>(time.sec) * kNanosecondsPerSecond + time.nanosec;
}

DDS_Time_t fromCycloneTime(dds_time_t time) noexcept {
    if (time < 0) return DDS_Time_t{DDS_TIME_INVALID_SEC, DDS_TIME_INVALID_NSEC};
    return DDS_Time_t{static_cast<DDS_Long>(time / kNanosecondsPerSecond),
                      static_cast<DDS_UnsignedLong>(time % kNanosecondsPerSecond)};
}

void reportBadEntity(const char *context, const char *argument) noexcept {
    OBLX_Report_badParameter(context, argument);
}

DDS_ReturnCode_t reportCycloneFailure(const char *context, const char *operation, dds_return_t result,
                                      const char *detail) noexcept {
    char text[1024];
    std::snprintf(text, sizeof text, "%s: %s%s", operation, dds_strretcode(result), detail);
    OBLX_Report_failure(context, text);
    return fromCycloneResult(result);
}

bool acceptsNoCallbacks(const void *listener, DDS_StatusMask mask, const char *context) noexcept {
    if (listener == nullptr || mask == DDS_STATUS_MASK_NONE) return true;
    OBLX_Report_unsupported(context, "listener callbacks on this entity");
    return false;
}

void detachParticipant(TypeRegistration &type) noexcept {
    if (type.plugin.on_participant_detached != nullptr) type.plugin.on_participant_detached(type.participantData);
    type.participantData = nullptr;
}

OBLX_TypePluginEndpointData *attachEndpoint(TypeRegistration &type, OBLX_TypePluginEndpointKind kind) noexcept {
    if (type.plugin.on_endpoint_attached == nullptr) return nullptr;
    return type.plugin.on_endpoint_attached(type.participantData, kind);
}

void detachEndpoint(TypeRegistration &type, OBLX_TypePluginEndpointData *data) noexcept {
    if (data != nullptr && type.plugin.on_endpoint_detached != nullptr) type.plugin.on_endpoint_detached(data);
}

DDS_ReturnCode_t getKeyValue(const DDS_EntityImpl &endpoint, void *keyHolder, DDS_InstanceHandle_t handle,
                             const char *context) noexcept {
    if (keyHolder == nullptr || handle == DDS_HANDLE_NIL) {
        OBLX_Report_badParameter(context, keyHolder == nullptr ? "key_holder" : "handle");
        return DDS_RETCODE_BAD_PARAMETER;
    }
    dds_return_t result = dds_instance_get_key(endpoint.handle, handle, keyHolder);
    return result < 0 ? reportCycloneFailure(context, "dds_instance_get_key", result) : DDS_RETCODE_OK;
}

DDS_InstanceHandle_t lookupInstance(const DDS_EntityImpl &endpoint, const void *keyHolder,
                                    const char *context) noexcept {
    if (keyHolder == nullptr) {
        OBLX_Report_badParameter(context, "key_holder");
        return DDS_HANDLE_NIL;
    }
    return dds_lookup_instance(endpoint.handle, keyHolder);
}

bool isOfType(const DDS_TopicDescriptionImpl &topic, const char *typeName) noexcept {
    const char *own = topic.type.plugin.type_name;
    return typeName != nullptr && own != nullptr && std::strcmp(own, typeName) == 0;
}

namespace {

bool isEntity(const DDS_Entity *entity) noexcept {
    if (entity == nullptr) return false;
    auto kind = static_cast<std::uint32_t>(entity->kind);
    return kind >= static_cast<std::uint32_t>(EntityKind::participant) &&
           kind <= static_cast<std::uint32_t>(EntityKind::readCondition);
}

}  // namespace
}  // namespace vexar::dds

using namespace vexar::dds;

extern "C" {

DDS_Boolean DDS_Entity_is_enabled(const DDS_Entity *self) {
    if (!isEntity(self)) {
        reportBadEntity("DDS_Entity_is_enabled", "self");
        return DDS_BOOLEAN_FALSE;
    }
    return DDS_BOOLEAN_TRUE;
}

DDS_InstanceHandle_t DDS_Entity_get_instance_handle(const DDS_Entity *self) {
    dds_instance_handle_t handle = DDS_HANDLE_NIL;
    if (!isEntity(self)) {
        reportBadEntity("DDS_Entity_get_instance_handle", "self");
        return DDS_HANDLE_NIL;
    }
    if (dds_get_instance_handle(self->handle, &handle) < 0) return DDS_HANDLE_NIL;
    return handle;
}

DDS_Boolean DDS_InstanceHandle_is_nil(DDS_InstanceHandle_t handle) {
    return handle == DDS_HANDLE_NIL ? DDS_BOOLEAN_TRUE : DDS_BOOLEAN_FALSE;
}

}  // extern "C"
