// Cost of a diagnostic line: dropped by the verbosity gate, and formatted and
// handed to an output device in the cheapest and the fullest print format.
#include <benchmark/benchmark.h>

#include "platform/log/logger.h"

namespace {

void discard(OBLX_Config_LoggerDevice *, const OBLX_Config_LogMessage *message) {
    benchmark::DoNotOptimize(message->text);
}

OBLX_Config_LoggerDevice gDiscardingDevice{nullptr, &discard, nullptr};

void logOne() {
    OBLX_Config_Logger_log(OBLX_CONFIG_LOG_CATEGORY_API, OBLX_CONFIG_LOG_LEVEL_WARNING, "bench", __FILE__, __LINE__,
                           "value %d out of range", 42);
}

void BM_LineDroppedByVerbosity(benchmark::State &state) {
    OBLX_Config_Logger *logger = OBLX_Config_Logger_get_instance();
    OBLX_Config_Logger_set_verbosity(logger, OBLX_CONFIG_LOG_VERBOSITY_ERROR);
    for (auto _ : state) logOne();
}
BENCHMARK(BM_LineDroppedByVerbosity)->ThreadRange(1, 2);

void BM_LineWrittenToDevice(benchmark::State &state) {
    OBLX_Config_Logger *logger = OBLX_Config_Logger_get_instance();
    OBLX_Config_Logger_set_verbosity(logger, OBLX_CONFIG_LOG_VERBOSITY_WARNING);
    OBLX_Config_Logger_set_print_format(logger, static_cast<OBLX_Config_LogPrintFormat>(state.range(0)));
    OBLX_Config_Logger_set_output_device(logger, &gDiscardingDevice);
    for (auto _ : state) logOne();
    OBLX_Config_Logger_set_output_device(logger, nullptr);
}
BENCHMARK(BM_LineWrittenToDevice)
    ->ArgName("format")
    ->Arg(OBLX_CONFIG_LOG_PRINT_FORMAT_MINIMAL)
    ->Arg(OBLX_CONFIG_LOG_PRINT_FORMAT_DEFAULT)
    ->Arg(OBLX_CONFIG_LOG_PRINT_FORMAT_MAXIMAL);

}  // namespace

BENCHMARK_MAIN();
