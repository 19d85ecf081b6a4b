// Sample ownership and copying of the data types; run under ASan, a leak,
// double free or overflow in the walker fails here.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "support/cdr_test_support.hpp"

using namespace vexar_test;

namespace {

std::string text(size_t length) { return std::string(length, 'x'); }

// Initialize gives the string its buffer at the bound, copy fills it in place
// and refuses one character more.
template <typename T>
void expectStringBound(char *T::*member, size_t bound) {
    SCOPED_TRACE(bound);
    Owned<T> src, dst;
    char *const buffer = dst.sample.*member;
    setText(src.sample.*member, text(bound));
    EXPECT_TRUE(Plugin<T>::copy(dst.get(), src.get()));
    EXPECT_EQ(dst.sample.*member, buffer) << "copy must not reallocate";
    EXPECT_EQ(std::strlen(dst.sample.*member), bound);

    std::string tooLong = text(bound + 1);
    char *const own = src.sample.*member;
    src.sample.*member = tooLong.data();
    EXPECT_FALSE(Plugin<T>::copy(dst.get(), src.get()));
    src.sample.*member = own;
}

template <typename T>
void expectCopyWritesTheSameBytes() {
    Filled<T> src;
    Owned<T> dst;
    ASSERT_TRUE(Plugin<T>::copy(dst.get(), src.get()));
    EXPECT_EQ(serialized(dst.sample, 1), serialized(src.sample, 1));
}

}  // namespace

TEST(SampleCopy, CopiesEveryMemberAndStringsUpToTheirBounds) {
    expectCopyWritesTheSameBytes<QTV_VX_LogMessage>();
    expectCopyWritesTheSameBytes<QTV_VX_ADMIN_State>();
    expectCopyWritesTheSameBytes<QTV_VX_ADMIN_CommandRequest>();
    expectCopyWritesTheSameBytes<QTV_VX_ADMIN_CommandResponse>();
    expectStringBound(&QTV_VX_LogMessage::category, 512);
    expectStringBound(&QTV_VX_LogMessage::message, 4096);
    expectStringBound(&QTV_VX_ADMIN_State::applicationKind, 256);
    expectStringBound(&QTV_VX_ADMIN_CommandResponse::message, 2048);
}

TEST(SampleCopy, AnOverlongStringStopsTheCopyThereKeepingEarlierMembers) {
    QTV_VX_LogMessage src{};
    Owned<QTV_VX_LogMessage> dst;
    std::string category = text(513), message = "not reached";
    src.hostAndAppId = {7, 8};
    src.level = 300;
    src.category = category.data();
    src.message = message.data();
    EXPECT_FALSE(QTV_VX_LogMessage_copy(dst.get(), &src));
    EXPECT_EQ(dst->hostAndAppId.rtps_host_id, 7);
    EXPECT_EQ(dst->level, 300);
    EXPECT_STREQ(dst->message, "");
}

// Finalize leaves nothing to free twice; initialize without memory leaves
// pointers unset in a fresh sample and empties the buffers of a used one.
TEST(LogMessageSample, LifecycleCallsAreSafeToRepeatAndRefuseNullArguments) {
    QTV_VX_LogMessage sample{};
    ASSERT_TRUE(QTV_VX_LogMessage_initialize(&sample));
    QTV_VX_LogMessage_finalize(&sample);
    EXPECT_EQ(sample.category, nullptr);
    EXPECT_EQ(sample.message, nullptr);
    QTV_VX_LogMessage_finalize(&sample);
    QTV_VX_LogMessage_finalize(nullptr);
    QTV_VX_LogMessage_finalize_w_params(nullptr, nullptr);
    EXPECT_FALSE(QTV_VX_HostAndAppId_initialize(nullptr));
    EXPECT_FALSE(QTV_VX_LogMessage_initialize_w_params(&sample, nullptr));
    EXPECT_FALSE(QTV_VX_LogMessage_copy(&sample, nullptr));

    EXPECT_TRUE(QTV_VX_LogMessage_initialize_ex(&sample, DDS_BOOLEAN_TRUE, DDS_BOOLEAN_FALSE));
    EXPECT_EQ(sample.category, nullptr);
    EXPECT_EQ(sample.message, nullptr);
    Owned<QTV_VX_LogMessage> used;
    std::strcpy(used->category, "old");
    char *buffer = used->category;
    used->level = 500;
    EXPECT_TRUE(QTV_VX_LogMessage_initialize_ex(used.get(), DDS_BOOLEAN_TRUE, DDS_BOOLEAN_FALSE));
    EXPECT_EQ(used->category, buffer);
    EXPECT_STREQ(used->category, "");
    EXPECT_EQ(used->level, 0);
}

TEST(CommandSample, FinalizeFreesTheSequenceAndCopyTakesTheActiveBranchOnly) {
    QTV_VX_ADMIN_Command command{};
    ASSERT_TRUE(QTV_VX_ADMIN_Command_initialize(&command));
    EXPECT_EQ(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq_get_maximum(&command._u.categoryAndVerbosity), 5);
    appendVerbosity(command, 2, 4);
    QTV_VX_ADMIN_Command_finalize(&command);
    EXPECT_EQ(command._u.categoryAndVerbosity._contiguous_buffer, nullptr);  // and ASan sees no leak
    EXPECT_EQ(command._u.categoryAndVerbosity._maximum, 0u);

    // A copy takes the active branch only.
    Owned<QTV_VX_ADMIN_Command> src, dst;
    fill(src.sample);
    src->_u.filterLevel = 123;
    ASSERT_TRUE(QTV_VX_ADMIN_Command_copy(dst.get(), src.get()));
    EXPECT_EQ(dst->_u.filterLevel, 0) << "inactive branch copied";

    src->_u.printFormat = QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_DEBUG;
    setEnum(&src->_d, 7);
    EXPECT_TRUE(QTV_VX_ADMIN_Command_copy(dst.get(), src.get()));
    DDS_Long copied;
    std::memcpy(&copied, &dst->_d, sizeof copied);
    EXPECT_EQ(copied, 7);
    EXPECT_EQ(dst->_u.printFormat, QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_DEFAULT);
    EXPECT_EQ(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq_get_length(&dst->_u.categoryAndVerbosity), 2);
}
