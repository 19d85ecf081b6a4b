// Sample ownership and copying of the data types; run under ASan, a leak,
// double free or overflow in the walker fails here.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "type/vexar.h"

namespace {

std::string text(size_t length) { return std::string(length, 'x'); }

// A sample that finalizes itself at the end of the test.
template <typename Sample, void (*Finalize)(Sample *)>
struct Owned {
    Sample sample{};
    ~Owned() { Finalize(&sample); }
    Sample *operator->() { return &sample; }
    Sample *get() { return &sample; }
};

using LogMessage = Owned<QTV_VX_LogMessage, QTV_VX_LogMessage_finalize>;
using Command = Owned<QTV_VX_ADMIN_Command, QTV_VX_ADMIN_Command_finalize>;
using State = Owned<QTV_VX_ADMIN_State, QTV_VX_ADMIN_State_finalize>;

void setDiscriminator(QTV_VX_ADMIN_Command &command, DDS_Long value) {
    std::memcpy(&command._d, &value, sizeof value);
}

void appendVerbosity(QTV_VX_ADMIN_Command &command, QTV_VX_ADMIN_QTVLoggerCategory category,
                     QTV_VX_ADMIN_QTVLoggerVerbosity verbosity) {
    QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq *seq = &command._u.categoryAndVerbosity;
    DDS_Long length = QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq_get_length(seq);
    ASSERT_TRUE(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq_set_length(seq, length + 1));
    *QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq_get_reference(seq, length) = {category, verbosity};
}

} // namespace

TEST(LogMessageSample, InitializeAllocatesBuffersAtTheirBounds) {
    LogMessage src, dst;
    ASSERT_TRUE(QTV_VX_LogMessage_initialize(src.get()));
    ASSERT_TRUE(QTV_VX_LogMessage_initialize(dst.get()));
    EXPECT_STREQ(dst->category, "");
    EXPECT_STREQ(dst->message, "");

    std::strcpy(src->category, text(512).c_str());
    std::strcpy(src->message, text(4096).c_str());
    char *categoryBuffer = dst->category;
    EXPECT_TRUE(QTV_VX_LogMessage_copy(dst.get(), src.get()));
    EXPECT_EQ(dst->category, categoryBuffer) << "copy must not reallocate";
    EXPECT_EQ(std::strlen(dst->message), 4096u);
}

TEST(LogMessageSample, CopyOfAnOverlongStringFailsKeepingEarlierMembers) {
    LogMessage src, dst;
    ASSERT_TRUE(QTV_VX_LogMessage_initialize(dst.get()));
    std::string category = text(513), message = "not reached";
    src->hostAndAppId = {7, 8};
    src->level = 300;
    src->category = category.data();
    src->message = message.data();

    EXPECT_FALSE(QTV_VX_LogMessage_copy(dst.get(), src.get()));
    EXPECT_EQ(dst->hostAndAppId.rtps_host_id, 7);
    EXPECT_EQ(dst->level, 300);
    EXPECT_STREQ(dst->message, "");
    src->category = src->message = nullptr; // owned by the strings above
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

    LogMessage used;
    ASSERT_TRUE(QTV_VX_LogMessage_initialize(used.get()));
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
    EXPECT_FALSE(QTV_VX_ADMIN_StateKind_copy(nullptr, nullptr));

    QTV_VX_ADMIN_StateKind kind = QTV_VX_STATE_SHUTTING_DOWN, other = QTV_VX_STATE_OPERATIONAL;
    EXPECT_TRUE(QTV_VX_ADMIN_StateKind_initialize(&kind));
    EXPECT_EQ(kind, QTV_VX_STATE_INITIALIZING);
    EXPECT_TRUE(QTV_VX_ADMIN_StateKind_copy(&kind, &other));
    EXPECT_EQ(kind, QTV_VX_STATE_OPERATIONAL);
}

