// The other process of the typed endpoint tests: writes or reads samples of
// one topic type numbered 1..count.
//
//   typed_endpoint_peer write|read <registered type name> <domain> <topic> <count>
//
// The writer waits for a reader, writes, and stays until that reader has
// gone, so its history outlives the reader's need. The reader, best effort,
// exits 0 when the samples arrived complete and in order. Each failure has
// its own exit status.
#include <numeric>
#include <string>

#include "support/typed_topic.hpp"

namespace {

using namespace vexar_test;
using namespace std::chrono_literals;

enum Exit { kOk = 0, kUsage = 2, kSetup = 3, kNoReader = 4, kWriteFailed = 5, kReaderStayed = 6, kWrongSamples = 7 };

template <typename T>
int writeSamples(int domain, const std::string &topic, int count) {
    TypedParticipant<T> participant(domain, topic);
    auto *writer = participant.writer();
    if (writer == nullptr) return kSetup;
    DDS_DataWriter *untyped = TopicType<T>::asDataWriter(writer);
    if (!eventuallyWithin(20s, [&] { return hasMatchedReaders(untyped, 1); })) return kNoReader;
    for (int marker = 1; marker <= count; ++marker) {
        Sample<T> sample(marker);
        if (TopicType<T>::write(writer, sample.get(), DDS_HANDLE_NIL) != DDS_RETCODE_OK) return kWriteFailed;
    }
    return eventuallyWithin(20s, [&] { return !hasMatchedReaders(untyped, 1); }) ? kOk : kReaderStayed;
}

template <typename T>
int readSamples(int domain, const std::string &topic, int count) {
    TypedParticipant<T> participant(domain, topic);
    auto *reader = participant.bestEffortReader();
    if (reader == nullptr) return kSetup;
    std::vector<int> expected(static_cast<size_t>(count));
    std::iota(expected.begin(), expected.end(), 1);
    return takeMarkers<T>(reader, expected.size(), 20s) == expected ? kOk : kWrongSamples;
}

template <typename T>
int run(const std::string &role, int domain, const std::string &topic, int count) {
    if (role == "write") return writeSamples<T>(domain, topic, count);
    if (role == "read") return readSamples<T>(domain, topic, count);
    return kUsage;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc != 6) return kUsage;
    std::string role = argv[1], type = argv[2], topic = argv[4];
    int domain = std::atoi(argv[3]), count = std::atoi(argv[5]);
    if (type == TopicType<QTV_VX_LogMessage>::registeredTypeName)
        return run<QTV_VX_LogMessage>(role, domain, topic, count);
    if (type == TopicType<QTV_VX_ADMIN_State>::registeredTypeName)
        return run<QTV_VX_ADMIN_State>(role, domain, topic, count);
    if (type == TopicType<QTV_VX_ADMIN_CommandRequest>::registeredTypeName)
        return run<QTV_VX_ADMIN_CommandRequest>(role, domain, topic, count);
    if (type == TopicType<QTV_VX_ADMIN_CommandResponse>::registeredTypeName)
        return run<QTV_VX_ADMIN_CommandResponse>(role, domain, topic, count);
    return kUsage;
}
