// Keys: which members name an instance, the key form on the wire, key
// holders and the 16-byte key hash.
#include <gtest/gtest.h>

#include <cstring>

#include <dds/ddsrt/md5.h>

#include "support/cdr_test_support.hpp"

using namespace vexar_test;

namespace {

template <typename T>
DDS_KeyHash_t hashOf(const T &sample) {
    DDS_KeyHash_t hash{};
    EXPECT_TRUE(Plugin<T>::instanceToKeyhash(nullptr, &hash, &sample));
    EXPECT_EQ(hash.length, 16u);
    return hash;
}

template <typename T>
DDS_KeyHash_t hashOfSerialized(const T &sample, DDS_UnsignedShort id) {
    Bytes bytes = serialized(sample, id);
    OBLX_CdrStream stream;
    OBLX_CdrStream_initForRead(&stream, bytes.data(), static_cast<DDS_UnsignedLong>(bytes.size()));
    DDS_KeyHash_t hash{};
    EXPECT_TRUE(Plugin<T>::sampleToKeyhash(nullptr, &stream, &hash, DDS_BOOLEAN_TRUE, nullptr));
    return hash;
}

bool operator==(const DDS_KeyHash_t &a, const DDS_KeyHash_t &b) {
    return a.length == b.length && std::memcmp(a.value, b.value, sizeof a.value) == 0;
}

Bytes md5(const Bytes &bytes) {
    ddsrt_md5_state_t state;
    Bytes digest(16);
    ddsrt_md5_init(&state);
    ddsrt_md5_append(&state, bytes.data(), static_cast<unsigned>(bytes.size()));
    ddsrt_md5_finish(&state, digest.data());
    return digest;
}

Bytes valueOf(const DDS_KeyHash_t &hash) { return Bytes(hash.value, hash.value + 16); }

}  // namespace

TEST(KeyForm, HoldsOnlyTheKeyMembersAsAParameterListAndInKeyHolders) {
    Filled<QTV_VX_LogMessage> log;
    Bytes buffer(64);
    OBLX_CdrStream stream;
    OBLX_CdrStream_init(&stream, buffer.data(), 64);
    ASSERT_TRUE(QTV_VX_LogMessagePlugin_serialize_key(nullptr, log.get(), &stream, DDS_BOOLEAN_TRUE, 0,
                                                      DDS_BOOLEAN_TRUE, nullptr));
    buffer.resize(OBLX_CdrStream_getPosition(&stream));
    EXPECT_EQ(buffer, WireBytes(true)
                          .encapsulation(2)
                          .pid(0, 8)
                          .i32(0x01020304)
                          .i32(-2)  // hostAndAppId
                          .pid(1, 4)
                          .i32(300)  // level; no category, no message
                          .sentinel()
                          .bytes);

    // Reading the key form back is checked through the Cyclone bridge; the
    // full form read as a key fills only the key members.
    Owned<QTV_VX_LogMessage> fromSample;
    setText(fromSample->message, "untouched");
    Bytes full = serialized(log.sample, 1);
    OBLX_CdrStream_initForRead(&stream, full.data(), static_cast<DDS_UnsignedLong>(full.size()));
    ASSERT_TRUE(QTV_VX_LogMessagePlugin_serialized_sample_to_key(nullptr, fromSample.get(), &stream, DDS_BOOLEAN_TRUE,
                                                                 DDS_BOOLEAN_TRUE, nullptr));
    EXPECT_EQ(fromSample->level, 300);
    EXPECT_EQ(fromSample->hostAndAppId.rtps_app_id, -2);
    EXPECT_STREQ(fromSample->message, "untouched");

    // Key holders and instances exchange only the key members.
    Owned<QTV_VX_LogMessage> key;
    ASSERT_TRUE(QTV_VX_LogMessagePlugin_instance_to_key(nullptr, key.get(), log.get()));
    EXPECT_EQ(key->level, 300);
    EXPECT_EQ(key->hostAndAppId.rtps_host_id, 0x01020304);
    EXPECT_STREQ(key->message, "");

    Owned<QTV_VX_ADMIN_State> state, stateKey;
    stateKey->hostAndAppId = {5, 6};
    stateKey->filterLevel = 123;
    ASSERT_TRUE(QTV_VX_ADMIN_StatePlugin_key_to_instance(nullptr, state.get(), stateKey.get()));
    EXPECT_EQ(state->hostAndAppId.rtps_app_id, 6);
    EXPECT_EQ(state->filterLevel, 0);

    // Without key members the whole sample is the key.
    Filled<QTV_VX_ADMIN_CommandRequest> request;
    Owned<QTV_VX_ADMIN_CommandRequest> requestKey;
    ASSERT_TRUE(QTV_VX_ADMIN_CommandRequestPlugin_instance_to_key(nullptr, requestKey.get(), request.get()));
    EXPECT_EQ(serialized(requestKey.sample, 1), serialized(request.sample, 1));
}

