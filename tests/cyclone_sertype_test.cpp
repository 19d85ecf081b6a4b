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

#include "platform/dds/cyclone.hpp"
#include "platform/dds/cyclone_sertype.hpp"
#include "support/cdr_test_support.hpp"
#include "support/domains.h"
#include "vexar/topic_traits.hpp"

#include <dds/ddsi/ddsi_serdata.h>
#include <dds/ddsi/ddsi_sertype.h>
#include <dds/ddsi/q_radmin.h>

namespace {

using namespace vexar_test;
using vexar::dds::createSertype;

// Each suite has its own domain; each test its own topic (tests run at once).
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

using Qos = std::unique_ptr<dds_qos_t, Releaser<dds_delete_qos>>;
using SerdataRef = std::unique_ptr<ddsi_serdata, Releaser<ddsi_serdata_unref>>;
using SertypeRef = std::unique_ptr<ddsi_sertype, Releaser<ddsi_sertype_unref>>;

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
    Filled<QTV_VX_LogMessage> message;
    SerdataRef written{ddsi_serdata_from_sample(log.get(), SDK_DATA, message.get())};
    Bytes wire{wireOf(written.get())};
};

TEST_F(BridgeSerdata, WireBytesAreThePluginsLittleEndianParameterList) {
    EXPECT_EQ(wire, serialized(message.sample, 1));
    EXPECT_EQ(Bytes(wire.begin(), wire.begin() + 4), (Bytes{0x00, 0x03, 0x00, 0x00}));

    ddsrt_iovec_t ref;
    ddsi_serdata *held = ddsi_serdata_to_ser_ref(written.get(), 4, wire.size() - 4, &ref);
    EXPECT_EQ(0, std::memcmp(ref.iov_base, wire.data() + 4, ref.iov_len));
    ddsi_serdata_to_ser_unref(held, &ref);
}

TEST_F(BridgeSerdata, BytesFromTheNetworkReadBackWithTheSameKey) {
    Fragments overlapping(wire, {{0, 20}, {12, 40}, {40, static_cast<uint32_t>(wire.size())}});
    SerdataRef received(ddsi_serdata_from_ser(log.get(), SDK_DATA, overlapping.chain(), wire.size()));
    ASSERT_NE(received, nullptr);
    EXPECT_EQ(wireOf(received.get()), wire);
    EXPECT_TRUE(ddsi_serdata_eqkey(written.get(), received.get()));
    EXPECT_EQ(written->hash, received->hash);

    Owned<QTV_VX_LogMessage> copy;
    ASSERT_TRUE(ddsi_serdata_to_sample(received.get(), copy.get(), nullptr, nullptr));
    EXPECT_EQ(serialized(copy.sample, 1), serialized(message.sample, 1));
}

