// Encoding speed of the two samples every logger writes: a log message
// (100-character text, 20-character category) and the administration state.
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <vector>

#include "type/vexarPlugin.h"

namespace {

struct LogMessage {
    QTV_VX_LogMessage sample{};
    LogMessage() {
        QTV_VX_LogMessage_initialize(&sample);
        sample.hostAndAppId = {0x0A000001, 0x1234};
        sample.level = 600;
        std::strcpy(sample.category, std::string(20, 'c').c_str());
        std::strcpy(sample.message, std::string(100, 'm').c_str());
    }
    ~LogMessage() { QTV_VX_LogMessage_finalize(&sample); }
};

struct State {
    QTV_VX_ADMIN_State sample{};
    State() {
        QTV_VX_ADMIN_State_initialize(&sample);
        sample.hostAndAppId = {0x0A000001, 0x1234};
        sample.state = QTV_VX_STATE_OPERATIONAL;
        std::strcpy(sample.applicationKind, "benchmark");
        sample.filterLevel = 600;
    }
    ~State() { QTV_VX_ADMIN_State_finalize(&sample); }
};

template <typename T, DDS_Boolean (*Serialize)(char *, DDS_UnsignedLong *, const T *)>
std::vector<char> encoded(const T &sample) {
    std::vector<char> buffer(8192);
    DDS_UnsignedLong length = static_cast<DDS_UnsignedLong>(buffer.size());
    Serialize(buffer.data(), &length, &sample);
    buffer.resize(length);
    return buffer;
}

template <typename Holder, typename T, DDS_Boolean (*Serialize)(char *, DDS_UnsignedLong *, const T *)>
void serialize(benchmark::State &state) {
    Holder holder;
    std::vector<char> buffer(8192);
    for (auto _ : state) {
        DDS_UnsignedLong length = static_cast<DDS_UnsignedLong>(buffer.size());
        benchmark::DoNotOptimize(Serialize(buffer.data(), &length, &holder.sample));
        benchmark::ClobberMemory();
    }
}

template <typename Holder, typename T, DDS_Boolean (*Serialize)(char *, DDS_UnsignedLong *, const T *),
          DDS_Boolean (*Deserialize)(T *, const char *, DDS_UnsignedLong)>
void deserialize(benchmark::State &state) {
    Holder source, target;
    std::vector<char> bytes = encoded<T, Serialize>(source.sample);
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            Deserialize(&target.sample, bytes.data(), static_cast<DDS_UnsignedLong>(bytes.size())));
        benchmark::ClobberMemory();
    }
}

// A logger's samples repeat a few keys (its application at eight levels),
// whose digests each thread keeps: the first case. The second makes every
// key new, so each hash pays for its digest.
void keyHashOfRepeatedKey(benchmark::State &state) {
    LogMessage log;
    DDS_KeyHash_t hash;
    for (auto _ : state) {
        benchmark::DoNotOptimize(QTV_VX_LogMessagePlugin_instance_to_keyhash(nullptr, &hash, &log.sample));
        benchmark::ClobberMemory();
    }
}

void keyHashOfNewKey(benchmark::State &state) {
    LogMessage log;
    DDS_KeyHash_t hash;
    for (auto _ : state) {
        ++log.sample.hostAndAppId.rtps_app_id;
        benchmark::DoNotOptimize(QTV_VX_LogMessagePlugin_instance_to_keyhash(nullptr, &hash, &log.sample));
        benchmark::ClobberMemory();
    }
}

}  // namespace

BENCHMARK(serialize<LogMessage, QTV_VX_LogMessage, QTV_VX_LogMessagePlugin_serialize_to_cdr_buffer>)
    ->Name("LogMessage/serialize");
BENCHMARK(deserialize<LogMessage, QTV_VX_LogMessage, QTV_VX_LogMessagePlugin_serialize_to_cdr_buffer,
                      QTV_VX_LogMessagePlugin_deserialize_from_cdr_buffer>)
    ->Name("LogMessage/deserialize");
BENCHMARK(serialize<State, QTV_VX_ADMIN_State, QTV_VX_ADMIN_StatePlugin_serialize_to_cdr_buffer>)
    ->Name("State/serialize");
BENCHMARK(deserialize<State, QTV_VX_ADMIN_State, QTV_VX_ADMIN_StatePlugin_serialize_to_cdr_buffer,
                      QTV_VX_ADMIN_StatePlugin_deserialize_from_cdr_buffer>)
    ->Name("State/deserialize");
BENCHMARK(keyHashOfRepeatedKey)->Name("LogMessage/instance_to_keyhash/repeated_key");
BENCHMARK(keyHashOfNewKey)->Name("LogMessage/instance_to_keyhash/new_key");

BENCHMARK_MAIN();
