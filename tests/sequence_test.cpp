// The sequence family through its C operations: DDS_LongSeq, DDS_StringSeq
// and a sequence of log samples, whose elements own heap memory: a leak,
// double free or stray element function shows under AddressSanitizer.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "platform/types/sequence.h"
#include "platform/types/sequence.hpp"
#include "support/log_capture.h"
#include "type/vexar.h"

namespace {

using vexar_test::LogCapture;
using LogSeq = QTV_VX_LogMessageSeq;

class SequenceTest : public testing::Test {
protected:
    // Sets the messages; each category fills its buffer to the bound.
    static void fill(LogSeq &seq, std::initializer_list<const char *> messages) {
        ASSERT_TRUE(QTV_VX_LogMessageSeq_set_length(&seq, static_cast<DDS_Long>(messages.size())));
        DDS_Long i = 0;
        for (const char *message : messages) {
            QTV_VX_LogMessage *element = QTV_VX_LogMessageSeq_get_reference(&seq, i++);
            std::strcpy(element->message, message);
            std::strcpy(element->category, std::string(QTV_VX_LOG_MESSAGE_CATEGORY_MAX_LENGTH, 'c').c_str());
        }
    }

    static std::string nameAt(LogSeq &seq, DDS_Long index) {
        return QTV_VX_LogMessageSeq_get_reference(&seq, index)->message;
    }

