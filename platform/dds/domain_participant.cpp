// The domain participant: adoption of the application's Cyclone
// participant, type registration, publishers and subscribers, deletion of
// what it contains, and its QoS.
#include "platform/dds/entity.hpp"

#include <cstring>

#include "platform/dds/cyclone_sertype.hpp"
#include "platform/dds/endpoint_lifecycle.hpp"
#include "platform/dds/factory_profiles.hpp"
#include "platform/dds/qos_cyclone.hpp"

#include <dds/ddsi/ddsi_sertype.h>

DDS_TopicDescriptionImpl *DDS_DomainParticipantImpl::findDescription(const std::string &name) const noexcept {
    for (const auto &topic : topics) {
        if (topic->name == name) return topic.get();
    }
    for (const auto &filtered : filteredTopics) {
        if (filtered->name == name) return filtered.get();
    }
    return nullptr;
}

namespace vexar::dds {
namespace {

// Whether the bridge can serve the plugin's type: a sertype made from it
// for a moment says so.
bool isBridgeable(const OBLX_TypePlugin &plugin, const char *typeName) noexcept {
    ddsi_sertype *probe = createSertype(&plugin, typeName);
    if (probe == nullptr) return false;
    ddsi_sertype_unref(probe);
    return true;
}

bool samePlugin(const OBLX_TypePlugin &a, const OBLX_TypePlugin &b) noexcept {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

DDS_ReturnCode_t registerType(DDS_DomainParticipantImpl &participant, const char *typeName,
                              const OBLX_TypePlugin &plugin, void *registrationData, const char *context) {
    std::lock_guard lock(participant.mutex);
    auto existing = participant.types.find(typeName);
    if (existing != participant.types.end()) {
        if (samePlugin(existing->second.plugin, plugin)) return DDS_RETCODE_OK;
        OBLX_Report_failure(context, "the type name is registered with another plugin");
        return DDS_RETCODE_PRECONDITION_NOT_MET;
    }
    TypeRegistration registration{plugin, nullptr, 0};
    if (plugin.on_participant_attached != nullptr) {
        registration.participantData = plugin.on_participant_attached(registrationData);
    }
    participant.types.emplace(typeName, registration);
    return DDS_RETCODE_OK;
}

DDS_ReturnCode_t unregisterType(DDS_DomainParticipantImpl &participant, const char *typeName, const char *context) {
    std::unique_lock lock(participant.mutex);
    auto found = participant.types.find(typeName);
    if (found == participant.types.end()) {
        OBLX_Report_badParameter(context, "type_name (not registered)");
        return DDS_RETCODE_BAD_PARAMETER;
    }
    if (found->second.topics > 0) {
        OBLX_Report_failure(context, "topics of the type still exist");
        return DDS_RETCODE_PRECONDITION_NOT_MET;
    }
    TypeRegistration registration = found->second;
    participant.types.erase(found);
    lock.unlock();
    detachParticipant(registration);
    return DDS_RETCODE_OK;
}

// A publisher or subscriber made with `qos` (`cycloneQos` on Cyclone).
template <typename Record, typename Qos, typename Create>
Record *createGroup(DDS_DomainParticipantImpl &participant, std::vector<std::unique_ptr<Record>> &owners,
                    const Qos &qos, Create create, const char *operation, const char *context) {
    CycloneQos cycloneQos = toCyclone(qos, context);
    if (cycloneQos == nullptr) return nullptr;
    auto record = std::make_unique<Record>(0, &participant);
    record->protocol = qos.protocol;
    record->handle = create(participant.handle, cycloneQos.get(), nullptr);
    if (record->handle < 0) {
        reportCycloneFailure(context, operation, record->handle);
        return nullptr;
    }
    Record *created = record.get();
    std::lock_guard lock(participant.mutex);
    owners.push_back(std::move(record));
    return created;
}

template <typename Group>
bool hasEndpoints(const Group &group) {
    return !endpointsOf(group).empty();
}

void noRelease(const DDS_EntityImpl &) {}

struct Contents {
    std::vector<std::unique_ptr<DDS_PublisherImpl>> publishers;
    std::vector<std::unique_ptr<DDS_SubscriberImpl>> subscribers;
    std::vector<std::unique_ptr<DDS_ContentFilteredTopicImpl>> filteredTopics;
    std::vector<std::unique_ptr<DDS_TopicImpl>> topics;
};

// Endpoints before their groups, filtered views before their topics: the
// order in which Cyclone lets each go.
DDS_ReturnCode_t destroyContents(DDS_DomainParticipantImpl &participant, Contents contents, const char *context) {
    dds_return_t failure = 0;
    auto note = [&failure](dds_return_t result) { failure = result < 0 ? result : failure; };
    for (auto &publisher : contents.publishers) note(destroyGroup(std::move(publisher)));
    for (auto &subscriber : contents.subscribers) note(destroyGroup(std::move(subscriber)));
    for (auto &filtered : contents.filteredTopics) note(dds_delete(filtered->handle));
    for (auto &topic : contents.topics) note(dds_delete(topic->handle));
    {
        std::lock_guard lock(participant.mutex);
        for (auto &topic : contents.topics) --topic->type.topics;
    }
    return failure < 0 ? reportCycloneFailure(context, "dds_delete", failure) : DDS_RETCODE_OK;
}

DDS_ReturnCode_t deleteContainedEntities(DDS_DomainParticipantImpl &participant, const char *context) {
    Contents contents;
    {
        std::lock_guard lock(participant.mutex);
        for (const auto &subscriber : participant.subscribers) {
            if (hasLoansOf(*subscriber)) {
                OBLX_Report_failure(context, "a reader has samples on loan");
                return DDS_RETCODE_PRECONDITION_NOT_MET;
            }
        }
        contents.publishers.swap(participant.publishers);
        contents.subscribers.swap(participant.subscribers);
        contents.filteredTopics.swap(participant.filteredTopics);
        contents.topics.swap(participant.topics);
    }
    return destroyContents(participant, std::move(contents), context);
}

// Cyclone keeps no wire-protocol policy: the ids come from the GUID.
DDS_ReturnCode_t getParticipantQos(const DDS_DomainParticipantImpl &participant, DDS_DomainParticipantQos *qos,
                                   const char *context) noexcept {
    DDS_ReturnCode_t read = readQos(participant.handle, qos, context);
    if (read != DDS_RETCODE_OK) return read;
    return wireProtocolFromParticipant(participant.handle, qos->wire_protocol, context);
}

// The default QoS of an entity kind: its record's defaults with the default
// profile over them. The participant keeps no defaults of its own.
template <typename Qos>
DDS_ReturnCode_t copyDefaults(DDS_DomainParticipant *self, Qos *qos, const char *topicName,
                              const char *context) noexcept {
    if (checked(self, context) == nullptr || !isGiven(qos, context, "qos")) return DDS_RETCODE_BAD_PARAMETER;
    return guarded(context, DDS_RETCODE_ERROR, [&] {
        OwnedQos<Qos> defaults;
        const DDS_ReturnCode_t overlaid = overlayDefaultProfile(defaults.qos, topicName, context);
        return overlaid == DDS_RETCODE_OK ? copyQos(*qos, defaults.qos, context) : overlaid;
    });
}

}  // namespace
}  // namespace vexar::dds

using namespace vexar::dds;

extern "C" {

DDS_DomainParticipant *OBLX_DomainParticipant_adoptCyclone(int32_t cyclone_participant) {
    const char *context = "OBLX_DomainParticipant_adoptCyclone";
    dds_domainid_t domainId = 0;
    if (cyclone_participant <= 0 || dds_get_participant(cyclone_participant) != cyclone_participant ||
        dds_get_domainid(cyclone_participant, &domainId) < 0) {
        OBLX_Report_badParameter(context, "cyclone_participant (not a participant)");
        return nullptr;
    }
    DDS_DomainParticipantFactory_get_instance();
    return guarded(context, static_cast<DDS_DomainParticipant *>(nullptr), [&] {
        return new DDS_DomainParticipantImpl(cyclone_participant, static_cast<DDS_DomainId_t>(domainId), true);
    });
}

DDS_Boolean OBLX_DomainParticipant_is_adopted(const DDS_DomainParticipant *self) {
    if (checked(self, "OBLX_DomainParticipant_is_adopted") == nullptr) return DDS_BOOLEAN_FALSE;
    return self->adopted ? DDS_BOOLEAN_TRUE : DDS_BOOLEAN_FALSE;
}

DDS_Entity *DDS_DomainParticipant_as_entity(DDS_DomainParticipant *self) {
    return checked(self, "DDS_DomainParticipant_as_entity");
}

DDS_DomainId_t DDS_DomainParticipant_get_domain_id(DDS_DomainParticipant *self) {
    if (checked(self, "DDS_DomainParticipant_get_domain_id") == nullptr) return -1;
    return self->domainId;
}

DDS_ReturnCode_t DDS_DomainParticipant_get_qos(DDS_DomainParticipant *self, DDS_DomainParticipantQos *qos) {
    const char *context = "DDS_DomainParticipant_get_qos";
    if (checked(self, context) == nullptr) return DDS_RETCODE_BAD_PARAMETER;
    return getParticipantQos(*self, qos, context);
}

DDS_DomainParticipantFactory *DDS_DomainParticipant_get_participant_factoryI(DDS_DomainParticipant *self) {
    if (checked(self, "DDS_DomainParticipant_get_participant_factoryI") == nullptr) return nullptr;
    return DDS_DomainParticipantFactory_get_instance();
}

DDS_ReturnCode_t DDS_DomainParticipant_register_type(DDS_DomainParticipant *self, const char *type_name,
                                                     const OBLX_TypePlugin *plugin, void *registration_data) {
    const char *context = "DDS_DomainParticipant_register_type";
    if (checked(self, context) == nullptr) return DDS_RETCODE_BAD_PARAMETER;
    if (type_name == nullptr || type_name[0] == '\0' || plugin == nullptr) {
        OBLX_Report_badParameter(context, plugin == nullptr ? "plugin" : "type_name");
        return DDS_RETCODE_BAD_PARAMETER;
    }
    if (!isBridgeable(*plugin, type_name)) {
        OBLX_Report_badParameter(context, "plugin (incomplete)");
        return DDS_RETCODE_BAD_PARAMETER;
    }
    return guarded(context, DDS_RETCODE_ERROR,
                   [&] { return registerType(*self, type_name, *plugin, registration_data, context); });
}

DDS_ReturnCode_t DDS_DomainParticipant_unregister_type(DDS_DomainParticipant *self, const char *type_name) {
    const char *context = "DDS_DomainParticipant_unregister_type";
    if (checked(self, context) == nullptr) return DDS_RETCODE_BAD_PARAMETER;
    if (type_name == nullptr) {
        OBLX_Report_badParameter(context, "type_name");
        return DDS_RETCODE_BAD_PARAMETER;
    }
    return guarded(context, DDS_RETCODE_ERROR, [&] { return unregisterType(*self, type_name, context); });
}

DDS_Publisher *DDS_DomainParticipant_create_publisher(DDS_DomainParticipant *self, const DDS_PublisherQos *qos,
                                                      const DDS_PublisherListener *listener, DDS_StatusMask mask) {
    const char *context = "DDS_DomainParticipant_create_publisher";
    if (checked(self, context) == nullptr || !acceptsNoCallbacks(listener, mask, context)) return nullptr;
    return guarded(context, static_cast<DDS_Publisher *>(nullptr), [&]() -> DDS_Publisher * {
        OwnedQos<DDS_PublisherQos> defaults;
        const DDS_PublisherQos *chosen = givenOrDefaultQos(qos, defaults, nullptr, context);
        if (chosen == nullptr) return nullptr;
        return createGroup(*self, self->publishers, *chosen, dds_create_publisher, "dds_create_publisher", context);
    });
}

DDS_ReturnCode_t DDS_DomainParticipant_delete_publisher(DDS_DomainParticipant *self, DDS_Publisher *publisher) {
    const char *context = "DDS_DomainParticipant_delete_publisher";
    if (checked(self, context) == nullptr || checked(publisher, context, "publisher") == nullptr) {
        return DDS_RETCODE_BAD_PARAMETER;
    }
    return guarded(context, DDS_RETCODE_ERROR, [&] {
        return deleteUnused(*self, self->publishers, publisher, hasEndpoints<DDS_PublisherImpl>, noRelease, context);
    });
}

DDS_Subscriber *DDS_DomainParticipant_create_subscriber(DDS_DomainParticipant *self, const DDS_SubscriberQos *qos,
                                                        const DDS_SubscriberListener *listener, DDS_StatusMask mask) {
    const char *context = "DDS_DomainParticipant_create_subscriber";
    if (checked(self, context) == nullptr || !acceptsNoCallbacks(listener, mask, context)) return nullptr;
    return guarded(context, static_cast<DDS_Subscriber *>(nullptr), [&]() -> DDS_Subscriber * {
        OwnedQos<DDS_SubscriberQos> defaults;
        const DDS_SubscriberQos *chosen = givenOrDefaultQos(qos, defaults, nullptr, context);
        if (chosen == nullptr) return nullptr;
        return createGroup(*self, self->subscribers, *chosen, dds_create_subscriber, "dds_create_subscriber", context);
    });
}

DDS_ReturnCode_t DDS_DomainParticipant_delete_subscriber(DDS_DomainParticipant *self, DDS_Subscriber *subscriber) {
    const char *context = "DDS_DomainParticipant_delete_subscriber";
    if (checked(self, context) == nullptr || checked(subscriber, context, "subscriber") == nullptr) {
        return DDS_RETCODE_BAD_PARAMETER;
    }
    return guarded(context, DDS_RETCODE_ERROR, [&] {
        return deleteUnused(*self, self->subscribers, subscriber, hasEndpoints<DDS_SubscriberImpl>, noRelease, context);
    });
}

DDS_ReturnCode_t DDS_DomainParticipant_delete_contained_entities(DDS_DomainParticipant *self) {
    const char *context = "DDS_DomainParticipant_delete_contained_entities";
    if (checked(self, context) == nullptr) return DDS_RETCODE_BAD_PARAMETER;
    return guarded(context, DDS_RETCODE_ERROR, [&] { return deleteContainedEntities(*self, context); });
}

DDS_ReturnCode_t DDS_DomainParticipant_get_default_publisher_qos(DDS_DomainParticipant *self, DDS_PublisherQos *qos) {
    return copyDefaults(self, qos, nullptr, "DDS_DomainParticipant_get_default_publisher_qos");
}

DDS_ReturnCode_t DDS_DomainParticipant_get_default_subscriber_qos(DDS_DomainParticipant *self, DDS_SubscriberQos *qos) {
    return copyDefaults(self, qos, nullptr, "DDS_DomainParticipant_get_default_subscriber_qos");
}

DDS_ReturnCode_t DDS_DomainParticipant_get_default_topic_qos(DDS_DomainParticipant *self, DDS_TopicQos *qos) {
    return copyDefaults(self, qos, nullptr, "DDS_DomainParticipant_get_default_topic_qos");
}

DDS_ReturnCode_t DDS_DomainParticipant_get_default_topic_qos_w_topic_name(DDS_DomainParticipant *self,
                                                                          DDS_TopicQos *qos, const char *topic_name) {
    return copyDefaults(self, qos, topic_name, "DDS_DomainParticipant_get_default_topic_qos_w_topic_name");
}

DDS_ReturnCode_t DDS_DomainParticipant_get_default_datawriter_qos(DDS_DomainParticipant *self, DDS_DataWriterQos *qos) {
    return copyDefaults(self, qos, nullptr, "DDS_DomainParticipant_get_default_datawriter_qos");
}

DDS_ReturnCode_t DDS_DomainParticipant_get_default_datawriter_qos_w_topic_name(DDS_DomainParticipant *self,
                                                                               DDS_DataWriterQos *qos,
                                                                               const char *topic_name) {
    return copyDefaults(self, qos, topic_name, "DDS_DomainParticipant_get_default_datawriter_qos_w_topic_name");
}

DDS_ReturnCode_t DDS_DomainParticipant_get_default_datareader_qos(DDS_DomainParticipant *self, DDS_DataReaderQos *qos) {
    return copyDefaults(self, qos, nullptr, "DDS_DomainParticipant_get_default_datareader_qos");
}

DDS_ReturnCode_t DDS_DomainParticipant_get_default_datareader_qos_w_topic_name(DDS_DomainParticipant *self,
                                                                               DDS_DataReaderQos *qos,
                                                                               const char *topic_name) {
    return copyDefaults(self, qos, topic_name, "DDS_DomainParticipant_get_default_datareader_qos_w_topic_name");
}

}  // extern "C"
