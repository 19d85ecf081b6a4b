// The tool's side of a DDS domain, on the library's public API: one
// participant with the logger's topics, typed readers and writers whose QoS
// match the logger's endpoints, and a signal that wakes a command's loop
// when data arrives or the user interrupts.
#pragma once

#include <chrono>
#include <condition_variable>
#include <map>
#include <cstdint>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include "app_id.hpp"
#include "app_identity.hpp"
#include "apps_table.hpp"
#include "line_format.hpp"
#include "platform/dds/data_reader.h"
#include "platform/dds/data_writer.h"
#include "platform/dds/domain_participant.h"
#include "platform/dds/domain_participant_factory.h"
#include "platform/dds/publisher.h"
#include "platform/dds/subscriber.h"
#include "platform/dds/topic.h"
#include "vexar/topic_traits.hpp"

namespace vexar::cli {

using Clock = std::chrono::steady_clock;

// A DDS operation failed: the program reports it and exits with 1.
struct DdsFailure : std::runtime_error {
    explicit DdsFailure(const std::string &what) : std::runtime_error(what) {}
};

// Sends the middleware's diagnostic lines to standard error while it
// lives, so they never mix with the tool's output.
class DiagnosticsToStderr {
public:
    DiagnosticsToStderr();
    ~DiagnosticsToStderr();
    DiagnosticsToStderr(const DiagnosticsToStderr &) = delete;
    DiagnosticsToStderr &operator=(const DiagnosticsToStderr &) = delete;
};

// `seconds` from now; never for 0 (the commands' "no time limit").
Clock::time_point deadlineAfter(double seconds);

// SIGINT and SIGTERM ask the running command to stop; the command sees it
// at its next wake-up.
void installStopHandlers();
bool stopRequested();

// Wakes a command's loop: readers notify it from Cyclone's listener thread.
class DataSignal {
public:
    // Returns when notified, at the deadline, or within a tenth of a second
    // (so a stop request is seen); clears the notification.
    void waitUntil(Clock::time_point deadline);
    void notify();
    DDS_DataReaderListener listener();

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool pending_ = false;
};

// The C functions of one topic type, so that readers and writers are
// written once for all four.
template <class Sample>
using TopicType = vexar::TopicTraits<Sample>;

// A sample initialized for its whole life and finalized at the end.
template <class Sample>
class OwnedSample {
public:
    OwnedSample() {
        if (!TopicType<Sample>::initialize(&value)) throw DdsFailure("cannot initialize a sample");
    }
    ~OwnedSample() { TopicType<Sample>::finalize(&value); }
    OwnedSample(const OwnedSample &) = delete;
    OwnedSample &operator=(const OwnedSample &) = delete;

    Sample value{};
};

// QoS of the tool's endpoints, matching the logger's: logs and States are
// reliable and transient-local (a late tool still gets each logger's
// recent history); requests and responses are reliable. Published counts
// are read as States are: the last sample per application. The log reader
// keeps every sample until taken, since each level of each application is
// one instance and a short history would drop messages in a burst.
DDS_DataReaderQos logReaderQos();
DDS_DataReaderQos stateReaderQos();
DDS_DataReaderQos responseReaderQos();
DDS_DataWriterQos requestWriterQos();

// One participant in a domain, with a subscriber and a publisher. Deleting
// it deletes every reader and writer made on it.
class Session {
public:
    explicit Session(std::int32_t domain);
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    std::int32_t domain() const { return domain_; }
    // The participant's own HOST:APP, the originator of its requests.
    AppId id() const;

    template <class Sample>
    DDS_Topic *topic() {
        using Type = TopicType<Sample>;
        return topic(Type::topicName, Type::registeredTypeName, Type::registerType);
    }

    DDS_DataReader *createReader(DDS_Topic *topic, const DDS_DataReaderQos &qos, DataSignal &signal);
    DDS_DataWriter *createWriter(DDS_Topic *topic, const DDS_DataWriterQos &qos);

    // Adds the identities that discovery announced for the domain's
    // participants (in their user data); true when one told something new.
    bool learnIdentities(AppIdentities &identities);

private:
    using RegisterType = DDS_ReturnCode_t (*)(DDS_DomainParticipant *, const char *);
    void close();
    DDS_Topic *topic(const char *name, const char *typeName, RegisterType registerType);

    std::int32_t domain_;
    DDS_DomainParticipant *participant_ = nullptr;
    DDS_Subscriber *subscriber_ = nullptr;
    DDS_Publisher *publisher_ = nullptr;
};

// One sample that a take lent, with its info.
template <class Sample>
struct Received {
    const Sample *sample;
    const DDS_SampleInfo *info;
};

template <class Sample>
class Reader {
public:
    using Type = TopicType<Sample>;

    Reader(Session &session, const DDS_DataReaderQos &qos, DataSignal &signal)
        : untyped_(session.createReader(session.topic<Sample>(), qos, signal)), reader_(Type::narrowReader(untyped_)) {
        if (reader_ == nullptr) throw DdsFailure(std::string("cannot read ") + Type::topicName);
    }

