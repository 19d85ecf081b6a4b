// The records behind the opaque entity pointers of the DDS bridge, each a
// small record around one Cyclone entity, and the helpers that every
// entity's operations share.
//
// Ownership follows containment: a participant owns its topics, filtered
// topics, publishers and subscribers; a publisher its writers; a subscriber
// its readers; a reader its read conditions and loans. One mutex per
// participant guards the lists of everything it contains. Cyclone entities
// are deleted outside that mutex, because dds_delete waits for listener
// callbacks in progress and a callback may need the participant.
//
// Include this header first in the bridge's .cpp files: it brings in
// Cyclone's API before the public headers, whose status and state masks
// then replace Cyclone's macros of the same names. Cyclone's values are used
// through its enums (DDS_*_STATUS_ID, DDS_SST_*, DDS_VST_*, DDS_IST_*).
#pragma once

#include <atomic>
#include <cstdint>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/dds/cyclone.hpp"
// Cyclone's first, then ours: see above.
#include "platform/filter/content_filter.hpp"
#include "platform/dds/data_reader.h"
#include "platform/dds/data_writer.h"
#include "platform/dds/domain_participant.h"
#include "platform/dds/domain_participant_factory.h"
#include "platform/dds/entity.h"
#include "platform/dds/publisher.h"
#include "platform/dds/qos_cyclone.hpp"
#include "platform/log/report.h"
#include "platform/types/sample_array.hpp"
#include "platform/dds/sample_info.h"
#include "platform/dds/subscriber.h"
#include "platform/dds/topic.h"

static_assert(DDS_DATA_AVAILABLE_STATUS == (1u << 10), "the OMG masks must win over Cyclone's");
static_assert(std::is_same_v<dds_entity_t, std::int32_t>, "adoption takes the handle as int32_t");
static_assert(std::is_same_v<dds_instance_handle_t, DDS_InstanceHandle_t>);

namespace vexar::dds {

// Tags every record, so that a pointer of the wrong kind is refused.
enum class EntityKind : std::uint32_t {
    participant = 0x56580001,
    topic,
    contentFilteredTopic,
    publisher,
    subscriber,
    writer,
    reader,
    readCondition,
};

// A type registered with a participant: its own copy of the plugin record
// and the plugin's per-participant data.
struct TypeRegistration {
    OBLX_TypePlugin plugin;
    OBLX_TypePluginParticipantData *participantData = nullptr;
    int topics = 0;  // topics of the type; the registration stays while any exist
};

// DDS return code of a Cyclone result: Cyclone's codes are the negated OMG
// ones; anything else is an error.
DDS_ReturnCode_t fromCycloneResult(dds_return_t result) noexcept;

// Cyclone's time of a valid, non-negative DDS time; empty otherwise.
std::optional<dds_time_t> toCycloneTime(const DDS_Time_t &time) noexcept;
DDS_Time_t fromCycloneTime(dds_time_t time) noexcept;

}  // namespace vexar::dds

struct DDS_EntityImpl {
    DDS_EntityImpl(vexar::dds::EntityKind kind, dds_entity_t handle) noexcept : kind(kind), handle(handle) {}
    DDS_EntityImpl(const DDS_EntityImpl &) = delete;
    DDS_EntityImpl &operator=(const DDS_EntityImpl &) = delete;

    const vexar::dds::EntityKind kind;
    dds_entity_t handle;  // the Cyclone entity
};

struct DDS_TopicDescriptionImpl : DDS_EntityImpl {
    DDS_TopicDescriptionImpl(vexar::dds::EntityKind kind, dds_entity_t handle, DDS_DomainParticipant *participant,
                             std::string name, vexar::dds::TypeRegistration &type, std::string typeName)
        : DDS_EntityImpl(kind, handle),
          participant(participant),
          name(std::move(name)),
          type(type),
          typeName(std::move(typeName)) {}

