// The publisher and the creation and deletion of its writers.
#include "platform/dds/entity.hpp"

#include "platform/dds/endpoint_lifecycle.hpp"
#include "platform/dds/factory_profiles.hpp"
#include "platform/dds/write_batching.hpp"

DDS_PublisherImpl::~DDS_PublisherImpl() = default;

using namespace vexar::dds;

extern "C" {

DDS_Entity *DDS_Publisher_as_entity(DDS_Publisher *self) { return checked(self, "DDS_Publisher_as_entity"); }

DDS_DomainParticipant *DDS_Publisher_get_participant(DDS_Publisher *self) {
    return checked(self, "DDS_Publisher_get_participant") != nullptr ? self->participant : nullptr;
}

DDS_ReturnCode_t DDS_Publisher_get_qos(DDS_Publisher *self, DDS_PublisherQos *qos) {
    const char *context = "DDS_Publisher_get_qos";
    if (checked(self, context) == nullptr) return DDS_RETCODE_BAD_PARAMETER;
    DDS_ReturnCode_t result = readQos(self->handle, qos, context);
    if (result == DDS_RETCODE_OK) qos->protocol = self->protocol;  // Cyclone drops it (see entity.hpp)
    return result;
}

DDS_DataWriter *DDS_Publisher_create_datawriter(DDS_Publisher *self, DDS_Topic *topic, const DDS_DataWriterQos *qos,
                                                const DDS_DataWriterListener *listener, DDS_StatusMask mask) {
    const char *context = "DDS_Publisher_create_datawriter";
    if (checked(self, context) == nullptr || checked(topic, context, "topic") == nullptr) return nullptr;
    return guarded(context, static_cast<DDS_DataWriter *>(nullptr), [&]() -> DDS_DataWriter * {
        OwnedQos<DDS_DataWriterQos> defaults;
        const DDS_DataWriterQos *chosen = givenOrDefaultQos(qos, defaults, topic->name.c_str(), context);
        if (chosen == nullptr) return nullptr;
        // Before the Cyclone writer exists: it takes its domain's batching switch when created.
        if (chosen->batch.enable) enableWriteBatching(context);
        DDS_DataWriter *writer = createEndpoint<DDS_DataWriterImpl>(*self, *topic, *chosen, listener, mask, context);
        if (writer != nullptr) writer->batched = chosen->batch.enable != DDS_BOOLEAN_FALSE;
        return writer;
    });
}

DDS_ReturnCode_t DDS_Publisher_delete_datawriter(DDS_Publisher *self, DDS_DataWriter *writer) {
    const char *context = "DDS_Publisher_delete_datawriter";
    if (checked(self, context) == nullptr || checked(writer, context, "writer") == nullptr) {
        return DDS_RETCODE_BAD_PARAMETER;
    }
    return guarded(context, DDS_RETCODE_ERROR, [&] { return deleteEndpoint(*self, writer, context); });
}

DDS_ReturnCode_t DDS_Publisher_delete_contained_entities(DDS_Publisher *self) {
    const char *context = "DDS_Publisher_delete_contained_entities";
    if (checked(self, context) == nullptr) return DDS_RETCODE_BAD_PARAMETER;
    return guarded(context, DDS_RETCODE_ERROR, [&] { return deleteEndpoints(*self, context); });
}

}  // extern "C"
