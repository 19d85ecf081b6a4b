// Finds enumeration values that are none of their enumerators in a sample
// (a C caller can store any integer in an enum field, a union's
// discriminator included). Such a sample encodes but cannot be decoded, so
// writers refuse it before it reaches a reader.
#pragma once

#include <unordered_map>

#include "platform/types/typecode.h"

namespace vexar::types {

class EnumerationCheck {
public:
    // What a failed check found: the enumeration and the stored value.
    struct Fault {
        const DDS_TypeCode *enumeration;
        DDS_Long value;
    };

    // Works out once which parts of `type` (and of its member types) hold
    // enumerations, so that a check walks only those.
    explicit EnumerationCheck(const DDS_TypeCode &type);

    // False when the type holds no enumeration: nothing to check.
    bool needed() const noexcept { return needed_; }

    // True when every enumeration value in `sample` (a union's only in the
    // branch that its discriminator selects) is an enumerator; else false,
    // with the first value that is not in `fault`.
    bool passes(const void *sample, Fault &fault) const noexcept;

private:
    bool holdsEnumeration(const DDS_TypeCode *type) const noexcept;
    bool learn(const DDS_TypeCode *type);
    bool valueIsValid(const DDS_TypeCode &type, const unsigned char *value, Fault &fault) const noexcept;
    bool unionIsValid(const DDS_TypeCode &type, const unsigned char *value, Fault &fault) const noexcept;
    bool sequenceIsValid(const DDS_TypeCode &type, const unsigned char *value, Fault &fault) const noexcept;
    bool elementsAreValid(const DDS_TypeCode &element, const unsigned char *first, DDS_UnsignedLong count,
                          Fault &fault) const noexcept;

    const DDS_TypeCode *type_;
    std::unordered_map<const DDS_TypeCode *, bool> holdsEnumeration_;
    bool needed_;
};

}  // namespace vexar::types
