// The fixed-size buffer pool and the intrusive list.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <set>
#include <thread>
#include <vector>

#include "platform/runtime/buffer_pool.h"
#include "platform/runtime/inline_list.h"

namespace {

OBLX_BufferPoolProperty poolProperty(DDS_Long initial, DDS_Long maximal, DDS_Long increment) {
    return {initial, maximal, increment, DDS_BOOLEAN_FALSE, DDS_BOOLEAN_FALSE};
}

// The pool's buffer count after each of six gets, and how many got a buffer.
TEST(BufferPool, PreallocatesThenGrowsByItsIncrementOrByDoublingUpToItsMaximal) {
    constexpr DDS_Long kDouble = OBLX_BUFFER_POOL_INCREMENT_DOUBLE, kUnlimited = OBLX_BUFFER_POOL_UNLIMITED;
    struct Case {
        OBLX_BufferPoolProperty property;
        std::vector<DDS_Long> counts;
        size_t handedOut;
    };
    const Case cases[] = {
        {poolProperty(4, 4, kDouble), {4, 4, 4, 4, 4, 4}, 4},  // as the message queue sizes it
        {poolProperty(3, 5, kDouble), {3, 3, 3, 5, 5, 5}, 5},  // doubling would reach 6
        {poolProperty(0, kUnlimited, kDouble), {1, 2, 4, 4, 8, 8}, 6}, {poolProperty(1, 6, 2), {1, 3, 3, 5, 5, 6}, 6},
        {poolProperty(1, kUnlimited, 0), {1, 1, 1, 1, 1, 1}, 1},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(&c - cases);
        OBLX_BufferPool *pool = OBLX_BufferPool_new(24, 8, &c.property);
        std::vector<DDS_Long> counts;
        size_t handedOut = 0;
        for (int i = 0; i < 6; ++i) {
            handedOut += OBLX_BufferPool_getBuffer(pool) != nullptr;
            counts.push_back(OBLX_BufferPool_getBufferCount(pool));
        }
        EXPECT_EQ(counts, c.counts);
        EXPECT_EQ(handedOut, c.handedOut);
        OBLX_BufferPool_delete(pool);
    }
}

// With the larger alignment the pool also zeroes what it hands out again.
TEST(BufferPool, BuffersAreAlignedDistinctAndReusedZeroedOnRequest) {
    for (size_t alignment : {size_t{8}, size_t{64}}) {
        OBLX_BufferPoolProperty property = poolProperty(3, 9, 3);
        property.zeroOnGet = alignment == 64 ? DDS_BOOLEAN_TRUE : DDS_BOOLEAN_FALSE;
        OBLX_BufferPool *pool = OBLX_BufferPool_new(13, alignment, &property);
        std::vector<void *> buffers;
        while (void *buffer = OBLX_BufferPool_getBuffer(pool)) buffers.push_back(buffer);
        ASSERT_EQ(buffers.size(), 9u);
        std::set<std::uintptr_t> addresses;
        for (void *buffer : buffers) {
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer) % alignment, 0u) << alignment;
            std::memset(buffer, 0xab, 13);  // the whole buffer is usable (ASan)
            addresses.insert(reinterpret_cast<std::uintptr_t>(buffer));
        }
        const std::vector<std::uintptr_t> sorted(addresses.begin(), addresses.end());
        ASSERT_EQ(sorted.size(), buffers.size());
        for (size_t i = 1; i < sorted.size(); ++i) EXPECT_GE(sorted[i] - sorted[i - 1], 13u);  // no overlap

        OBLX_BufferPool_returnBuffer(pool, buffers[4]);
        EXPECT_EQ(OBLX_BufferPool_getFreeBufferCount(pool), 1);
        EXPECT_EQ(OBLX_BufferPool_getBuffer(pool), buffers[4]);
        EXPECT_EQ(OBLX_BufferPool_getBufferCount(pool), 9);
        const unsigned char zeros[13] = {};
        EXPECT_EQ(std::memcmp(buffers[4], zeros, sizeof zeros) == 0, property.zeroOnGet == DDS_BOOLEAN_TRUE);
        OBLX_BufferPool_delete(pool);  // buffers still out are freed with the pool
    }
}

