// Enumeration values that are none of their enumerators, wherever they sit
// in a sample: a struct member, an array element, a sequence element, a
// union's discriminator or its selected branch.
#include <gtest/gtest.h>

#include "platform/types/enumeration_check.hpp"
#include "support/cdr_test_support.hpp"

namespace {

using vexar::types::EnumerationCheck;
using vexar_test::Owned;
using vexar_test::setEnum;

// In members and arrays the first such value is found; a union checks its
// discriminator and only the branch that it selects.
TEST(EnumerationCheck, FindsTheFirstValueWithoutEnumeratorWhereverItSits) {
    EnumerationCheck check(*QTV_VX_ADMIN_State_get_typecode());
    EnumerationCheck::Fault fault{};
    Owned<QTV_VX_ADMIN_State> state;
    ASSERT_TRUE(check.needed());
    EXPECT_TRUE(check.passes(&state.sample, fault));

    setEnum(&state.sample.qtvLoggerVerbosities[4].verbosity, 9);
    ASSERT_FALSE(check.passes(&state.sample, fault));
    EXPECT_EQ(fault.enumeration, QTV_VX_ADMIN_QTVLoggerVerbosity_get_typecode());
    EXPECT_EQ(fault.value, 9);

    setEnum(&state.sample.state, -1);  // comes before the array
    ASSERT_FALSE(check.passes(&state.sample, fault));
    EXPECT_EQ(fault.enumeration, QTV_VX_ADMIN_StateKind_get_typecode());
    EXPECT_EQ(fault.value, -1);

    EnumerationCheck commandCheck(*QTV_VX_ADMIN_Command_get_typecode());
    Owned<QTV_VX_ADMIN_Command> command;
    setEnum(&command.sample._u.printFormat, 77);  // not selected: meaningless, so not checked
    EXPECT_TRUE(commandCheck.passes(&command.sample, fault));

    command.sample._d = QTV_VX_SET_QTV_LOGGER_PRINT_FORMAT;
    ASSERT_FALSE(commandCheck.passes(&command.sample, fault));
    EXPECT_EQ(fault.enumeration, QTV_VX_ADMIN_QTVLoggerPrintFormat_get_typecode());

    setEnum(&command.sample._d, 3);
    ASSERT_FALSE(commandCheck.passes(&command.sample, fault));
    EXPECT_EQ(fault.enumeration, QTV_VX_ADMIN_CommandKind_get_typecode());
    EXPECT_EQ(fault.value, 3);
}

}  // namespace
