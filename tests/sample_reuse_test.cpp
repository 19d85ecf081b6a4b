// What the receive path reuses instead of allocating: loan elements are
// emptied in place, and a serdata's key hash is derived when asked for.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <type_traits>
#include <vector>

#include "platform/cyclone.hpp"
#include "platform/cyclone_sertype.hpp"
#include "platform/sample_array.hpp"
#include "support/cdr_test_support.hpp"
#include "type/topic_traits.hpp"

#include <dds/ddsi/ddsi_serdata.h>
#include <dds/ddsi/ddsi_sertype.h>

namespace {

using namespace vexar_test;
namespace array = vexar::sample::array;

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

    array::empty(type, samples, 2);
    EXPECT_STREQ(samples[0].message, "");
    // The buffers still hold a string at the bound.
    std::memset(samples[0].message, 'x', 4096);
    samples[0].message[4096] = '\0';
    array::destroy(type, samples);
}

struct SertypeUnref {
    void operator()(ddsi_sertype *type) const { ddsi_sertype_unref(type); }
};
struct SerdataUnref {
    void operator()(ddsi_serdata *data) const { ddsi_serdata_unref(data); }
};
using SertypeRef = std::unique_ptr<ddsi_sertype, SertypeUnref>;

template <typename T>
SertypeRef sertypeOf() {
    OBLX_TypePlugin *plugin = vexar::TopicTraits<T>::pluginNew();
    SertypeRef sertype(vexar::platform::createSertype(plugin, "Test::Type"));
    vexar::TopicTraits<T>::pluginDelete(plugin);  // the sertype keeps its own copy
    return sertype;
}

// Cyclone hands out loan elements again without clearing them (zero_samples
// does nothing, as it would otherwise clear the whole cached array on every
// take): a sample read from a key alone must keep nothing of what the
// element held before.
template <typename T>
class ReusedLoanElements : public testing::Test {};

using KeyedTypes = testing::Types<QTV_VX_LogMessage, QTV_VX_ADMIN_State, QTV_VX_ADMIN_CommandResponse>;
TYPED_TEST_SUITE(ReusedLoanElements, KeyedTypes);

TYPED_TEST(ReusedLoanElements, ReadFromAKeyKeepNothingElse) {
    SertypeRef sertype = sertypeOf<TypeParam>();
    ASSERT_NE(sertype, nullptr);
    Owned<TypeParam> source;
    fill(source.sample);
    std::unique_ptr<ddsi_serdata, SerdataUnref> key(ddsi_serdata_from_sample(sertype.get(), SDK_KEY, source.get()));
    ASSERT_NE(key, nullptr);
    std::unique_ptr<ddsi_serdata, SerdataUnref> untyped(ddsi_serdata_to_untyped(key.get()));
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

template <typename T>
class LazyKeyHash : public testing::Test {};

TYPED_TEST_SUITE(LazyKeyHash, KeyedTypes);

TYPED_TEST(LazyKeyHash, IsThePluginsKeyHashOfTheSample) {
    SertypeRef sertype = sertypeOf<TypeParam>();
    ASSERT_NE(sertype, nullptr);
    Owned<TypeParam> sample;
    fill(sample.sample);

    DDS_KeyHash_t expected{};
    ASSERT_TRUE(Plugin<TypeParam>::instanceToKeyhash(nullptr, &expected, sample.get()));
    for (ddsi_serdata_kind kind : {SDK_DATA, SDK_KEY}) {
        std::unique_ptr<ddsi_serdata, SerdataUnref> data(ddsi_serdata_from_sample(sertype.get(), kind, sample.get()));
        ASSERT_NE(data, nullptr);
        ddsi_keyhash_t actual;
        ddsi_serdata_get_keyhash(data.get(), &actual, false);
        EXPECT_EQ(0, std::memcmp(actual.value, expected.value, sizeof actual.value)) << "kind " << kind;
    }
}

}  // namespace