    LogCapture log{OBLX_CONFIG_LOG_VERBOSITY_ERROR};
};

TEST_F(SequenceTest, ZeroFilledSequencesWorkWithoutInitialize) {
    DDS_LongSeq zeroed;
    std::memset(&zeroed, 0, sizeof zeroed);
    EXPECT_EQ(DDS_LongSeq_get_length(&zeroed), 0);
    EXPECT_TRUE(DDS_LongSeq_has_ownership(&zeroed));

    // All-zero element parameters would mean "allocate nothing"; the lazy
    // start replaces them with the defaults, so elements get their strings.
    LogSeq items;
    std::memset(&items, 0, sizeof items);
    ASSERT_TRUE(QTV_VX_LogMessageSeq_set_maximum(&items, 1));
    EXPECT_NE(items._contiguous_buffer[0].message, nullptr);
    QTV_VX_LogMessageSeq_finalize(&items);
    EXPECT_EQ(log.text(), "");
}

TEST_F(SequenceTest, GrowingDeepCopiesElementsAndShrinkingTruncates) {
    LogSeq seq = DDS_SEQUENCE_INITIALIZER;
    ASSERT_TRUE(QTV_VX_LogMessageSeq_set_maximum(&seq, 4));
    fill(seq, {"a", "b", "c"});
    const char *oldName = seq._contiguous_buffer[0].message;

    ASSERT_TRUE(QTV_VX_LogMessageSeq_set_maximum(&seq, 8));
    EXPECT_EQ(QTV_VX_LogMessageSeq_get_maximum(&seq), 8);
    EXPECT_EQ(QTV_VX_LogMessageSeq_get_length(&seq), 3);
    EXPECT_EQ(nameAt(seq, 2), "c");
    EXPECT_NE(seq._contiguous_buffer[0].message, oldName);

    ASSERT_TRUE(QTV_VX_LogMessageSeq_set_maximum(&seq, 2));
    EXPECT_EQ(QTV_VX_LogMessageSeq_get_length(&seq), 2);
    EXPECT_EQ(nameAt(seq, 1), "b");

    const QTV_VX_LogMessage *buffer = seq._contiguous_buffer;
    ASSERT_TRUE(QTV_VX_LogMessageSeq_set_maximum(&seq, 2));  // same maximum: nothing happens
    EXPECT_EQ(seq._contiguous_buffer, buffer);

    ASSERT_TRUE(QTV_VX_LogMessageSeq_set_maximum(&seq, 0));
    EXPECT_EQ(seq._contiguous_buffer, nullptr);
    EXPECT_EQ(QTV_VX_LogMessageSeq_get_length(&seq), 0);
    EXPECT_EQ(log.text(), "");
}

TEST_F(SequenceTest, LengthsIndicesArraysAndCopiesStayWithinTheirBounds) {
    DDS_LongSeq seq = DDS_SEQUENCE_INITIALIZER;
    EXPECT_FALSE(DDS_LongSeq_set_maximum(&seq, -1));
    EXPECT_TRUE(log.contains("max size must be positive"));
    ASSERT_TRUE(DDS_LongSeq_set_maximum(&seq, 4));
    EXPECT_FALSE(DDS_LongSeq_set_length(&seq, 5));
    EXPECT_FALSE(DDS_LongSeq_set_length(&seq, -1));
    EXPECT_TRUE(log.contains("DDS_LongSeq_set_length"));
    EXPECT_EQ(DDS_LongSeq_get_length(&seq), 0);

    // Growing is noted below the error level.
    OBLX_Config_Logger_set_verbosity(OBLX_Config_Logger_get_instance(), OBLX_CONFIG_LOG_VERBOSITY_STATUS_LOCAL);
    ASSERT_TRUE(DDS_LongSeq_ensure_length(&seq, 8, 16));
    EXPECT_EQ(DDS_LongSeq_get_maximum(&seq), 16);
    EXPECT_EQ(DDS_LongSeq_get_length(&seq), 8);
    EXPECT_TRUE(log.contains("memory allocated"));

    ASSERT_TRUE(DDS_LongSeq_ensure_length(&seq, 2, 4));  // fits: no reallocation
    EXPECT_EQ(DDS_LongSeq_get_maximum(&seq), 16);
    EXPECT_FALSE(DDS_LongSeq_ensure_length(&seq, 5, 4));

    const DDS_Long input[2] = {7, 8};
    ASSERT_TRUE(DDS_LongSeq_from_array(&seq, input, 2));
    DDS_Long output[2] = {};
    ASSERT_TRUE(DDS_LongSeq_to_array(&seq, output, 2));
    EXPECT_EQ(output[1], 8);
    EXPECT_FALSE(DDS_LongSeq_to_array(&seq, output, 1));
    EXPECT_TRUE(log.contains("copying array sequence"));
    EXPECT_EQ(DDS_LongSeq_get_reference(&seq, 2), nullptr);
    EXPECT_EQ(DDS_LongSeq_get_reference(&seq, -1), nullptr);
    EXPECT_EQ(DDS_LongSeq_get(&seq, 5), 7);  // falls back to element 0
    EXPECT_TRUE(log.contains("index out of bounds"));

    DDS_LongSeq small = DDS_SEQUENCE_INITIALIZER;
    ASSERT_TRUE(DDS_LongSeq_set_maximum(&small, 1));
    EXPECT_FALSE(DDS_LongSeq_copy_no_alloc(&small, &seq));
    EXPECT_TRUE(log.contains("DDS_LongSeq_copy_no_allocI"));
    DDS_LongSeq never;  // a source that was never initialized counts as empty
    std::memset(&never, 0xff, sizeof never);
    EXPECT_TRUE(DDS_LongSeq_copy_no_alloc(&small, &never));
    EXPECT_EQ(DDS_LongSeq_get_length(&small), 0);
    DDS_LongSeq_finalize(&seq);
    DDS_LongSeq_finalize(&small);
}

// A loan needs an empty owner and a fitting array; a loaned sequence refuses
// whatever would free or reallocate the caller's array.
TEST_F(SequenceTest, LoansAreCheckedAndALoanedBufferIsNeverFreedOrReallocated) {
    DDS_LongSeq source = DDS_SEQUENCE_INITIALIZER;
    ASSERT_TRUE(DDS_LongSeq_ensure_length(&source, 3, 3));
    EXPECT_FALSE(DDS_LongSeq_unloan(&source));
    EXPECT_TRUE(log.contains("buffer must be loaned"));
    DDS_Long array[2] = {1, 2};
    EXPECT_FALSE(DDS_LongSeq_loan_contiguous(&source, array, 1, 2));
    EXPECT_TRUE(log.contains("max size must be 0"));
    EXPECT_TRUE(DDS_LongSeq_has_ownership(&source));

    DDS_LongSeq loaned = DDS_SEQUENCE_INITIALIZER;
    EXPECT_FALSE(DDS_LongSeq_loan_contiguous(&loaned, nullptr, 0, 1));
    EXPECT_TRUE(log.contains("NULL buffer can't have non-zero maximum"));
    EXPECT_FALSE(DDS_LongSeq_loan_contiguous(&loaned, array, 3, 2));
    ASSERT_TRUE(DDS_LongSeq_loan_contiguous(&loaned, array, 2, 2));
    EXPECT_FALSE(DDS_LongSeq_set_maximum(&loaned, 0));
    EXPECT_FALSE(DDS_LongSeq_finalize(&loaned));
    EXPECT_TRUE(log.contains("buffer must not be loaned"));
    EXPECT_FALSE(DDS_LongSeq_ensure_length(&loaned, 3, 4));
    EXPECT_FALSE(DDS_LongSeq_copy_no_alloc(&loaned, &source));
    EXPECT_EQ(DDS_LongSeq_copy(&loaned, &source), nullptr);
    EXPECT_TRUE(log.contains("not the owner"));
    EXPECT_EQ(array[1], 2);
    DDS_LongSeq_finalize(&source);
}

TEST_F(SequenceTest, LoansUseTheCallersElementsWithoutElementFunctions) {
    char *const none = const_cast<char *>("");
    QTV_VX_LogMessage items[3] = {{{}, 1, none, const_cast<char *>("x")}, {{}, 2, none, const_cast<char *>("y")}, {}};
    LogSeq seq = DDS_SEQUENCE_INITIALIZER;
    ASSERT_TRUE(QTV_VX_LogMessageSeq_loan_contiguous(&seq, items, 2, 3));
    EXPECT_FALSE(QTV_VX_LogMessageSeq_has_ownership(&seq));
    EXPECT_EQ(QTV_VX_LogMessageSeq_get_reference(&seq, 1), &items[1]);
    ASSERT_TRUE(QTV_VX_LogMessageSeq_unloan(&seq));
    EXPECT_TRUE(QTV_VX_LogMessageSeq_has_ownership(&seq));
    EXPECT_EQ(QTV_VX_LogMessageSeq_get_maximum(&seq), 0);
    EXPECT_EQ(seq._contiguous_buffer, nullptr);
    EXPECT_STREQ(items[1].message, "y") << "no element function touched the caller's elements";

    // A discontiguous loan reads through the pointers; copying it makes deep copies.
    QTV_VX_LogMessage *pointers[2] = {&items[1], &items[0]};
    ASSERT_TRUE(QTV_VX_LogMessageSeq_loan_discontiguous(&seq, pointers, 2, 2));
    EXPECT_EQ(QTV_VX_LogMessageSeq_get_reference(&seq, 1), &items[0]);
    EXPECT_EQ(QTV_VX_LogMessageSeq_get(&seq, 0).level, 2);
    EXPECT_EQ(QTV_VX_LogMessageSeq_get_discontiguous_bufferI(&seq), pointers);
    LogSeq owned = DDS_SEQUENCE_INITIALIZER;
    ASSERT_EQ(QTV_VX_LogMessageSeq_copy(&owned, &seq), &owned);
    EXPECT_EQ(nameAt(owned, 0), "y");
    EXPECT_NE(owned._contiguous_buffer[0].message, items[1].message);
    ASSERT_TRUE(QTV_VX_LogMessageSeq_unloan(&seq));
    QTV_VX_LogMessageSeq_finalize(&owned);
    EXPECT_EQ(log.text(), "");
}

TEST_F(SequenceTest, CopyGrowsToTheSourceCapacityAndReusesItsBuffer) {
    LogSeq source = DDS_SEQUENCE_INITIALIZER;
    ASSERT_TRUE(QTV_VX_LogMessageSeq_set_maximum(&source, 10));
    fill(source, {"a", "b", "c"});

    LogSeq destination = DDS_SEQUENCE_INITIALIZER;
    ASSERT_EQ(QTV_VX_LogMessageSeq_copy(&destination, &source), &destination);
    EXPECT_EQ(QTV_VX_LogMessageSeq_get_maximum(&destination), 10);
    EXPECT_EQ(QTV_VX_LogMessageSeq_get_length(&destination), 3);
    EXPECT_EQ(nameAt(destination, 2), "c");

    const QTV_VX_LogMessage *buffer = destination._contiguous_buffer;
    ASSERT_TRUE(QTV_VX_LogMessageSeq_set_length(&source, 1));
    ASSERT_EQ(QTV_VX_LogMessageSeq_copy(&destination, &source), &destination);
    EXPECT_EQ(destination._contiguous_buffer, buffer);
    EXPECT_EQ(QTV_VX_LogMessageSeq_get_length(&destination), 1);

    QTV_VX_LogMessageSeq_finalize(&source);
    QTV_VX_LogMessageSeq_finalize(&destination);
}

TEST_F(SequenceTest, EachBrokenInvariantIsReportedByItsText) {
    struct Case {
        void (*breakIt)(DDS_LongSeq &, DDS_Long *);
        const char *text;
    };
    const Case cases[] = {
        {[](DDS_LongSeq &s, DDS_Long *) { s._sequence_init = 0; }, "invariant: uninitialized"},
        {[](DDS_LongSeq &s, DDS_Long *a) {
             s._contiguous_buffer = a;
             s._discontiguous_buffer = &s._contiguous_buffer;
         },
         "invariant: both buffers are non-NULL"},
        {[](DDS_LongSeq &s, DDS_Long *) { s._length = 1; }, "invariant: length > maximum"},
        {[](DDS_LongSeq &s, DDS_Long *) { s._discontiguous_buffer = &s._contiguous_buffer; },
         "invariant: sequence owns memory but has discontiguous buffer"},
        {[](DDS_LongSeq &s, DDS_Long *) { s._maximum = 1; }, "invariant: maximum > 0 but buffer is NULL"},
    };
    DDS_Long array[1] = {};
    for (const Case &c : cases) {
        DDS_LongSeq seq = DDS_SEQUENCE_INITIALIZER;
        c.breakIt(seq, array);
        EXPECT_FALSE(DDS_LongSeq_check_invariantsI(&seq, "where")) << c.text;
        EXPECT_TRUE(log.contains(c.text)) << c.text;
    }
}

TEST_F(SequenceTest, ElementParametersReachTheElementFunctions) {
    LogSeq seq = DDS_SEQUENCE_INITIALIZER;
    const DDS_TypeAllocationParams_t noMemory = {DDS_BOOLEAN_TRUE, DDS_BOOLEAN_FALSE, DDS_BOOLEAN_FALSE};
    ASSERT_TRUE(QTV_VX_LogMessageSeq_set_element_allocation_params(&seq, &noMemory));
    ASSERT_TRUE(QTV_VX_LogMessageSeq_set_maximum(&seq, 2));
    EXPECT_EQ(seq._contiguous_buffer[1].message, nullptr);

    EXPECT_FALSE(QTV_VX_LogMessageSeq_set_element_allocation_params(&seq, &noMemory));
    EXPECT_TRUE(
        log.contains("Member allocation parameters can be configured only when the maximum size of the sequence is 0"));
    EXPECT_FALSE(QTV_VX_LogMessageSeq_set_element_pointers_allocation(&seq, DDS_BOOLEAN_FALSE));
    EXPECT_TRUE(
        log.contains("Pointers allocation policy can be configured only when the maximum size of the sequence is 0"));

    ASSERT_TRUE(QTV_VX_LogMessageSeq_finalize(&seq));
}

TEST_F(SequenceTest, StringSequenceOwnsItsStrings) {
    DDS_StringSeq seq = DDS_SEQUENCE_INITIALIZER;
    ASSERT_TRUE(DDS_StringSeq_set_maximum(&seq, 2));
    EXPECT_STREQ(seq._contiguous_buffer[1], "");

    char *const texts[2] = {const_cast<char *>("alpha"), nullptr};
    ASSERT_TRUE(DDS_StringSeq_from_array(&seq, texts, 2));
    EXPECT_STREQ(DDS_StringSeq_get(&seq, 0), "alpha");
    EXPECT_NE(DDS_StringSeq_get(&seq, 0), texts[0]);
    EXPECT_EQ(DDS_StringSeq_get(&seq, 1), nullptr);

    DDS_StringSeq copy = DDS_SEQUENCE_INITIALIZER;
    ASSERT_EQ(DDS_StringSeq_copy(&copy, &seq), &copy);
    ASSERT_TRUE(DDS_StringSeq_set_maximum(&seq, 1));  // the copy keeps its own strings
    EXPECT_STREQ(DDS_StringSeq_get(&copy, 0), "alpha");
    DDS_StringSeq_finalize(&seq);
    DDS_StringSeq_finalize(&copy);
    EXPECT_EQ(log.text(), "");
}

}  // namespace
