// Cost of a content filter per incoming sample (it runs under the reader's
// lock for every one): the logger's own command filter on a request for
// this application and on one for another, a string LIKE, and compiling.
// Matching must allocate nothing: each match benchmark reports its heap
// allocations per match.
#include <benchmark/benchmark.h>

#include <variant>

#include "allocation_counter.hpp"
#include "platform/filter/content_filter.hpp"
#include "type/vexar.h"

namespace {

using vexar::filter::ContentFilter;

constexpr const char *kLoggerExpression =
    "targetHostAndAppId.rtps_host_id = %0 and targetHostAndAppId.rtps_app_id = %1";

ContentFilter compiled(const char *expression, const DDS_TypeCode *type) {
    return std::get<ContentFilter>(ContentFilter::compile(expression, {"-5", "17"}, type));
}

void timeMatches(benchmark::State &state, const ContentFilter &filter, const void *sample) {
    const long long allocationsBefore = vexar_bench::allocationCount.load();
    vexar_bench::countingAllocations = true;
    for (auto _ : state) {
        benchmark::DoNotOptimize(filter.matches(sample));
    }
    vexar_bench::countingAllocations = false;
    if (vexar_bench::kCountsAllocations) {
        state.counters["allocs_per_match"] =
            static_cast<double>(vexar_bench::allocationCount.load() - allocationsBefore) /
            static_cast<double>(state.iterations());
    }
}

void matchRequest(benchmark::State &state, DDS_Long appId) {
    const ContentFilter filter = compiled(kLoggerExpression, QTV_VX_ADMIN_CommandRequest_get_typecode());
    QTV_VX_ADMIN_CommandRequest request{};
    request.targetHostAndAppId = {-5, appId};
    timeMatches(state, filter, &request);
}

void BM_LoggerFilterAccepts(benchmark::State &state) { matchRequest(state, 17); }
BENCHMARK(BM_LoggerFilterAccepts);

void BM_LoggerFilterRejects(benchmark::State &state) { matchRequest(state, 18); }
BENCHMARK(BM_LoggerFilterRejects);

void BM_CategoryLike(benchmark::State &state) {
    const ContentFilter filter =
        compiled("category LIKE 'com.qtv.%.Logger' OR level <= 300", QTV_VX_LogMessage_get_typecode());
    char category[] = "com.qtv.oblx.config.Logger";
    QTV_VX_LogMessage message{};
    message.category = category;
    message.level = 600;
    timeMatches(state, filter, &message);
}
BENCHMARK(BM_CategoryLike);

void BM_CompileLoggerFilter(benchmark::State &state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(compiled(kLoggerExpression, QTV_VX_ADMIN_CommandRequest_get_typecode()));
    }
}
BENCHMARK(BM_CompileLoggerFilter);

}  // namespace

BENCHMARK_MAIN();
