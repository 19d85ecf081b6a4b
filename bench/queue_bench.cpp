// Message queue throughput, and proof that short messages cost no allocation.
//
// Heap allocations are counted as bench/allocation_counter.hpp says.
#include <benchmark/benchmark.h>

#include <string>
#include <thread>
#include <vector>

#include "allocation_counter.hpp"
#include "vexar/MessageQueue.h"

using vexar_bench::allocationCount;
using vexar_bench::countingAllocations;
using vexar_bench::kCountsAllocations;

namespace {

constexpr OBLX_Time_t kOneSecond = {1, 0};

struct Queue {
    explicit Queue(DDS_Long size) : property{size}, queue(QTV_VX_MessageQueue_new(&property)) {}
    ~Queue() { QTV_VX_MessageQueue_delete(queue); }
    Queue(const Queue &) = delete;
    Queue &operator=(const Queue &) = delete;

    QTV_VX_MessageQueueProperty property;
    QTV_VX_MessageQueue *queue;
};

QTV_VX_LogMessagePlusTime itemOf(const std::string &message, const std::string &category) {
    QTV_VX_LogMessagePlusTime item{};
    item.message.hostAndAppId = {1, 2};
    item.message.level = 600;
    item.message.message = const_cast<char *>(message.c_str());
    item.message.category = const_cast<char *>(category.c_str());
    return item;
}

void consume(QTV_VX_MessageQueue *queue) {
    const QTV_VX_LogMessagePlusTime *head = QTV_VX_MessageQueue_front(queue, &kOneSecond);
    benchmark::DoNotOptimize(head);
    QTV_VX_MessageQueue_pop(queue);
}

// One thread pushes, fetches the head and pops it: the queue's round trip.
void BM_RoundTripOneProducer(benchmark::State &state) {
    Queue q(128);
    const std::string message(100, 'm');
    const std::string category = "bench";
    const QTV_VX_LogMessagePlusTime item = itemOf(message, category);
    for (auto _ : state) {
        QTV_VX_MessageQueue_push(q.queue, &item);
        consume(q.queue);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_RoundTripOneProducer);

// Two producer threads push a batch each while this thread consumes it all.
// The queue holds the whole batch, so nothing is dropped.
void BM_RoundTripTwoProducers(benchmark::State &state) {
    constexpr int kProducers = 2;
    constexpr int kPerProducer = 5000;
    Queue q(kProducers * kPerProducer);
    const std::string message(100, 'm');
    const std::string category = "bench";
    const QTV_VX_LogMessagePlusTime item = itemOf(message, category);
    for (auto _ : state) {
        std::vector<std::thread> producers;
        for (int p = 0; p < kProducers; ++p) {
            producers.emplace_back([&] {
                for (int i = 0; i < kPerProducer; ++i) {
                    QTV_VX_MessageQueue_push(q.queue, &item);
                }
            });
        }
        for (int i = 0; i < kProducers * kPerProducer; ++i) {
            consume(q.queue);
        }
        for (std::thread &producer : producers) {
            producer.join();
        }
    }
    state.SetItemsProcessed(state.iterations() * kProducers * kPerProducer);
}
BENCHMARK(BM_RoundTripTwoProducers)->UseRealTime();

// One push of a message of state.range(0) characters, with the heap
// allocations that it makes: none up to 127 characters.
void BM_Push(benchmark::State &state) {
    constexpr DDS_Long kCapacity = 1024;
    Queue q(kCapacity);
    const std::string message(static_cast<size_t>(state.range(0)), 'm');
    const std::string category = "bench";
    const QTV_VX_LogMessagePlusTime item = itemOf(message, category);
    const long long allocationsBefore = allocationCount.load();
    DDS_Long queued = 0;
    for (auto _ : state) {
        countingAllocations = true;
        QTV_VX_MessageQueue_push(q.queue, &item);
        countingAllocations = false;
        if (++queued == kCapacity) {
            state.PauseTiming();
            for (; queued > 0; --queued) {
                consume(q.queue);
            }
            state.ResumeTiming();
        }
    }
    if (!kCountsAllocations) {
        return;
    }
    state.counters["allocs_per_push"] =
        static_cast<double>(allocationCount.load() - allocationsBefore) / static_cast<double>(state.iterations());
}
BENCHMARK(BM_Push)->Arg(100)->Arg(127)->Arg(128)->Arg(4096);

}  // namespace

BENCHMARK_MAIN();
