// QoS records read from the elements of a QoS profile, in the OMG DDS-XML
// format: <datawriter_qos><history><kind>KEEP_ALL_HISTORY_QOS</kind>...
// Each policy's tag and fields are described once, in qos_xml.cpp; which
// policies a record holds comes from qos_records.hpp.
#pragma once

#include <string>
#include <vector>

#include "platform/dds/qos.h"
#include "platform/xml/xml_object.h"
#include "platform/xml/xml_report.hpp"

namespace vexar::dds {

// The element of each record in a profile.
template <typename Qos>
extern const char *const kQosTag;
template <>
inline constexpr const char *kQosTag<DDS_DomainParticipantQos> = "domain_participant_qos";
template <>
inline constexpr const char *kQosTag<DDS_PublisherQos> = "publisher_qos";
template <>
inline constexpr const char *kQosTag<DDS_SubscriberQos> = "subscriber_qos";
template <>
inline constexpr const char *kQosTag<DDS_TopicQos> = "topic_qos";
template <>
inline constexpr const char *kQosTag<DDS_DataWriterQos> = "datawriter_qos";
template <>
inline constexpr const char *kQosTag<DDS_DataReaderQos> = "datareader_qos";

// Overlays what `element` (a <datawriter_qos> or the like) sets onto `qos`,
// which owns what it held before; a policy or field the element leaves out
// keeps its value, and a field it gives is given whole (a duration's left-out
// part is 0, a partition's names replace the old ones). Every error (an unknown element, a bad value) is added
// to `errors` with its line. True when there was none. Throws
// std::bad_alloc.
template <typename Qos>
bool readQos(const DDS_XMLObject &element, Qos &qos, std::vector<xml::XmlError> &errors);

}  // namespace vexar::dds