    DDS_DomainParticipant *const participant;
    const std::string name;
    vexar::dds::TypeRegistration &type;
    const std::string typeName;  // the name the type is registered under
    int readers = 0;             // under the participant's mutex
    // The sertype of its Cyclone topic, which holds it: it knows the
    // instances of the type (platform/dds/instance_index.hpp).
    const ddsi_sertype *sertype = nullptr;
};

// Cyclone keeps no properties in the QoS of topics, publishers and
// subscribers, so these records keep the protocol policy that they were
// made with, for get_qos.
struct DDS_TopicImpl : DDS_TopicDescriptionImpl {
    using DDS_TopicDescriptionImpl::DDS_TopicDescriptionImpl;
    int writers = 0;        // under the participant's mutex
    int filteredViews = 0;  // content-filtered topics over this one
    DDS_ProtocolQosPolicy protocol = DDS_PROTOCOL_QOS_POLICY_DEFAULT;
};

// A second Cyclone topic entity of the related topic's name and type,
// carrying the filter: Cyclone filters per topic entity, so only readers
// created on this entity are filtered.
struct DDS_ContentFilteredTopicImpl : DDS_TopicDescriptionImpl {
    DDS_ContentFilteredTopicImpl(dds_entity_t handle, DDS_TopicImpl &related, std::string name,
                                 vexar::filter::ContentFilter filter)
        : DDS_TopicDescriptionImpl(vexar::dds::EntityKind::contentFilteredTopic, handle, related.participant,
                                   std::move(name), related.type, related.typeName),
          related(related),
          filter(std::move(filter)) {}

    DDS_TopicImpl &related;
    const vexar::filter::ContentFilter filter;
};

struct DDS_PublisherImpl : DDS_EntityImpl {
    DDS_PublisherImpl(dds_entity_t handle, DDS_DomainParticipant *participant) noexcept
        : DDS_EntityImpl(vexar::dds::EntityKind::publisher, handle), participant(participant) {}
    ~DDS_PublisherImpl();

    DDS_DomainParticipant *const participant;
    std::vector<std::unique_ptr<DDS_DataWriterImpl>> writers;  // under the participant's mutex
    DDS_ProtocolQosPolicy protocol = DDS_PROTOCOL_QOS_POLICY_DEFAULT;
};

struct DDS_SubscriberImpl : DDS_EntityImpl {
    DDS_SubscriberImpl(dds_entity_t handle, DDS_DomainParticipant *participant) noexcept
        : DDS_EntityImpl(vexar::dds::EntityKind::subscriber, handle), participant(participant) {}
    ~DDS_SubscriberImpl();

    DDS_DomainParticipant *const participant;
    std::vector<std::unique_ptr<DDS_DataReaderImpl>> readers;  // under the participant's mutex
    DDS_ProtocolQosPolicy protocol = DDS_PROTOCOL_QOS_POLICY_DEFAULT;
};

// The listener that an endpoint's Cyclone callbacks consult, behind a
// mutex because the application may replace it while a callback runs. It
// holds only the callbacks whose status bits were in the mask.
template <typename Listener>
class ListenerSlot {
public:
    void set(const Listener &listener) noexcept {
        std::lock_guard lock(mutex_);
        listener_ = listener;
    }
    Listener get() const noexcept {
        std::lock_guard lock(mutex_);
        return listener_;
    }

private:
    mutable std::mutex mutex_;
    Listener listener_{};
};

struct DDS_DataWriterImpl : DDS_EntityImpl {
    DDS_DataWriterImpl(DDS_PublisherImpl &publisher, DDS_TopicImpl &topic) noexcept
        : DDS_EntityImpl(vexar::dds::EntityKind::writer, 0), publisher(publisher), topic(topic) {}

