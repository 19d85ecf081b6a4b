// The element's record seen from the parser's side: the parser hands the
// callbacks the XML object, which is the record's first member.
#pragma once

#include <cstddef>

#include "config/XMLConfig.h"

namespace vexar::xmlconfig {

static_assert(offsetof(QTV_VX_XMLConfig, baseObject) == 0, "the parser's object must be the record itself");

inline QTV_VX_XMLConfig *configOf(DDS_XMLObject *object) noexcept {
    return reinterpret_cast<QTV_VX_XMLConfig *>(object);
}
inline const QTV_VX_XMLConfig *configOf(const DDS_XMLObject *object) noexcept {
    return reinterpret_cast<const QTV_VX_XMLConfig *>(object);
}

}  // namespace vexar::xmlconfig
