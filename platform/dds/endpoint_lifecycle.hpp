// Creation and deletion of writers and readers, written once for both: a
// publisher and its writers on topics, a subscriber and its readers on
// topic descriptions.
//
// The Cyclone endpoint is created and deleted outside the participant's
// mutex: Cyclone calls listeners on the thread that causes an event (a
// local match while creating, for instance) and dds_delete waits for
// callbacks in progress, and either may need the participant.
#pragma once

#include <algorithm>
#include <cstdint>

#include "platform/dds/endpoint_listener.hpp"
#include "platform/dds/qos_cyclone.hpp"

namespace vexar::dds {

// What differs between the two kinds of endpoint.
inline std::vector<std::unique_ptr<DDS_DataWriterImpl>> &endpointsOf(DDS_PublisherImpl &publisher) noexcept {
    return publisher.writers;
}
inline std::vector<std::unique_ptr<DDS_DataReaderImpl>> &endpointsOf(DDS_SubscriberImpl &subscriber) noexcept {
    return subscriber.readers;
}
inline const std::vector<std::unique_ptr<DDS_DataWriterImpl>> &
endpointsOf(const DDS_PublisherImpl &publisher) noexcept {
    return publisher.writers;
}
inline const std::vector<std::unique_ptr<DDS_DataReaderImpl>> &
endpointsOf(const DDS_SubscriberImpl &subscriber) noexcept {
    return subscriber.readers;
}
inline std::vector<std::unique_ptr<DDS_PublisherImpl>> &groupsOf(DDS_DomainParticipantImpl &participant,
                                                                 const DDS_PublisherImpl *) noexcept {
    return participant.publishers;
}
inline std::vector<std::unique_ptr<DDS_SubscriberImpl>> &groupsOf(DDS_DomainParticipantImpl &participant,
                                                                  const DDS_SubscriberImpl *) noexcept {
    return participant.subscribers;
}
inline int &usersOf(DDS_DataWriterImpl &writer) noexcept { return writer.topic.writers; }
inline int &usersOf(DDS_DataReaderImpl &reader) noexcept { return reader.description.readers; }
inline TypeRegistration &typeOf(DDS_DataWriterImpl &writer) noexcept { return writer.topic.type; }
inline TypeRegistration &typeOf(DDS_DataReaderImpl &reader) noexcept { return reader.description.type; }
inline DDS_DomainParticipantImpl &participantOf(DDS_DataWriterImpl &writer) noexcept {
    return *writer.publisher.participant;
}
inline DDS_DomainParticipantImpl &participantOf(DDS_DataReaderImpl &reader) noexcept {
    return *reader.subscriber.participant;
}
inline dds_entity_t createCycloneEndpoint(DDS_DataWriterImpl &writer, const dds_qos_t *qos) noexcept {
    return dds_create_writer(writer.publisher.handle, writer.topic.handle, qos, nullptr);
}
inline dds_entity_t createCycloneEndpoint(DDS_DataReaderImpl &reader, const dds_qos_t *qos) noexcept {
    return dds_create_reader(reader.subscriber.handle, reader.description.handle, qos, nullptr);
}
// What of its QoS an endpoint keeps itself: what its Cyclone QoS says
// otherwise, and what its reads need at hand.
inline void keepOwnQos(DDS_DataWriterImpl &writer, const DDS_DataWriterQos &qos) noexcept {
    writer.durabilityService = qos.durability_service;
}
inline void keepOwnQos(DDS_DataReaderImpl &reader, const DDS_DataReaderQos &qos) noexcept {
    std::uint32_t most = UINT32_MAX;
    auto bound = [&most](DDS_Long limit) {
        if (limit != DDS_LENGTH_UNLIMITED) most = std::min(most, static_cast<std::uint32_t>(limit));
    };
    if (qos.history.kind == DDS_KEEP_LAST_HISTORY_QOS) bound(qos.history.depth);
    bound(qos.resource_limits.max_samples_per_instance);
    bound(qos.resource_limits.max_samples);
    // Cyclone adds at most one sample without data to an instance's history.
    reader.samplesPerInstance = most == UINT32_MAX ? most : most + 1;
}
inline OBLX_TypePluginEndpointKind endpointKind(const DDS_DataWriterImpl &) noexcept {
    return OBLX_TYPEPLUGIN_ENDPOINT_WRITER;
}
inline OBLX_TypePluginEndpointKind endpointKind(const DDS_DataReaderImpl &) noexcept {
    return OBLX_TYPEPLUGIN_ENDPOINT_READER;
}
inline bool hasLoansOf(const DDS_DataWriterImpl &) noexcept { return false; }
inline bool hasLoansOf(const DDS_DataReaderImpl &reader) noexcept { return reader.hasLoans(); }
inline bool hasLoansOf(const DDS_PublisherImpl &) noexcept { return false; }
inline bool hasLoansOf(const DDS_SubscriberImpl &subscriber) noexcept {
    for (const auto &reader : subscriber.readers) {
        if (reader->hasLoans()) return true;
    }
    return false;
}

// Deletes the Cyclone endpoint (with a reader's conditions), then the
// record and its plugin data. The record is unlinked already.
template <typename Endpoint>
dds_return_t destroyEndpoint(std::unique_ptr<Endpoint> endpoint) noexcept {
    dds_return_t deleted = dds_delete(endpoint->handle);
    {
        std::lock_guard lock(participantOf(*endpoint).mutex);
        --usersOf(*endpoint);
    }
    detachEndpoint(typeOf(*endpoint), endpoint->endpointData);
    return deleted;
}

template <typename Endpoint, typename Group, typename Description, typename Qos, typename Listener>
Endpoint *createEndpoint(Group &group, Description &topic, const Qos &qos, const Listener *listener,
                         DDS_StatusMask mask, const char *context) {
    DDS_DomainParticipantImpl &participant = *group.participant;
    if (topic.participant != group.participant) {
        reportBadEntity(context, "topic (of another participant)");
        return nullptr;
    }
    CycloneQos cycloneQos = toCyclone(qos, context);
    if (cycloneQos == nullptr) return nullptr;
    auto endpoint = std::make_unique<Endpoint>(group, topic);
    keepOwnQos(*endpoint, qos);
    {
        std::lock_guard lock(participant.mutex);
        if (!contains(groupsOf(participant, &group), &group)) {
            reportBadEntity(context, "self (deleted)");
            return nullptr;
        }
        ++usersOf(*endpoint);
    }
    endpoint->handle = createCycloneEndpoint(*endpoint, cycloneQos.get());
    if (endpoint->handle < 0) {
        reportCycloneFailure(context,
                             endpointKind(*endpoint) == OBLX_TYPEPLUGIN_ENDPOINT_WRITER ? "dds_create_writer"
                                                                                        : "dds_create_reader",
                             endpoint->handle);
        std::lock_guard lock(participant.mutex);
        --usersOf(*endpoint);
        return nullptr;
    }
    endpoint->endpointData = attachEndpoint(typeOf(*endpoint), endpointKind(*endpoint));
    Endpoint *created = endpoint.get();
    {
        std::lock_guard lock(participant.mutex);
        endpointsOf(group).push_back(std::move(endpoint));
    }
    if (listener != nullptr && installListener(*created, listener, mask, context) != DDS_RETCODE_OK) {
        std::unique_ptr<Endpoint> failed;
        {
            std::lock_guard lock(participant.mutex);
            failed = unlink(endpointsOf(group), created);
        }
        destroyEndpoint(std::move(failed));
        return nullptr;
    }
    return created;
}

template <typename Group, typename Endpoint>
DDS_ReturnCode_t deleteEndpoint(Group &group, Endpoint *endpoint, const char *context) {
    std::unique_ptr<Endpoint> owned;
    {
        std::lock_guard lock(group.participant->mutex);
        if (!contains(endpointsOf(group), endpoint)) {
            reportBadEntity(context, "endpoint (of another publisher or subscriber)");
            return DDS_RETCODE_BAD_PARAMETER;
        }
        if (hasLoansOf(*endpoint)) {
            OBLX_Report_failure(context, "samples are on loan");
            return DDS_RETCODE_PRECONDITION_NOT_MET;
        }
        owned = unlink(endpointsOf(group), endpoint);
    }
    dds_return_t deleted = destroyEndpoint(std::move(owned));
    return deleted < 0 ? reportCycloneFailure(context, "dds_delete", deleted) : DDS_RETCODE_OK;
}

// Deletes the endpoints of a group that is no longer linked anywhere, then
// the group's Cyclone entity.
template <typename Group>
dds_return_t destroyGroup(std::unique_ptr<Group> group) noexcept {
    for (auto &endpoint : endpointsOf(*group)) destroyEndpoint(std::move(endpoint));
    return dds_delete(group->handle);
}

template <typename Group>
DDS_ReturnCode_t deleteEndpoints(Group &group, const char *context) {
    std::remove_reference_t<decltype(endpointsOf(group))> endpoints;
    {
        std::lock_guard lock(group.participant->mutex);
        if (hasLoansOf(group)) {
            OBLX_Report_failure(context, "samples are on loan");
            return DDS_RETCODE_PRECONDITION_NOT_MET;
        }
        endpoints.swap(endpointsOf(group));
    }
    dds_return_t failure = 0;
    for (auto &endpoint : endpoints) {
        dds_return_t deleted = destroyEndpoint(std::move(endpoint));
        if (deleted < 0) failure = deleted;
    }
    return failure < 0 ? reportCycloneFailure(context, "dds_delete", failure) : DDS_RETCODE_OK;
}

}  // namespace vexar::dds
