// Samples per second of QTV_VX_LogMessage (a 100-character message) from a
// typed writer in one process to a typed reader in another, on loopback.
//
//   dds_throughput_bench                         both: a reader process, the writer here
//   dds_throughput_bench pub <domain> <seconds> [unbatched]
//                                                write as fast as the reader takes
//   dds_throughput_bench sub <domain> <seconds>  count what arrives
//
// Endpoints are reliable and keep-all, the reader takes on loan from its
// data-available listener (once a call), the writer registers its instance first and
// batches its writes (many samples per packet, flushed at the end): what
// Cyclone's ddsperf does in its default "pub"/"sub" modes, so
// scripts/bench-dds.sh can set the two side by side. "unbatched" sends one
// packet per write instead, as the logger's own writers do. The reader prints the
// samples of each second and then "rate <median of the full seconds>".
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "platform/dds/publisher.h"
#include "platform/dds/subscriber.h"
#include "platform/dds/topic.h"
#include "support/participant.hpp"
#include "type/vexarSupport.h"
#include "vexar/DDSEntities.h"

extern char **environ;

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr int kDefaultDomain = 18;
constexpr int kDefaultSeconds = 6;
constexpr size_t kMessageLength = 100;

template <typename Qos>
Qos reliableKeepAll(Qos qos) {
    qos.reliability.kind = DDS_RELIABLE_RELIABILITY_QOS;
    qos.reliability.max_blocking_time = {1, 0};
    qos.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
    return qos;
}

// A participant with the log topic and a publisher and subscriber.
class BenchParticipant {
public:
    explicit BenchParticipant(int domain) : participant_(domain) {
        const char *typeName = QTV_VX_LOG_MESSAGE_REGISTERED_TYPE_NAME;
        if (participant_.get() == nullptr ||
            QTV_VX_LogMessageTypeSupport_register_type(participant_.get(), typeName) != DDS_RETCODE_OK) {
            return;
        }
        topic_ = DDS_DomainParticipant_create_topic(participant_.get(), "vexar/bench/throughput", typeName, nullptr,
                                                    nullptr, 0);
    }

    DDS_DataWriter *writer(bool batched) const {
        DDS_DataWriterQos qos = reliableKeepAll(DDS_DataWriterQos(DDS_DataWriterQos_INITIALIZER));
        qos.batch.enable = batched ? DDS_BOOLEAN_TRUE : DDS_BOOLEAN_FALSE;
        return topic_ == nullptr ? nullptr
                                 : DDS_Publisher_create_datawriter(participant_.publisher(), topic_, &qos, nullptr, 0);
    }
    DDS_DataReader *reader(const DDS_DataReaderListener &listener) const {
        DDS_DataReaderQos qos = reliableKeepAll(DDS_DataReaderQos(DDS_DataReaderQos_INITIALIZER));
        return topic_ == nullptr
                   ? nullptr
                   : DDS_Subscriber_create_datareader(participant_.subscriber(), DDS_Topic_as_topicdescription(topic_),
                                                      &qos, &listener, DDS_DATA_AVAILABLE_STATUS);
    }

private:
    vexar_test::Participant participant_;
    DDS_Topic *topic_ = nullptr;
};

// The sample every write sends: one application, level INFO, 100 characters.
struct BenchSample {
    BenchSample() : sample(QTV_VX_LogMessageTypeSupport_create_data()) {
        sample->hostAndAppId = {1, 2};
        sample->level = 600;
        std::memset(sample->message, 'x', kMessageLength);
        sample->message[kMessageLength] = '\0';
    }
    ~BenchSample() { QTV_VX_LogMessageTypeSupport_delete_data(sample); }
    BenchSample(const BenchSample &) = delete;
    BenchSample &operator=(const BenchSample &) = delete;

    DDS_UnsignedLong serializedSize() const {
        DDS_UnsignedLong size = 0;
        QTV_VX_LogMessageTypeSupport_serialize_data_to_cdr_buffer(nullptr, &size, sample);
        return size;
    }

    QTV_VX_LogMessage *sample;
};

bool hasReader(DDS_DataWriter *writer) {
    DDS_PublicationMatchedStatus status{};
    return DDS_DataWriter_get_publication_matched_status(writer, &status) == DDS_RETCODE_OK && status.current_count > 0;
}

