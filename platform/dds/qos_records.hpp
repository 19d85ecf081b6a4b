// Each QoS record of platform/dds/qos.h described once, as the tuple of its
// policies, with its defaults. Copy, finalize and both Cyclone mappings walk
// that tuple with one overload per policy type.
#pragma once

#include <tuple>

#include "platform/dds/qos.h"

namespace vexar::dds {

// The policies of each record. Topics, writers and readers share the first
// ones (in the order of their records, as the initializers are positional).
template <typename Qos>
inline constexpr auto kEndpointPolicies =
    std::tuple{&Qos::reliability, &Qos::durability,     &Qos::history,    &Qos::resource_limits,   &Qos::ownership,
               &Qos::deadline,    &Qos::latency_budget, &Qos::liveliness, &Qos::destination_order, &Qos::protocol};
template <typename Qos>
extern const int kPolicies;  // only the specializations below exist
template <>
inline constexpr auto
    kPolicies<DDS_TopicQos> = std::tuple_cat(kEndpointPolicies<DDS_TopicQos>,
                                             std::tuple{&DDS_TopicQos::durability_service, &DDS_TopicQos::lifespan,
                                                        &DDS_TopicQos::transport_priority, &DDS_TopicQos::topic_data});
template <>
inline constexpr auto kPolicies<DDS_DataWriterQos> = std::tuple_cat(
    kEndpointPolicies<DDS_DataWriterQos>,
    std::tuple{&DDS_DataWriterQos::durability_service, &DDS_DataWriterQos::lifespan,
               &DDS_DataWriterQos::transport_priority, &DDS_DataWriterQos::ownership_strength,
               &DDS_DataWriterQos::writer_data_lifecycle, &DDS_DataWriterQos::user_data, &DDS_DataWriterQos::batch});
template <>
inline constexpr auto kPolicies<DDS_DataReaderQos> =
    std::tuple_cat(kEndpointPolicies<DDS_DataReaderQos>,
                   std::tuple{&DDS_DataReaderQos::time_based_filter, &DDS_DataReaderQos::reader_data_lifecycle,
                              &DDS_DataReaderQos::user_data});
template <>
inline constexpr auto kPolicies<DDS_PublisherQos> =
    std::tuple{&DDS_PublisherQos::presentation, &DDS_PublisherQos::partition, &DDS_PublisherQos::group_data,
               &DDS_PublisherQos::protocol};
template <>
inline constexpr auto kPolicies<DDS_SubscriberQos> =
    std::tuple{&DDS_SubscriberQos::presentation, &DDS_SubscriberQos::partition, &DDS_SubscriberQos::group_data,
               &DDS_SubscriberQos::protocol};
template <>
inline constexpr auto kPolicies<DDS_DomainParticipantQos> =
    std::tuple{&DDS_DomainParticipantQos::user_data, &DDS_DomainParticipantQos::participant_name,
               &DDS_DomainParticipantQos::wire_protocol, &DDS_DomainParticipantQos::protocol};

// The defaults of each record: the header's static initializers.
template <typename Qos>
extern const Qos kDefaults;
template <>
inline constexpr DDS_DomainParticipantQos kDefaults<DDS_DomainParticipantQos> = DDS_DomainParticipantQos_INITIALIZER;
template <>
inline constexpr DDS_PublisherQos kDefaults<DDS_PublisherQos> = DDS_PublisherQos_INITIALIZER;
template <>
inline constexpr DDS_SubscriberQos kDefaults<DDS_SubscriberQos> = DDS_SubscriberQos_INITIALIZER;
template <>
inline constexpr DDS_TopicQos kDefaults<DDS_TopicQos> = DDS_TopicQos_INITIALIZER;
template <>
inline constexpr DDS_DataWriterQos kDefaults<DDS_DataWriterQos> = DDS_DataWriterQos_INITIALIZER;
template <>
inline constexpr DDS_DataReaderQos kDefaults<DDS_DataReaderQos> = DDS_DataReaderQos_INITIALIZER;

// Calls `visit` with the member pointer of every policy of Qos, all of them
// even after a failure, so that every bad value gets its report. True when
// every visit succeeded.
template <typename Qos, typename Visit>
bool visitPolicies(Visit &&visit) noexcept {
    return std::apply(
        [&](auto... policy) {
            bool ok = true;
            ((ok = visit(policy) && ok), ...);
            return ok;
        },
        kPolicies<Qos>);
}

// Frees what the record owns and puts the defaults back.
template <typename Qos>
void releaseQos(Qos &qos) noexcept;

// A deep copy; `dst` is left as it was when memory runs out (reported
// under `context`, DDS_RETCODE_OUT_OF_RESOURCES).
template <typename Qos>
DDS_ReturnCode_t copyQos(Qos &dst, const Qos &src, const char *context) noexcept;

// A record holding the defaults, released when it goes.
template <typename Qos>
struct OwnedQos {
    OwnedQos() noexcept = default;
    ~OwnedQos() { releaseQos(qos); }
    OwnedQos(const OwnedQos &) = delete;
    OwnedQos &operator=(const OwnedQos &) = delete;

    Qos qos = kDefaults<Qos>;
};

}  // namespace vexar::dds
