// The type plugins carried through Cyclone by the sertype bridge: what goes
// on the wire, what comes back, instances, loans and bad input.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/cyclone.hpp"
#include "platform/cyclone_sertype.hpp"
#include "support/cdr_test_support.hpp"
#include "support/domains.h"
#include "type/topic_traits.hpp"

#include <dds/ddsi/ddsi_serdata.h>
#include <dds/ddsi/ddsi_sertype.h>
#include <dds/ddsi/q_radmin.h>

namespace {

using namespace vexar_test;
using vexar::platform::createSertype;

// Each suite has its own domain; each test its own topic (tests run at once).
constexpr int kRoundTripDomain = domains::kBridgeBase + 10;
constexpr int kInstancesDomain = domains::kBridgeBase + 11;
constexpr int kAcrossProcessesDomain = domains::kBridgeBase + 12;
constexpr int kLoansDomain = domains::kBridgeBase + 13;

std::string topicOfThisTest() {
    const testing::TestInfo *test = testing::UnitTest::GetInstance()->current_test_info();
    return std::string("vexar/test/") + test->test_suite_name() + "/" + test->name();  // letters, digits, _ and / only
}

template <typename T>
ddsi_sertype *sertypeOf(const char *name = "Test::Type") {
    OBLX_TypePlugin *plugin = vexar::TopicTraits<T>::pluginNew();
    ddsi_sertype *sertype = createSertype(plugin, name);
    vexar::TopicTraits<T>::pluginDelete(plugin);  // the sertype keeps its own copy
    return sertype;
}

struct QosDeleter {
    void operator()(dds_qos_t *qos) const { dds_delete_qos(qos); }
};
using Qos = std::unique_ptr<dds_qos_t, QosDeleter>;

// Reliable, with history for late joiners, keeping the last `depth` per instance.
Qos historyQos(int32_t depth) {
    Qos qos(dds_create_qos());
    dds_qset_reliability(qos.get(), DDS_RELIABILITY_RELIABLE, DDS_SECS(1));
    dds_qset_durability(qos.get(), DDS_DURABILITY_TRANSIENT_LOCAL);
    dds_qset_history(qos.get(), DDS_HISTORY_KEEP_LAST, depth);
    return qos;
}

// A participant with one topic of T; deleting the participant deletes all.
template <typename T>
struct Domain {
    explicit Domain(int domain, int32_t depth = 8) : qos(historyQos(depth)) {
        participant = dds_create_participant(domain, nullptr, nullptr);
        ddsi_sertype *sertype = sertypeOf<T>("Test::Type");
        topic = dds_create_topic_sertype(participant, topicOfThisTest().c_str(), &sertype, qos.get(), nullptr, nullptr);
        if (topic < 0) ddsi_sertype_unref(sertype);
    }
    ~Domain() { dds_delete(participant); }
    dds_entity_t writer() const { return dds_create_writer(participant, topic, qos.get(), nullptr); }
    dds_entity_t reader() const { return dds_create_reader(participant, topic, qos.get(), nullptr); }

