// Visiting a reader's instances one by one with read_next_instance, on
// loan, against one plain read of all their samples: the cost of finding
// each next instance without reading the others. Every instance holds one
// sample; after the first pass all are READ, so every pass reads the same.
// `others` instances of the type are held by another reader only, and are
// passed over.
#include <benchmark/benchmark.h>

#include <string>

#include "support/domains.h"
#include "support/typed_topic.hpp"

namespace {

using namespace vexar_test;

constexpr int kDomain = domains::kBenchBase + 3;

// A writer and a reader of one participant with `instances` log instances
// (one application, that many levels), and `others` more on a second topic
// whose reader alone holds them.
class Instances {
public:
    Instances(int instances, int others)
        : mine_(kDomain, "vexar/bench/instances/" + std::to_string(instances) + "/" + std::to_string(others)),
          theirs_(kDomain, "vexar/bench/instances/others/" + std::to_string(instances) + "/" + std::to_string(others)) {
        reader_ = mine_.reader();
        writeLevels(mine_.writer(), 0, instances);
        otherReader_ = theirs_.reader();
        writeLevels(theirs_.writer(), instances, others);
    }

    QTV_VX_LogMessageDataReader *reader() const { return reader_; }

private:
    static void writeLevels(QTV_VX_LogMessageDataWriter *writer, int first, int count) {
        for (int level = first; level < first + count; ++level) {
            Sample<QTV_VX_LogMessage> sample;
            sample->level = level;
            QTV_VX_LogMessageDataWriter_write(writer, sample.get(), DDS_HANDLE_NIL);
        }
    }

    TypedParticipant<QTV_VX_LogMessage> mine_;
    TypedParticipant<QTV_VX_LogMessage> theirs_;
    QTV_VX_LogMessageDataReader *reader_ = nullptr;
    QTV_VX_LogMessageDataReader *otherReader_ = nullptr;
};

void BM_ReadNextInstanceVisitsAll(benchmark::State &state) {
    const Instances instances(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    QTV_VX_LogMessageDataReader *reader = instances.reader();
    long long visited = 0;
    for (auto _ : state) {
        DDS_InstanceHandle_t previous = DDS_HANDLE_NIL;
        QTV_VX_LogMessageSeq samples = DDS_SEQUENCE_INITIALIZER;
        DDS_SampleInfoSeq infos = DDS_SEQUENCE_INITIALIZER;
        while (QTV_VX_LogMessageDataReader_read_next_instance(reader, &samples, &infos, DDS_LENGTH_UNLIMITED, previous,
                                                              DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE,
                                                              DDS_ANY_INSTANCE_STATE) == DDS_RETCODE_OK) {
            previous = DDS_SampleInfoSeq_get_reference(&infos, 0)->instance_handle;
            QTV_VX_LogMessageDataReader_return_loan(reader, &samples, &infos);
            ++visited;
        }
    }
    state.counters["per_instance"] =
        benchmark::Counter(static_cast<double>(visited), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_ReadNextInstanceVisitsAll)->Args({10, 0})->Args({100, 0})->Args({1000, 0})->Args({100, 900});

void BM_PlainReadOfAll(benchmark::State &state) {
    const Instances instances(static_cast<int>(state.range(0)), 0);
    QTV_VX_LogMessageDataReader *reader = instances.reader();
    for (auto _ : state) {
        QTV_VX_LogMessageSeq samples = DDS_SEQUENCE_INITIALIZER;
        DDS_SampleInfoSeq infos = DDS_SEQUENCE_INITIALIZER;
        QTV_VX_LogMessageDataReader_read(reader, &samples, &infos, DDS_LENGTH_UNLIMITED, DDS_ANY_SAMPLE_STATE,
                                         DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE);
        QTV_VX_LogMessageDataReader_return_loan(reader, &samples, &infos);
    }
    state.counters["per_instance"] = benchmark::Counter(static_cast<double>(state.iterations() * state.range(0)),
                                                        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_PlainReadOfAll)->Arg(10)->Arg(100)->Arg(1000);

}  // namespace

BENCHMARK_MAIN();
