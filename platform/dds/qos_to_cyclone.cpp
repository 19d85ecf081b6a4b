// The QoS records mapped onto Cyclone's dds_qos_t: one overload per policy
// type, walked over each record's policies (platform/dds/qos_records.hpp).
// A value out of range is refused, reported with its field's name; what
// Cyclone cannot honour is reported and passed on (see platform/dds/qos.h).
#include "platform/dds/qos_cyclone.hpp"

#include <algorithm>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/dds/qos_records.hpp"
#include "platform/log/report.h"

namespace vexar::dds {
namespace {

// ---------------------------------------------------------------------------
// Kinds, durations and counts

// The OMG kinds and Cyclone's are numbered alike, so a kind in range maps by value.
static_assert(int{DDS_RELIABLE_RELIABILITY_QOS} == DDS_RELIABILITY_RELIABLE);
static_assert(int{DDS_PERSISTENT_DURABILITY_QOS} == DDS_DURABILITY_PERSISTENT);
static_assert(int{DDS_KEEP_ALL_HISTORY_QOS} == DDS_HISTORY_KEEP_ALL);
static_assert(int{DDS_EXCLUSIVE_OWNERSHIP_QOS} == DDS_OWNERSHIP_EXCLUSIVE);
static_assert(int{DDS_GROUP_PRESENTATION_QOS} == DDS_PRESENTATION_GROUP);
static_assert(int{DDS_MANUAL_BY_TOPIC_LIVELINESS_QOS} == DDS_LIVELINESS_MANUAL_BY_TOPIC);
static_assert(int{DDS_BY_SOURCE_TIMESTAMP_DESTINATIONORDER_QOS} == DDS_DESTINATIONORDER_BY_SOURCE_TIMESTAMP);
static_assert(DDS_LENGTH_UNLIMITED == -1, "Cyclone's unlimited count too");

// C callers can store any int in an enum field, which C++ may not even load
// as the enum: check the stored integer before the field is used.
template <typename Kind>
bool kindInRange(const Kind &kind, Kind last, const char *context, const char *field) noexcept {
    std::underlying_type_t<Kind> stored;
    static_assert(sizeof stored == sizeof kind);
    std::memcpy(&stored, &kind, sizeof stored);
    const auto value = static_cast<long long>(stored);
    if (value >= 0 && value <= static_cast<long long>(last)) return true;
    OBLX_Report_badParameter(context, field);
    return false;
}

template <typename CycloneKind, typename Kind>
CycloneKind toCycloneKind(Kind kind) noexcept {
    return static_cast<CycloneKind>(static_cast<int>(kind));
}

bool isInfinite(const DDS_Duration_t &duration) noexcept {
    return duration.sec == DDS_DURATION_INFINITE_SEC && duration.nanosec == DDS_DURATION_INFINITE_NSEC;
}

std::optional<dds_duration_t> checkedDuration(const DDS_Duration_t &duration, const char *context,
                                              const char *field) noexcept {
    const auto nanoseconds = toCycloneDuration(duration);
    if (!nanoseconds) OBLX_Report_badParameter(context, field);
    return nanoseconds;
}

// One duration through Cyclone's setter `set`.
bool putDuration(dds_qos_t &cyclone, void (*set)(dds_qos_t *, dds_duration_t), const DDS_Duration_t &duration,
                 const char *context, const char *field) noexcept {
    const auto nanoseconds = checkedDuration(duration, context, field);
    if (nanoseconds) set(&cyclone, *nanoseconds);
    return nanoseconds.has_value();
}

// A KEEP_LAST history keeps at least one sample; KEEP_ALL ignores the depth.
bool historyInRange(const DDS_HistoryQosPolicyKind &kind, DDS_Long depth, const char *context, const char *kindField,
                    const char *depthField) noexcept {
    if (!kindInRange(kind, DDS_KEEP_ALL_HISTORY_QOS, context, kindField)) return false;
    if (kind == DDS_KEEP_LAST_HISTORY_QOS && depth < 1) {
        OBLX_Report_badParameter(context, depthField);
        return false;
    }
    return true;
}

// A KEEP_LAST depth fits in what an instance may keep. `kind` is in range.
bool depthWithinLimit(DDS_HistoryQosPolicyKind kind, DDS_Long depth, DDS_Long maxSamplesPerInstance,
                      const char *context, const char *field) noexcept {
    if (kind != DDS_KEEP_LAST_HISTORY_QOS || maxSamplesPerInstance == DDS_LENGTH_UNLIMITED ||
        depth <= maxSamplesPerInstance)
        return true;
    OBLX_Report_badParameter(context, field);
    return false;
}

// The names of the three count limits of a policy, for reports.
struct LimitFields {
    const char *maxSamples;
    const char *maxInstances;
    const char *maxSamplesPerInstance;
    const char *perInstanceAboveAll;
};
constexpr LimitFields kResourceLimits = {"resource_limits.max_samples", "resource_limits.max_instances",
                                         "resource_limits.max_samples_per_instance",
                                         "resource_limits.max_samples_per_instance (above max_samples)"};
constexpr LimitFields kDurabilityServiceLimits = {"durability_service.max_samples", "durability_service.max_instances",
                                                  "durability_service.max_samples_per_instance",
                                                  "durability_service.max_samples_per_instance (above max_samples)"};

bool limitInRange(DDS_Long limit, const char *context, const char *field) noexcept {
    if (limit >= 1 || limit == DDS_LENGTH_UNLIMITED) return true;
    OBLX_Report_badParameter(context, field);
    return false;
}

// Each count at least 1 or unlimited, and an instance keeps no more than all.
bool limitsInRange(DDS_Long maxSamples, DDS_Long maxInstances, DDS_Long maxSamplesPerInstance,
                   const LimitFields &fields, const char *context) noexcept {
    bool ok = limitInRange(maxSamples, context, fields.maxSamples);
    ok = limitInRange(maxInstances, context, fields.maxInstances) && ok;
    ok = limitInRange(maxSamplesPerInstance, context, fields.maxSamplesPerInstance) && ok;
    if (ok && maxSamples != DDS_LENGTH_UNLIMITED && maxSamplesPerInstance != DDS_LENGTH_UNLIMITED &&
        maxSamplesPerInstance > maxSamples) {
        OBLX_Report_badParameter(context, fields.perInstanceAboveAll);
        return false;
    }
    return ok;
}

bool isUnlimited(const DDS_ResourceLimitsQosPolicy &limits) noexcept {
    return limits.max_samples == DDS_LENGTH_UNLIMITED && limits.max_instances == DDS_LENGTH_UNLIMITED &&
           limits.max_samples_per_instance == DDS_LENGTH_UNLIMITED;
}

// The elements of a sequence, read through its C accessors, which leave it
// as it is. Empty when out of memory (reported).
template <typename Seq, typename Element>
std::optional<std::vector<Element>> elementsOf(const Seq &sequence, DDS_Long (*length)(Seq *),
                                               Element (*get)(Seq *, DDS_Long), const char *context) noexcept {
    auto *readable = const_cast<Seq *>(&sequence);
    try {
        std::vector<Element> elements(static_cast<size_t>(std::max(length(readable), DDS_Long{0})));
        for (size_t i = 0; i < elements.size(); ++i) elements[i] = get(readable, static_cast<DDS_Long>(i));
        return elements;
    } catch (const std::bad_alloc &) {
        OBLX_Report_failure(context, "out of memory");
        return std::nullopt;
    }
}

// ---------------------------------------------------------------------------
// One overload per policy. False (reported) for a value out of range.

bool put(dds_qos_t &cyclone, const DDS_ReliabilityQosPolicy &policy, const char *context) noexcept {
    const auto maxBlockingTime = checkedDuration(policy.max_blocking_time, context, "reliability.max_blocking_time");
    if (!kindInRange(policy.kind, DDS_RELIABLE_RELIABILITY_QOS, context, "reliability.kind") || !maxBlockingTime)
        return false;
    dds_qset_reliability(&cyclone, toCycloneKind<dds_reliability_kind_t>(policy.kind), *maxBlockingTime);
    return true;
}

bool put(dds_qos_t &cyclone, const DDS_DurabilityQosPolicy &policy, const char *context) noexcept {
    if (!kindInRange(policy.kind, DDS_PERSISTENT_DURABILITY_QOS, context, "durability.kind")) return false;
    if (policy.kind >= DDS_TRANSIENT_DURABILITY_QOS)
        OBLX_Report_unsupported(context, "durability TRANSIENT or PERSISTENT (no durability service: "
                                         "late joiners get no history)");
    dds_qset_durability(&cyclone, toCycloneKind<dds_durability_kind_t>(policy.kind));
    return true;
}

bool put(dds_qos_t &cyclone, const DDS_HistoryQosPolicy &policy, const char *context) noexcept {
    if (!historyInRange(policy.kind, policy.depth, context, "history.kind", "history.depth")) return false;
    dds_qset_history(&cyclone, toCycloneKind<dds_history_kind_t>(policy.kind), policy.depth);
    return true;
}

bool put(dds_qos_t &cyclone, const DDS_ResourceLimitsQosPolicy &policy, const char *context) noexcept {
    if (!limitsInRange(policy.max_samples, policy.max_instances, policy.max_samples_per_instance, kResourceLimits,
                       context))
        return false;
    dds_qset_resource_limits(&cyclone, policy.max_samples, policy.max_instances, policy.max_samples_per_instance);
    return true;
}

bool put(dds_qos_t &cyclone, const DDS_OwnershipQosPolicy &policy, const char *context) noexcept {
    if (!kindInRange(policy.kind, DDS_EXCLUSIVE_OWNERSHIP_QOS, context, "ownership.kind")) return false;
    dds_qset_ownership(&cyclone, toCycloneKind<dds_ownership_kind_t>(policy.kind));
    return true;
}

bool put(dds_qos_t &cyclone, const DDS_OwnershipStrengthQosPolicy &policy, const char *) noexcept {
    dds_qset_ownership_strength(&cyclone, policy.value);
    return true;
}

bool put(dds_qos_t &cyclone, const DDS_DeadlineQosPolicy &policy, const char *context) noexcept {
    return putDuration(cyclone, dds_qset_deadline, policy.period, context, "deadline.period");
}

bool put(dds_qos_t &cyclone, const DDS_LatencyBudgetQosPolicy &policy, const char *context) noexcept {
    return putDuration(cyclone, dds_qset_latency_budget, policy.duration, context, "latency_budget.duration");
}

bool put(dds_qos_t &cyclone, const DDS_LifespanQosPolicy &policy, const char *context) noexcept {
    return putDuration(cyclone, dds_qset_lifespan, policy.duration, context, "lifespan.duration");
}

bool put(dds_qos_t &cyclone, const DDS_LivelinessQosPolicy &policy, const char *context) noexcept {
    const auto leaseDuration = checkedDuration(policy.lease_duration, context, "liveliness.lease_duration");
    if (!kindInRange(policy.kind, DDS_MANUAL_BY_TOPIC_LIVELINESS_QOS, context, "liveliness.kind") || !leaseDuration)
        return false;
    dds_qset_liveliness(&cyclone, toCycloneKind<dds_liveliness_kind_t>(policy.kind), *leaseDuration);
    return true;
}

bool put(dds_qos_t &cyclone, const DDS_DestinationOrderQosPolicy &policy, const char *context) noexcept {
    if (!kindInRange(policy.kind, DDS_BY_SOURCE_TIMESTAMP_DESTINATIONORDER_QOS, context, "destination_order.kind"))
        return false;
    dds_qset_destination_order(&cyclone, toCycloneKind<dds_destination_order_kind_t>(policy.kind));
    return true;
}

bool put(dds_qos_t &cyclone, const DDS_DurabilityServiceQosPolicy &policy, const char *context) noexcept {
    const auto cleanupDelay =
        checkedDuration(policy.service_cleanup_delay, context, "durability_service.service_cleanup_delay");
    bool ok = historyInRange(policy.history_kind, policy.history_depth, context, "durability_service.history_kind",
                             "durability_service.history_depth");
    ok = ok && depthWithinLimit(policy.history_kind, policy.history_depth, policy.max_samples_per_instance, context,
                                "durability_service.history_depth (above max_samples_per_instance)");
    ok = limitsInRange(policy.max_samples, policy.max_instances, policy.max_samples_per_instance,
                       kDurabilityServiceLimits, context) &&
         ok;
    if (!ok || !cleanupDelay) return false;
    dds_qset_durability_service(&cyclone, *cleanupDelay, toCycloneKind<dds_history_kind_t>(policy.history_kind),
                                policy.history_depth, policy.max_samples, policy.max_instances,
                                policy.max_samples_per_instance);
    return true;
}

bool put(dds_qos_t &cyclone, const DDS_TransportPriorityQosPolicy &policy, const char *context) noexcept {
    if (policy.value != 0) OBLX_Report_unsupported(context, "transport_priority (Cyclone sends all data alike)");
    dds_qset_transport_priority(&cyclone, policy.value);
    return true;
}

bool put(dds_qos_t &cyclone, const DDS_WriterDataLifecycleQosPolicy &policy, const char *) noexcept {
    dds_qset_writer_data_lifecycle(&cyclone, policy.autodispose_unregistered_instances != DDS_BOOLEAN_FALSE);
    return true;
}

bool put(dds_qos_t &cyclone, const DDS_ReaderDataLifecycleQosPolicy &policy, const char *context) noexcept {
    const auto noWriterDelay = checkedDuration(policy.autopurge_nowriter_samples_delay, context,
                                               "reader_data_lifecycle.autopurge_nowriter_samples_delay");
    const auto disposedDelay = checkedDuration(policy.autopurge_disposed_samples_delay, context,
                                               "reader_data_lifecycle.autopurge_disposed_samples_delay");
    if (!noWriterDelay || !disposedDelay) return false;
    if (*noWriterDelay != DDS_INFINITY || *disposedDelay != DDS_INFINITY)
        OBLX_Report_unsupported(context, "reader_data_lifecycle delays other than infinite (Cyclone readers purge "
                                         "no instance by themselves)");
    dds_qset_reader_data_lifecycle(&cyclone, *noWriterDelay, *disposedDelay);
    return true;
}

bool put(dds_qos_t &cyclone, const DDS_TimeBasedFilterQosPolicy &policy, const char *context) noexcept {
    const auto separation = checkedDuration(policy.minimum_separation, context, "time_based_filter.minimum_separation");
    if (!separation) return false;
    if (*separation > 0)
        OBLX_Report_unsupported(context, "time_based_filter.minimum_separation (Cyclone readers get every sample)");
    dds_qset_time_based_filter(&cyclone, *separation);
    return true;
}

bool put(dds_qos_t &cyclone, const DDS_PresentationQosPolicy &policy, const char *context) noexcept {
    if (!kindInRange(policy.access_scope, DDS_GROUP_PRESENTATION_QOS, context, "presentation.access_scope"))
        return false;
    const bool coherent = policy.coherent_access != DDS_BOOLEAN_FALSE;
    const bool ordered = policy.ordered_access != DDS_BOOLEAN_FALSE;
    if (coherent) OBLX_Report_unsupported(context, "presentation.coherent_access (Cyclone has no coherent sets)");
    if (ordered && policy.access_scope != DDS_INSTANCE_PRESENTATION_QOS)
        OBLX_Report_unsupported(context, "presentation.ordered_access beyond INSTANCE access_scope");
    dds_qset_presentation(&cyclone, toCycloneKind<dds_presentation_access_scope_kind_t>(policy.access_scope), coherent,
                          ordered);
    return true;
}

bool put(dds_qos_t &cyclone, const DDS_PartitionQosPolicy &policy, const char *context) noexcept {
    const auto names = elementsOf(policy.name, DDS_StringSeq_get_length, DDS_StringSeq_get, context);
    if (!names) return false;
    if (std::find(names->begin(), names->end(), nullptr) != names->end()) {
        OBLX_Report_badParameter(context, "partition.name (a null name)");
        return false;
    }
    dds_qset_partition(&cyclone, static_cast<uint32_t>(names->size()), const_cast<const char **>(names->data()));
    return true;
}

// The bytes of user, topic or group data through Cyclone's setter `set`.
bool putOctets(dds_qos_t &cyclone, void (*set)(dds_qos_t *, const void *, size_t), const DDS_OctetSeq &octets,
               const char *context) noexcept {
    const auto bytes = elementsOf(octets, DDS_OctetSeq_get_length, DDS_OctetSeq_get, context);
    if (bytes) set(&cyclone, bytes->data(), bytes->size());
    return bytes.has_value();
}

bool put(dds_qos_t &cyclone, const DDS_UserDataQosPolicy &policy, const char *context) noexcept {
    return putOctets(cyclone, dds_qset_userdata, policy.value, context);
}

bool put(dds_qos_t &cyclone, const DDS_TopicDataQosPolicy &policy, const char *context) noexcept {
    return putOctets(cyclone, dds_qset_topicdata, policy.value, context);
}

bool put(dds_qos_t &cyclone, const DDS_GroupDataQosPolicy &policy, const char *context) noexcept {
    return putOctets(cyclone, dds_qset_groupdata, policy.value, context);
}

bool put(dds_qos_t &cyclone, const DDS_ProtocolQosPolicy &policy, const char *) noexcept {
    const bool vendorSpecific = policy.vendor_specific_entity != DDS_BOOLEAN_FALSE;
    dds_qset_prop(&cyclone, kVendorSpecificEntityProperty, vendorSpecific ? "true" : "false");
    return true;
}

// Not a QoS in Cyclone but a switch for the process: the writer sets it
// when it is created (see platform/dds/qos.h).
bool put(dds_qos_t &, const DDS_BatchQosPolicy &, const char *) noexcept { return true; }

bool put(dds_qos_t &cyclone, const DDS_EntityNameQosPolicy &policy, const char *) noexcept {
    if (policy.name != nullptr) dds_qset_entity_name(&cyclone, policy.name);
    if (policy.role_name != nullptr) dds_qset_prop(&cyclone, kRoleNameProperty, policy.role_name);
    return true;
}

bool put(dds_qos_t &, const DDS_WireProtocolQosPolicy &policy, const char *context) noexcept {
    if (policy.rtps_host_id != DDS_RTPS_AUTO_ID || policy.rtps_app_id != DDS_RTPS_AUTO_ID ||
        policy.rtps_instance_id != DDS_RTPS_AUTO_ID)
        OBLX_Report_unsupported(context, "wire_protocol ids chosen by the application (Cyclone derives them "
                                         "from the participant's GUID)");
    return true;
}

// ---------------------------------------------------------------------------
// Whole records

// Policies that must agree with each other. Cyclone refuses such records
// too, but without naming the fields. Every policy is in range already.
template <typename Qos>
bool policiesAgree(const Qos &qos, const char *context) noexcept {
    bool ok = true;
    if constexpr (requires { qos.resource_limits; }) {
        ok = depthWithinLimit(qos.history.kind, qos.history.depth, qos.resource_limits.max_samples_per_instance,
                              context, "history.depth (above resource_limits.max_samples_per_instance)");
    }
    if constexpr (requires { qos.time_based_filter; }) {
        if (*toCycloneDuration(qos.time_based_filter.minimum_separation) > *toCycloneDuration(qos.deadline.period)) {
            OBLX_Report_badParameter(context, "time_based_filter.minimum_separation (above deadline.period)");
            ok = false;
        }
    }
    return ok;
}

template <typename Qos>
CycloneQos mapToCyclone(const Qos &qos, const char *context) noexcept {
    CycloneQos cyclone{dds_create_qos()};
    if (!cyclone) {
        OBLX_Report_failure(context, "dds_create_qos");
        return nullptr;
    }
    const bool ok = visitPolicies<Qos>([&](auto policy) { return put(*cyclone, qos.*policy, context); });
    return ok && policiesAgree(qos, context) ? std::move(cyclone) : nullptr;
}

// Cyclone serves late TRANSIENT_LOCAL readers from the durability service's
// history (depth 1 by default), not from the writer's: there it gets the
// writer's own history and limits, as the OMG semantics ask.
void serveLateJoinersFromWriterHistory(dds_qos_t &cyclone, const DDS_DataWriterQos &qos,
                                       dds_duration_t cleanupDelay) noexcept {
    const DDS_ResourceLimitsQosPolicy &limits = qos.resource_limits;
    dds_qset_durability_service(&cyclone, cleanupDelay, toCycloneKind<dds_history_kind_t>(qos.history.kind),
                                qos.history.depth, limits.max_samples, limits.max_instances,
                                limits.max_samples_per_instance);
}

// The cleanup delay is left out: it bounds nothing that a writer keeps.
bool keepsDefaultHistory(const DDS_DurabilityServiceQosPolicy &service) noexcept {
    const DDS_DurabilityServiceQosPolicy defaults = DDS_DURABILITY_SERVICE_QOS_POLICY_DEFAULT;
    return service.history_kind == defaults.history_kind && service.history_depth == defaults.history_depth &&
           service.max_samples == defaults.max_samples && service.max_instances == defaults.max_instances &&
           service.max_samples_per_instance == defaults.max_samples_per_instance;
}

}  // namespace

std::optional<dds_duration_t> toCycloneDuration(const DDS_Duration_t &duration) noexcept {
    if (isInfinite(duration)) return DDS_INFINITY;
    if (duration.sec < 0 || duration.nanosec >= kNanosecondsPerSecond) return std::nullopt;
    return duration.sec * kNanosecondsPerSecond + duration.nanosec;
}

CycloneQos toCyclone(const DDS_DomainParticipantQos &qos, const char *context) noexcept {
    return mapToCyclone(qos, context);
}
CycloneQos toCyclone(const DDS_PublisherQos &qos, const char *context) noexcept { return mapToCyclone(qos, context); }
CycloneQos toCyclone(const DDS_SubscriberQos &qos, const char *context) noexcept { return mapToCyclone(qos, context); }
CycloneQos toCyclone(const DDS_TopicQos &qos, const char *context) noexcept { return mapToCyclone(qos, context); }
CycloneQos toCyclone(const DDS_DataReaderQos &qos, const char *context) noexcept { return mapToCyclone(qos, context); }

CycloneQos toCyclone(const DDS_DataWriterQos &qos, const char *context) noexcept {
    CycloneQos cyclone = mapToCyclone(qos, context);
    if (!cyclone) return cyclone;
    if (!isUnlimited(qos.resource_limits))
        OBLX_Report_unsupported(context, "resource_limits of a writer (Cyclone bounds a writer's unacknowledged "
                                         "data in bytes, not in samples)");
    // A durability service of the application's own stays as it is: late
    // joiners get that bounded history while live readers get everything.
    if (qos.durability.kind == DDS_TRANSIENT_LOCAL_DURABILITY_QOS && keepsDefaultHistory(qos.durability_service))
        serveLateJoinersFromWriterHistory(*cyclone, qos,
                                          *toCycloneDuration(qos.durability_service.service_cleanup_delay));
    return cyclone;
}

}  // namespace vexar::dds
