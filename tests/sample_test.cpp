// Sample ownership and copying of the data types; run under ASan, a leak,
// double free or overflow in the walker fails here.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "support/cdr_test_support.hpp"

using namespace vexar_test;

namespace {
std::string text(size_t length) { return std::string(length, 'x'); }
} // namespace

TEST(LogMessageSample, InitializeAllocatesBuffersAtTheirBounds) {
    Owned<QTV_VX_LogMessage> src, dst;
    std::strcpy(src->category, text(512).c_str());
    std::strcpy(src->message, text(4096).c_str());
    char *categoryBuffer = dst->category;
    EXPECT_TRUE(QTV_VX_LogMessage_copy(dst.get(), src.get()));
    EXPECT_EQ(dst->category, categoryBuffer) << "copy must not reallocate";
    EXPECT_EQ(std::strlen(dst->message), 4096u);
}

TEST(LogMessageSample, CopyOfAnOverlongStringFailsKeepingEarlierMembers) {
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

TEST(LogMessageSample, FinalizeTwiceAndNullAreHarmless) {
    QTV_VX_LogMessage sample{};
    ASSERT_TRUE(QTV_VX_LogMessage_initialize(&sample));
    QTV_VX_LogMessage_finalize(&sample);
    EXPECT_EQ(sample.category, nullptr);
    EXPECT_EQ(sample.message, nullptr);
    QTV_VX_LogMessage_finalize(&sample);
    QTV_VX_LogMessage_finalize(nullptr);
    QTV_VX_LogMessage_finalize_w_params(nullptr, nullptr);
}

TEST(LogMessageSample, InitializeWithoutMemoryEmptiesExistingBuffersInPlace) {
    QTV_VX_LogMessage fresh{};
    EXPECT_TRUE(QTV_VX_LogMessage_initialize_ex(&fresh, DDS_BOOLEAN_TRUE, DDS_BOOLEAN_FALSE));
    EXPECT_EQ(fresh.category, nullptr);
    EXPECT_EQ(fresh.message, nullptr);

    Owned<QTV_VX_LogMessage> used;
    std::strcpy(used->category, "old");
    char *buffer = used->category;
    used->level = 500;
    EXPECT_TRUE(QTV_VX_LogMessage_initialize_ex(used.get(), DDS_BOOLEAN_TRUE, DDS_BOOLEAN_FALSE));
    EXPECT_EQ(used->category, buffer);
    EXPECT_STREQ(used->category, "");
    EXPECT_EQ(used->level, 0);
}

TEST(SampleArguments, NullSamplesAndParamsFail) {
    QTV_VX_LogMessage sample{};
    EXPECT_FALSE(QTV_VX_HostAndAppId_initialize(nullptr));
    EXPECT_FALSE(QTV_VX_LogMessage_initialize_w_params(&sample, nullptr));
    EXPECT_FALSE(QTV_VX_LogMessage_copy(&sample, nullptr));
}

TEST(StateSample, InitializeAndCopyCoverTheArrayAndTheKindString) {
    Owned<QTV_VX_ADMIN_State> src, dst;
    src->qtvLoggerVerbosities[4] = {QTV_VX_OBLX_CONFIG_LOG_CATEGORY_API, QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_WARNING};
    src->qtvLoggerPrintFormat = QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_MAXIMAL;
    std::strcpy(src->applicationKind, text(256).c_str());
    ASSERT_TRUE(QTV_VX_ADMIN_State_copy(dst.get(), src.get()));
    EXPECT_EQ(dst->qtvLoggerVerbosities[4].verbosity, QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_WARNING);
    EXPECT_EQ(dst->qtvLoggerPrintFormat, QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_MAXIMAL);

    std::string tooLong = text(257);
    char *own = src->applicationKind;
    src->applicationKind = tooLong.data();
    src->filterLevel = 42;
    EXPECT_FALSE(QTV_VX_ADMIN_State_copy(dst.get(), src.get()));
    EXPECT_NE(dst->filterLevel, 42) << "members after the failing one stay untouched";
    src->applicationKind = own;
}

TEST(CommandSample, FinalizeFreesTheSequenceWhateverTheDiscriminator) {
    QTV_VX_ADMIN_Command command{};
    ASSERT_TRUE(QTV_VX_ADMIN_Command_initialize(&command));
    EXPECT_EQ(command._d, QTV_VX_SET_LOG_LEVEL);
    EXPECT_EQ(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq_get_maximum(&command._u.categoryAndVerbosity), 5);
    appendVerbosity(command, 2, 4);
    QTV_VX_ADMIN_Command_finalize(&command);
    EXPECT_EQ(command._u.categoryAndVerbosity._contiguous_buffer, nullptr); // and ASan sees no leak
    EXPECT_EQ(command._u.categoryAndVerbosity._maximum, 0u);
}

TEST(CommandSample, CopyTakesTheActiveBranchOnly) {
    Owned<QTV_VX_ADMIN_Command> src, dst;
    src->_d = QTV_VX_SET_QTV_LOGGER_LEVEL;
    src->_u.filterLevel = 123;
    for (auto category : {QTV_VX_OBLX_CONFIG_LOG_CATEGORY_PLATFORM, QTV_VX_OBLX_CONFIG_LOG_CATEGORY_DATABASE,
                          QTV_VX_OBLX_CONFIG_LOG_CATEGORY_API}) {
        appendVerbosity(src.sample, category, QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_STATUS_ALL);
    }

    ASSERT_TRUE(QTV_VX_ADMIN_Command_copy(dst.get(), src.get()));
    EXPECT_EQ(dst->_d, QTV_VX_SET_QTV_LOGGER_LEVEL);
    ASSERT_EQ(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq_get_length(&dst->_u.categoryAndVerbosity), 3);
    EXPECT_EQ(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq_get_reference(&dst->_u.categoryAndVerbosity, 2)->category,
              QTV_VX_OBLX_CONFIG_LOG_CATEGORY_API);
    EXPECT_EQ(dst->_u.filterLevel, 0) << "inactive branch copied";

    src->_u.printFormat = QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_DEBUG;
    setEnum(&src->_d, 7);
    EXPECT_TRUE(QTV_VX_ADMIN_Command_copy(dst.get(), src.get()));
    DDS_Long copied;
    std::memcpy(&copied, &dst->_d, sizeof copied);
    EXPECT_EQ(copied, 7);
    EXPECT_EQ(dst->_u.printFormat, QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_DEFAULT);
    EXPECT_EQ(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq_get_length(&dst->_u.categoryAndVerbosity), 3);
}

TEST(CommandResponseSample, MessageBoundIs2048) {
    Owned<QTV_VX_ADMIN_CommandResponse> src, dst;
    setText(src->message, text(2048));
    EXPECT_TRUE(QTV_VX_ADMIN_CommandResponse_copy(dst.get(), src.get()));

    std::string tooLong = text(2049);
    char *own = src->message;
    src->message = tooLong.data();
    EXPECT_FALSE(QTV_VX_ADMIN_CommandResponse_copy(dst.get(), src.get()));
    src->message = own;
}

TEST(DataTypeSequence, ElementsGetBoundedBuffersAndCopiesAreDeep) {
    QTV_VX_LogMessageSeq src = DDS_SEQUENCE_INITIALIZER, dst = DDS_SEQUENCE_INITIALIZER;
    ASSERT_TRUE(QTV_VX_LogMessageSeq_ensure_length(&src, 2, 2));
    QTV_VX_LogMessage *first = QTV_VX_LogMessageSeq_get_reference(&src, 0);
    std::strcpy(first->category, text(512).c_str()); // elements are initialized at their bounds
    std::strcpy(QTV_VX_LogMessageSeq_get_reference(&src, 1)->message, "second");

    ASSERT_NE(QTV_VX_LogMessageSeq_copy(&dst, &src), nullptr);
    QTV_VX_LogMessage *copied = QTV_VX_LogMessageSeq_get_reference(&dst, 0);
    EXPECT_NE(copied->category, first->category);
    first->category[0] = 'y';
    EXPECT_EQ(copied->category[0], 'x');
    EXPECT_STREQ(QTV_VX_LogMessageSeq_get_reference(&dst, 1)->message, "second");

    EXPECT_TRUE(QTV_VX_LogMessageSeq_finalize(&src));
    EXPECT_TRUE(QTV_VX_LogMessageSeq_finalize(&dst));
}
