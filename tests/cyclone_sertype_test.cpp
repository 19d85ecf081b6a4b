// The type plugins carried through Cyclone by the sertype bridge: what goes
// on the wire, what comes back, keys, loans, reuse of received samples and
// bad input.
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
#include "platform/sample_array.hpp"
#include "support/cdr_test_support.hpp"
#include "support/domains.h"
#include "type/topic_traits.hpp"

#include <dds/ddsi/ddsi_serdata.h>
#include <dds/ddsi/ddsi_sertype.h>
#include <dds/ddsi/q_radmin.h>

namespace {

using namespace vexar_test;
using vexar::platform::createSertype;
namespace array = vexar::sample::array;

// Each suite has its own domain; each test its own topic (tests run at once).
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

// Reliable, with history for late joiners.
Qos historyQos() {
    Qos qos(dds_create_qos());
    dds_qset_reliability(qos.get(), DDS_RELIABILITY_RELIABLE, DDS_SECS(1));
    dds_qset_durability(qos.get(), DDS_DURABILITY_TRANSIENT_LOCAL);
    dds_qset_history(qos.get(), DDS_HISTORY_KEEP_LAST, 8);
    return qos;
}

// A participant with one topic of T; deleting the participant deletes all.
template <typename T>
struct Domain {
    explicit Domain(int domain) : qos(historyQos()) {
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

// Takes one sample into `sample`, waiting up to 10 s for it.
bool takeOne(dds_entity_t reader, void *sample) {
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    dds_sample_info_t info;
    while (dds_take(reader, &sample, &info, 1, 1) != 1) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
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
    Bytes plainCdr = wire;
    plainCdr[1] = 0x01;  // CDR, not a parameter list
    Bytes unknownId = wire;
    unknownId[0] = 0x7F;
    const Bytes cases[] = {plainCdr, unknownId, Bytes(wire.begin(), wire.begin() + 30),
                           Bytes(wire.begin(), wire.begin() + 3)};
    for (const Bytes &bytes : cases) {
        Fragments whole(bytes, {{0, static_cast<uint32_t>(bytes.size())}});
        EXPECT_EQ(ddsi_serdata_from_ser(log.get(), SDK_DATA, whole.chain(), bytes.size()), nullptr);
    }
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


// ---- reuse on the receive path -------------------------------------------

TEST(SampleReuse, EmptiedElementsKeepTheirBuffersAndLoseTheirValues) {
    const DDS_TypeCode &type = *QTV_VX_LogMessage_get_typecode();
    auto *samples = static_cast<QTV_VX_LogMessage *>(array::resize(type, nullptr, 2));
    ASSERT_NE(samples, nullptr);
    fill(samples[0]);
    fill(samples[1]);
    char *const message = samples[1].message;

    void *listed[] = {&samples[1]};
    array::empty(type, listed, 1);
    EXPECT_EQ(samples[1].message, message);
    EXPECT_STREQ(samples[1].message, "");
    EXPECT_STREQ(samples[1].category, "");
    EXPECT_EQ(samples[1].level, 0);
    EXPECT_EQ(samples[1].hostAndAppId.rtps_host_id, 0);
    EXPECT_STREQ(samples[0].message, "disk almost full");  // only the listed one

    listed[0] = &samples[0];
    array::empty(type, listed, 1);
    EXPECT_STREQ(samples[0].message, "");
    // The buffers still hold a string at the bound.
    std::memset(samples[0].message, 'x', 4096);
    samples[0].message[4096] = '\0';
    array::destroy(type, samples);
}

template <typename T>
class KeyedBridge : public testing::Test {};
using KeyedTypes = testing::Types<QTV_VX_LogMessage, QTV_VX_ADMIN_State, QTV_VX_ADMIN_CommandResponse>;
TYPED_TEST_SUITE(KeyedBridge, KeyedTypes);

// Cyclone hands out loan elements again without clearing them (zero_samples
// does nothing, as it would otherwise clear the whole cached array on every
// take): a sample read from a key alone must keep nothing of what the
// element held before.
TYPED_TEST(KeyedBridge, SampleReadFromAKeyIntoAUsedElementKeepsNothingElse) {
    SertypeRef sertype(sertypeOf<TypeParam>());
    Owned<TypeParam> source;
    fill(source.sample);
    SerdataRef key(ddsi_serdata_from_sample(sertype.get(), SDK_KEY, source.get()));
    ASSERT_NE(key, nullptr);
    SerdataRef untyped(ddsi_serdata_to_untyped(key.get()));
    ASSERT_NE(untyped, nullptr);

    Owned<TypeParam> fresh, used;
    ASSERT_TRUE(ddsi_serdata_to_sample(key.get(), fresh.get(), nullptr, nullptr));
    fill(used.sample);
    ASSERT_TRUE(ddsi_serdata_to_sample(key.get(), used.get(), nullptr, nullptr));
    EXPECT_EQ(serialized(used.sample, 1), serialized(fresh.sample, 1)) << "to_sample of a key";
    fill(used.sample);
    ASSERT_TRUE(ddsi_serdata_untyped_to_sample(sertype.get(), untyped.get(), used.get(), nullptr, nullptr));
    EXPECT_EQ(serialized(used.sample, 1), serialized(fresh.sample, 1)) << "untyped_to_sample";
}

// The key hash is derived when asked for, from data and from a key alike.
TYPED_TEST(KeyedBridge, KeyHashIsThePluginsKeyHashOfTheSample) {
    SertypeRef sertype(sertypeOf<TypeParam>());
    Owned<TypeParam> sample;
    fill(sample.sample);
    DDS_KeyHash_t expected{};
    ASSERT_TRUE(Plugin<TypeParam>::instanceToKeyhash(nullptr, &expected, sample.get()));
    for (ddsi_serdata_kind kind : {SDK_DATA, SDK_KEY}) {
        SerdataRef data(ddsi_serdata_from_sample(sertype.get(), kind, sample.get()));
        ASSERT_NE(data, nullptr);
        ddsi_keyhash_t actual;
        ddsi_serdata_get_keyhash(data.get(), &actual, false);
        EXPECT_EQ(0, std::memcmp(actual.value, expected.value, sizeof actual.value)) << "kind " << kind;
    }
}

// ---- through Cyclone ---------------------------------------------------

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
    Owned<QTV_VX_LogMessage> received;
    bool taken = takeOne(domain.reader(), received.get());
    int status = -1;
    waitpid(child, &status, 0);
    ASSERT_TRUE(taken);
    EXPECT_EQ(serialized(received.sample, 1), serialized(sent.sample, 1));
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

// A loan left out is freed with its reader, and a second topic of the same
// name and type reuses Cyclone's sertype (the sanitizer run checks memory).
TEST(BridgeLoans, UnreturnedLoanAndReusedSertypeLeaveNothingBehind) {
    Domain<QTV_VX_LogMessage> domain(kLoansDomain);
    dds_entity_t reader = domain.reader();
    Owned<QTV_VX_LogMessage> sample;
    fill(sample.sample);
    ASSERT_EQ(dds_write(domain.writer(), sample.get()), 0);
    // Cyclone 0.10.2 fills as many pointers as the largest `maxs` ever used.
    void *buffer[8] = {nullptr};
    dds_sample_info_t infos[8];
    ASSERT_EQ(dds_take(reader, buffer, infos, 8, 8), 1);
    ddsi_sertype *again = sertypeOf<QTV_VX_LogMessage>("Test::Type");
    dds_entity_t topic = dds_create_topic_sertype(domain.participant, topicOfThisTest().c_str(), &again,
                                                  domain.qos.get(), nullptr, nullptr);
    EXPECT_GT(topic, 0);
    if (topic < 0) ddsi_sertype_unref(again);
}

}  // namespace
