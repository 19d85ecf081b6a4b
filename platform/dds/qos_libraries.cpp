#include "platform/dds/qos_libraries.hpp"

namespace vexar::dds {

void acceptQosLibraries(const std::vector<xml::OwnedTree> &, std::vector<xml::XmlError> &) {}

}  // namespace vexar::dds