int publish(int domain, int seconds, bool batched) {
    BenchParticipant participant(domain);
    QTV_VX_LogMessageDataWriter *writer = QTV_VX_LogMessageDataWriter_narrow(participant.writer(batched));
    if (writer == nullptr) return 1;
    for (auto deadline = Clock::now() + 20s; !hasReader(QTV_VX_LogMessageDataWriter_as_datawriter(writer));) {
        if (Clock::now() > deadline) return 1;
        std::this_thread::sleep_for(10ms);
    }
    BenchSample bench;
    // Registered ahead, written by key: the logger's write thread passes no handle either.
    QTV_VX_LogMessageDataWriter_register_instance(writer, bench.sample);
    long long written = 0, timeouts = 0;
    for (auto end = Clock::now() + std::chrono::seconds(seconds); Clock::now() < end;) {
        DDS_ReturnCode_t result = QTV_VX_LogMessageDataWriter_write(writer, bench.sample, DDS_HANDLE_NIL);
        if (result == DDS_RETCODE_OK) {
            ++written;
        } else if (result == DDS_RETCODE_TIMEOUT) {
            ++timeouts;
        } else {
            return 1;
        }
    }
    DDS_DataWriter_flush(QTV_VX_LogMessageDataWriter_as_datawriter(writer));
    std::printf("pub: %lld samples of %u bytes in %d s (%lld writes timed out, %s)\n", written, bench.serializedSize(),
                seconds, timeouts, batched ? "batched" : "unbatched");
    return 0;
}

// One take per data-available call, as ddsperf's "sub" does: taking resets
// the status, so whatever arrives afterwards calls the listener again.
std::atomic<long long> received{0};

void takeAvailable(void *, DDS_DataReader *untyped) {
    QTV_VX_LogMessageDataReader *reader = QTV_VX_LogMessageDataReader_narrow(untyped);
    QTV_VX_LogMessageSeq samples = DDS_SEQUENCE_INITIALIZER;
    DDS_SampleInfoSeq infos = DDS_SEQUENCE_INITIALIZER;
    if (QTV_VX_LogMessageDataReader_take(reader, &samples, &infos, DDS_LENGTH_UNLIMITED, DDS_ANY_SAMPLE_STATE,
                                         DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE) == DDS_RETCODE_OK) {
        received += QTV_VX_LogMessageSeq_get_length(&samples);
        QTV_VX_LogMessageDataReader_return_loan(reader, &samples, &infos);
    }
}

// Samples counted in each second from the first arrival, for `seconds` - 1
// seconds so that every counted second lies inside the writer's run.
std::vector<long long> countPerSecond(int seconds) {
    std::vector<long long> perSecond;
    for (auto deadline = Clock::now() + 30s; received == 0;) {
        if (Clock::now() > deadline) return perSecond;
        std::this_thread::sleep_for(1ms);
    }
    long long before = received;
    auto next = Clock::now() + 1s;
    for (int second = 1; second < seconds; ++second, next += 1s) {
        std::this_thread::sleep_until(next);
        long long now = received;
        perSecond.push_back(now - before);
        before = now;
    }
    return perSecond;
}

int subscribe(int domain, int seconds) {
    BenchParticipant participant(domain);
    DDS_DataReaderListener listener{nullptr, takeAvailable, nullptr};
    DDS_DataReader *reader = participant.reader(listener);
    if (reader == nullptr) return 1;
    std::vector<long long> perSecond = countPerSecond(seconds);
    DDS_DataReader_set_listener(reader, nullptr, 0);  // waits for a take in progress, before the reader goes
    if (perSecond.size() < 2) return 1;
    for (size_t i = 0; i < perSecond.size(); ++i) std::printf("sub: second %zu: %lld samples\n", i + 1, perSecond[i]);
    // The first second includes start-up; the median of the rest.
    std::vector<long long> steady(perSecond.begin() + 1, perSecond.end());
    std::nth_element(steady.begin(), steady.begin() + steady.size() / 2, steady.end());
    std::printf("rate %lld samples/s\n", steady[steady.size() / 2]);
    return 0;
}

// Both roles: the reader in a child process (this program again), the
// writer here.
int publishToChild() {
    const char *self = "/proc/self/exe";
    std::string domain = std::to_string(kDefaultDomain), seconds = std::to_string(kDefaultSeconds);
    std::string role = "sub";
    std::string program = "dds_throughput_bench";
    std::vector<char *> argv{program.data(), role.data(), domain.data(), seconds.data(), nullptr};
    pid_t child = -1;
    if (posix_spawn(&child, self, nullptr, nullptr, argv.data(), environ) != 0) return 1;
    int published = publish(kDefaultDomain, kDefaultSeconds, true);
    int status = 0;
    waitpid(child, &status, 0);
    return published != 0 || !WIFEXITED(status) || WEXITSTATUS(status) != 0;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc == 1) return publishToChild();
    std::string role = argc >= 2 ? argv[1] : "";
    bool unbatched = argc == 5 && std::string(argv[4]) == "unbatched";
    if (argc != 4 && !(role == "pub" && unbatched)) {
        std::fprintf(stderr, "usage: %s [pub <domain> <seconds> [unbatched] | sub <domain> <seconds>]\n", argv[0]);
        return 2;
    }
    int domain = std::atoi(argv[2]), seconds = std::atoi(argv[3]);
    if (role == "pub") return publish(domain, seconds, !unbatched);
    if (role == "sub") return subscribe(domain, seconds);
    return 2;
}