    DDS_PublisherImpl &publisher;
    DDS_TopicImpl &topic;
    OBLX_TypePluginEndpointData *endpointData = nullptr;
    ListenerSlot<DDS_DataWriterListener> listener;
    // Its QoS's batch.enable: it leaves flushing to the application. Set once
    // the writer is made, possibly while a listener of it already runs.
    std::atomic<bool> batched{false};
    // Its QoS's durability_service as asked: a TRANSIENT_LOCAL writer's
    // Cyclone QoS holds its own history there (see toCyclone). Set before
    // the Cyclone writer exists.
    DDS_DurabilityServiceQosPolicy durabilityService = DDS_DURABILITY_SERVICE_QOS_POLICY_DEFAULT;
};

// Samples lent to the application: a reader's own array of initialized
// samples, which a read or take fills as it would an application's buffer,
// kept from loan to loan so that a loaned read allocates nothing. The sample
// pointer array is what the application's sequence holds, so it names the
// loan when it comes back.
struct ReaderLoan {
    explicit ReaderLoan(const DDS_TypeCode &type) noexcept : type(type) {}
    ~ReaderLoan() { vexar::types::sample::array::destroy(type, base); }
    ReaderLoan(const ReaderLoan &) = delete;
    ReaderLoan &operator=(const ReaderLoan &) = delete;

    std::uint32_t capacity() const noexcept { return static_cast<std::uint32_t>(samples.size()); }

    const DDS_TypeCode &type;
    void *base = nullptr;         // the array of capacity() samples
    std::vector<void *> samples;  // their addresses, the sequence's buffer while lent
    std::vector<DDS_SampleInfo> infos;
    std::vector<dds_sample_info_t> cycloneInfos;  // what a read fills, converted into infos
    std::int32_t count = 0;
};

struct DDS_ReadConditionImpl : DDS_EntityImpl {
    DDS_ReadConditionImpl(DDS_DataReaderImpl &reader, std::uint32_t states) noexcept
        : DDS_EntityImpl(vexar::dds::EntityKind::readCondition, 0), reader(reader), states(states) {}

    DDS_DataReaderImpl &reader;
    // Cyclone's state mask of the condition: reads through the condition
    // pass it, because with any other mask Cyclone would widen the selection.
    const std::uint32_t states;
};

struct DDS_DataReaderImpl : DDS_EntityImpl {
    DDS_DataReaderImpl(DDS_SubscriberImpl &subscriber, DDS_TopicDescriptionImpl &description) noexcept
        : DDS_EntityImpl(vexar::dds::EntityKind::reader, 0), subscriber(subscriber), description(description) {}

    bool hasLoans() const noexcept {
        std::lock_guard lock(loanMutex);
        return !loans.empty();
    }

    DDS_SubscriberImpl &subscriber;
    DDS_TopicDescriptionImpl &description;
    OBLX_TypePluginEndpointData *endpointData = nullptr;
    ListenerSlot<DDS_DataReaderListener> listener;
    // The most samples that one instance can hold (its history depth or
    // resource limits, and one that tells a state change), which bounds a
    // loaned read of one instance; UINT32_MAX when unbounded. Set before
    // the Cyclone reader exists.
    std::uint32_t samplesPerInstance = UINT32_MAX;

    // Serializes this reader's loaned reads and takes, its loans, and the
    // creation and deletion of its conditions (lock order, see
    // reader_read.cpp).
    mutable std::mutex loanMutex;
    std::vector<std::unique_ptr<ReaderLoan>> loans;                  // under loanMutex
    std::vector<std::unique_ptr<ReaderLoan>> idleLoans;              // under loanMutex: returned, for reuse
    std::vector<std::unique_ptr<DDS_ReadConditionImpl>> conditions;  // under the participant's mutex
};

struct DDS_DomainParticipantImpl : DDS_EntityImpl {
    DDS_DomainParticipantImpl(dds_entity_t handle, DDS_DomainId_t domainId, bool adopted) noexcept
        : DDS_EntityImpl(vexar::dds::EntityKind::participant, handle), domainId(domainId), adopted(adopted) {}

