// Typed endpoints across two processes on loopback: the helper program
// tests/helpers/typed_endpoint_peer.cpp writes or reads on the other side.
#include <gtest/gtest.h>

#include <string>

#include "support/child_process.hpp"
#include "support/domains.h"
#include "support/log_capture.h"
#include "support/typed_topic.hpp"

namespace {

using namespace vexar_test;
using namespace std::chrono_literals;

constexpr int kProcessesDomain = domains::kTypedEndpoints + 4;  // .. + 6

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

// Batching only shows across processes (local readers get samples within
// write). Once a batched writer exists, Cyclone batches the writers created
// after it too; both kinds must still deliver to a best-effort reader, which
// gets nothing that is not sent, in the order that they were sent.
TEST(TypedEndpointsAcrossProcesses, BatchedWriterAndTheWritersCreatedAfterItDeliver) {
    const std::string topic = "vexar/test/batched";
    ChildProcess peer = startPeer<QTV_VX_LogMessage>("read-best-effort", kProcessesDomain + 2, topic, 2);
    ASSERT_TRUE(peer.started());
    TypedParticipant<QTV_VX_LogMessage> here(kProcessesDomain + 2, topic);
    DDS_DataWriterQos qos = historyQos(DDS_DataWriterQos(DDS_DataWriterQos_INITIALIZER), 16);
    qos.batch.enable = DDS_BOOLEAN_TRUE;
    LogCapture log;
    DDS_DataWriter *batched = DDS_Publisher_create_datawriter(here.publisher(), here.topic(), &qos, nullptr, 0);
    DDS_DataWriter *unbatched = here.untypedWriter();
    ASSERT_NE(batched, nullptr);
    ASSERT_NE(unbatched, nullptr);
    EXPECT_TRUE(log.contains("write batching is process-wide in Cyclone DDS")) << log.text();
    DDS_DataWriterQos readBack = DDS_DataWriterQos_INITIALIZER;
    ASSERT_EQ(DDS_DataWriter_get_qos(batched, &readBack), DDS_RETCODE_OK);
    EXPECT_TRUE(readBack.batch.enable);
    ASSERT_TRUE(eventuallyWithin(20s, [&] { return hasMatchedReaders(batched, 1) && hasMatchedReaders(unbatched, 1); }));
    // A best-effort reader drops what comes before it has discovered the
    // writer, and no writer can see when that happened: give it time.
    std::this_thread::sleep_for(2s);

    Sample<QTV_VX_LogMessage> first(1), second(2);
    ASSERT_EQ(DDS_DataWriter_write_untypedI(unbatched, first.get(), DDS_HANDLE_NIL), DDS_RETCODE_OK);
    ASSERT_EQ(DDS_DataWriter_write_untypedI(batched, second.get(), DDS_HANDLE_NIL), DDS_RETCODE_OK);
    EXPECT_EQ(DDS_DataWriter_flush(batched), DDS_RETCODE_OK);
    EXPECT_EQ(peer.wait(20s), 0) << "the peer reads 1, then 2";
}

}  // namespace
