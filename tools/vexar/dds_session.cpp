#include "dds_session.hpp"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <set>

#include "platform/log/logger.h"

namespace vexar::cli {
namespace {

volatile std::sig_atomic_t gStopRequested = 0;

void requestStop(int) { gStopRequested = 1; }

void writeToStderr(OBLX_Config_LoggerDevice *, const OBLX_Config_LogMessage *message) {
    std::fputs(message->text, stderr);
}

OBLX_Config_LoggerDevice gStderrDevice{nullptr, writeToStderr, nullptr};

void notifySignal(void *signal, DDS_DataReader *) { static_cast<DataSignal *>(signal)->notify(); }

template <class Qos>
Qos endpointQos(Qos qos, DDS_DurabilityQosPolicyKind durability, DDS_HistoryQosPolicyKind history, DDS_Long depth) {
    qos.reliability.kind = DDS_RELIABLE_RELIABILITY_QOS;
    qos.durability.kind = durability;
    qos.history = {history, depth};
    return qos;
}

}  // namespace

DiagnosticsToStderr::DiagnosticsToStderr() {
    OBLX_Config_Logger_set_output_device(OBLX_Config_Logger_get_instance(), &gStderrDevice);
}

DiagnosticsToStderr::~DiagnosticsToStderr() {
    OBLX_Config_Logger_set_output_device(OBLX_Config_Logger_get_instance(), nullptr);
}

Clock::time_point deadlineAfter(double seconds) {
    if (seconds <= 0) return Clock::time_point::max();
    return Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
}

void installStopHandlers() {
    struct sigaction action {};
    action.sa_handler = requestStop;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

bool stopRequested() { return gStopRequested != 0; }

void DataSignal::waitUntil(Clock::time_point deadline) {
    deadline = std::min(deadline, Clock::now() + std::chrono::milliseconds(100));
    std::unique_lock lock(mutex_);
    changed_.wait_until(lock, deadline, [this] { return pending_; });
    pending_ = false;
}

void DataSignal::notify() {
    {
        std::lock_guard lock(mutex_);
        pending_ = true;
    }
    changed_.notify_one();
}

DDS_DataReaderListener DataSignal::listener() { return {this, notifySignal, nullptr}; }

// A reader that falls behind holds at most this many messages: Cyclone
// then refuses more, and the writers send them again once tail has taken
// some, so memory stays bounded whatever the rate (about 20 MB in all).
// Writers that keep only the last few per instance may have replaced a
// refused message by then; that loss is theirs, as for any slow reader.
constexpr DDS_Long kLogBacklogMost = 16384;

DDS_DataReaderQos logReaderQos() {
    auto qos = endpointQos<DDS_DataReaderQos>(DDS_DataReaderQos_INITIALIZER, DDS_TRANSIENT_LOCAL_DURABILITY_QOS,
                                              DDS_KEEP_ALL_HISTORY_QOS, 1);
    qos.resource_limits.max_samples = kLogBacklogMost;
    qos.resource_limits.max_samples_per_instance = kLogBacklogMost;
    return qos;
}

DDS_DataReaderQos stateReaderQos() {
    return endpointQos<DDS_DataReaderQos>(DDS_DataReaderQos_INITIALIZER, DDS_TRANSIENT_LOCAL_DURABILITY_QOS,
                                          DDS_KEEP_LAST_HISTORY_QOS, 1);
}

DDS_DataReaderQos responseReaderQos() {
    return endpointQos<DDS_DataReaderQos>(DDS_DataReaderQos_INITIALIZER, DDS_VOLATILE_DURABILITY_QOS,
                                          DDS_KEEP_ALL_HISTORY_QOS, 1);
}

DDS_DataWriterQos requestWriterQos() {
    return endpointQos<DDS_DataWriterQos>(DDS_DataWriterQos_INITIALIZER, DDS_VOLATILE_DURABILITY_QOS,
                                          DDS_KEEP_ALL_HISTORY_QOS, 1);
}

Session::Session(std::int32_t domain) : domain_(domain) {
    participant_ = DDS_DomainParticipantFactory_create_participant(DDS_DomainParticipantFactory_get_instance(), domain,
                                                                   nullptr, nullptr, 0);
    if (participant_ == nullptr) throw DdsFailure("cannot join DDS domain " + std::to_string(domain));
    subscriber_ = DDS_DomainParticipant_create_subscriber(participant_, nullptr, nullptr, 0);
    publisher_ = DDS_DomainParticipant_create_publisher(participant_, nullptr, nullptr, 0);
    if (subscriber_ == nullptr || publisher_ == nullptr) {
        close();
        throw DdsFailure("cannot create a subscriber and a publisher");
    }
}

Session::~Session() { close(); }

void Session::close() {
    if (participant_ == nullptr) return;
    DDS_DomainParticipant_delete_contained_entities(participant_);
    DDS_DomainParticipantFactory_delete_participant(DDS_DomainParticipantFactory_get_instance(), participant_);
    participant_ = nullptr;
}

AppId Session::id() const {
    DDS_DomainParticipantQos qos = DDS_DomainParticipantQos_INITIALIZER;
    DDS_DomainParticipant_get_qos(participant_, &qos);
    AppId id{qos.wire_protocol.rtps_host_id, qos.wire_protocol.rtps_app_id};
    DDS_DomainParticipantQos_finalize(&qos);
    return id;
}

DDS_Topic *Session::topic(const char *name, const char *typeName, RegisterType registerType) {
    if (DDS_TopicDescription *found = DDS_DomainParticipant_lookup_topicdescription(participant_, name)) {
        if (DDS_Topic *topic = DDS_Topic_narrow(found)) return topic;
    }
    if (registerType(participant_, typeName) != DDS_RETCODE_OK) {
        throw DdsFailure(std::string("cannot register the type ") + typeName);
    }
    DDS_Topic *topic = DDS_DomainParticipant_create_topic(participant_, name, typeName, nullptr, nullptr, 0);
    if (topic == nullptr) throw DdsFailure(std::string("cannot create the topic ") + name);
    return topic;
}

DDS_DataReader *Session::createReader(DDS_Topic *topic, const DDS_DataReaderQos &qos, DataSignal &signal) {
    DDS_DataReaderListener listener = signal.listener();
    return DDS_Subscriber_create_datareader(subscriber_, DDS_Topic_as_topicdescription(topic), &qos, &listener,
                                            DDS_DATA_AVAILABLE_STATUS);
}

bool Session::learnIdentities(AppIdentities &identities) {
    struct Visit {
        AppIdentities &identities;
        bool learnt = false;
    } visit{identities};
    auto learn = [](void *context, const OBLX_DiscoveredParticipant *participant) {
        auto &into = *static_cast<Visit *>(context);
        std::string_view announced(reinterpret_cast<const char *>(participant->user_data),
                                   participant->user_data != nullptr ? participant->user_data_length : 0);
        constexpr std::string_view prefix = QTV_VX_IDENTITY_USER_DATA_PREFIX;
        if (!announced.starts_with(prefix)) return;
        announced.remove_prefix(prefix.size());
        AppId id{participant->rtps_host_id, participant->rtps_app_id};
        into.learnt = into.identities.learn(id, std::string(announced)) || into.learnt;
    };
    if (OBLX_DomainParticipant_visit_discovered_participants(participant_, learn, &visit) != DDS_RETCODE_OK) {
        throw DdsFailure("cannot read the discovered participants");
    }
    return visit.learnt;
}

DDS_DataWriter *Session::createWriter(DDS_Topic *topic, const DDS_DataWriterQos &qos) {
    return DDS_Publisher_create_datawriter(publisher_, topic, &qos, nullptr, 0);
}

bool AppDirectory::update(Reader<QTV_VX_ADMIN_State> &states) {
    bool changed = false;
    states.takeAll([&](const std::vector<Received<QTV_VX_ADMIN_State>> &received) {
        for (const auto &[state, info] : received) {
            bool gone = info->instance_state != DDS_ALIVE_INSTANCE_STATE;
            if (info->valid_data) {
                AppRecord record = AppRecord::fromState(*state);
                record.gone = gone;
                record.identity = identityOf(record.id);
                if (auto counts = counts_.find(record.id); counts != counts_.end()) record.counts = counts->second;
                records_[record.id] = std::move(record);
                changed = true;
            } else if (auto known = records_.find(appIdOf(state->hostAndAppId)); known != records_.end() && gone) {
                changed = changed || !known->second.gone;
                known->second.gone = true;
            }
        }
    });
    return changed;
}

bool AppDirectory::update(Reader<QTV_VX_ADMIN_Statistics> &statistics) {
    bool changed = false;
    statistics.takeAll([&](const std::vector<Received<QTV_VX_ADMIN_Statistics>> &received) {
        for (const auto &[sample, info] : received) {
            if (!info->valid_data) continue;
            AppId id = appIdOf(sample->hostAndAppId);
            MessageCounts counts = MessageCounts::fromStatistics(*sample);
            counts_[id] = counts;
            if (auto known = records_.find(id); known != records_.end() && known->second.counts != counts) {
                known->second.counts = counts;
                changed = true;
            }
        }
    });
    return changed;
}

const AppRecord *AppDirectory::find(AppId id) const {
    auto found = records_.find(id);
    return found == records_.end() ? nullptr : &found->second;
}

LogLine logLineOf(const QTV_VX_LogMessage &message, const DDS_SampleInfo &info) {
    LogLine line;
    line.seconds = info.source_timestamp.sec;
    line.nanoseconds = info.source_timestamp.nanosec;
    line.app = appIdOf(message.hostAndAppId);
    line.level = message.level;
    line.category = message.category != nullptr ? message.category : "";
    line.message = message.message != nullptr ? message.message : "";
    return line;
}

bool AppDirectory::learnIdentities(Session &session) {
    if (!session.learnIdentities(identities_)) return false;
    for (const auto &[id, identity] : identities_.all()) {
        // Assigned only when it differs: lines held by tail point at the text.
        std::string label = identity.label();
        if (std::string &known = labels_[id]; known != label) known = label;
    }
    bool changed = false;
    for (auto &[id, record] : records_) {
        std::string_view label = identityOf(id);
        if (record.identity == label) continue;
        record.identity = label;
        changed = true;
    }
    return changed;
}

std::string_view AppDirectory::identityOf(AppId id) const {
    auto found = labels_.find(id);
    if (found != labels_.end()) return found->second;
    return {};
}

bool AppDirectory::anyFits(const AppSelector &target) const {
    return std::ranges::any_of(records_, [&](const auto &entry) {
        const AppRecord &record = entry.second;
        return !record.gone && target.matches(record.id, record.kind, record.identity);
    });
}

std::string AppDirectory::seenKinds() const {
    std::set<std::string> kinds;
    for (const auto &[id, record] : records_) {
        if (!record.gone) kinds.insert(record.kind.empty() ? formatAppId(id) : record.kind);
    }
    return seenNames(kinds);
}

std::string_view AppDirectory::kindOf(AppId id) const {
    const AppRecord *record = find(id);
    return record == nullptr ? std::string_view() : std::string_view(record->kind);
}

DomainWatch::DomainWatch(std::int32_t domain) : session(domain), states(session, stateReaderQos(), signal) {
    installStopHandlers();
}

// Discovery announces a participant before its State arrives; a look a few
// times a second is enough for applications that no State names.
constexpr auto kDiscoveryLookInterval = std::chrono::milliseconds(250);

bool DomainWatch::updateApps() {
    bool changed = apps.update(states);
    Clock::time_point now = Clock::now();
    if (changed || now >= nextDiscoveryLook_) {
        nextDiscoveryLook_ = now + kDiscoveryLookInterval;
        changed = apps.learnIdentities(session) || changed;
    }
    return changed;
}

}  // namespace vexar::cli