    bool isEmpty() const noexcept {
        return topics.empty() && filteredTopics.empty() && publishers.empty() && subscribers.empty();
    }
    // The description named `name`, or null.
    DDS_TopicDescriptionImpl *findDescription(const std::string &name) const noexcept;

    const DDS_DomainId_t domainId;
    const bool adopted;  // the application's Cyclone participant: never deleted here

    mutable std::mutex mutex;
    std::map<std::string, vexar::dds::TypeRegistration> types;
    std::vector<std::unique_ptr<DDS_TopicImpl>> topics;
    std::vector<std::unique_ptr<DDS_ContentFilteredTopicImpl>> filteredTopics;
    std::vector<std::unique_ptr<DDS_PublisherImpl>> publishers;
    std::vector<std::unique_ptr<DDS_SubscriberImpl>> subscribers;
    // Cyclone's reader of discovered participants, made on first use; not
    // one of the application's entities, so deleted with the record.
    dds_entity_t discoveryReader = 0;
};

namespace vexar::dds {

// The kind tag of each record type.
template <typename Record>
constexpr EntityKind kindOf() noexcept;
template <>
constexpr EntityKind kindOf<DDS_DomainParticipantImpl>() noexcept {
    return EntityKind::participant;
}
template <>
constexpr EntityKind kindOf<DDS_TopicImpl>() noexcept {
    return EntityKind::topic;
}
template <>
constexpr EntityKind kindOf<DDS_ContentFilteredTopicImpl>() noexcept {
    return EntityKind::contentFilteredTopic;
}
template <>
constexpr EntityKind kindOf<DDS_PublisherImpl>() noexcept {
    return EntityKind::publisher;
}
template <>
constexpr EntityKind kindOf<DDS_SubscriberImpl>() noexcept {
    return EntityKind::subscriber;
}
template <>
constexpr EntityKind kindOf<DDS_DataWriterImpl>() noexcept {
    return EntityKind::writer;
}
template <>
constexpr EntityKind kindOf<DDS_DataReaderImpl>() noexcept {
    return EntityKind::reader;
}
template <>
constexpr EntityKind kindOf<DDS_ReadConditionImpl>() noexcept {
    return EntityKind::readCondition;
}

void reportBadEntity(const char *context, const char *argument) noexcept;

// Whether `factory` is the process's participant factory; reported as a bad
// parameter "self" under `context` when it is not.
bool isFactory(const DDS_DomainParticipantFactory *factory, const char *context) noexcept;

// `entity` as a record of kind `Record`, or null (reported as a bad
// parameter `argument` under `context`) when it is null or of another kind.
template <typename Record>
Record *checked(Record *entity, const char *context, const char *argument = "self") noexcept {
    if (entity == nullptr || entity->kind != kindOf<std::remove_const_t<Record>>()) {
        reportBadEntity(context, argument);
        return nullptr;
    }
    return entity;
}

// Removes `record` from `owners` and hands it over; null when absent.
template <typename Record>
std::unique_ptr<Record> unlink(std::vector<std::unique_ptr<Record>> &owners, const Record *record) noexcept {
    for (auto it = owners.begin(); it != owners.end(); ++it) {
        if (it->get() == record) {
            std::unique_ptr<Record> owned = std::move(*it);
            owners.erase(it);
            return owned;
        }
    }
    return nullptr;
}

template <typename Record>
bool contains(const std::vector<std::unique_ptr<Record>> &owners, const Record *record) noexcept {
    for (const auto &owned : owners) {
        if (owned.get() == record) return true;
    }
    return false;
}

// Whether a required argument is there; reported as a bad parameter `name`
// under `context` when it is not.
inline bool isGiven(const void *argument, const char *context, const char *name) noexcept {
    if (argument == nullptr) OBLX_Report_badParameter(context, name);
    return argument != nullptr;
}

// Runs `body` and returns its result; an exception (out of memory, a
// failing mutex) is reported under `context` and gives `failure`, so none
// crosses the C boundary.
template <typename Result, typename Body>
Result guarded(const char *context, Result failure, Body &&body) noexcept {
    try {
        return body();
    } catch (const std::bad_alloc &) {
        OBLX_Report_failure(context, "out of memory");
    } catch (const std::exception &error) {
        OBLX_Report_failure(context, error.what());
    } catch (...) {
        OBLX_Report_failure(context, "unexpected exception");
    }
    return failure;
}

// Reports that Cyclone's `operation` failed with `result` (and `detail`,
// appended as given) under `context` and returns the DDS code for it.
DDS_ReturnCode_t reportCycloneFailure(const char *context, const char *operation, dds_return_t result,
                                      const char *detail = "") noexcept;

// The QoS of the Cyclone entity `handle` into `qos`, an initialized record.
template <typename Qos>
DDS_ReturnCode_t readQos(dds_entity_t handle, Qos *qos, const char *context) noexcept {
    if (!isGiven(qos, context, "qos")) return DDS_RETCODE_BAD_PARAMETER;
    CycloneQos cycloneQos(dds_create_qos());
    if (cycloneQos == nullptr) {
        OBLX_Report_allocationFailure(context, sizeof(void *));
        return DDS_RETCODE_OUT_OF_RESOURCES;
    }
    dds_return_t result = dds_get_qos(handle, cycloneQos.get());
    if (result < 0) return reportCycloneFailure(context, "dds_get_qos", result);
    return fromCyclone(*cycloneQos, *qos, context);
}

// Entities that take no callbacks: a listener with a non-zero mask is
// reported as unsupported and refused.
bool acceptsNoCallbacks(const void *listener, DDS_StatusMask mask, const char *context) noexcept;

// Deletes `record`, one of `owners` of `participant`, unless it is not
// there (DDS_RETCODE_BAD_PARAMETER) or `inUse` says something still uses it
// (DDS_RETCODE_PRECONDITION_NOT_MET). `release` runs on the unlinked record
// under the participant's mutex; the Cyclone entity is deleted without it.
template <typename Record, typename InUse, typename Release>
DDS_ReturnCode_t deleteUnused(DDS_DomainParticipantImpl &participant, std::vector<std::unique_ptr<Record>> &owners,
                              Record *record, InUse inUse, Release release, const char *context) {
    std::unique_ptr<Record> owned;
    {
        std::lock_guard lock(participant.mutex);
        if (!contains(owners, record)) {
            reportBadEntity(context, "entity of another participant");
            return DDS_RETCODE_BAD_PARAMETER;
        }
        if (inUse(*record)) {
            OBLX_Report_failure(context, "it is still in use");
            return DDS_RETCODE_PRECONDITION_NOT_MET;
        }
        owned = unlink(owners, record);
        release(*owned);
    }
    dds_return_t deleted = dds_delete(owned->handle);
    return deleted < 0 ? reportCycloneFailure(context, "dds_delete", deleted) : DDS_RETCODE_OK;
}

// Writers and readers: the key of an instance they know (into an
// initialized sample), the handle of the instance with a sample's key, and
// whether their type is the one named `typeName` (its plugin's own name).
DDS_ReturnCode_t getKeyValue(const DDS_EntityImpl &endpoint, void *keyHolder, DDS_InstanceHandle_t handle,
                             const char *context) noexcept;
DDS_InstanceHandle_t lookupInstance(const DDS_EntityImpl &endpoint, const void *keyHolder,
                                    const char *context) noexcept;
bool isOfType(const DDS_TopicDescriptionImpl &topic, const char *typeName) noexcept;

// The plugin's participant data, dropped with the registration.
void detachParticipant(TypeRegistration &type) noexcept;

// Writers and readers: plugin endpoint data, detached when the endpoint goes.
OBLX_TypePluginEndpointData *attachEndpoint(TypeRegistration &type, OBLX_TypePluginEndpointKind kind) noexcept;
void detachEndpoint(TypeRegistration &type, OBLX_TypePluginEndpointData *data) noexcept;

}  // namespace vexar::dds
