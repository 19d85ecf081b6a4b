// The participant factory's QoS profiles as the entities' defaults use
// them: the profile marked is_default_qos="true" over the records' defaults.
#pragma once

#include "platform/dds/qos_records.hpp"

namespace vexar::dds {

// Loads the files that DDS_QOS_PROFILES names, once per process; every
// profile look-up calls it first.
void loadProfilesNamedInEnvironment();

// Overlays the loaded default profile, when one is marked, onto `qos`
// (which holds the record's defaults) for an entity of `topicName` (null:
// no topic-filtered element applies). DDS_RETCODE_ILLEGAL_OPERATION,
// reported, from an XML extension callback of the factory. Throws
// std::bad_alloc.
template <typename Qos>
DDS_ReturnCode_t overlayDefaultProfile(Qos &qos, const char *topicName, const char *context);

// `qos` when the caller gave one, else `defaults` with the default profile
// over them; null when that failed (reported). Throws std::bad_alloc.
template <typename Qos>
const Qos *givenOrDefaultQos(const Qos *qos, OwnedQos<Qos> &defaults, const char *topicName, const char *context) {
    if (qos != nullptr) return qos;
    return overlayDefaultProfile(defaults.qos, topicName, context) == DDS_RETCODE_OK ? &defaults.qos : nullptr;
}

}  // namespace vexar::dds
