// The fixed-size buffer pool and the intrusive list.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <set>
#include <thread>
#include <vector>

#include "platform/buffer_pool.h"
#include "platform/inline_list.h"

namespace {

OBLX_BufferPoolProperty poolProperty(DDS_Long initial, DDS_Long maximal, DDS_Long increment) {
    return {initial, maximal, increment, DDS_BOOLEAN_FALSE, DDS_BOOLEAN_FALSE};
}

// Takes every buffer the pool will give.
std::vector<void *> drain(OBLX_BufferPool *pool) {
    std::vector<void *> buffers;
    while (void *buffer = OBLX_BufferPool_getBuffer(pool)) {
        buffers.push_back(buffer);
    }
    return buffers;
}

TEST(BufferPool, PreallocatesAndNeverGrowsPastItsMaximal) {
    // As the message queue sizes it: initial = maximal.
    const OBLX_BufferPoolProperty fixed = poolProperty(4, 4, OBLX_BUFFER_POOL_INCREMENT_DOUBLE);
    OBLX_BufferPool *pool = OBLX_BufferPool_new(24, 8, &fixed);
    ASSERT_NE(pool, nullptr);
    EXPECT_EQ(OBLX_BufferPool_getBufferCount(pool), 4);
    EXPECT_EQ(drain(pool).size(), 4u);
    EXPECT_EQ(OBLX_BufferPool_getBufferCount(pool), 4);
    OBLX_BufferPool_delete(pool);

    // Doubling from 3 would reach 6; the maximal caps it at 5.
    const OBLX_BufferPoolProperty capped = poolProperty(3, 5, OBLX_BUFFER_POOL_INCREMENT_DOUBLE);
    pool = OBLX_BufferPool_new(24, 8, &capped);
    EXPECT_EQ(drain(pool).size(), 5u);
    EXPECT_EQ(OBLX_BufferPool_getBufferCount(pool), 5);
    OBLX_BufferPool_delete(pool);
}

TEST(BufferPool, GrowsByItsIncrementOrByDoubling) {
    const OBLX_BufferPoolProperty doubling = poolProperty(0, OBLX_BUFFER_POOL_UNLIMITED, OBLX_BUFFER_POOL_INCREMENT_DOUBLE);
    OBLX_BufferPool *pool = OBLX_BufferPool_new(8, 8, &doubling);
    std::vector<DDS_Long> counts;
    for (int i = 0; i < 5; ++i) {
        OBLX_BufferPool_getBuffer(pool);
        counts.push_back(OBLX_BufferPool_getBufferCount(pool));
    }
    EXPECT_EQ(counts, (std::vector<DDS_Long>{1, 2, 4, 4, 8}));
    OBLX_BufferPool_delete(pool);

    const OBLX_BufferPoolProperty stepped = poolProperty(1, 6, 2);
    pool = OBLX_BufferPool_new(8, 8, &stepped);
    OBLX_BufferPool_getBuffer(pool);
    OBLX_BufferPool_getBuffer(pool);
    EXPECT_EQ(OBLX_BufferPool_getBufferCount(pool), 3);
    OBLX_BufferPool_delete(pool);

    const OBLX_BufferPoolProperty frozen = poolProperty(1, OBLX_BUFFER_POOL_UNLIMITED, 0);
    pool = OBLX_BufferPool_new(8, 8, &frozen);
    EXPECT_EQ(drain(pool).size(), 1u);
    OBLX_BufferPool_delete(pool);
}

TEST(BufferPool, BuffersAreAlignedDistinctAndReused) {
    for (size_t alignment : {size_t{8}, size_t{64}}) {
        const OBLX_BufferPoolProperty property = poolProperty(3, 9, 3);
        OBLX_BufferPool *pool = OBLX_BufferPool_new(13, alignment, &property);
        std::vector<void *> buffers = drain(pool);
        ASSERT_EQ(buffers.size(), 9u);
        std::set<std::uintptr_t> addresses;
        for (void *buffer : buffers) {
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer) % alignment, 0u) << alignment;
            std::memset(buffer, 0xab, 13);  // the whole buffer is usable (ASan)
            addresses.insert(reinterpret_cast<std::uintptr_t>(buffer));
        }
        const std::vector<std::uintptr_t> sorted(addresses.begin(), addresses.end());
        ASSERT_EQ(sorted.size(), buffers.size());
        for (size_t i = 1; i < sorted.size(); ++i) {
            EXPECT_GE(sorted[i] - sorted[i - 1], 13u);  // no overlap
        }

        OBLX_BufferPool_returnBuffer(pool, buffers[4]);
        EXPECT_EQ(OBLX_BufferPool_getFreeBufferCount(pool), 1);
        EXPECT_EQ(OBLX_BufferPool_getBuffer(pool), buffers[4]);
        EXPECT_EQ(OBLX_BufferPool_getBufferCount(pool), 9);
        OBLX_BufferPool_delete(pool);  // buffers still out are freed with the pool
    }
}

TEST(BufferPool, ZeroOnGetClearsReusedBuffers) {
    OBLX_BufferPoolProperty property = poolProperty(1, 1, 0);
    property.zeroOnGet = DDS_BOOLEAN_TRUE;
    OBLX_BufferPool *pool = OBLX_BufferPool_new(40, 8, &property);
    auto *buffer = static_cast<unsigned char *>(OBLX_BufferPool_getBuffer(pool));
    std::memset(buffer, 0x5a, 40);
    OBLX_BufferPool_returnBuffer(pool, buffer);
    buffer = static_cast<unsigned char *>(OBLX_BufferPool_getBuffer(pool));
    const unsigned char zeros[40] = {};
    EXPECT_EQ(std::memcmp(buffer, zeros, sizeof zeros), 0);
    OBLX_BufferPool_delete(pool);
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
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_LE(OBLX_BufferPool_getBufferCount(pool), 16);
    EXPECT_EQ(OBLX_BufferPool_getFreeBufferCount(pool), OBLX_BufferPool_getBufferCount(pool));
    OBLX_BufferPool_delete(pool);
}

class InlineListTest : public testing::Test {
protected:
    void SetUp() override {
        OBLX_InlineList_initialize(&list);
        for (OBLX_InlineListNode &node : nodes) {
            OBLX_InlineListNode_initialize(&node);
        }
    }

    // The nodes' indices from front to back, following `next`.
    std::vector<int> order() const {
        std::vector<int> indices;
        for (const OBLX_InlineListNode *n = OBLX_InlineList_getFirst(&list); n != nullptr; n = n->next) {
            indices.push_back(static_cast<int>(n - nodes));
        }
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
    ASSERT_TRUE(OBLX_InlineList_removeNode(&list, &nodes[0]));  // head
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