    Qos qos;
    dds_entity_t participant;
    dds_entity_t topic;
};

// Takes into caller-owned samples until `count` arrived or 10 s passed.
template <typename T>
std::vector<dds_sample_info_t> takeInto(dds_entity_t reader, std::vector<Owned<T>> &samples, size_t count) {
    std::vector<dds_sample_info_t> infos;
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (infos.size() < count && std::chrono::steady_clock::now() < deadline) {
        void *buffer[1] = {samples[infos.size()].get()};
        dds_sample_info_t info;
        if (dds_take(reader, buffer, &info, 1, 1) == 1)
            infos.push_back(info);
        else
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return infos;
}

void setLog(Owned<QTV_VX_LogMessage> &sample, int32_t app, int32_t level, const std::string &text) {
    sample->hostAndAppId = {7, app};
    sample->level = level;
    setText(sample->message, text);
}

// ---- one topic of each type --------------------------------------------

template <typename T>
class BridgeRoundTrip : public testing::Test {};
using TopicTypes = testing::Types<QTV_VX_LogMessage, QTV_VX_ADMIN_State, QTV_VX_ADMIN_CommandRequest,
                                  QTV_VX_ADMIN_CommandResponse>;
TYPED_TEST_SUITE(BridgeRoundTrip, TopicTypes);

TYPED_TEST(BridgeRoundTrip, SampleWrittenIsTakenWithEveryField) {
    Domain<TypeParam> domain(kRoundTripDomain);
    ASSERT_GT(domain.topic, 0) << dds_strretcode(domain.topic);
    dds_entity_t reader = domain.reader();
    dds_entity_t writer = domain.writer();
    Owned<TypeParam> sent;
    fill(sent.sample);
    ASSERT_EQ(dds_write(writer, sent.get()), 0);

    std::vector<Owned<TypeParam>> received(1);
    auto infos = takeInto(reader, received, 1);
    ASSERT_EQ(infos.size(), 1u);
    EXPECT_TRUE(infos[0].valid_data);
    EXPECT_EQ(serialized(received[0].sample, 1), serialized(sent.sample, 1));
}

// ---- the serdata itself ------------------------------------------------

struct SerdataUnref {
    void operator()(ddsi_serdata *d) const { ddsi_serdata_unref(d); }
};
using SerdataRef = std::unique_ptr<ddsi_serdata, SerdataUnref>;

struct SertypeUnref {
    void operator()(ddsi_sertype *t) const { ddsi_sertype_unref(t); }
};
using SertypeRef = std::unique_ptr<ddsi_sertype, SertypeUnref>;

Bytes wireOf(const ddsi_serdata *d) {
    Bytes bytes(ddsi_serdata_size(d));
    ddsi_serdata_to_ser(d, 0, bytes.size(), bytes.data());
    return bytes;
}

// Cyclone hands received bytes over as a chain of fragments, each in a
// message buffer right after its nn_rmsg record.
class Fragments {
public:
    // Fragments [start, end) of `bytes`; they may overlap.
    Fragments(const Bytes &bytes, std::initializer_list<std::pair<uint32_t, uint32_t>> ranges) {
        for (auto [start, end] : ranges) {
            auto &message = messages_.emplace_back(sizeof(nn_rmsg) + (end - start));
            std::memcpy(message.data() + sizeof(nn_rmsg), bytes.data() + start, end - start);
            nn_rdata fragment{};
            fragment.rmsg = reinterpret_cast<nn_rmsg *>(message.data());
            fragment.min = start;
            fragment.maxp1 = end;
            fragments_.push_back(fragment);
        }
        for (size_t i = 0; i + 1 < fragments_.size(); ++i) fragments_[i].nextfrag = &fragments_[i + 1];
    }
    const nn_rdata *chain() const { return fragments_.data(); }

private:
    std::vector<std::vector<unsigned char>> messages_;
    std::vector<nn_rdata> fragments_;
};

class BridgeSerdata : public testing::Test {
protected:
    SertypeRef log{sertypeOf<QTV_VX_LogMessage>()};
    SertypeRef state{sertypeOf<QTV_VX_ADMIN_State>()};
    SertypeRef request_{sertypeOf<QTV_VX_ADMIN_CommandRequest>()};
    Owned<QTV_VX_LogMessage> message;
    BridgeSerdata() { fill(message.sample); }
};

TEST_F(BridgeSerdata, WireBytesAreThePluginsLittleEndianParameterList) {
    SerdataRef d(ddsi_serdata_from_sample(log.get(), SDK_DATA, message.get()));
    ASSERT_NE(d, nullptr);
    Bytes expected(8192);
    DDS_UnsignedLong length = static_cast<DDS_UnsignedLong>(expected.size());
    ASSERT_TRUE(QTV_VX_LogMessagePlugin_serialize_to_cdr_buffer(reinterpret_cast<char *>(expected.data()), &length,
                                                               message.get()));
    expected.resize(length);
    Bytes wire = wireOf(d.get());
    EXPECT_EQ(wire, expected);
    EXPECT_EQ(Bytes(wire.begin(), wire.begin() + 4), (Bytes{0x00, 0x03, 0x00, 0x00}));

    ddsrt_iovec_t ref;
    ddsi_serdata *held = ddsi_serdata_to_ser_ref(d.get(), 4, wire.size() - 4, &ref);
    EXPECT_EQ(0, std::memcmp(ref.iov_base, wire.data() + 4, ref.iov_len));
    ddsi_serdata_to_ser_unref(held, &ref);
}

TEST_F(BridgeSerdata, BytesFromTheNetworkReadBackWithTheSameKey) {
    SerdataRef written(ddsi_serdata_from_sample(log.get(), SDK_DATA, message.get()));
    Bytes wire = wireOf(written.get());
    Fragments overlapping(wire, {{0, 20}, {12, 40}, {40, static_cast<uint32_t>(wire.size())}});
    SerdataRef received(ddsi_serdata_from_ser(log.get(), SDK_DATA, overlapping.chain(), wire.size()));
    ASSERT_NE(received, nullptr);
    EXPECT_EQ(wireOf(received.get()), wire);
    EXPECT_TRUE(ddsi_serdata_eqkey(written.get(), received.get()));
    EXPECT_EQ(written->hash, received->hash);

    Owned<QTV_VX_LogMessage> copy;
    ASSERT_TRUE(ddsi_serdata_to_sample(received.get(), copy.get(), nullptr, nullptr));
    EXPECT_EQ(serialized(copy.sample, 1), serialized(message.sample, 1));

    ddsrt_iovec_t iov{};
    iov.iov_base = wire.data();
    iov.iov_len = wire.size();
    SerdataRef gathered(ddsi_serdata_from_ser_iov(log.get(), SDK_DATA, 1, &iov, wire.size()));
    ASSERT_NE(gathered, nullptr);
    EXPECT_TRUE(ddsi_serdata_eqkey(written.get(), gathered.get()));
}

TEST_F(BridgeSerdata, MalformedBytesAreDropped) {
    SerdataRef written(ddsi_serdata_from_sample(log.get(), SDK_DATA, message.get()));
    Bytes wire = wireOf(written.get());
    auto fromSer = [this](const Bytes &bytes) {
        Fragments whole(bytes, {{0, static_cast<uint32_t>(bytes.size())}});
        return SerdataRef(ddsi_serdata_from_ser(log.get(), SDK_DATA, whole.chain(), bytes.size()));
    };
    Bytes plainCdr = wire;
    plainCdr[1] = 0x01;  // CDR, not a parameter list
    Bytes unknownId = wire;
    unknownId[0] = 0x7F;
    Bytes truncated(wire.begin(), wire.begin() + 30);
    Bytes headerOnly(wire.begin(), wire.begin() + 3);
    EXPECT_EQ(fromSer(plainCdr), nullptr);
    EXPECT_EQ(fromSer(unknownId), nullptr);
    EXPECT_EQ(fromSer(truncated), nullptr);
    EXPECT_EQ(fromSer(headerOnly), nullptr);
    EXPECT_NE(fromSer(wire), nullptr);

    // A State whose `state` lies outside its enumeration (id 2, value 7).
    Bytes badState = WireBytes(false).encapsulation(3).pid(2, 4).i32(7).sentinel().bytes;
    Fragments state7(badState, {{0, static_cast<uint32_t>(badState.size())}});
    EXPECT_EQ(ddsi_serdata_from_ser(state.get(), SDK_DATA, state7.chain(), badState.size()), nullptr);
}

// Received bytes become a serdata exactly when the plugin reads them, and
// then carry the key of the sample it reads.
template <typename T>
void expectReceivedAsRead(ddsi_sertype *type, const Bytes &bytes, bool readable, const char *what) {
    SCOPED_TRACE(what);
    Owned<T> read;
    ASSERT_EQ(deserialized(read.sample, bytes), readable);
    Fragments whole(bytes, {{0, static_cast<uint32_t>(bytes.size())}});
    SerdataRef received(ddsi_serdata_from_ser(type, SDK_DATA, whole.chain(), bytes.size()));
    ASSERT_EQ(received != nullptr, readable);
    if (!readable) return;
    SerdataRef written(ddsi_serdata_from_sample(type, SDK_DATA, read.get()));
    EXPECT_TRUE(ddsi_serdata_eqkey(written.get(), received.get()));
    EXPECT_EQ(written->hash, received->hash);
}

TEST_F(BridgeSerdata, ReceivedBytesAreCheckedAsThePluginReadsThem) {
    for (bool bigEndian : {false, true}) {
        SCOPED_TRACE(bigEndian ? "big-endian" : "little-endian");
        unsigned id = bigEndian ? 2 : 3;
        auto wire = [&] { return WireBytes(bigEndian).encapsulation(id); };
        expectReceivedAsRead<QTV_VX_LogMessage>(
            log.get(),
            wire().pid(0x7F01, 8).u32(0).u32(8).i32(5).i32(6).pid(1, 4).i32(700)
                .pid(0x7F01, 8).u32(3).u32(8).str("abc").sentinel().bytes,
            true, "extended headers");
        // After a key was read, one whose members are missing keeps their initial values.
        expectReceivedAsRead<QTV_VX_LogMessage>(log.get(), wire().pid(3, 6).str("x").pad(2).sentinel().bytes, true,
                                                "key members missing");
        expectReceivedAsRead<QTV_VX_LogMessage>(log.get(), wire().pid(3, 4102).str(std::string(4097, 'm')).bytes,
                                                false, "message over its bound");
        expectReceivedAsRead<QTV_VX_LogMessage>(log.get(), wire().pid(0x4009, 4).i32(77).sentinel().bytes, false,
                                                "unknown member that must be understood");

        // Enumerations outside the key: a member alone, and one value among a run.
        expectReceivedAsRead<QTV_VX_ADMIN_State>(state.get(), wire().pid(0, 8).i32(1).i32(2).pid(2, 4).i32(7).sentinel().bytes,
                                                 false, "state out of range");
        for (DDS_Long bad : {DDS_Long{QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_STATUS_ALL}, DDS_Long{9}}) {
            WireBytes pairs = wire().pid(0, 8).i32(3).i32(4).pid(5, 40);
            for (DDS_Long category = 0; category < QTV_VX_ADMIN_STATE_VERBOSITIES_LENGTH; ++category)
                pairs.i32(category).i32(category == 2 ? bad : QTV_VX_OBLX_CONFIG_LOG_VERBOSITY_STATUS_ALL);
            expectReceivedAsRead<QTV_VX_ADMIN_State>(state.get(), pairs.sentinel().bytes, bad != 9, "verbosities");
        }

        // An unkeyed type: a union's discriminator and a sequence's bound, nested.
        auto request = [&](std::uint16_t length) { return wire().pid(3, length); };
        expectReceivedAsRead<QTV_VX_ADMIN_CommandRequest>(
            request_.get(), request(12).pid(0, 4).i32(7).sentinel().sentinel().bytes, false, "discriminator");
        for (std::uint32_t count : {5u, 6u}) {
            WireBytes pairs = request(static_cast<std::uint16_t>(20 + 4 + 8 * count));
            pairs.pid(0, 4).i32(1).pid(2, static_cast<std::uint16_t>(4 + 8 * count)).u32(count);
            for (std::uint32_t i = 0; i < count; ++i) pairs.i32(0).i32(0);
            expectReceivedAsRead<QTV_VX_ADMIN_CommandRequest>(request_.get(), pairs.sentinel().sentinel().bytes,
                                                              count == 5, "sequence bound");
        }
    }
}

TEST_F(BridgeSerdata, KeyOnlySerdataCarriesTheKeyWithItsHeader) {
    SerdataRef key(ddsi_serdata_from_sample(log.get(), SDK_KEY, message.get()));
    SerdataRef data(ddsi_serdata_from_sample(log.get(), SDK_DATA, message.get()));
    Bytes wire = wireOf(key.get());
    EXPECT_EQ(Bytes(wire.begin(), wire.begin() + 4), (Bytes{0x00, 0x03, 0x00, 0x00}));
    EXPECT_LT(wire.size(), wireOf(data.get()).size());
    EXPECT_TRUE(ddsi_serdata_eqkey(key.get(), data.get()));
    Fragments keyFromNetwork(wire, {{0, static_cast<uint32_t>(wire.size())}});
    SerdataRef received(ddsi_serdata_from_ser(log.get(), SDK_KEY, keyFromNetwork.chain(), wire.size()));
    ASSERT_NE(received, nullptr);
    EXPECT_TRUE(ddsi_serdata_eqkey(received.get(), data.get()));

    // The untyped copy agrees on key and hash, and fills every key field.
    SerdataRef untyped(ddsi_serdata_to_untyped(data.get()));
    EXPECT_EQ(untyped->type, nullptr);
    EXPECT_TRUE(ddsi_serdata_eqkey(untyped.get(), key.get()));
    EXPECT_EQ(untyped->hash, data->hash);
    Owned<QTV_VX_LogMessage> holder;
    ASSERT_TRUE(ddsi_serdata_untyped_to_sample(log.get(), untyped.get(), holder.get(), nullptr, nullptr));
    EXPECT_EQ(holder->hostAndAppId.rtps_host_id, message->hostAndAppId.rtps_host_id);
    EXPECT_EQ(holder->hostAndAppId.rtps_app_id, message->hostAndAppId.rtps_app_id);
    EXPECT_EQ(holder->level, message->level);

    ddsi_keyhash_t fromKey, fromData;
    ddsi_serdata_get_keyhash(key.get(), &fromKey, false);
    ddsi_serdata_get_keyhash(data.get(), &fromData, true);
    EXPECT_EQ(0, std::memcmp(fromKey.value, fromData.value, sizeof fromKey.value));
}

TEST_F(BridgeSerdata, PrintShowsTheSampleOnOneLine) {
    SerdataRef d(ddsi_serdata_from_sample(log.get(), SDK_DATA, message.get()));
    char line[256];
    size_t needed = d->ops->print(d->type, d.get(), line, sizeof line);  // the inline wrapper returns a bool
    EXPECT_STREQ(line, "{hostAndAppId={rtps_host_id=16909060, rtps_app_id=-2}, level=300, "
                       "category=\"com.example\", message=\"disk almost full\"}");
    EXPECT_EQ(needed, std::strlen(line));
    char cut[8];
    EXPECT_EQ(d->ops->print(d->type, d.get(), cut, sizeof cut), needed);
    EXPECT_STREQ(cut, "{hostAn");
}

// ---- instances, time stamps, history -----------------------------------

TEST(BridgeInstances, LevelSeparatesInstancesAndKeepLastKeepsTheLatest) {
    Domain<QTV_VX_LogMessage> domain(kInstancesDomain, 1);
    dds_entity_t writer = domain.writer();
    Owned<QTV_VX_LogMessage> sample;
    const std::pair<int32_t, const char *> writes[] = {{300, "first"}, {400, "other level"}, {300, "last"}};
    for (auto [level, text] : writes) {
        setLog(sample, 1, level, text);
        ASSERT_EQ(dds_write(writer, sample.get()), 0);
    }
    dds_entity_t lateReader = domain.reader();  // history reaches a reader that joins later
    std::vector<Owned<QTV_VX_LogMessage>> received(2);
    auto infos = takeInto(lateReader, received, 2);
    ASSERT_EQ(infos.size(), 2u);
    EXPECT_NE(infos[0].instance_handle, infos[1].instance_handle);
    for (auto &r : received) EXPECT_STREQ(r->message, r->level == 300 ? "last" : "other level");
}

TEST(BridgeInstances, SourceTimestampReachesTheSampleInfo) {
    Domain<QTV_VX_LogMessage> domain(kInstancesDomain);
    dds_entity_t reader = domain.reader();
    Owned<QTV_VX_LogMessage> sample;
    setLog(sample, 1, 600, "stamped");
    const dds_time_t stamp = DDS_SECS(1700000000) + 123456789;
    ASSERT_EQ(dds_write_ts(domain.writer(), sample.get(), stamp), 0);
    std::vector<Owned<QTV_VX_LogMessage>> received(1);
    auto infos = takeInto(reader, received, 1);
    ASSERT_EQ(infos.size(), 1u);
    EXPECT_EQ(infos[0].source_timestamp, stamp);
}

TEST(BridgeInstances, DisposeAndRegisterWorkOnTheKeyAlone) {
    Domain<QTV_VX_ADMIN_State> domain(kInstancesDomain);
    dds_entity_t reader = domain.reader();
    dds_entity_t writer = domain.writer();
    Owned<QTV_VX_ADMIN_State> state;
    fill(state.sample);
    dds_instance_handle_t registered;
    ASSERT_EQ(dds_register_instance(writer, &registered, state.get()), 0);
    EXPECT_EQ(dds_lookup_instance(writer, state.get()), registered);
    ASSERT_EQ(dds_write(writer, state.get()), 0);
    std::vector<Owned<QTV_VX_ADMIN_State>> received(1);
    ASSERT_EQ(takeInto(reader, received, 1).size(), 1u);

    // The dispose carries only the key; the reader fills the key fields.
    ASSERT_EQ(dds_dispose(writer, state.get()), 0);
    std::vector<Owned<QTV_VX_ADMIN_State>> disposed(1);
    auto infos = takeInto(reader, disposed, 1);
    ASSERT_EQ(infos.size(), 1u);
    EXPECT_FALSE(infos[0].valid_data);
    EXPECT_EQ(infos[0].instance_state, DDS_IST_NOT_ALIVE_DISPOSED);
    EXPECT_EQ(disposed[0]->hostAndAppId.rtps_host_id, state->hostAndAppId.rtps_host_id);
    EXPECT_EQ(disposed[0]->hostAndAppId.rtps_app_id, state->hostAndAppId.rtps_app_id);

    Owned<QTV_VX_ADMIN_State> key;
    ASSERT_EQ(dds_instance_get_key(writer, registered, key.get()), 0);
    EXPECT_EQ(key->hostAndAppId.rtps_host_id, state->hostAndAppId.rtps_host_id);
    EXPECT_EQ(key->hostAndAppId.rtps_app_id, state->hostAndAppId.rtps_app_id);
}

TEST(BridgeInstances, WriterAskingForXcdr2IsRefused) {
    Domain<QTV_VX_LogMessage> domain(kInstancesDomain);
    Qos xcdr2(dds_create_qos());
    const dds_data_representation_id_t representation = DDS_DATA_REPRESENTATION_XCDR2;
    dds_qset_data_representation(xcdr2.get(), 1, &representation);
    EXPECT_LT(dds_create_writer(domain.participant, domain.topic, xcdr2.get(), nullptr), 0);
    EXPECT_GT(domain.writer(), 0);
}

// ---- across processes --------------------------------------------------

bool waitForReader(dds_entity_t writer) {
    for (int attempt = 0; attempt < 1000; ++attempt) {
        dds_publication_matched_status_t status;
        if (dds_get_publication_matched_status(writer, &status) == 0 && status.current_count > 0) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

// Writes `sample` from a process of its own, so that it reaches the reader
// over the network (from_ser) rather than by in-process delivery.
pid_t publishFromChild(const QTV_VX_LogMessage &sample) {
    pid_t child = fork();
    if (child != 0) return child;
    // Messages smaller than the sample make the writer send it in fragments.
    std::string uri = std::getenv("CYCLONEDDS_URI") +
                      std::string(",<General><MaxMessageSize>1400B</MaxMessageSize>"
                                  "<FragmentSize>1000B</FragmentSize></General>");
    setenv("CYCLONEDDS_URI", uri.c_str(), 1);
    Domain<QTV_VX_LogMessage> domain(kAcrossProcessesDomain);
    dds_entity_t writer = domain.writer();
    bool delivered = writer > 0 && waitForReader(writer) && dds_write(writer, &sample) == 0 &&
                     dds_wait_for_acks(writer, DDS_SECS(10)) == 0;
    dds_delete(domain.participant);
    _exit(delivered ? 0 : 1);
}

TEST(BridgeAcrossProcesses, LongMessageArrivesInFragmentsAndReadsBack) {
    Owned<QTV_VX_LogMessage> sent;
    fill(sent.sample);
    setText(sent->message, std::string(QTV_VX_LOG_MESSAGE_MESSAGE_MAX_LENGTH, 'x'));
    pid_t child = publishFromChild(sent.sample);
    ASSERT_GT(child, 0);

    Domain<QTV_VX_LogMessage> domain(kAcrossProcessesDomain);
    std::vector<Owned<QTV_VX_LogMessage>> received(1);
    auto infos = takeInto(domain.reader(), received, 1);
    int status = -1;
    waitpid(child, &status, 0);
    ASSERT_EQ(infos.size(), 1u);
    EXPECT_EQ(serialized(received[0].sample, 1), serialized(sent.sample, 1));
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

// ---- loans -------------------------------------------------------------

// Writes `count` log samples of distinct levels (distinct instances).
void writeLevels(dds_entity_t writer, int count) {
    Owned<QTV_VX_LogMessage> sample;
    for (int i = 0; i < count; ++i) {
        setLog(sample, 2, 100 * (i + 1), "loaned " + std::to_string(i));
        ASSERT_EQ(dds_write(writer, sample.get()), 0);
    }
}

// Cyclone 0.10.2 fills as many pointers as the largest `maxs` ever used on
// the reader, so the buffer is sized for that.
constexpr uint32_t kLargestTake = 8;

int32_t takeLoaned(dds_entity_t reader, void **buffer, dds_sample_info_t *infos, uint32_t maxs) {
    for (int attempt = 0; attempt < 500; ++attempt) {
        buffer[0] = nullptr;
        int32_t n = dds_take(reader, buffer, infos, maxs, maxs);
        if (n != 0) return n;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return 0;
}

TEST(BridgeLoans, LoanedSamplesAreReadableReusedAndReturned) {
    Domain<QTV_VX_LogMessage> domain(kLoansDomain);
    dds_entity_t reader = domain.reader();
    dds_entity_t writer = domain.writer();
    void *buffer[kLargestTake];
    dds_sample_info_t infos[kLargestTake];

    writeLevels(writer, 2);
    ASSERT_EQ(takeLoaned(reader, buffer, infos, 2), 2);
    EXPECT_STREQ(static_cast<QTV_VX_LogMessage *>(buffer[0])->message, "loaned 0");
    ASSERT_EQ(dds_return_loan(reader, buffer, 2), 0);

    // The same array again, then grown to hold more samples.
    writeLevels(writer, 1);
    ASSERT_EQ(takeLoaned(reader, buffer, infos, 2), 1);
    ASSERT_EQ(dds_return_loan(reader, buffer, 1), 0);
    writeLevels(writer, 5);
    ASSERT_EQ(takeLoaned(reader, buffer, infos, kLargestTake), 5);
    for (int i = 0; i < 5; ++i) EXPECT_TRUE(infos[i].valid_data);
    EXPECT_STREQ(static_cast<QTV_VX_LogMessage *>(buffer[4])->message, "loaned 4");
    ASSERT_EQ(dds_return_loan(reader, buffer, 5), 0);

    // A second loan while the first is out is a separate array.
    writeLevels(writer, 2);
    void *second[kLargestTake];
    dds_sample_info_t secondInfos[kLargestTake];
    ASSERT_EQ(takeLoaned(reader, buffer, infos, 1), 1);
    ASSERT_EQ(takeLoaned(reader, second, secondInfos, 1), 1);
    EXPECT_EQ(dds_return_loan(reader, second, 1), 0);
    EXPECT_EQ(dds_return_loan(reader, buffer, 1), 0);
}

TEST(BridgeLoans, RepeatedCreationAndDeletionLeavesNothingBehind) {
    for (int round = 0; round < 10; ++round) {
        Domain<QTV_VX_LogMessage> domain(kLoansDomain);
        dds_entity_t reader = domain.reader();
        writeLevels(domain.writer(), 3);
        void *buffer[kLargestTake];
        dds_sample_info_t infos[kLargestTake];
        int32_t taken = takeLoaned(reader, buffer, infos, kLargestTake);
        ASSERT_GT(taken, 0);
        if (round % 2 == 0) dds_return_loan(reader, buffer, taken);  // else freed with the reader
        // A second topic of the same name and type reuses Cyclone's sertype.
        ddsi_sertype *again = sertypeOf<QTV_VX_LogMessage>("Test::Type");
        dds_entity_t topic = dds_create_topic_sertype(domain.participant, topicOfThisTest().c_str(), &again,
                                                      domain.qos.get(), nullptr, nullptr);
        EXPECT_GT(topic, 0);
        if (topic < 0) ddsi_sertype_unref(again);
    }
}

}  // namespace