// Whether received bytes pass exactly when the plugin reads them, and carry
// the key it reads, is checked by the decoder fuzz targets over crafted seeds.
TEST_F(BridgeSerdata, MalformedBytesAreDropped) {
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

TEST_F(BridgeSerdata, PrintShowsTheSampleOnOneLine) {
    char line[256];
    size_t needed =
        written->ops->print(log.get(), written.get(), line, sizeof line);  // the inline wrapper returns a bool
    EXPECT_STREQ(line, "{hostAndAppId={rtps_host_id=16909060, rtps_app_id=-2}, level=300, "
                       "category=\"com.example\", message=\"disk almost full\"}");
    EXPECT_EQ(needed, std::strlen(line));
    char cut[8];
    EXPECT_EQ(written->ops->print(log.get(), written.get(), cut, sizeof cut), needed);
    EXPECT_STREQ(cut, "{hostAn");
}

// ---- keys, and reuse on the receive path -------------------------------

template <typename T>
class KeyedBridge : public testing::Test {};
using KeyedTypes = testing::Types<QTV_VX_LogMessage, QTV_VX_ADMIN_State, QTV_VX_ADMIN_CommandResponse>;
TYPED_TEST_SUITE(KeyedBridge, KeyedTypes);

// A key serdata, made from a sample or received, agrees with the data
// serdata and its untyped copy on key, hash and key hash; its bytes are the
// parameter list. Cyclone hands out loan elements again without clearing
// them (zero_samples does nothing, as it would otherwise clear the whole
// cached array on every take): a sample read from a key alone must keep
// nothing of what the element held before.
TYPED_TEST(KeyedBridge, AKeyAgreesWithItsSampleAndReadsIntoAUsedElementKeepingNothingElse) {
    SertypeRef sertype(sertypeOf<TypeParam>());
    Filled<TypeParam> source;
    DDS_KeyHash_t expected{};
    ASSERT_TRUE(Plugin<TypeParam>::instanceToKeyhash(nullptr, &expected, source.get()));
    SerdataRef key(ddsi_serdata_from_sample(sertype.get(), SDK_KEY, source.get()));
    SerdataRef data(ddsi_serdata_from_sample(sertype.get(), SDK_DATA, source.get()));
    ASSERT_TRUE(key && data);
    Bytes wire = wireOf(key.get());
    EXPECT_EQ(Bytes(wire.begin(), wire.begin() + 4), (Bytes{0x00, 0x03, 0x00, 0x00}));
    Fragments fromNetwork(wire, {{0, static_cast<uint32_t>(wire.size())}});
    SerdataRef received(ddsi_serdata_from_ser(sertype.get(), SDK_KEY, fromNetwork.chain(), wire.size()));
    SerdataRef untyped(ddsi_serdata_to_untyped(key.get()));
    ASSERT_TRUE(received && untyped);
    EXPECT_EQ(untyped->type, nullptr);
    for (const SerdataRef *other : {&data, &received, &untyped}) {
        EXPECT_TRUE(ddsi_serdata_eqkey(key.get(), other->get()));
        EXPECT_EQ(key->hash, (*other)->hash);
    }
    for (const SerdataRef *each : {&key, &data}) {
        ddsi_keyhash_t actual;
        ddsi_serdata_get_keyhash(each->get(), &actual, false);
        EXPECT_EQ(0, std::memcmp(actual.value, expected.value, sizeof actual.value)) << "kind " << (*each)->kind;
    }

    Owned<TypeParam> fresh, used;
    ASSERT_TRUE(ddsi_serdata_to_sample(key.get(), fresh.get(), nullptr, nullptr));
    DDS_KeyHash_t read{};
    ASSERT_TRUE(Plugin<TypeParam>::instanceToKeyhash(nullptr, &read, fresh.get()));
    EXPECT_EQ(0, std::memcmp(read.value, expected.value, sizeof read.value)) << "every key member read";
    fill(used.sample);
    ASSERT_TRUE(ddsi_serdata_to_sample(key.get(), used.get(), nullptr, nullptr));
    EXPECT_EQ(serialized(used.sample, 1), serialized(fresh.sample, 1)) << "to_sample of a key";
    fill(used.sample);
    ASSERT_TRUE(ddsi_serdata_untyped_to_sample(sertype.get(), untyped.get(), used.get(), nullptr, nullptr));
    EXPECT_EQ(serialized(used.sample, 1), serialized(fresh.sample, 1)) << "untyped_to_sample";
}

// ---- through Cyclone, within and across processes ----------------------

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
    std::string uri = std::getenv("CYCLONEDDS_URI") + std::string(",<General><MaxMessageSize>1400B</MaxMessageSize>"
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
    Filled<QTV_VX_LogMessage> sent;
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

// A writer asking for XCDR2 is refused. A loan left out is freed with its
// reader, and a second topic of the same name and type reuses Cyclone's
// sertype (the sanitizer run checks memory).
TEST(BridgeLoans, Xcdr2IsRefusedAndAnUnreturnedLoanAndAReusedSertypeLeaveNothingBehind) {
    Domain<QTV_VX_LogMessage> domain(kLoansDomain);
    Qos xcdr2(dds_create_qos());
    const dds_data_representation_id_t representation = DDS_DATA_REPRESENTATION_XCDR2;
    dds_qset_data_representation(xcdr2.get(), 1, &representation);
    EXPECT_LT(dds_create_writer(domain.participant, domain.topic, xcdr2.get(), nullptr), 0);
    dds_entity_t reader = domain.reader();
    Filled<QTV_VX_LogMessage> sample;
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
