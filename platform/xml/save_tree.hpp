// Writing a tree back as XML.
#pragma once

#include "platform/xml/xml_helper.h"

namespace vexar::xml {

// Writes `top` and everything below it at the context's depth: plain
// objects with their attributes, text and children, one element a line,
// extension objects through their class's save callback.
void saveTree(const DDS_XMLObject &top, DDS_XMLSaveContext &context) noexcept;

}  // namespace vexar::xml