// A key of up to 16 bytes is its own hash, zero-padded; a larger key hashes
// as the MD5 of its big-endian key form, from the sample
// or from its bytes in either order. Recent digests are reused for the same
// key bytes: a stale or mixed-up entry would show as a wrong hash once more
// keys pass than are kept.
TEST(KeyHash, SmallKeysArePaddedAndRepeatedLargerKeysHashAsFreshOnes) {
    const QTV_VX_HostAndAppId id{0x01020304, -2};
    const Bytes padded = WireBytes(true).i32(0x01020304).i32(-2).pad(8).bytes;
    EXPECT_EQ(valueOf(hashOf(id)), padded);
    EXPECT_EQ(valueOf(hashOfSerialized(id, 1)), padded);

    Filled<QTV_VX_LogMessage> log;
    for (int round = 0; round < 3; ++round) {
        for (DDS_Long level = 100; level <= 1300; level += 100) {
            log->level = level;
            Bytes key = WireBytes(true).pid(0, 8).i32(0x01020304).i32(-2).pid(1, 4).i32(level).sentinel().bytes;
            ASSERT_EQ(valueOf(hashOf(log.sample)), md5(key)) << "level " << level << ", round " << round;
            ASSERT_EQ(valueOf(hashOfSerialized(log.sample, round % 2)), md5(key)) << "level " << level;
        }
    }
}

namespace {
// Changes a filled sample with `change`: its key hash changes exactly when
// `keyChanges`, and the hash read from its bytes in either order agrees.
template <typename T, typename Change>
void expectHashAfter(Change change, bool keyChanges, const char *what) {
    SCOPED_TRACE(what);
    Filled<T> a, b;
    change(b.sample);
    EXPECT_EQ(hashOf(a.sample) == hashOf(b.sample), !keyChanges);
    for (DDS_UnsignedShort id : {0, 1}) EXPECT_TRUE(hashOf(b.sample) == hashOfSerialized(b.sample, id)) << id;
}
}  // namespace

// Log instances are one per application and level; State and response
// instances one per application; an unkeyed request hashes whole.
TEST(KeyHash, OnlyKeyMembersNameTheInstance) {
    using Log = QTV_VX_LogMessage;
    expectHashAfter<Log>(
        [](Log &s) {
            setText(s.message, "other");
            setText(s.category, "other");
        },
        false, "texts");
    expectHashAfter<Log>([](Log &s) { s.level = 400; }, true, "level");
    expectHashAfter<Log>([](Log &s) { s.hostAndAppId.rtps_app_id += 1; }, true, "application");
    using State = QTV_VX_ADMIN_State;
    expectHashAfter<State>(
        [](State &s) {
            s.filterLevel = 1;
            s.state = QTV_VX_STATE_SHUTTING_DOWN;
        },
        false, "state");
    expectHashAfter<State>([](State &s) { s.hostAndAppId.rtps_host_id += 1; }, true, "state host");
    using Response = QTV_VX_ADMIN_CommandResponse;
    expectHashAfter<Response>(
        [](Response &s) {
            s.invocation = 99;
            setText(s.message, "changed");
        },
        false, "response");
    using Request = QTV_VX_ADMIN_CommandRequest;
    expectHashAfter<Request>([](Request &s) { s.invocation += 1; }, true, "request");
}