TEST(StateSample, InitializeAndCopyCoverTheArrayAndTheKindString) {
    State src, dst;
    ASSERT_TRUE(QTV_VX_ADMIN_State_initialize(src.get()));
    ASSERT_TRUE(QTV_VX_ADMIN_State_initialize(dst.get()));
    EXPECT_EQ(src->state, QTV_VX_STATE_INITIALIZING);
    EXPECT_EQ(src->qtvLoggerPrintFormat, QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_DEFAULT);

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

TEST(CommandSample, InitializeSelectsDefaultBranchAndReservesTheSequence) {
    Command command;
    ASSERT_TRUE(QTV_VX_ADMIN_Command_initialize(command.get()));
    EXPECT_EQ(command->_d, QTV_VX_SET_LOG_LEVEL);
    EXPECT_EQ(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq_get_maximum(&command->_u.categoryAndVerbosity), 5);
    EXPECT_EQ(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq_get_length(&command->_u.categoryAndVerbosity), 0);
}

TEST(CommandSample, FinalizeFreesTheSequenceWhateverTheDiscriminator) {
    QTV_VX_ADMIN_Command command{};
    ASSERT_TRUE(QTV_VX_ADMIN_Command_initialize(&command));
    appendVerbosity(command, QTV_VX_OBLX_CONFIG_LOG_CATEGORY_API, QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_ERROR);
    command._d = QTV_VX_SET_LOG_LEVEL;
    QTV_VX_ADMIN_Command_finalize(&command);
    EXPECT_EQ(command._u.categoryAndVerbosity._contiguous_buffer, nullptr); // and ASan sees no leak
    EXPECT_EQ(command._u.categoryAndVerbosity._maximum, 0u);
}

TEST(CommandSample, CopyTakesTheActiveBranchOnly) {
    Command src, dst;
    ASSERT_TRUE(QTV_VX_ADMIN_Command_initialize(src.get()));
    ASSERT_TRUE(QTV_VX_ADMIN_Command_initialize(dst.get()));
    src->_d = QTV_VX_SET_QTV_LOGGER_LEVEL;
    src->_u.filterLevel = 123;
    for (auto category : {QTV_VX_OBLX_CONFIG_LOG_CATEGORY_PLATFORM, QTV_VX_OBLX_CONFIG_LOG_CATEGORY_DATABASE,
                          QTV_VX_OBLX_CONFIG_LOG_CATEGORY_API}) {
        appendVerbosity(*src.get(), category, QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_STATUS_ALL);
    }

    ASSERT_TRUE(QTV_VX_ADMIN_Command_copy(dst.get(), src.get()));
    EXPECT_EQ(dst->_d, QTV_VX_SET_QTV_LOGGER_LEVEL);
    ASSERT_EQ(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq_get_length(&dst->_u.categoryAndVerbosity), 3);
    EXPECT_EQ(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq_get_reference(&dst->_u.categoryAndVerbosity, 2)->category,
              QTV_VX_OBLX_CONFIG_LOG_CATEGORY_API);
    EXPECT_EQ(dst->_u.filterLevel, 0) << "inactive branch copied";

    src->_u.printFormat = QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_DEBUG;
    setDiscriminator(*src.get(), 7);
    EXPECT_TRUE(QTV_VX_ADMIN_Command_copy(dst.get(), src.get()));
    DDS_Long copied;
    std::memcpy(&copied, &dst->_d, sizeof copied);
    EXPECT_EQ(copied, 7);
    EXPECT_EQ(dst->_u.printFormat, QTV_VX_OBLX_CONFIG_LOG_PRINT_FORMAT_DEFAULT);
    EXPECT_EQ(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq_get_length(&dst->_u.categoryAndVerbosity), 3);
}

TEST(CommandRequestSample, CopyIsDeepThroughTheUnion) {
    QTV_VX_ADMIN_CommandRequest src{}, dst{};
    ASSERT_TRUE(QTV_VX_ADMIN_CommandRequest_initialize(&src));
    ASSERT_TRUE(QTV_VX_ADMIN_CommandRequest_initialize(&dst));
    src.invocation = 9;
    src.command._d = QTV_VX_SET_QTV_LOGGER_LEVEL;
    appendVerbosity(src.command, QTV_VX_OBLX_CONFIG_LOG_CATEGORY_ENTITIES, QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_ERROR);

    ASSERT_TRUE(QTV_VX_ADMIN_CommandRequest_copy(&dst, &src));
    QTV_VX_ADMIN_CommandRequest_finalize(&src);
    EXPECT_EQ(dst.invocation, 9);
    ASSERT_EQ(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq_get_length(&dst.command._u.categoryAndVerbosity), 1);
    EXPECT_EQ(dst.command._u.categoryAndVerbosity._contiguous_buffer[0].category,
              QTV_VX_OBLX_CONFIG_LOG_CATEGORY_ENTITIES);
    QTV_VX_ADMIN_CommandRequest_finalize(&dst);
}

TEST(CommandResponseSample, MessageBoundIs2048) {
    QTV_VX_ADMIN_CommandResponse src{}, dst{};
    ASSERT_TRUE(QTV_VX_ADMIN_CommandResponse_initialize(&src));
    ASSERT_TRUE(QTV_VX_ADMIN_CommandResponse_initialize(&dst));
    EXPECT_EQ(src.commandResult, QTV_VX_COMMAND_RESULT_OK);
    std::strcpy(src.message, text(2048).c_str());
    EXPECT_TRUE(QTV_VX_ADMIN_CommandResponse_copy(&dst, &src));

    std::string tooLong = text(2049);
    char *own = src.message;
    src.message = tooLong.data();
    EXPECT_FALSE(QTV_VX_ADMIN_CommandResponse_copy(&dst, &src));
    src.message = own;
    QTV_VX_ADMIN_CommandResponse_finalize(&src);
    QTV_VX_ADMIN_CommandResponse_finalize(&dst);
}

TEST(OptionalMembers, FinalizingThemFreesNothing) {
    Command command;
    ASSERT_TRUE(QTV_VX_ADMIN_Command_initialize(command.get()));
    command->_d = QTV_VX_SET_QTV_LOGGER_LEVEL;
    appendVerbosity(*command.get(), QTV_VX_OBLX_CONFIG_LOG_CATEGORY_API, QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_ERROR);
    QTV_VX_ADMIN_Command_finalize_optional_members(command.get(), DDS_BOOLEAN_TRUE);
    EXPECT_EQ(QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq_get_length(&command->_u.categoryAndVerbosity), 1);

    LogMessage log;
    ASSERT_TRUE(QTV_VX_LogMessage_initialize(log.get()));
    QTV_VX_LogMessage_finalize_optional_members(log.get(), DDS_BOOLEAN_TRUE);
    EXPECT_NE(log->category, nullptr);
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

    // Growing deep-copies the elements into the new buffer and frees the old.
    ASSERT_TRUE(QTV_VX_LogMessageSeq_set_maximum(&dst, 10));
    EXPECT_EQ(QTV_VX_LogMessageSeq_get_length(&dst), 2);
    EXPECT_STREQ(QTV_VX_LogMessageSeq_get_reference(&dst, 1)->message, "second");

    EXPECT_TRUE(QTV_VX_LogMessageSeq_finalize(&src));
    EXPECT_TRUE(QTV_VX_LogMessageSeq_finalize(&dst));
}
