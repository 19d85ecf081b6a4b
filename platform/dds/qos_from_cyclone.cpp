// Cyclone's dds_qos_t read back into the QoS records: one overload per
// policy type, walked over each record's policies
// (platform/dds/qos_records.hpp). Policies that Cyclone's QoS lacks keep
// the record's values, except those that an entity lacks when nothing was
// set: the names (null) and the vendor-specific flag (false).
#include "platform/dds/qos_cyclone.hpp"

#include <cstring>

#include "platform/runtime/dds_string.h"
#include "platform/dds/qos_records.hpp"
#include "platform/log/report.h"

namespace vexar::dds {
namespace {

// What Cyclone allocated for a value read back, freed with dds_free.
struct CycloneString {
    char *text = nullptr;
    ~CycloneString() { dds_free(text); }
};
struct CycloneBytes {
    void *data = nullptr;
    size_t size = 0;
    ~CycloneBytes() { dds_free(data); }
};
struct CycloneStrings {
    uint32_t count = 0;
    char **texts = nullptr;
    ~CycloneStrings() {
        for (uint32_t i = 0; i < count && texts != nullptr; ++i) dds_free(texts[i]);
        dds_free(texts);
    }
};

// Replaces the owned `field` by a copy of `text`, or by null when `text` is
// null; false (field kept) when out of memory.
bool replaceString(char *&field, const char *text) noexcept {
    char *copy = text != nullptr ? DDS_String_dup(text) : nullptr;
    if (copy == nullptr && text != nullptr) return false;
    DDS_String_free(field);
    field = copy;
    return true;
}

// Cyclone's kind, count, flag or duration into a record field.
template <typename Field, typename CycloneValue>
void assign(Field &field, CycloneValue value) noexcept {
    field = static_cast<Field>(static_cast<int>(value));
}
void assign(DDS_Duration_t &field, dds_duration_t nanoseconds) noexcept { field = fromCycloneDuration(nanoseconds); }

// One value read with Cyclone's getter `get`, when the QoS holds it.
template <typename Field, typename Value>
void takeValue(const dds_qos_t &cyclone, bool (*get)(const dds_qos_t *, Value *), Field &field) noexcept {
    Value value;
    if (get(&cyclone, &value)) assign(field, value);
}

// ---------------------------------------------------------------------------
// One overload per policy. False only when a copy into the record fails.

bool take(const dds_qos_t &cyclone, DDS_ReliabilityQosPolicy &policy) noexcept {
    dds_reliability_kind_t kind;
    dds_duration_t maxBlockingTime;
    if (dds_qget_reliability(&cyclone, &kind, &maxBlockingTime)) {
        assign(policy.kind, kind);
        assign(policy.max_blocking_time, maxBlockingTime);
    }
    return true;
}

bool take(const dds_qos_t &cyclone, DDS_HistoryQosPolicy &policy) noexcept {
    dds_history_kind_t kind;
    int32_t depth;
    if (dds_qget_history(&cyclone, &kind, &depth)) {
        assign(policy.kind, kind);
        policy.depth = depth;
    }
    return true;
}

bool take(const dds_qos_t &cyclone, DDS_ResourceLimitsQosPolicy &policy) noexcept {
    int32_t maxSamples, maxInstances, maxSamplesPerInstance;
    if (dds_qget_resource_limits(&cyclone, &maxSamples, &maxInstances, &maxSamplesPerInstance))
        policy = {maxSamples, maxInstances, maxSamplesPerInstance};
    return true;
}

bool take(const dds_qos_t &cyclone, DDS_LivelinessQosPolicy &policy) noexcept {
    dds_liveliness_kind_t kind;
    dds_duration_t leaseDuration;
    if (dds_qget_liveliness(&cyclone, &kind, &leaseDuration)) {
        assign(policy.kind, kind);
        assign(policy.lease_duration, leaseDuration);
    }
    return true;
}

bool take(const dds_qos_t &cyclone, DDS_PresentationQosPolicy &policy) noexcept {
    dds_presentation_access_scope_kind_t scope;
    bool coherent;
    bool ordered;
    if (dds_qget_presentation(&cyclone, &scope, &coherent, &ordered)) {
        assign(policy.access_scope, scope);
        assign(policy.coherent_access, coherent);
        assign(policy.ordered_access, ordered);
    }
    return true;
}

bool take(const dds_qos_t &cyclone, DDS_DurabilityServiceQosPolicy &policy) noexcept {
    dds_duration_t cleanupDelay;
    dds_history_kind_t historyKind;
    int32_t historyDepth, maxSamples, maxInstances, maxSamplesPerInstance;
    if (dds_qget_durability_service(&cyclone, &cleanupDelay, &historyKind, &historyDepth, &maxSamples, &maxInstances,
                                    &maxSamplesPerInstance)) {
        assign(policy.service_cleanup_delay, cleanupDelay);
        assign(policy.history_kind, historyKind);
        policy.history_depth = historyDepth;
        policy.max_samples = maxSamples;
        policy.max_instances = maxInstances;
        policy.max_samples_per_instance = maxSamplesPerInstance;
    }
    return true;
}

bool take(const dds_qos_t &cyclone, DDS_ReaderDataLifecycleQosPolicy &policy) noexcept {
    dds_duration_t noWriterDelay, disposedDelay;
    if (dds_qget_reader_data_lifecycle(&cyclone, &noWriterDelay, &disposedDelay)) {
        assign(policy.autopurge_nowriter_samples_delay, noWriterDelay);
        assign(policy.autopurge_disposed_samples_delay, disposedDelay);
    }
    return true;
}

bool take(const dds_qos_t &cyclone, DDS_DurabilityQosPolicy &policy) noexcept {
    takeValue(cyclone, dds_qget_durability, policy.kind);
    return true;
}

bool take(const dds_qos_t &cyclone, DDS_OwnershipQosPolicy &policy) noexcept {
    takeValue(cyclone, dds_qget_ownership, policy.kind);
    return true;
}

bool take(const dds_qos_t &cyclone, DDS_OwnershipStrengthQosPolicy &policy) noexcept {
    takeValue(cyclone, dds_qget_ownership_strength, policy.value);
    return true;
}

bool take(const dds_qos_t &cyclone, DDS_DestinationOrderQosPolicy &policy) noexcept {
    takeValue(cyclone, dds_qget_destination_order, policy.kind);
    return true;
}

bool take(const dds_qos_t &cyclone, DDS_DeadlineQosPolicy &policy) noexcept {
    takeValue(cyclone, dds_qget_deadline, policy.period);
    return true;
}

bool take(const dds_qos_t &cyclone, DDS_LatencyBudgetQosPolicy &policy) noexcept {
    takeValue(cyclone, dds_qget_latency_budget, policy.duration);
    return true;
}

bool take(const dds_qos_t &cyclone, DDS_LifespanQosPolicy &policy) noexcept {
    takeValue(cyclone, dds_qget_lifespan, policy.duration);
    return true;
}

bool take(const dds_qos_t &cyclone, DDS_TimeBasedFilterQosPolicy &policy) noexcept {
    takeValue(cyclone, dds_qget_time_based_filter, policy.minimum_separation);
    return true;
}

bool take(const dds_qos_t &cyclone, DDS_TransportPriorityQosPolicy &policy) noexcept {
    takeValue(cyclone, dds_qget_transport_priority, policy.value);
    return true;
}

bool take(const dds_qos_t &cyclone, DDS_WriterDataLifecycleQosPolicy &policy) noexcept {
    takeValue(cyclone, dds_qget_writer_data_lifecycle, policy.autodispose_unregistered_instances);
    return true;
}

// The sequences copy into the record's own, which may be on loan and then
// must be long enough (the sequence reports it otherwise).
bool take(const dds_qos_t &cyclone, DDS_PartitionQosPolicy &policy) noexcept {
    CycloneStrings names;
    if (!dds_qget_partition(&cyclone, &names.count, &names.texts)) return true;
    return DDS_StringSeq_from_array(&policy.name, names.texts, static_cast<DDS_Long>(names.count));
}

// The bytes of user, topic or group data read with Cyclone's getter `get`.
bool takeOctets(const dds_qos_t &cyclone, bool (*get)(const dds_qos_t *, void **, size_t *),
                DDS_OctetSeq &octets) noexcept {
    CycloneBytes bytes;
    if (!get(&cyclone, &bytes.data, &bytes.size)) return true;
    return DDS_OctetSeq_from_array(&octets, static_cast<const DDS_Octet *>(bytes.data),
                                   static_cast<DDS_Long>(bytes.size));
}

bool take(const dds_qos_t &cyclone, DDS_UserDataQosPolicy &policy) noexcept {
    return takeOctets(cyclone, dds_qget_userdata, policy.value);
}

bool take(const dds_qos_t &cyclone, DDS_TopicDataQosPolicy &policy) noexcept {
    return takeOctets(cyclone, dds_qget_topicdata, policy.value);
}

bool take(const dds_qos_t &cyclone, DDS_GroupDataQosPolicy &policy) noexcept {
    return takeOctets(cyclone, dds_qget_groupdata, policy.value);
}

// Without the property the entity is not ours (an application's Cyclone
// participant).
bool take(const dds_qos_t &cyclone, DDS_ProtocolQosPolicy &policy) noexcept {
    CycloneString value;
    const bool vendorSpecific =
        dds_qget_prop(&cyclone, kVendorSpecificEntityProperty, &value.text) && std::strcmp(value.text, "true") == 0;
    assign(policy.vendor_specific_entity, vendorSpecific);
    return true;
}

// A name that was not set reads back as null (Cyclone reports an unset
// entity name as present but null).
bool take(const dds_qos_t &cyclone, DDS_EntityNameQosPolicy &policy) noexcept {
    CycloneString name;
    CycloneString roleName;
    dds_qget_entity_name(&cyclone, &name.text);
    dds_qget_prop(&cyclone, kRoleNameProperty, &roleName.text);
    return replaceString(policy.name, name.text) && replaceString(policy.role_name, roleName.text);
}

bool take(const dds_qos_t &, DDS_BatchQosPolicy &) noexcept {
    return true;  // the writer keeps it
}

bool take(const dds_qos_t &, DDS_WireProtocolQosPolicy &) noexcept {
    return true;  // not part of a QoS in Cyclone: the GUID holds it
}

template <typename Qos>
DDS_ReturnCode_t mapFromCyclone(const dds_qos_t &cyclone, Qos &qos, const char *context) noexcept {
    if (visitPolicies<Qos>([&](auto policy) { return take(cyclone, qos.*policy); })) return DDS_RETCODE_OK;
    OBLX_Report_failure(context, "copying a name or a sequence read back from Cyclone");
    return DDS_RETCODE_OUT_OF_RESOURCES;
}

}  // namespace

DDS_Duration_t fromCycloneDuration(dds_duration_t nanoseconds) noexcept {
    if (nanoseconds <= 0) return DDS_Duration_t DDS_DURATION_ZERO_INITIALIZER;
    if (nanoseconds / kNanosecondsPerSecond >= DDS_DURATION_INFINITE_SEC)
        return DDS_Duration_t DDS_DURATION_INFINITE_INITIALIZER;
    return {static_cast<DDS_Long>(nanoseconds / kNanosecondsPerSecond),
            static_cast<DDS_UnsignedLong>(nanoseconds % kNanosecondsPerSecond)};
}

DDS_ReturnCode_t fromCyclone(const dds_qos_t &cyclone, DDS_DomainParticipantQos &qos, const char *context) noexcept {
    return mapFromCyclone(cyclone, qos, context);
}
DDS_ReturnCode_t fromCyclone(const dds_qos_t &cyclone, DDS_PublisherQos &qos, const char *context) noexcept {
    return mapFromCyclone(cyclone, qos, context);
}
DDS_ReturnCode_t fromCyclone(const dds_qos_t &cyclone, DDS_SubscriberQos &qos, const char *context) noexcept {
    return mapFromCyclone(cyclone, qos, context);
}
DDS_ReturnCode_t fromCyclone(const dds_qos_t &cyclone, DDS_TopicQos &qos, const char *context) noexcept {
    return mapFromCyclone(cyclone, qos, context);
}
DDS_ReturnCode_t fromCyclone(const dds_qos_t &cyclone, DDS_DataWriterQos &qos, const char *context) noexcept {
    return mapFromCyclone(cyclone, qos, context);
}
DDS_ReturnCode_t fromCyclone(const dds_qos_t &cyclone, DDS_DataReaderQos &qos, const char *context) noexcept {
    return mapFromCyclone(cyclone, qos, context);
}

DDS_ReturnCode_t wireProtocolFromParticipant(dds_entity_t participant, DDS_WireProtocolQosPolicy &out,
                                             const char *context) noexcept {
    dds_guid_t guid;
    if (participant <= 0 || dds_get_participant(participant) != participant) {
        OBLX_Report_badParameter(context, "participant");
        return DDS_RETCODE_BAD_PARAMETER;
    }
    if (dds_get_guid(participant, &guid) < 0) {
        OBLX_Report_getFailure(context, "participant GUID");
        return DDS_RETCODE_ERROR;
    }
    out = wireProtocolFromGuid(guid);
    return DDS_RETCODE_OK;
}

DDS_WireProtocolQosPolicy wireProtocolFromGuid(const dds_guid_t &guid) noexcept {
    // Word `index` of the GUID prefix, sent in network byte order.
    auto prefixWord = [&guid](int index) {
        uint32_t word = 0;
        for (int byte = 0; byte < 4; ++byte) word = (word << 8) | guid.v[4 * index + byte];
        return static_cast<DDS_Long>(word);
    };
    return {prefixWord(0), prefixWord(1), prefixWord(2)};
}

}  // namespace vexar::dds
