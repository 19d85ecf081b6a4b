// The QoS records of platform/dds/qos.h mapped onto Cyclone's dds_qos_t, both
// ways. The bridge maps a record when it creates an entity and reads one
// back when the application asks an entity for its QoS.
#pragma once

#include <memory>
#include <optional>

#include "platform/dds/cyclone.hpp"
#include "platform/dds/qos.h"

namespace vexar::dds {

struct CycloneQosDeleter {
    void operator()(dds_qos_t *qos) const noexcept { dds_delete_qos(qos); }
};
using CycloneQos = std::unique_ptr<dds_qos_t, CycloneQosDeleter>;

// The entity properties that carry what Cyclone's QoS has no place for.
inline constexpr const char *kVendorSpecificEntityProperty = "vexar.vendor_specific_entity";
inline constexpr const char *kRoleNameProperty = "vexar.role_name";

// The Cyclone QoS for a record. Null, with the fault reported under
// `context` (the creating operation's name), when a value is out of range or
// memory ran out. Values that Cyclone cannot honour (see platform/dds/qos.h) are
// reported under `context` and still mapped where Cyclone accepts them.
CycloneQos toCyclone(const DDS_DomainParticipantQos &qos, const char *context) noexcept;
CycloneQos toCyclone(const DDS_PublisherQos &qos, const char *context) noexcept;
CycloneQos toCyclone(const DDS_SubscriberQos &qos, const char *context) noexcept;
CycloneQos toCyclone(const DDS_TopicQos &qos, const char *context) noexcept;
CycloneQos toCyclone(const DDS_DataWriterQos &qos, const char *context) noexcept;
CycloneQos toCyclone(const DDS_DataReaderQos &qos, const char *context) noexcept;

// Reads the policies that `cyclone` holds into `qos`, an initialized record;
// policies that `cyclone` lacks keep their values. A participant's
// wire_protocol is not in its QoS: see wireProtocolFromParticipant.
// DDS_RETCODE_OUT_OF_RESOURCES (reported under `context`) when a string
// copy fails.
DDS_ReturnCode_t fromCyclone(const dds_qos_t &cyclone, DDS_DomainParticipantQos &qos, const char *context) noexcept;
DDS_ReturnCode_t fromCyclone(const dds_qos_t &cyclone, DDS_PublisherQos &qos, const char *context) noexcept;
DDS_ReturnCode_t fromCyclone(const dds_qos_t &cyclone, DDS_SubscriberQos &qos, const char *context) noexcept;
DDS_ReturnCode_t fromCyclone(const dds_qos_t &cyclone, DDS_TopicQos &qos, const char *context) noexcept;
DDS_ReturnCode_t fromCyclone(const dds_qos_t &cyclone, DDS_DataWriterQos &qos, const char *context) noexcept;
DDS_ReturnCode_t fromCyclone(const dds_qos_t &cyclone, DDS_DataReaderQos &qos, const char *context) noexcept;

// The RTPS identity of a Cyclone participant: its GUID prefix words 0 (host
// id), 1 (app id) and 2 (instance id), read in network byte order.
// DDS_RETCODE_BAD_PARAMETER (reported under `context`) when `participant`
// is not one.
DDS_ReturnCode_t wireProtocolFromParticipant(dds_entity_t participant, DDS_WireProtocolQosPolicy &out,
                                             const char *context) noexcept;
// The same ids of any participant's GUID, one that discovery announced too.
DDS_WireProtocolQosPolicy wireProtocolFromGuid(const dds_guid_t &guid) noexcept;

// Nanoseconds for Cyclone; DDS_DURATION_INFINITE_SEC/_NSEC become
// DDS_INFINITY. Empty for a negative or unnormalized duration.
std::optional<dds_duration_t> toCycloneDuration(const DDS_Duration_t &duration) noexcept;
// The duration of `nanoseconds`; DDS_INFINITY, and anything too long for
// 32-bit seconds, is infinite. Negative values count as zero.
DDS_Duration_t fromCycloneDuration(dds_duration_t nanoseconds) noexcept;

}  // namespace vexar::dds
