// The sequence family through its C operations: DDS_LongSeq, DDS_StringSeq
// and a test element that owns heap memory, whose element functions count
// their calls so that leaks and double frees show up in the counts and
// under AddressSanitizer.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "support/log_capture.h"
#include "platform/sequence.h"
#include "platform/sequence.hpp"

// A C element type, as the sequences of the data types have.
struct Item {
    char *name;
    DDS_Long value;
};

VEXAR_BEGIN_DECLS
OBLX_SEQUENCE_DECLARE(ItemSeq, Item);
VEXAR_END_DECLS

namespace {

struct CallCounts {
    int initialized = 0;
    int finalized = 0;
    int copied = 0;
};
CallCounts calls;

struct CountingItemTraits {
    static DDS_Boolean initialize(Item *item, const DDS_TypeAllocationParams_t *params) {
        ++calls.initialized;
        item->name = params->allocate_memory ? strdup("") : nullptr;
        item->value = 0;
        return DDS_BOOLEAN_TRUE;
    }
    static void finalize(Item *item, const DDS_TypeDeallocationParams_t *) {
        ++calls.finalized;
        std::free(item->name);
        item->name = nullptr;
    }
    static DDS_Boolean copy(Item *destination, const Item *source) {
        ++calls.copied;
        std::free(destination->name);
        destination->name = source->name != nullptr ? strdup(source->name) : nullptr;
        destination->value = source->value;
        return DDS_BOOLEAN_TRUE;
    }
};

}  // namespace

OBLX_SEQUENCE_DEFINE(ItemSeq, Item, CountingItemTraits);

namespace {

using vexar_test::LogCapture;

class SequenceTest : public testing::Test {
protected:
    void SetUp() override { calls = {}; }

    // Every element ever initialized has been finalized exactly once.
    static void expectBalanced() { EXPECT_EQ(calls.initialized, calls.finalized); }

    static void fill(ItemSeq &seq, std::initializer_list<const char *> names) {
        ASSERT_TRUE(ItemSeq_set_length(&seq, static_cast<DDS_Long>(names.size())));
        DDS_Long i = 0;
        for (const char *name : names) {
            Item source{const_cast<char *>(name), i};
            CountingItemTraits::copy(ItemSeq_get_reference(&seq, i++), &source);
        }
        calls.copied = 0;
    }

    static std::string nameAt(ItemSeq &seq, DDS_Long index) { return ItemSeq_get_reference(&seq, index)->name; }

