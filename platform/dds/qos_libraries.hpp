// QoS libraries and profiles as the loaded XML documents hold them, in the
// OMG DDS-XML format:
//   <qos_library name="L">
//     <qos_profile name="P" base_name="Q" is_default_qos="false">
//       <datawriter_qos topic_filter="qtv/*">...</datawriter_qos>
// Look-ups read the tree each time (profiles are asked for when entities are
// made, seldom), so the tree stays the one record of what is loaded. A
// library may be spread over several documents; a profile name is unique
// within its library.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/xml/object_tree.hpp"
#include "platform/xml/xml_report.hpp"

namespace vexar::dds {

// Checks the <qos_library> elements among a document's `staged` top-level
// objects, together with the libraries already under `root`: names given
// and unique, only profiles in a library and only QoS elements in a profile,
// no attribute that nothing reads, every value readable, every base found
// and no profile its own base, at most one default profile.
// Adds what it refuses to `errors`. Throws std::bad_alloc.
void acceptQosLibraries(const std::vector<xml::OwnedTree> &staged, const DDS_XMLObject &root,
                        std::vector<xml::XmlError> &errors);

// The names of the profiles of `library`, in document order; empty when
// there is no such library.
std::vector<std::string> profileNames(const DDS_XMLObject &root, std::string_view library);

// Overlays the profile onto `qos` (which holds the record's defaults): its
// base profiles first, then its own elements of the record's kind, those
// without a topic_filter before those whose filter matches `topicName`
// (null: none does). False, leaving `qos` as it was, when the library or the
// profile does not exist. Throws std::bad_alloc.
template <typename Qos>
bool qosFromProfile(const DDS_XMLObject &root, std::string_view library, std::string_view profile,
                    const char *topicName, Qos &qos);

// Overlays the profile marked is_default_qos="true" onto `qos`, as above;
// false, leaving `qos` as it was, when no profile is marked.
template <typename Qos>
bool defaultQosFromProfiles(const DDS_XMLObject &root, const char *topicName, Qos &qos);

}  // namespace vexar::dds
