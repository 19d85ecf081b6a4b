// The QoS records mapped onto Cyclone's dds_qos_t and back: one overload
// per policy type each way, walked over each record's policies
// (platform/dds/qos_records.hpp).
#include "platform/dds/qos_cyclone.hpp"

#include <cstring>
#include <type_traits>
#include <utility>

#include "platform/runtime/dds_string.h"
#include "platform/dds/qos_records.hpp"
#include "platform/log/report.h"

namespace vexar::dds {
namespace {

constexpr const char *kOutOfMemoryForString = "out of memory copying a name string";

// ---------------------------------------------------------------------------
// Kinds and durations

// The OMG kinds and Cyclone's are numbered alike, so a kind in range maps by value.
static_assert(int{DDS_RELIABLE_RELIABILITY_QOS} == DDS_RELIABILITY_RELIABLE);
static_assert(int{DDS_PERSISTENT_DURABILITY_QOS} == DDS_DURABILITY_PERSISTENT);
static_assert(int{DDS_KEEP_ALL_HISTORY_QOS} == DDS_HISTORY_KEEP_ALL);
static_assert(int{DDS_EXCLUSIVE_OWNERSHIP_QOS} == DDS_OWNERSHIP_EXCLUSIVE);
static_assert(int{DDS_GROUP_PRESENTATION_QOS} == DDS_PRESENTATION_GROUP);
static_assert(int{DDS_MANUAL_BY_TOPIC_LIVELINESS_QOS} == DDS_LIVELINESS_MANUAL_BY_TOPIC);
static_assert(int{DDS_BY_SOURCE_TIMESTAMP_DESTINATIONORDER_QOS} == DDS_DESTINATIONORDER_BY_SOURCE_TIMESTAMP);

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

constexpr dds_duration_t kNanosecondsPerSecond = 1'000'000'000;

bool isInfinite(const DDS_Duration_t &duration) noexcept {
    return duration.sec == DDS_DURATION_INFINITE_SEC && duration.nanosec == DDS_DURATION_INFINITE_NSEC;
}

std::optional<dds_duration_t> checkedDuration(const DDS_Duration_t &duration, const char *context,
                                              const char *field) noexcept {
    const auto nanoseconds = toCycloneDuration(duration);
    if (!nanoseconds) OBLX_Report_badParameter(context, field);
    return nanoseconds;
}

// ---------------------------------------------------------------------------
// Record -> Cyclone, one overload per policy. False (reported) for a value
// out of range; what Cyclone cannot honour is reported and passed on.

constexpr const char *kVendorSpecificEntityProperty = "vexar.vendor_specific_entity";
constexpr const char *kRoleNameProperty = "vexar.role_name";

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
    if (!kindInRange(policy.kind, DDS_KEEP_ALL_HISTORY_QOS, context, "history.kind")) return false;
    if (policy.kind == DDS_KEEP_LAST_HISTORY_QOS && policy.depth < 1) {
        OBLX_Report_badParameter(context, "history.depth");
        return false;
    }
    dds_qset_history(&cyclone, toCycloneKind<dds_history_kind_t>(policy.kind), policy.depth);
    return true;
}

bool put(dds_qos_t &cyclone, const DDS_OwnershipQosPolicy &policy, const char *context) noexcept {
    if (!kindInRange(policy.kind, DDS_EXCLUSIVE_OWNERSHIP_QOS, context, "ownership.kind")) return false;
    dds_qset_ownership(&cyclone, toCycloneKind<dds_ownership_kind_t>(policy.kind));
    return true;
}

bool put(dds_qos_t &cyclone, const DDS_DeadlineQosPolicy &policy, const char *context) noexcept {
    const auto period = checkedDuration(policy.period, context, "deadline.period");
    if (period) dds_qset_deadline(&cyclone, *period);
    return period.has_value();
}

bool put(dds_qos_t &cyclone, const DDS_LatencyBudgetQosPolicy &policy, const char *context) noexcept {
    const auto duration = checkedDuration(policy.duration, context, "latency_budget.duration");
    if (duration) dds_qset_latency_budget(&cyclone, *duration);
    return duration.has_value();
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

template <typename Qos>
CycloneQos mapToCyclone(const Qos &qos, const char *context) noexcept {
    CycloneQos cyclone{dds_create_qos()};
    if (!cyclone) {
        OBLX_Report_failure(context, "dds_create_qos");
        return nullptr;
    }
    const bool ok = visitPolicies<Qos>([&](auto policy) { return put(*cyclone, qos.*policy, context); });
    return ok ? std::move(cyclone) : nullptr;
}

// ---------------------------------------------------------------------------
// Cyclone -> record, one overload per policy. False only when out of memory.

// A Cyclone-allocated string, freed with dds_free.
struct CycloneString {
    char *text = nullptr;
    ~CycloneString() { dds_free(text); }
};

// Replaces the owned `field` by a copy of `text`; false (field kept) when out of memory.
bool replaceString(char *&field, const char *text) noexcept {
    char *copy = DDS_String_dup(text);
    if (copy == nullptr) return false;
    DDS_String_free(field);
    field = copy;
    return true;
}

// Cyclone's kind or duration into a record field.
template <typename Kind, typename CycloneKind>
void assign(Kind &field, CycloneKind kind) noexcept {
    field = static_cast<Kind>(static_cast<int>(kind));
}
void assign(DDS_Duration_t &field, dds_duration_t nanoseconds) noexcept { field = fromCycloneDuration(nanoseconds); }

// One value read with Cyclone's getter `get`, when the QoS holds it.
template <typename Field, typename Value>
void takeValue(const dds_qos_t &cyclone, bool (*get)(const dds_qos_t *, Value *), Field &field) noexcept {
    Value value;
    if (get(&cyclone, &value)) assign(field, value);
}

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
        policy.coherent_access = coherent ? DDS_BOOLEAN_TRUE : DDS_BOOLEAN_FALSE;
        policy.ordered_access = ordered ? DDS_BOOLEAN_TRUE : DDS_BOOLEAN_FALSE;
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

bool take(const dds_qos_t &cyclone, DDS_ProtocolQosPolicy &policy) noexcept {
    CycloneString value;
    if (dds_qget_prop(&cyclone, kVendorSpecificEntityProperty, &value.text))
        policy.vendor_specific_entity = std::strcmp(value.text, "true") == 0 ? DDS_BOOLEAN_TRUE : DDS_BOOLEAN_FALSE;
    return true;
}

bool take(const dds_qos_t &cyclone, DDS_EntityNameQosPolicy &policy) noexcept {
    CycloneString name;
    CycloneString roleName;
    // Cyclone reports an unset name as present but null.
    const bool hasName = dds_qget_entity_name(&cyclone, &name.text) && name.text != nullptr;
    const bool hasRoleName = dds_qget_prop(&cyclone, kRoleNameProperty, &roleName.text);
    return (!hasName || replaceString(policy.name, name.text)) &&
           (!hasRoleName || replaceString(policy.role_name, roleName.text));
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
    OBLX_Report_failure(context, kOutOfMemoryForString);
    return DDS_RETCODE_OUT_OF_RESOURCES;
}

// Word `index` of the GUID prefix, sent in network byte order.
DDS_Long prefixWord(const dds_guid_t &guid, int index) noexcept {
    uint32_t word = 0;
    for (int byte = 0; byte < 4; ++byte) word = (word << 8) | guid.v[4 * index + byte];
    return static_cast<DDS_Long>(word);
}

}  // namespace

std::optional<dds_duration_t> toCycloneDuration(const DDS_Duration_t &duration) noexcept {
    if (isInfinite(duration)) return DDS_INFINITY;
    if (duration.sec < 0 || duration.nanosec >= kNanosecondsPerSecond) return std::nullopt;
    return duration.sec * kNanosecondsPerSecond + duration.nanosec;
}

DDS_Duration_t fromCycloneDuration(dds_duration_t nanoseconds) noexcept {
    if (nanoseconds <= 0) return DDS_Duration_t DDS_DURATION_ZERO_INITIALIZER;
    if (nanoseconds / kNanosecondsPerSecond >= DDS_DURATION_INFINITE_SEC)
        return DDS_Duration_t DDS_DURATION_INFINITE_INITIALIZER;
    return {static_cast<DDS_Long>(nanoseconds / kNanosecondsPerSecond),
            static_cast<DDS_UnsignedLong>(nanoseconds % kNanosecondsPerSecond)};
}

CycloneQos toCyclone(const DDS_DomainParticipantQos &qos, const char *context) noexcept {
    return mapToCyclone(qos, context);
}
CycloneQos toCyclone(const DDS_PublisherQos &qos, const char *context) noexcept { return mapToCyclone(qos, context); }
CycloneQos toCyclone(const DDS_SubscriberQos &qos, const char *context) noexcept { return mapToCyclone(qos, context); }
CycloneQos toCyclone(const DDS_TopicQos &qos, const char *context) noexcept { return mapToCyclone(qos, context); }
// Cyclone serves late TRANSIENT_LOCAL readers from the durability service's
// history (depth 1 by default), not from the writer's: keep the two alike.
CycloneQos toCyclone(const DDS_DataWriterQos &qos, const char *context) noexcept {
    CycloneQos cyclone = mapToCyclone(qos, context);
    if (cyclone) {
        dds_qset_durability_service(cyclone.get(), 0, toCycloneKind<dds_history_kind_t>(qos.history.kind),
                                    qos.history.depth, DDS_LENGTH_UNLIMITED, DDS_LENGTH_UNLIMITED,
                                    DDS_LENGTH_UNLIMITED);
    }
    return cyclone;
}
CycloneQos toCyclone(const DDS_DataReaderQos &qos, const char *context) noexcept { return mapToCyclone(qos, context); }

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
    out = {prefixWord(guid, 0), prefixWord(guid, 1), prefixWord(guid, 2)};
    return DDS_RETCODE_OK;
}

}  // namespace vexar::dds
