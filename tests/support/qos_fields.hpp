// QoS policies as comparable values (tuples, vectors, strings), so that a
// test compares a record policy by policy and a failure names the policy.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "platform/dds/qos.h"

namespace vexar_test {

// The sequences' getters do not modify them.
inline std::vector<std::string> strings(const DDS_StringSeq &strings) {
    auto *sequence = const_cast<DDS_StringSeq *>(&strings);
    std::vector<std::string> copied;
    for (DDS_Long i = 0; i < DDS_StringSeq_get_length(sequence); ++i)
        copied.emplace_back(DDS_StringSeq_get(sequence, i));
    return copied;
}
inline std::vector<std::string> names(const DDS_PartitionQosPolicy &p) { return strings(p.name); }
inline std::vector<int> bytes(const DDS_OctetSeq &octets) {
    auto *sequence = const_cast<DDS_OctetSeq *>(&octets);
    std::vector<int> bytes;
    for (DDS_Long i = 0; i < DDS_OctetSeq_get_length(sequence); ++i) bytes.push_back(DDS_OctetSeq_get(sequence, i));
    return bytes;
}

inline auto fields(const DDS_Duration_t &d) { return std::tuple{d.sec, d.nanosec}; }
inline auto fields(const DDS_ReliabilityQosPolicy &p) { return std::tuple{p.kind, fields(p.max_blocking_time)}; }
inline auto fields(const DDS_DurabilityQosPolicy &p) { return p.kind; }
inline auto fields(const DDS_HistoryQosPolicy &p) { return std::tuple{p.kind, p.depth}; }
inline auto fields(const DDS_ResourceLimitsQosPolicy &p) {
    return std::tuple{p.max_samples, p.max_instances, p.max_samples_per_instance};
}
inline auto fields(const DDS_OwnershipQosPolicy &p) { return p.kind; }
inline auto fields(const DDS_OwnershipStrengthQosPolicy &p) { return p.value; }
inline auto fields(const DDS_PresentationQosPolicy &p) {
    return std::tuple{p.access_scope, int(p.coherent_access), int(p.ordered_access)};
}
inline auto fields(const DDS_DeadlineQosPolicy &p) { return fields(p.period); }
inline auto fields(const DDS_LatencyBudgetQosPolicy &p) { return fields(p.duration); }
inline auto fields(const DDS_LivelinessQosPolicy &p) { return std::tuple{p.kind, fields(p.lease_duration)}; }
inline auto fields(const DDS_DestinationOrderQosPolicy &p) { return p.kind; }
inline auto fields(const DDS_LifespanQosPolicy &p) { return fields(p.duration); }
inline auto fields(const DDS_DurabilityServiceQosPolicy &p) {
    return std::tuple{fields(p.service_cleanup_delay), p.history_kind, p.history_depth, p.max_samples, p.max_instances,
                      p.max_samples_per_instance};
}
inline auto fields(const DDS_PartitionQosPolicy &p) { return names(p); }
inline auto fields(const DDS_UserDataQosPolicy &p) { return bytes(p.value); }
inline auto fields(const DDS_TopicDataQosPolicy &p) { return bytes(p.value); }
inline auto fields(const DDS_GroupDataQosPolicy &p) { return bytes(p.value); }
inline auto fields(const DDS_TransportPriorityQosPolicy &p) { return p.value; }
inline auto fields(const DDS_WriterDataLifecycleQosPolicy &p) { return int(p.autodispose_unregistered_instances); }
inline auto fields(const DDS_ReaderDataLifecycleQosPolicy &p) {
    return std::tuple{fields(p.autopurge_nowriter_samples_delay), fields(p.autopurge_disposed_samples_delay)};
}
inline auto fields(const DDS_TimeBasedFilterQosPolicy &p) { return fields(p.minimum_separation); }
inline auto fields(const DDS_EntityNameQosPolicy &p) {
    auto text = [](const char *value) { return value != nullptr ? std::string(value) : std::string("(null)"); };
    return std::tuple{text(p.name), text(p.role_name)};
}
inline auto fields(const DDS_WireProtocolQosPolicy &p) {
    return std::tuple{p.rtps_host_id, p.rtps_app_id, p.rtps_instance_id};
}
inline auto fields(const DDS_ProtocolQosPolicy &p) { return int(p.vendor_specific_entity); }
inline auto fields(const DDS_BatchQosPolicy &p) { return int(p.enable); }

#define VEXAR_EXPECT_SAME_POLICY(policy) EXPECT_EQ(fields(actual.policy), fields(expected.policy)) << #policy

template <typename Qos>
void expectSameEndpointPolicies(const Qos &actual, const Qos &expected) {
    VEXAR_EXPECT_SAME_POLICY(reliability);
    VEXAR_EXPECT_SAME_POLICY(durability);
    VEXAR_EXPECT_SAME_POLICY(history);
    VEXAR_EXPECT_SAME_POLICY(resource_limits);
    VEXAR_EXPECT_SAME_POLICY(ownership);
    VEXAR_EXPECT_SAME_POLICY(deadline);
    VEXAR_EXPECT_SAME_POLICY(latency_budget);
    VEXAR_EXPECT_SAME_POLICY(liveliness);
    VEXAR_EXPECT_SAME_POLICY(destination_order);
    VEXAR_EXPECT_SAME_POLICY(protocol);
}

inline void expectSameQos(const DDS_DomainParticipantQos &actual, const DDS_DomainParticipantQos &expected) {
    VEXAR_EXPECT_SAME_POLICY(user_data);
    VEXAR_EXPECT_SAME_POLICY(participant_name);
    VEXAR_EXPECT_SAME_POLICY(wire_protocol);
    VEXAR_EXPECT_SAME_POLICY(protocol);
}

template <typename GroupQos>
requires requires(GroupQos q) { q.presentation; }
void expectSameQos(const GroupQos &actual, const GroupQos &expected) {
    VEXAR_EXPECT_SAME_POLICY(presentation);
    VEXAR_EXPECT_SAME_POLICY(partition);
    VEXAR_EXPECT_SAME_POLICY(group_data);
    VEXAR_EXPECT_SAME_POLICY(protocol);
}

inline void expectSameQos(const DDS_TopicQos &actual, const DDS_TopicQos &expected) {
    expectSameEndpointPolicies(actual, expected);
    VEXAR_EXPECT_SAME_POLICY(durability_service);
    VEXAR_EXPECT_SAME_POLICY(lifespan);
    VEXAR_EXPECT_SAME_POLICY(transport_priority);
    VEXAR_EXPECT_SAME_POLICY(topic_data);
}

inline void expectSameQos(const DDS_DataWriterQos &actual, const DDS_DataWriterQos &expected) {
    expectSameEndpointPolicies(actual, expected);
    VEXAR_EXPECT_SAME_POLICY(durability_service);
    VEXAR_EXPECT_SAME_POLICY(lifespan);
    VEXAR_EXPECT_SAME_POLICY(transport_priority);
    VEXAR_EXPECT_SAME_POLICY(ownership_strength);
    VEXAR_EXPECT_SAME_POLICY(writer_data_lifecycle);
    VEXAR_EXPECT_SAME_POLICY(user_data);
    VEXAR_EXPECT_SAME_POLICY(batch);
}

inline void expectSameQos(const DDS_DataReaderQos &actual, const DDS_DataReaderQos &expected) {
    expectSameEndpointPolicies(actual, expected);
    VEXAR_EXPECT_SAME_POLICY(time_based_filter);
    VEXAR_EXPECT_SAME_POLICY(reader_data_lifecycle);
    VEXAR_EXPECT_SAME_POLICY(user_data);
}

#undef VEXAR_EXPECT_SAME_POLICY

}  // namespace vexar_test
