// Typed endpoints across two processes on loopback: the helper program
// tests/helpers/typed_endpoint_peer.cpp writes or reads on the other side.
#include <gtest/gtest.h>

#include <string>

#include "support/child_process.hpp"
#include "support/domains.h"
#include "support/typed_topic.hpp"

namespace {

using namespace vexar_test;
using namespace std::chrono_literals;

constexpr int kProcessesDomain = domains::kTypedEndpoints + 4;  // .. + 5

template <typename T>
struct PeerName;
template <> struct PeerName<QTV_VX_LogMessage> { static constexpr const char *value = "LogMessage"; };
template <> struct PeerName<QTV_VX_ADMIN_State> { static constexpr const char *value = "State"; };
template <> struct PeerName<QTV_VX_ADMIN_CommandRequest> { static constexpr const char *value = "CommandRequest"; };
template <> struct PeerName<QTV_VX_ADMIN_CommandResponse> { static constexpr const char *value = "CommandResponse"; };

template <typename T>
ChildProcess startPeer(const char *role, int domain, const std::string &topic, int count) {
    return ChildProcess("typed_endpoint_peer",
                        {role, PeerName<T>::value, std::to_string(domain), topic, std::to_string(count)});
}

template <typename T>
class TypedEndpointsAcrossProcesses : public testing::Test {};
using TopicTypes = testing::Types<QTV_VX_LogMessage, QTV_VX_ADMIN_State, QTV_VX_ADMIN_CommandRequest,
                                  QTV_VX_ADMIN_CommandResponse>;
TYPED_TEST_SUITE(TypedEndpointsAcrossProcesses, TopicTypes);

TYPED_TEST(TypedEndpointsAcrossProcesses, ReaderHereReceivesWhatThePeerWrites) {
    std::string topic = std::string("vexar/test/from_peer/") + PeerName<TypeParam>::value;
    ChildProcess peer = startPeer<TypeParam>("write", kProcessesDomain, topic, 5);
    ASSERT_TRUE(peer.started());
    std::vector<int> markers;
    {
        TypedParticipant<TypeParam> here(kProcessesDomain, topic);
        markers = takeMarkers<TypeParam>(here.reader(), 5, 20s);
    }  // the peer leaves once our reader has gone
    EXPECT_EQ(markers, (std::vector<int>{1, 2, 3, 4, 5}));
    EXPECT_EQ(peer.wait(20s), 0);
}

TEST(TypedEndpointsAcrossProcesses, PeerReceivesWhatTheWriterHereWrites) {
    const std::string topic = "vexar/test/to_peer";
    ChildProcess peer = startPeer<QTV_VX_LogMessage>("read", kProcessesDomain + 1, topic, 5);
    ASSERT_TRUE(peer.started());
    TypedParticipant<QTV_VX_LogMessage> here(kProcessesDomain + 1, topic);
    QTV_VX_LogMessageDataWriter *writer = here.writer();
    ASSERT_NE(writer, nullptr);
    ASSERT_TRUE(eventuallyWithin(20s, [&] {
        return hasMatchedReaders(QTV_VX_LogMessageDataWriter_as_datawriter(writer), 1);
    }));
    for (int marker = 1; marker <= 5; ++marker) {
        Sample<QTV_VX_LogMessage> sample(marker);
        ASSERT_EQ(QTV_VX_LogMessageDataWriter_write(writer, sample.get(), DDS_HANDLE_NIL), DDS_RETCODE_OK);
    }
    EXPECT_EQ(peer.wait(20s), 0);
}

}  // namespace
