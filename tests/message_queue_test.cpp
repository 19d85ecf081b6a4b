// The bounded message queue: capacity, text copies, front and pop, and many
// producers with one consumer.
#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "support/captured_stdout.h"
#include "vexar/MessageQueue.h"

using vexar_test::capturedStdout;

namespace {

struct QueueDeleter {
    void operator()(QTV_VX_MessageQueue *queue) const { QTV_VX_MessageQueue_delete(queue); }
};
using QueuePtr = std::unique_ptr<QTV_VX_MessageQueue, QueueDeleter>;

QueuePtr makeQueue(DDS_Long size) {
    const QTV_VX_MessageQueueProperty property = {size};
    QueuePtr queue(QTV_VX_MessageQueue_new(&property));
    EXPECT_NE(queue, nullptr);
    return queue;
}

QTV_VX_LogMessagePlusTime item(const std::string &message, const std::string &category = "", DDS_Long level = 600) {
    QTV_VX_LogMessagePlusTime plusTime{};
    plusTime.message.hostAndAppId = {11, 22};
    plusTime.message.level = level;
    plusTime.message.message = const_cast<char *>(message.c_str());
    plusTime.message.category = const_cast<char *>(category.c_str());
    plusTime.writeTime = {1700000000, 123};
    return plusTime;
}

DDS_Long push(QTV_VX_MessageQueue *queue, const std::string &message, const std::string &category = "") {
    const QTV_VX_LogMessagePlusTime plusTime = item(message, category);
    return QTV_VX_MessageQueue_push(queue, &plusTime);
}

constexpr OBLX_Time_t kNoWait = {0, 0};
constexpr OBLX_Time_t kOneSecond = {1, 0};

// Null arguments are refused with a line; a full queue drops the newest
// with a warning. What is left queued, inline or on the heap, is freed with
// the queue (leaks would show under AddressSanitizer).
TEST(MessageQueue, RefusesNullArgumentsAndWhenFullAndFreesWhatIsLeft) {
    QueuePtr queue = makeQueue(2);
    QTV_VX_LogMessagePlusTime noText = item("x");
    noText.message.message = nullptr;
    EXPECT_EQ(capturedStdout([&] { EXPECT_EQ(QTV_VX_MessageQueue_push(queue.get(), &noText), 0); }),
              "VX Error: QTV_VX_MessageQueue_push: Message queue or message to push is NULL\n");
    // "MEssageQueue" is deliberate: the published report text.
    EXPECT_EQ(capturedStdout([&] { EXPECT_EQ(QTV_VX_MessageQueue_front(nullptr, &kNoWait), nullptr); }),
              "VX Error: QTV_VX_MEssageQueue_front: Message queue is NULL\n");
    EXPECT_EQ(capturedStdout([&] { EXPECT_EQ(QTV_VX_MessageQueue_new(nullptr), nullptr); }),
              "VX Error: QTV_VX_MessageQueue_new: Message queue property is NULL\n");

    EXPECT_EQ(push(queue.get(), "first"), 1);
    EXPECT_EQ(push(queue.get(), std::string(3000, 'x'), std::string(100, 'y')), 1);
    DDS_Long result = -1;
    EXPECT_EQ(capturedStdout([&] { result = push(queue.get(), "third"); }),
              "VX Warning: QTV_VX_MessageQueue_push: Max queue size reached, message will get lost\n");
    EXPECT_EQ(result, 0);
    const QTV_VX_LogMessagePlusTime *head = QTV_VX_MessageQueue_front(queue.get(), &kNoWait);
    ASSERT_NE(head, nullptr);
    EXPECT_STREQ(head->message.message, "first");
    QTV_VX_MessageQueue_pop(queue.get());
    EXPECT_EQ(push(queue.get(), "fourth", "cat"), 1);
}

// The queue copies every field; texts that fit stay in the element, longer
// ones go to the heap, cut at the sample's bounds.
TEST(MessageQueue, CopiesTheItemWithTextsInlineOrOnTheHeapCut) {
    struct Case {
        size_t messageLength, categoryLength;
        bool messageInline, categoryInline;
        size_t storedMessage, storedCategory;
    };
    const Case cases[] = {
        {0, 0, true, true, 0, 0},
        {127, 31, true, true, 127, 31},
        {128, 32, false, false, 128, 32},
        {4096, 512, false, false, 4096, 512},
        {5000, 600, false, false, 4096, 512},
    };
    QueuePtr queue = makeQueue(1);
    for (const Case &c : cases) {
        std::string message(c.messageLength, 'm');
        std::string category(c.categoryLength, 'c');
        const QTV_VX_LogMessagePlusTime pushed = item(message, category, 350);
        ASSERT_EQ(QTV_VX_MessageQueue_push(queue.get(), &pushed), 1);
        const QTV_VX_LogMessagePlusTime *head = QTV_VX_MessageQueue_front(queue.get(), &kNoWait);
        ASSERT_NE(head, nullptr);
        EXPECT_EQ(std::tuple(head->message.hostAndAppId.rtps_host_id, head->message.hostAndAppId.rtps_app_id,
                             head->message.level, head->writeTime.sec, head->writeTime.nanosec),
                  std::tuple(11, 22, 350, 1700000000, 123u));
        message.assign(c.messageLength, 'X');  // the queue holds its own copies
        category.assign(c.categoryLength, 'X');
        const auto *element = reinterpret_cast<const QTV_VX_MessageQueueElement *>(
            reinterpret_cast<const char *>(head) - offsetof(QTV_VX_MessageQueueElement, messagePlusTime));
        EXPECT_EQ(head->message.message == element->inlineMessage, c.messageInline) << c.messageLength;
        EXPECT_EQ(head->message.category == element->inlineCategory, c.categoryInline) << c.categoryLength;
        EXPECT_EQ(head->message.message, std::string(c.storedMessage, 'm'));
        EXPECT_EQ(head->message.category, std::string(c.storedCategory, 'c'));
        QTV_VX_MessageQueue_pop(queue.get());
    }
}

// An empty queue's front times out silently. A head that was fetched but not
// popped stays in place; it is offered again only once a later push gives the
// count back.
TEST(MessageQueue, FrontWaitsForAnItemAndLeavesTheHeadInPlace) {
    QueuePtr queue = makeQueue(4);
    const OBLX_Time_t hundredMilliseconds = {0, 429496730};  // 0.1 s in 2^-32 units
    const QTV_VX_LogMessagePlusTime *first = nullptr;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(capturedStdout([&] { first = QTV_VX_MessageQueue_front(queue.get(), &hundredMilliseconds); }), "");
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(100));
    EXPECT_EQ(first, nullptr);