    // Takes at most `maxSamples` on loan and hands them to `use` as a
    // std::vector<Received<Sample>> in the order the reader gave them; the
    // loan is returned afterwards. Returns how many were taken (0: no data).
    template <class Use>
    DDS_Long take(DDS_Long maxSamples, Use &&use) {
        typename Type::Seq samples = DDS_SEQUENCE_INITIALIZER;
        DDS_SampleInfoSeq infos = DDS_SEQUENCE_INITIALIZER;
        DDS_ReturnCode_t result = Type::take(reader_, &samples, &infos, maxSamples, DDS_ANY_SAMPLE_STATE,
                                             DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE);
        if (result == DDS_RETCODE_NO_DATA) return 0;
        if (result != DDS_RETCODE_OK) throw DdsFailure(std::string("cannot take from ") + Type::topicName);
        LoanReturn giveBack{reader_, &samples, &infos};
        std::vector<Received<Sample>> received;
        DDS_Long count = Type::length(&samples);
        received.reserve(static_cast<std::size_t>(count));
        for (DDS_Long i = 0; i < count; ++i) {
            received.push_back({Type::element(&samples, i), DDS_SampleInfoSeq_get_reference(&infos, i)});
        }
        use(received);
        return count;
    }

    // Takes everything the reader holds, in bounded batches, each handed to
    // `use` as above.
    template <class Use>
    void takeAll(Use &&use) {
        while (take(kBatch, use) == kBatch) {}
    }

    // Samples lost on their way to this reader since the last call.
    std::int64_t lostSinceAsked() {
        DDS_SampleLostStatus status = DDS_SampleLostStatus_INITIALIZER;
        if (DDS_DataReader_get_sample_lost_status(untyped_, &status) != DDS_RETCODE_OK) {
            throw DdsFailure(std::string("cannot read the lost samples of ") + Type::topicName);
        }
        return status.total_count_change;
    }

    // One loaned take's ceiling: each loaned sample holds its type's bounds.
    static constexpr DDS_Long kBatch = OBLX_DATAREADER_MAX_LOANED_SAMPLES;

private:
    struct LoanReturn {
        typename Type::DataReader *reader;
        typename Type::Seq *samples;
        DDS_SampleInfoSeq *infos;
        ~LoanReturn() { Type::returnLoan(reader, samples, infos); }
    };

    DDS_DataReader *untyped_;
    typename Type::DataReader *reader_;
};

template <class Sample>
class Writer {
public:
    using Type = TopicType<Sample>;

    Writer(Session &session, const DDS_DataWriterQos &qos)
        : writer_(Type::narrowWriter(session.createWriter(session.topic<Sample>(), qos))) {
        if (writer_ == nullptr) throw DdsFailure(std::string("cannot write ") + Type::topicName);
    }

    bool write(const Sample &sample) { return Type::write(writer_, &sample, DDS_HANDLE_NIL) == DDS_RETCODE_OK; }

    // How many readers the writer is matched with now.
    int matchedReaders() {
        DDS_PublicationMatchedStatus status = DDS_PublicationMatchedStatus_INITIALIZER;
        DDS_DataWriter_get_publication_matched_status(Type::asDataWriter(writer_), &status);
        return status.current_count;
    }

private:
    typename Type::DataWriter *writer_;
};

// A received log message as a line; its texts stay the sample's, and
// kind and identity are left for the caller, who knows the applications.
LogLine logLineOf(const QTV_VX_LogMessage &message, const DDS_SampleInfo &info);

// The logger States seen so far, by application. A State instance that is
// disposed or loses its writer marks its logger gone; a new State revives it.
// Published message counts join the record of their application, whichever
// of the two arrives first.
class AppDirectory {
public:
    // Takes what the State reader holds; true when anything changed.
    bool update(Reader<QTV_VX_ADMIN_State> &states);
    // Takes what the statistics reader holds; true when a listed logger's
    // counts changed.
    bool update(Reader<QTV_VX_ADMIN_Statistics> &statistics);
    const std::map<AppId, AppRecord> &records() const { return records_; }
    // The application's kind, empty while no State named it.
    std::string_view kindOf(AppId id) const;
    // Null when no State named it.
    const AppRecord *find(AppId id) const;

    // Asks discovery who the participants are; true when a listed logger's
    // identity changed.
    bool learnIdentities(Session &session);
    // "exe@host[pid]" of the application's participant, empty while unknown.
    std::string_view identityOf(AppId id) const;
    // Whether a live logger fits the target.
    bool anyFits(const AppSelector &target) const;
    // The kinds of the live loggers (HOST:APP for one without), for a
    // target that fits none: "camera, lidar".
    std::string seenKinds() const;
    const AppIdentities &identities() const { return identities_; }

private:
    std::map<AppId, AppRecord> records_;
    std::map<AppId, MessageCounts> counts_;
    AppIdentities identities_;
    // The labels of identities_, kept so that lines can point at them.
    std::map<AppId, std::string> labels_;
};

// What every command that watches a domain starts with: the middleware's
// diagnostics on standard error, SIGINT and SIGTERM as stop requests, a
// participant, the signal that wakes the command, and the loggers' States.
struct DomainWatch {
    explicit DomainWatch(std::int32_t domain);

    DiagnosticsToStderr diagnostics;
    Session session;
    DataSignal signal;
    Reader<QTV_VX_ADMIN_State> states;
    AppDirectory apps;

    // Takes the States that arrived, and asks discovery about the
    // participants when a State came or a while passed; true when anything
    // changed.
    bool updateApps();

private:
    Clock::time_point nextDiscoveryLook_;
};

}  // namespace vexar::cli
