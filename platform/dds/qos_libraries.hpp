// The step of loading a document that will compile its <qos_library>
// elements into QoS profiles.
#pragma once

#include <vector>

#include "platform/xml/object_tree.hpp"
#include "platform/xml/xml_report.hpp"

namespace vexar::dds {

// Checks the QoS libraries among a document's `staged` top-level objects,
// adding what it refuses to `errors`. Until profiles are compiled, every
// library is accepted as the plain tree it was read into.
void acceptQosLibraries(const std::vector<xml::OwnedTree> &staged, std::vector<xml::XmlError> &errors);

}  // namespace vexar::dds