TEST(BufferPoolConcurrency, SharedPoolHandsEachBufferToOneThread) {
    OBLX_BufferPoolProperty property = poolProperty(2, 16, OBLX_BUFFER_POOL_INCREMENT_DOUBLE);
    property.multiThreadedAccess = DDS_BOOLEAN_TRUE;
    OBLX_BufferPool *pool = OBLX_BufferPool_new(sizeof(long), 8, &property);
    std::vector<std::thread> threads;
    for (long id = 1; id <= 4; ++id) {
        threads.emplace_back([pool, id] {
            for (int i = 0; i < 2000; ++i) {
                auto *buffer = static_cast<long *>(OBLX_BufferPool_getBuffer(pool));
                ASSERT_NE(buffer, nullptr);
                *buffer = id;
                std::this_thread::yield();
                ASSERT_EQ(*buffer, id);  // nobody else was handed this buffer
                OBLX_BufferPool_returnBuffer(pool, buffer);
            }
        });
    }
    for (std::thread &thread : threads) thread.join();
    EXPECT_LE(OBLX_BufferPool_getBufferCount(pool), 16);
    EXPECT_EQ(OBLX_BufferPool_getFreeBufferCount(pool), OBLX_BufferPool_getBufferCount(pool));
    OBLX_BufferPool_delete(pool);
}

class InlineListTest : public testing::Test {
protected:
    void SetUp() override {
        OBLX_InlineList_initialize(&list);
        for (OBLX_InlineListNode &node : nodes) OBLX_InlineListNode_initialize(&node);
    }

    // The nodes' indices from front to back, following `next`.
    std::vector<int> order() const {
        std::vector<int> indices;
        for (const OBLX_InlineListNode *n = OBLX_InlineList_getFirst(&list); n != nullptr; n = n->next)
            indices.push_back(static_cast<int>(n - nodes));
        return indices;
    }

    OBLX_InlineList list;
    OBLX_InlineListNode nodes[4];
};

TEST_F(InlineListTest, AddsAtBothEndsAndRemovesAnywhere) {
    EXPECT_EQ(OBLX_InlineList_getFirst(&list), nullptr);
    EXPECT_EQ(OBLX_InlineList_getLast(&list), nullptr);

    ASSERT_TRUE(OBLX_InlineList_addNodeToBack(&list, &nodes[1]));
    ASSERT_TRUE(OBLX_InlineList_addNodeToBack(&list, &nodes[2]));
    ASSERT_TRUE(OBLX_InlineList_addNodeToFront(&list, &nodes[0]));
    ASSERT_TRUE(OBLX_InlineList_addNodeToBack(&list, &nodes[3]));
    EXPECT_EQ(order(), (std::vector<int>{0, 1, 2, 3}));
    EXPECT_EQ(OBLX_InlineList_getSize(&list), 4);

    ASSERT_TRUE(OBLX_InlineList_removeNode(&list, &nodes[2]));  // middle
    ASSERT_TRUE(OBLX_InlineList_removeNode(&list, &nodes[3]));  // tail
    EXPECT_EQ(OBLX_InlineList_getLast(&list), &nodes[1]);
    ASSERT_TRUE(OBLX_InlineList_addNodeToBack(&list, &nodes[3]));  // the tail moved back
    ASSERT_TRUE(OBLX_InlineList_removeNode(&list, &nodes[0]));     // head
    EXPECT_EQ(order(), (std::vector<int>{1, 3}));
    EXPECT_EQ(nodes[1].prev, &list.sentinel);
    EXPECT_EQ(nodes[0].inlineList, nullptr);

    ASSERT_TRUE(OBLX_InlineList_removeNode(&list, &nodes[1]));
    ASSERT_TRUE(OBLX_InlineList_removeNode(&list, &nodes[3]));
    EXPECT_EQ(OBLX_InlineList_getSize(&list), 0);
    EXPECT_EQ(OBLX_InlineList_getLast(&list), nullptr);
    ASSERT_TRUE(OBLX_InlineList_addNodeToFront(&list, &nodes[2]));  // front of an empty list is also its back
    EXPECT_EQ(OBLX_InlineList_getLast(&list), &nodes[2]);
}

TEST_F(InlineListTest, RefusesNodesOfOtherListsAndTheSentinel) {
    OBLX_InlineList other;
    OBLX_InlineList_initialize(&other);
    ASSERT_TRUE(OBLX_InlineList_addNodeToBack(&other, &nodes[0]));
    EXPECT_FALSE(OBLX_InlineList_addNodeToBack(&list, &nodes[0]));
    EXPECT_FALSE(OBLX_InlineList_removeNode(&list, &nodes[0]));
    EXPECT_FALSE(OBLX_InlineList_removeNode(&list, &list.sentinel));
    EXPECT_FALSE(OBLX_InlineList_removeNode(&list, &nodes[1]));
    EXPECT_EQ(OBLX_InlineList_getSize(&list), 0);
    EXPECT_EQ(OBLX_InlineList_getSize(&other), 1);
}

}  // namespace
