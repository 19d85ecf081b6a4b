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

TEST(KeyForm, HoldsTheKeyMembersAsAParameterList) {
    Owned<QTV_VX_LogMessage> log;
    fill(log.sample);
    Bytes buffer(64);
    OBLX_CdrStream stream;
    OBLX_CdrStream_init(&stream, buffer.data(), 64);
    ASSERT_TRUE(QTV_VX_LogMessagePlugin_serialize_key(nullptr, log.get(), &stream, DDS_BOOLEAN_TRUE, 0,
                                                      DDS_BOOLEAN_TRUE, nullptr));
    buffer.resize(OBLX_CdrStream_getPosition(&stream));
    EXPECT_EQ(buffer, WireBytes(true)
                          .encapsulation(2)
                          .pid(0, 8).i32(0x01020304).i32(-2)  // hostAndAppId
                          .pid(1, 4).i32(300)                 // level; no category, no message
                          .sentinel()
                          .bytes);

    // The key form reads back into a key holder; the full form keeps only the key.
    Owned<QTV_VX_LogMessage> holder;
    setText(holder->message, "untouched");
    OBLX_CdrStream_initForRead(&stream, buffer.data(), static_cast<DDS_UnsignedLong>(buffer.size()));
    ASSERT_TRUE(QTV_VX_LogMessagePlugin_deserialize_key_sample(nullptr, holder.get(), &stream, DDS_BOOLEAN_TRUE,
                                                               DDS_BOOLEAN_TRUE, nullptr));
    EXPECT_EQ(holder->level, 300);
    EXPECT_EQ(holder->hostAndAppId.rtps_host_id, 0x01020304);

    Owned<QTV_VX_LogMessage> fromSample;
    setText(fromSample->message, "untouched");
    Bytes full = serialized(log.sample, 1);
    OBLX_CdrStream_initForRead(&stream, full.data(), static_cast<DDS_UnsignedLong>(full.size()));
    ASSERT_TRUE(QTV_VX_LogMessagePlugin_serialized_sample_to_key(nullptr, fromSample.get(), &stream, DDS_BOOLEAN_TRUE,
                                                                 DDS_BOOLEAN_TRUE, nullptr));
    EXPECT_EQ(fromSample->level, 300);
    EXPECT_EQ(fromSample->hostAndAppId.rtps_app_id, -2);
    EXPECT_STREQ(fromSample->message, "untouched");
}

TEST(KeyForm, MaximumSizesFollowTheKeyMembers) {
    EXPECT_EQ(QTV_VX_HostAndAppIdPlugin_get_serialized_key_max_size(nullptr, DDS_BOOLEAN_FALSE, 0, 0), 8u);
    // Three 12-byte headers (two members and the sentinel), 8 + 4 bytes of values.
    EXPECT_EQ(QTV_VX_LogMessagePlugin_get_serialized_key_max_size(nullptr, DDS_BOOLEAN_FALSE, 0, 0), 48u);
    EXPECT_EQ(QTV_VX_ADMIN_StatePlugin_get_serialized_key_max_size(nullptr, DDS_BOOLEAN_FALSE, 0, 0), 32u);
    EXPECT_EQ(QTV_VX_ADMIN_CommandResponsePlugin_get_serialized_key_max_size(nullptr, DDS_BOOLEAN_TRUE, 0, 0), 36u);
    // Without a key, the key is the whole sample.
    EXPECT_EQ(QTV_VX_ADMIN_CommandRequestPlugin_get_serialized_key_max_size(nullptr, DDS_BOOLEAN_FALSE, 0, 0), 164u);
}

TEST(KeyHolders, InstanceAndKeyExchangeOnlyKeyMembers) {
    Owned<QTV_VX_LogMessage> log, key;
    fill(log.sample);
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
    Owned<QTV_VX_ADMIN_CommandRequest> request, requestKey;
    fill(request.sample);
    ASSERT_TRUE(QTV_VX_ADMIN_CommandRequestPlugin_instance_to_key(nullptr, requestKey.get(), request.get()));
    EXPECT_EQ(serialized(requestKey.sample, 1), serialized(request.sample, 1));
}

TEST(KeyHash, ASmallKeyIsItsBigEndianBytesPaddedWithZeros) {
    QTV_VX_HostAndAppId id{0x01020304, -2};
    Bytes expected = WireBytes(true).i32(0x01020304).i32(-2).pad(8).bytes;
    EXPECT_EQ(valueOf(hashOf(id)), expected);
    EXPECT_EQ(valueOf(hashOfSerialized(id, 1)), expected);
}

// A larger key hashes as the MD5 of its big-endian key form, from the sample
// or from its bytes in either order. Recent digests are reused for the same
// key bytes: a stale or mixed-up entry would show as a wrong hash once more
// keys pass than are kept.
TEST(KeyHash, RepeatedKeysHashAsFreshOnesWhateverCameBetween) {
    Owned<QTV_VX_LogMessage> log;
    fill(log.sample);
    for (int round = 0; round < 3; ++round) {
        for (DDS_Long level = 100; level <= 1300; level += 100) {
            log->level = level;
            Bytes key = WireBytes(true).pid(0, 8).i32(0x01020304).i32(-2).pid(1, 4).i32(level).sentinel().bytes;
            ASSERT_EQ(valueOf(hashOf(log.sample)), md5(key)) << "level " << level << ", round " << round;
            ASSERT_EQ(valueOf(hashOfSerialized(log.sample, round % 2)), md5(key)) << "level " << level;
        }
    }
}

TEST(KeyHash, LogInstancesAreOnePerApplicationAndLevel) {
    Owned<QTV_VX_LogMessage> a, b;
    fill(a.sample);
    fill(b.sample);
    setText(b->message, "another text");
    setText(b->category, "another category");
    EXPECT_TRUE(hashOf(a.sample) == hashOf(b.sample));
    b->level = 400;
    EXPECT_FALSE(hashOf(a.sample) == hashOf(b.sample));
    b->level = a->level;
    b->hostAndAppId.rtps_app_id += 1;
    EXPECT_FALSE(hashOf(a.sample) == hashOf(b.sample));
}

TEST(KeyHash, StateAndResponseInstancesDependOnlyOnTheApplication) {
    Owned<QTV_VX_ADMIN_State> a, b;
    fill(a.sample);
    b->hostAndAppId = a->hostAndAppId;
    EXPECT_TRUE(hashOf(a.sample) == hashOf(b.sample));
    EXPECT_TRUE(hashOf(a.sample) == hashOfSerialized(a.sample, 0));
    b->hostAndAppId.rtps_host_id += 1;
    EXPECT_FALSE(hashOf(a.sample) == hashOf(b.sample));

    Owned<QTV_VX_ADMIN_CommandResponse> response;
    fill(response.sample);
    DDS_KeyHash_t before = hashOf(response.sample);
    response->invocation = 99;
    setText(response->message, "changed");
    EXPECT_TRUE(before == hashOf(response.sample));
    EXPECT_TRUE(before == hashOfSerialized(response.sample, 1));
}

TEST(KeyHash, AnUnkeyedSampleHashesWhole) {
    Owned<QTV_VX_ADMIN_CommandRequest> request;
    fill(request.sample);
    DDS_KeyHash_t hash = hashOf(request.sample);
    EXPECT_TRUE(hash == hashOfSerialized(request.sample, 1));
    request->invocation += 1;
    EXPECT_FALSE(hash == hashOf(request.sample));
}
