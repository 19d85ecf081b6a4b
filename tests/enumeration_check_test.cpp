// Enumeration values that are none of their enumerators, wherever they sit
// in a sample: a struct member, an array element, a sequence element, a
// union's discriminator or its selected branch.
#include <gtest/gtest.h>

#include <cstring>

#include "platform/enumeration_check.hpp"
#include "type/vexar.h"

namespace {

using vexar::platform::EnumerationCheck;

// Stores `value` as C code may, whatever the enumeration allows.
template <typename Enum>
void store(Enum &field, DDS_Long value) {
    static_assert(sizeof field == sizeof value);
    std::memcpy(&field, &value, sizeof value);
}

// A sample of T initialized and finalized with its own operations.
template <typename T, DDS_Boolean (*Initialize)(T *), void (*Finalize)(T *)>
struct Initialized {
    Initialized() { Initialize(&value); }
    ~Initialized() { Finalize(&value); }
    T value{};
};
using State = Initialized<QTV_VX_ADMIN_State, QTV_VX_ADMIN_State_initialize, QTV_VX_ADMIN_State_finalize>;
using Command = Initialized<QTV_VX_ADMIN_Command, QTV_VX_ADMIN_Command_initialize, QTV_VX_ADMIN_Command_finalize>;

TEST(EnumerationCheck, FindsTheFirstValueWithoutEnumeratorInMembersAndArrays) {
    EnumerationCheck check(*QTV_VX_ADMIN_State_get_typecode());
    EnumerationCheck::Fault fault{};
    State state;
    ASSERT_TRUE(check.needed());
    EXPECT_TRUE(check.passes(&state.value, fault));

    store(state.value.qtvLoggerVerbosities[4].verbosity, 9);
    ASSERT_FALSE(check.passes(&state.value, fault));
    EXPECT_EQ(fault.enumeration, QTV_VX_ADMIN_QTVLoggerVerbosity_get_typecode());
    EXPECT_EQ(fault.value, 9);

    store(state.value.state, -1);  // comes before the array
    ASSERT_FALSE(check.passes(&state.value, fault));
    EXPECT_EQ(fault.enumeration, QTV_VX_ADMIN_StateKind_get_typecode());
    EXPECT_EQ(fault.value, -1);
}

TEST(EnumerationCheck, UnionChecksItsDiscriminatorAndOnlyTheSelectedBranch) {
    EnumerationCheck check(*QTV_VX_ADMIN_Command_get_typecode());
    EnumerationCheck::Fault fault{};
    Command command;
    store(command.value._u.printFormat, 77);  // not selected: meaningless, so not checked
    EXPECT_TRUE(check.passes(&command.value, fault));

    command.value._d = QTV_VX_SET_QTV_LOGGER_PRINT_FORMAT;
    ASSERT_FALSE(check.passes(&command.value, fault));
    EXPECT_EQ(fault.enumeration, QTV_VX_ADMIN_QTVLoggerPrintFormat_get_typecode());

    store(command.value._d, 3);
    ASSERT_FALSE(check.passes(&command.value, fault));
    EXPECT_EQ(fault.enumeration, QTV_VX_ADMIN_CommandKind_get_typecode());
    EXPECT_EQ(fault.value, 3);
}

TEST(EnumerationCheck, TypeWithoutEnumerationsNeedsNoCheck) {
    EXPECT_FALSE(EnumerationCheck(*QTV_VX_LogMessage_get_typecode()).needed());
}

}  // namespace