    LogCapture log{OBLX_CONFIG_LOG_VERBOSITY_ERROR};
};

TEST_F(SequenceTest, ZeroFilledAndStaticSequencesWorkWithoutInitialize) {
    DDS_LongSeq zeroed;
    std::memset(&zeroed, 0, sizeof zeroed);
    EXPECT_EQ(DDS_LongSeq_get_length(&zeroed), 0);
    EXPECT_EQ(zeroed._sequence_init, DDS_SEQUENCE_MAGIC_NUMBER);
    EXPECT_TRUE(DDS_LongSeq_has_ownership(&zeroed));

    static DDS_LongSeq declared = DDS_SEQUENCE_INITIALIZER;
    ASSERT_TRUE(DDS_LongSeq_ensure_length(&declared, 2, 4));
    EXPECT_TRUE(DDS_LongSeq_finalize(&declared));

    // All-zero element parameters would mean "allocate nothing"; the lazy
    // start replaces them with the defaults, so elements get their strings.
    ItemSeq items;
    std::memset(&items, 0, sizeof items);
    ASSERT_TRUE(ItemSeq_set_maximum(&items, 1));
    EXPECT_NE(items._contiguous_buffer[0].name, nullptr);
    ItemSeq_finalize(&items);
    expectBalanced();
    EXPECT_EQ(log.text(), "");
}

TEST_F(SequenceTest, GrowingDeepCopiesElementsAndShrinkingTruncates) {
    ItemSeq seq = DDS_SEQUENCE_INITIALIZER;
    ASSERT_TRUE(ItemSeq_set_maximum(&seq, 4));
    fill(seq, {"a", "b", "c"});
    const char *oldName = seq._contiguous_buffer[0].name;

    ASSERT_TRUE(ItemSeq_set_maximum(&seq, 8));
    EXPECT_EQ(ItemSeq_get_maximum(&seq), 8);
    EXPECT_EQ(ItemSeq_get_length(&seq), 3);
    EXPECT_EQ(nameAt(seq, 2), "c");
    EXPECT_NE(seq._contiguous_buffer[0].name, oldName);
    EXPECT_EQ(calls.copied, 3);
    EXPECT_EQ(calls.initialized, 4 + 8);
    EXPECT_EQ(calls.finalized, 4);

    ASSERT_TRUE(ItemSeq_set_maximum(&seq, 2));
    EXPECT_EQ(ItemSeq_get_length(&seq), 2);
    EXPECT_EQ(nameAt(seq, 1), "b");

    ASSERT_TRUE(ItemSeq_set_maximum(&seq, 2));  // same maximum: nothing happens
    EXPECT_EQ(calls.initialized, 4 + 8 + 2);

    ASSERT_TRUE(ItemSeq_set_maximum(&seq, 0));
    EXPECT_EQ(seq._contiguous_buffer, nullptr);
    EXPECT_EQ(ItemSeq_get_length(&seq), 0);
    expectBalanced();
    EXPECT_EQ(log.text(), "");
}

TEST_F(SequenceTest, LengthStaysWithinMaximumAndEnsureLengthGrows) {
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
    DDS_LongSeq_finalize(&seq);
}

TEST_F(SequenceTest, ALoanedSequenceRefusesWhatWouldFreeOrReallocateItsBuffer) {
    DDS_LongSeq source = DDS_SEQUENCE_INITIALIZER;
    ASSERT_TRUE(DDS_LongSeq_ensure_length(&source, 3, 3));
    DDS_Long array[2] = {1, 2};
    DDS_LongSeq loaned = DDS_SEQUENCE_INITIALIZER;
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

TEST_F(SequenceTest, ContiguousLoanUsesTheCallersArrayWithoutElementFunctions) {
    Item items[3] = {{const_cast<char *>("x"), 1}, {const_cast<char *>("y"), 2}, {}};
    ItemSeq seq = DDS_SEQUENCE_INITIALIZER;
    ASSERT_TRUE(ItemSeq_loan_contiguous(&seq, items, 2, 3));
    EXPECT_FALSE(ItemSeq_has_ownership(&seq));
    EXPECT_EQ(ItemSeq_get_reference(&seq, 1), &items[1]);

    ASSERT_TRUE(ItemSeq_unloan(&seq));
    EXPECT_TRUE(ItemSeq_has_ownership(&seq));
    EXPECT_EQ(ItemSeq_get_maximum(&seq), 0);
    EXPECT_EQ(seq._contiguous_buffer, nullptr);
    EXPECT_EQ(calls.initialized + calls.finalized + calls.copied, 0);
    EXPECT_EQ(log.text(), "");
}

TEST_F(SequenceTest, LoanPreconditions) {
    DDS_LongSeq seq = DDS_SEQUENCE_INITIALIZER;
    DDS_Long array[4] = {};
    EXPECT_FALSE(DDS_LongSeq_unloan(&seq));
    EXPECT_TRUE(log.contains("buffer must be loaned"));
    EXPECT_FALSE(DDS_LongSeq_loan_contiguous(&seq, nullptr, 0, 1));
    EXPECT_TRUE(log.contains("NULL buffer can't have non-zero maximum"));
    EXPECT_FALSE(DDS_LongSeq_loan_contiguous(&seq, array, 5, 4));

    ASSERT_TRUE(DDS_LongSeq_set_maximum(&seq, 5));
    EXPECT_FALSE(DDS_LongSeq_loan_contiguous(&seq, array, 1, 4));
    EXPECT_TRUE(log.contains("max size must be 0"));
    EXPECT_TRUE(DDS_LongSeq_has_ownership(&seq));
    DDS_LongSeq_finalize(&seq);
}

TEST_F(SequenceTest, DiscontiguousLoanReadsThroughThePointers) {
    Item first{const_cast<char *>("first"), 1};
    Item second{const_cast<char *>("second"), 2};
    Item *pointers[2] = {&second, &first};
    ItemSeq loaned = DDS_SEQUENCE_INITIALIZER;
    ASSERT_TRUE(ItemSeq_loan_discontiguous(&loaned, pointers, 2, 2));
    EXPECT_EQ(ItemSeq_get_reference(&loaned, 1), &first);
    EXPECT_EQ(ItemSeq_get(&loaned, 0).value, 2);
    EXPECT_EQ(ItemSeq_get_discontiguous_bufferI(&loaned), pointers);

    ItemSeq owned = DDS_SEQUENCE_INITIALIZER;
    ASSERT_EQ(ItemSeq_copy(&owned, &loaned), &owned);
    EXPECT_EQ(nameAt(owned, 0), "second");
    EXPECT_NE(owned._contiguous_buffer[0].name, second.name);

    ASSERT_TRUE(ItemSeq_unloan(&loaned));
    ItemSeq_finalize(&owned);
    expectBalanced();
    EXPECT_EQ(log.text(), "");
}

TEST_F(SequenceTest, CopyGrowsToTheSourceCapacityAndReusesItsBuffer) {
    ItemSeq source = DDS_SEQUENCE_INITIALIZER;
    ASSERT_TRUE(ItemSeq_set_maximum(&source, 10));
    fill(source, {"a", "b", "c"});

    ItemSeq destination = DDS_SEQUENCE_INITIALIZER;
    ASSERT_EQ(ItemSeq_copy(&destination, &source), &destination);
    EXPECT_EQ(ItemSeq_get_maximum(&destination), 10);
    EXPECT_EQ(ItemSeq_get_length(&destination), 3);
    EXPECT_EQ(nameAt(destination, 2), "c");
    EXPECT_EQ(calls.copied, 3);

    const Item *buffer = destination._contiguous_buffer;
    ASSERT_TRUE(ItemSeq_set_length(&source, 1));
    ASSERT_EQ(ItemSeq_copy(&destination, &source), &destination);
    EXPECT_EQ(destination._contiguous_buffer, buffer);
    EXPECT_EQ(ItemSeq_get_length(&destination), 1);

    ItemSeq_finalize(&source);
    ItemSeq_finalize(&destination);
    expectBalanced();
}

TEST_F(SequenceTest, CopyNoAllocNeedsRoomInTheDestination) {
    DDS_LongSeq source = DDS_SEQUENCE_INITIALIZER;
    ASSERT_TRUE(DDS_LongSeq_ensure_length(&source, 3, 3));
    DDS_LongSeq small = DDS_SEQUENCE_INITIALIZER;
    ASSERT_TRUE(DDS_LongSeq_set_maximum(&small, 2));
    EXPECT_FALSE(DDS_LongSeq_copy_no_alloc(&small, &source));
    EXPECT_TRUE(log.contains("DDS_LongSeq_copy_no_allocI"));

    DDS_LongSeq never;  // a source that was never initialized counts as empty
    std::memset(&never, 0xff, sizeof never);
    EXPECT_TRUE(DDS_LongSeq_copy_no_alloc(&small, &never));
    EXPECT_EQ(DDS_LongSeq_get_length(&small), 0);

    DDS_LongSeq_finalize(&source);
    DDS_LongSeq_finalize(&small);
}

TEST_F(SequenceTest, ArraysAndIndicesAreBoundsChecked) {
    DDS_LongSeq seq = DDS_SEQUENCE_INITIALIZER;
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
    DDS_LongSeq_finalize(&seq);
}

TEST_F(SequenceTest, EachBrokenInvariantIsReportedByItsText) {
    struct Case {
        void (*breakIt)(DDS_LongSeq &, DDS_Long *);
        const char *text;
    };
    const Case cases[] = {
        {[](DDS_LongSeq &s, DDS_Long *) { s._sequence_init = 0; }, "invariant: uninitialized"},
        {[](DDS_LongSeq &s, DDS_Long *a) { s._contiguous_buffer = a; s._discontiguous_buffer = &s._contiguous_buffer; },
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
    ItemSeq seq = DDS_SEQUENCE_INITIALIZER;
    const DDS_TypeAllocationParams_t noMemory = {DDS_BOOLEAN_TRUE, DDS_BOOLEAN_FALSE, DDS_BOOLEAN_FALSE};
    ASSERT_TRUE(ItemSeq_set_element_allocation_params(&seq, &noMemory));
    ASSERT_TRUE(ItemSeq_set_maximum(&seq, 2));
    EXPECT_EQ(seq._contiguous_buffer[1].name, nullptr);

    EXPECT_FALSE(ItemSeq_set_element_allocation_params(&seq, &noMemory));
    EXPECT_TRUE(log.contains("Member allocation parameters can be configured only when the maximum size of the sequence is 0"));
    EXPECT_FALSE(ItemSeq_set_element_pointers_allocation(&seq, DDS_BOOLEAN_FALSE));
    EXPECT_TRUE(log.contains("Pointers allocation policy can be configured only when the maximum size of the sequence is 0"));

    ASSERT_TRUE(ItemSeq_finalize(&seq));
    expectBalanced();
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
