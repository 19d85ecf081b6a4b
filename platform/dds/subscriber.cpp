// The subscriber and the creation and deletion of its readers.
#include "platform/dds/entity.hpp"

#include "platform/dds/endpoint_lifecycle.hpp"
#include "platform/dds/factory_profiles.hpp"

DDS_SubscriberImpl::~DDS_SubscriberImpl() = default;

using namespace vexar::dds;

namespace {

DDS_TopicDescriptionImpl *checkedDescription(DDS_TopicDescription *topic, const char *context) noexcept {
    if (topic == nullptr || (topic->kind != EntityKind::topic && topic->kind != EntityKind::contentFilteredTopic)) {
        reportBadEntity(context, "topic");
        return nullptr;
    }
    return topic;
}

}  // namespace

extern "C" {

DDS_Entity *DDS_Subscriber_as_entity(DDS_Subscriber *self) { return checked(self, "DDS_Subscriber_as_entity"); }

DDS_DomainParticipant *DDS_Subscriber_get_participant(DDS_Subscriber *self) {
    return checked(self, "DDS_Subscriber_get_participant") != nullptr ? self->participant : nullptr;
}

DDS_ReturnCode_t DDS_Subscriber_get_qos(DDS_Subscriber *self, DDS_SubscriberQos *qos) {
    const char *context = "DDS_Subscriber_get_qos";
    if (checked(self, context) == nullptr) return DDS_RETCODE_BAD_PARAMETER;
    DDS_ReturnCode_t result = readQos(self->handle, qos, context);
    if (result == DDS_RETCODE_OK) qos->protocol = self->protocol;  // Cyclone drops it (see entity.hpp)
    return result;
}

DDS_DataReader *DDS_Subscriber_create_datareader(DDS_Subscriber *self, DDS_TopicDescription *topic,
                                                 const DDS_DataReaderQos *qos, const DDS_DataReaderListener *listener,
                                                 DDS_StatusMask mask) {
    const char *context = "DDS_Subscriber_create_datareader";
    if (checked(self, context) == nullptr) return nullptr;
    DDS_TopicDescriptionImpl *description = checkedDescription(topic, context);
    if (description == nullptr) return nullptr;
    return guarded(context, static_cast<DDS_DataReader *>(nullptr), [&]() -> DDS_DataReader * {
        OwnedQos<DDS_DataReaderQos> defaults;
        const DDS_DataReaderQos *chosen = givenOrDefaultQos(qos, defaults, description->name.c_str(), context);
        return chosen != nullptr
                   ? createEndpoint<DDS_DataReaderImpl>(*self, *description, *chosen, listener, mask, context)
                   : nullptr;
    });
}

DDS_ReturnCode_t DDS_Subscriber_delete_datareader(DDS_Subscriber *self, DDS_DataReader *reader) {
    const char *context = "DDS_Subscriber_delete_datareader";
    if (checked(self, context) == nullptr || checked(reader, context, "reader") == nullptr) {
        return DDS_RETCODE_BAD_PARAMETER;
    }
    return guarded(context, DDS_RETCODE_ERROR, [&] { return deleteEndpoint(*self, reader, context); });
}

DDS_ReturnCode_t DDS_Subscriber_delete_contained_entities(DDS_Subscriber *self) {
    const char *context = "DDS_Subscriber_delete_contained_entities";
    if (checked(self, context) == nullptr) return DDS_RETCODE_BAD_PARAMETER;
    return guarded(context, DDS_RETCODE_ERROR, [&] { return deleteEndpoints(*self, context); });
}

}  // extern "C"