    ASSERT_EQ(push(queue.get(), "a"), 1);
    first = QTV_VX_MessageQueue_front(queue.get(), &kNoWait);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(QTV_VX_MessageQueue_front(queue.get(), &kNoWait), nullptr);
    ASSERT_EQ(push(queue.get(), "b"), 1);
    EXPECT_EQ(QTV_VX_MessageQueue_front(queue.get(), &kNoWait), first);
    QTV_VX_MessageQueue_pop(queue.get());
    QTV_VX_MessageQueue_pop(queue.get());
    QTV_VX_MessageQueue_pop(queue.get());  // popping an empty queue is harmless
    EXPECT_EQ(OBLX_InlineList_getSize(&queue->queue), 0);
}

// Many producers, one consumer: below capacity nothing is lost and each
// producer's messages arrive in its own order.
TEST(MessageQueueConcurrency, ManyProducersLoseNothingBelowCapacity) {
    constexpr int kProducers = 4;
    constexpr int kPerProducer = 500;
    QueuePtr queue = makeQueue(kProducers * kPerProducer);
    std::vector<std::thread> producers;
    for (int p = 0; p < kProducers; ++p) {
        producers.emplace_back([&, p] {
            for (int i = 0; i < kPerProducer; ++i) {
                // Every fourth message is long enough to take the heap path.
                const std::string padding(i % 4 == 0 ? 200 : 0, '.');
                EXPECT_EQ(push(queue.get(), std::to_string(p) + ":" + std::to_string(i) + padding, "producer"), 1);
            }
        });
    }
    std::vector<int> nextOf(kProducers, 0);
    for (int received = 0; received < kProducers * kPerProducer; ++received) {
        const QTV_VX_LogMessagePlusTime *head = QTV_VX_MessageQueue_front(queue.get(), &kOneSecond);
        ASSERT_NE(head, nullptr) << "after " << received;
        const std::string text = head->message.message;  // "<producer>:<index>"
        EXPECT_EQ(std::stoi(text.substr(text.find(':') + 1)), nextOf[std::stoi(text)]++) << "in each producer's order";
        EXPECT_STREQ(head->message.category, "producer");
        QTV_VX_MessageQueue_pop(queue.get());
    }
    for (std::thread &producer : producers) producer.join();
    EXPECT_EQ(QTV_VX_MessageQueue_front(queue.get(), &kNoWait), nullptr);
}

}  // namespace
