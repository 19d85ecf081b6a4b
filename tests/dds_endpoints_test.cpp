// Writers and readers on Cyclone: listeners, untyped write, read and take
// on loan, instances, and deletion with loans out.
#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>

#include "support/dds_bridge.hpp"
#include "support/domains.h"
#include "support/log_capture.h"

namespace {

using namespace vexar_test;
using LogSample = Sample<QTV_VX_LogMessage>;

constexpr int kDomain = vexar_test::domains::kBridgeBase + 30;  // .. + 39

// A participant with the log topic, a writer and a reader on it.
struct LogEndpoints {
    explicit LogEndpoints(int domain) : participant(domain), topic(participant.logTopic()) {
        writer = participant.writer(topic);
        reader = participant.reader(DDS_Topic_as_topicdescription(topic));
    }
    void write(DDS_Long level, int marker = 0) const {
        LogSample sample(marker);
        sample->level = level;
        ASSERT_EQ(DDS_DataWriter_write_untypedI(writer, sample.get(), DDS_HANDLE_NIL), DDS_RETCODE_OK);
    }

    BridgeParticipant participant;
    DDS_Topic *topic;
    DDS_DataWriter *writer = nullptr;
    DDS_DataReader *reader = nullptr;
};

struct Calls {
    std::atomic<int> matched{0};
    std::atomic<int> currentCount{0};
    std::atomic<int> dataAvailable{0};
    DDS_DataWriter *writer = nullptr;

    static void onMatch(void *data, DDS_DataWriter *writer, const DDS_PublicationMatchedStatus *status) {
        auto *calls = static_cast<Calls *>(data);
        calls->writer = writer;
        calls->currentCount = status->current_count;
        ++calls->matched;
    }
    static void onData(void *data, DDS_DataReader *) { ++static_cast<Calls *>(data)->dataAvailable; }
};

TEST(DdsListeners, MatchesAndDataAreHeardUntilTheListenerIsRemoved) {
    LogEndpoints endpoints(kDomain + 1);
    Calls calls;
    DDS_DataWriterListener writerListener{&calls, Calls::onMatch};
    // Without the matching bit nothing is installed.
    ASSERT_EQ(DDS_DataWriter_set_listener(endpoints.writer, &writerListener, DDS_DATA_AVAILABLE_STATUS),
              DDS_RETCODE_OK);
    EXPECT_EQ(DDS_DataWriter_get_listener(endpoints.writer).on_publication_matched, nullptr);
    ASSERT_EQ(DDS_DataWriter_set_listener(endpoints.writer, &writerListener, DDS_PUBLICATION_MATCHED_STATUS),
              DDS_RETCODE_OK);
    EXPECT_EQ(calls.matched, 1) << "the match that happened at creation";
    EXPECT_EQ(calls.currentCount, 1);
    EXPECT_EQ(calls.writer, endpoints.writer);
    // A reader that comes later is heard of too.
    DDS_DataReader *late = endpoints.participant.reader(DDS_Topic_as_topicdescription(endpoints.topic));
    ASSERT_TRUE(eventually([&] { return calls.matched >= 2; }));
    EXPECT_EQ(calls.currentCount, 2);

    DDS_DataReaderListener readerListener{&calls, Calls::onData, nullptr};
    ASSERT_EQ(DDS_DataReader_set_listener(late, &readerListener, DDS_DATA_AVAILABLE_STATUS), DDS_RETCODE_OK);
    endpoints.write(300);
    ASSERT_TRUE(eventually([&] { return calls.dataAvailable >= 1; }));
    ASSERT_EQ(DDS_DataReader_set_listener(late, nullptr, 0), DDS_RETCODE_OK);
    ReceivedLogMessages received;
    ASSERT_EQ(received.take(late), DDS_RETCODE_OK);
    ASSERT_EQ(received.returnLoan(late), DDS_RETCODE_OK);
    int before = calls.dataAvailable;
    endpoints.write(400);
    ASSERT_TRUE(eventually([&] { return received.take(late) == DDS_RETCODE_OK; }));
    EXPECT_EQ(received.returnLoan(late), DDS_RETCODE_OK);
    EXPECT_EQ(calls.dataAvailable, before);
}

// Read marks samples read and state masks select; take into an empty
// sequence lends the samples until they are returned.
TEST(DdsReadTake, StatesSelectAndAnEmptySequenceIsLentUntilReturned) {
    LogEndpoints endpoints(kDomain + 3);
    for (DDS_Long level = 100; level <= 300; level += 100) endpoints.write(level, 5);
    ReceivedLogMessages received;
    ASSERT_TRUE(eventually([&] {
        if (received.readOrTake(endpoints.reader, DDS_LENGTH_UNLIMITED, false) != DDS_RETCODE_OK) return false;
        if (received.length() == 3) return true;
        EXPECT_EQ(received.returnLoan(endpoints.reader), DDS_RETCODE_OK);
        return false;
    }));
    for (DDS_Long i = 0; i < 3; ++i) {
        EXPECT_TRUE(received.info(i).valid_data);
        EXPECT_EQ(received.info(i).sample_state, DDS_NOT_READ_SAMPLE_STATE);
        EXPECT_EQ(received.info(i).view_state, DDS_NEW_VIEW_STATE);
        EXPECT_EQ(received.info(i).instance_state, DDS_ALIVE_INSTANCE_STATE);
        EXPECT_EQ(markerOf(received.at(i)), 5);
    }
    ASSERT_EQ(received.returnLoan(endpoints.reader), DDS_RETCODE_OK);
    EXPECT_EQ(received.readOrTake(endpoints.reader, DDS_LENGTH_UNLIMITED, false, DDS_NOT_READ_SAMPLE_STATE),
              DDS_RETCODE_NO_DATA);
    EXPECT_EQ(received.readOrTake(endpoints.reader, DDS_LENGTH_UNLIMITED, false, 0), DDS_RETCODE_NO_DATA)
        << "an empty mask selects nothing";

    ASSERT_EQ(received.readOrTake(endpoints.reader, DDS_LENGTH_UNLIMITED, true, DDS_READ_SAMPLE_STATE), DDS_RETCODE_OK);
    EXPECT_FALSE(received.data._owned);
    EXPECT_FALSE(received.infos._owned);
    EXPECT_EQ(DDS_SampleInfoSeq_get_length(&received.infos), 3);
    EXPECT_EQ(received.info(2).sample_state, DDS_READ_SAMPLE_STATE);

    LogCapture log;
    EXPECT_EQ(received.take(endpoints.reader), DDS_RETCODE_PRECONDITION_NOT_MET) << "a lent sequence is not reused";
    EXPECT_EQ(DDS_Subscriber_delete_datareader(endpoints.participant.subscriber(), endpoints.reader),
              DDS_RETCODE_PRECONDITION_NOT_MET);
    EXPECT_EQ(DDS_DomainParticipant_delete_contained_entities(endpoints.participant.get()),
              DDS_RETCODE_PRECONDITION_NOT_MET);
    void *foreign[1] = {nullptr};
    EXPECT_EQ(DDS_DataReader_return_loan_untypedI(endpoints.reader, foreign, 1, nullptr),
              DDS_RETCODE_PRECONDITION_NOT_MET);

    ASSERT_EQ(received.returnLoan(endpoints.reader), DDS_RETCODE_OK);
    EXPECT_TRUE(received.data._owned);
    EXPECT_EQ(received.data._maximum, 0u);
    EXPECT_TRUE(received.infos._owned);
    EXPECT_EQ(received.take(endpoints.reader), DDS_RETCODE_NO_DATA);
    EXPECT_EQ(received.take(endpoints.reader, 0), DDS_RETCODE_BAD_PARAMETER);
    EXPECT_TRUE(log.contains("bad parameter: max_samples"));
}

// A loan grows past its first room: a read counts and gets every sample,
// and a take while that loan is out gathers them over several rounds into a
// loan of its own. Two small loans at once each get samples of their own.
TEST(DdsReadTake, LoansHoldEverySampleAndStayApart) {
    constexpr DDS_Long kInstances = 20;  // more than one round's room
    LogEndpoints endpoints(kDomain + 4);
    for (DDS_Long level = 1; level <= kInstances; ++level) endpoints.write(level);
    auto levelsOf = [](const ReceivedLogMessages &received) {
        std::set<DDS_Long> levels;
        for (DDS_Long i = 0; i < received.length(); ++i) levels.insert(received.at(i).level);
        return levels.size();
    };
    ReceivedLogMessages read, taken;
    ASSERT_TRUE(eventually([&] {
        if (read.readOrTake(endpoints.reader, DDS_LENGTH_UNLIMITED, false) != DDS_RETCODE_OK) return false;
        if (read.length() == kInstances) return true;
        EXPECT_EQ(read.returnLoan(endpoints.reader), DDS_RETCODE_OK);
        return false;
    }));
    ASSERT_EQ(taken.take(endpoints.reader), DDS_RETCODE_OK);
    EXPECT_EQ(levelsOf(read), static_cast<size_t>(kInstances));
    EXPECT_EQ(levelsOf(taken), static_cast<size_t>(kInstances));
    EXPECT_EQ(read.returnLoan(endpoints.reader), DDS_RETCODE_OK);
    EXPECT_EQ(taken.returnLoan(endpoints.reader), DDS_RETCODE_OK);

    endpoints.write(1, 9);
    endpoints.write(2, 10);
    ASSERT_TRUE(eventually([&] { return read.take(endpoints.reader, 1) == DDS_RETCODE_OK; }));
    ASSERT_TRUE(eventually([&] { return taken.take(endpoints.reader, 1) == DDS_RETCODE_OK; }));
    ASSERT_EQ(read.length(), 1);
    ASSERT_EQ(taken.length(), 1);
    EXPECT_NE(markerOf(read.at(0)), markerOf(taken.at(0)));
    EXPECT_EQ(read.returnLoan(endpoints.reader), DDS_RETCODE_OK);
    EXPECT_EQ(taken.returnLoan(endpoints.reader), DDS_RETCODE_OK);
}

// Cyclone counts as lost a sample that its instance refuses: with source
// time ordering, one older than the instance's latest.
TEST(DdsReadTake, ASampleOlderThanItsInstanceIsCountedLost) {
    LogEndpoints endpoints(kDomain + 6);
    DDS_DataReaderQos qos = DDS_DataReaderQos_INITIALIZER;
    qos.reliability.kind = DDS_RELIABLE_RELIABILITY_QOS;
    qos.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
    qos.destination_order.kind = DDS_BY_SOURCE_TIMESTAMP_DESTINATIONORDER_QOS;
    DDS_DataReader *reader = DDS_Subscriber_create_datareader(
        endpoints.participant.subscriber(), DDS_Topic_as_topicdescription(endpoints.topic), &qos, nullptr, 0);
    DDS_DataWriterQos writerQos = DDS_DataWriterQos_INITIALIZER;  // offers the ordering the reader asks for
    writerQos.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
    writerQos.destination_order.kind = DDS_BY_SOURCE_TIMESTAMP_DESTINATIONORDER_QOS;
    DDS_DataWriter *writer =
        DDS_Publisher_create_datawriter(endpoints.participant.publisher(), endpoints.topic, &writerQos, nullptr, 0);
    ASSERT_TRUE(reader != nullptr && writer != nullptr);
    LogSample sample;
    for (DDS_Long second : {20, 10, 30, 15}) {
        const DDS_Time_t time{second, 0};
        ASSERT_EQ(DDS_DataWriter_write_w_timestamp_untypedI(writer, sample.get(), DDS_HANDLE_NIL, &time),
                  DDS_RETCODE_OK);
    }
    DDS_SampleLostStatus lost = DDS_SampleLostStatus_INITIALIZER;
    ASSERT_EQ(DDS_DataReader_get_sample_lost_status(reader, &lost), DDS_RETCODE_OK);
    EXPECT_EQ(lost.total_count, 2);
    EXPECT_EQ(lost.total_count_change, 2);
    ASSERT_EQ(DDS_DataReader_get_sample_lost_status(reader, &lost), DDS_RETCODE_OK);
    EXPECT_EQ(lost.total_count_change, 0) << "reading resets the change";
    EXPECT_EQ(countReadable<ReceivedLogMessages>(reader), 2);
    EXPECT_EQ(DDS_DataReader_get_sample_lost_status(reader, nullptr), DDS_RETCODE_BAD_PARAMETER);
}

TEST(DdsReadTake, ReadConditionSelectsUnreadSamplesOfAllOrOneInstance) {
    LogEndpoints endpoints(kDomain + 7);
    endpoints.write(600);
    DDS_ReadCondition *unread = DDS_DataReader_create_readcondition(endpoints.reader, DDS_NOT_READ_SAMPLE_STATE,
                                                                    DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE);
    ASSERT_NE(unread, nullptr);
    DDS_Boolean isLoan = DDS_BOOLEAN_TRUE;
    void **lent = nullptr;
    DDS_Long count = 0;
    DDS_SampleInfoSeq infos = DDS_SEQUENCE_INITIALIZER;
    auto readUnread = [&] {
        return DDS_DataReader_read_or_take_w_condition_untypedI(endpoints.reader, &isLoan, &lent, &count, &infos, 0, 0,
                                                                DDS_BOOLEAN_TRUE, nullptr, sizeof(QTV_VX_LogMessage), 1,
                                                                unread, DDS_BOOLEAN_FALSE);
    };
    ASSERT_TRUE(eventually([&] { return readUnread() == DDS_RETCODE_OK; }));
    EXPECT_EQ(count, 1);
    EXPECT_EQ(DDS_DataReader_return_loan_untypedI(endpoints.reader, lent, count, &infos), DDS_RETCODE_OK);
    EXPECT_EQ(readUnread(), DDS_RETCODE_NO_DATA);

    // One instance through the condition, every sample of it.
    endpoints.write(600, 2);
    LogSample key;
    DDS_InstanceHandle_t instance = DDS_DataReader_lookup_instance_untypedI(endpoints.reader, key.get());
    ASSERT_NE(instance, DDS_HANDLE_NIL);
    ASSERT_EQ(DDS_DataReader_read_or_take_instance_w_condition_untypedI(
                  endpoints.reader, &isLoan, &lent, &count, &infos, 0, 0, DDS_BOOLEAN_TRUE, nullptr,
                  sizeof(QTV_VX_LogMessage), DDS_LENGTH_UNLIMITED, instance, unread, DDS_BOOLEAN_TRUE),
              DDS_RETCODE_OK);
    EXPECT_EQ(count, 1) << "only the unread sample";
    EXPECT_EQ(markerOf(*static_cast<QTV_VX_LogMessage *>(lent[0])), 2);
    EXPECT_EQ(DDS_DataReader_return_loan_untypedI(endpoints.reader, lent, count, &infos), DDS_RETCODE_OK);

    // An instance the reader does not know is refused, read or taken, and
    // the reader stays usable (its cache is not left locked).
    const DDS_InstanceHandle_t unknown = instance + 1000003;
    for (DDS_Boolean take : {DDS_BOOLEAN_FALSE, DDS_BOOLEAN_TRUE}) {
        EXPECT_EQ(DDS_DataReader_read_or_take_instance_untypedI(endpoints.reader, &isLoan, &lent, &count, &infos, 0, 0,
                                                                DDS_BOOLEAN_TRUE, nullptr, sizeof(QTV_VX_LogMessage),
                                                                DDS_LENGTH_UNLIMITED, unknown, DDS_ANY_SAMPLE_STATE,
                                                                DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE, take),
                  DDS_RETCODE_PRECONDITION_NOT_MET);
    }
    endpoints.write(700, 3);
    ASSERT_TRUE(eventually([&] { return readUnread() == DDS_RETCODE_OK; }));
    EXPECT_EQ(DDS_DataReader_return_loan_untypedI(endpoints.reader, lent, count, &infos), DDS_RETCODE_OK);

    EXPECT_EQ(DDS_DataReader_delete_readcondition(endpoints.reader, unread), DDS_RETCODE_OK);
}

// Loaned takes on two threads, while a third creates and deletes read
// conditions and the main thread writes: every sample arrives exactly once.
TEST(DdsReadTakeConcurrency, TakersShareTheSamplesWithoutLossOrDeadlock) {
    LogEndpoints endpoints(kDomain + 10);
    constexpr int kSamples = 300;
    std::atomic<int> taken{0};
    std::atomic<bool> writing{true};
    auto taker = [&] {
        ReceivedLogMessages received;
        while (writing || taken < kSamples) {
            if (received.take(endpoints.reader, 7) != DDS_RETCODE_OK) {
                std::this_thread::yield();
                continue;
            }
            taken += received.length();
            EXPECT_EQ(received.returnLoan(endpoints.reader), DDS_RETCODE_OK);
        }
    };
    auto conditions = [&] {
        while (writing) {
            DDS_ReadCondition *condition = DDS_DataReader_create_readcondition(
                endpoints.reader, DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE);
            EXPECT_EQ(DDS_DataReader_delete_readcondition(endpoints.reader, condition), DDS_RETCODE_OK);
        }
    };
    std::thread threads[] = {std::thread(taker), std::thread(taker), std::thread(conditions)};
    for (int i = 0; i < kSamples; ++i) endpoints.write(i % 50);
    ASSERT_TRUE(eventually([&] { return taken >= kSamples; }));
    writing = false;
    for (std::thread &thread : threads) thread.join();
    EXPECT_EQ(taken, kSamples);
}

TEST(DdsInstances, RegisterLookupKeyTimestampAndDispose) {
    LogEndpoints endpoints(kDomain + 8);
    LogSample message, key, other;
    message->level = 700;
    DDS_InstanceHandle_t handle = DDS_DataWriter_register_instance_untypedI(endpoints.writer, message.get());
    ASSERT_NE(handle, DDS_HANDLE_NIL);
    EXPECT_EQ(DDS_DataWriter_lookup_instance_untypedI(endpoints.writer, message.get()), handle);
    key->hostAndAppId = {0, 0};
    ASSERT_EQ(DDS_DataWriter_get_key_value_untypedI(endpoints.writer, key.get(), handle), DDS_RETCODE_OK);
    EXPECT_EQ(key->level, 700);
    EXPECT_EQ(key->hostAndAppId.rtps_app_id, 8);

    LogCapture log;
    EXPECT_EQ(DDS_DataWriter_write_untypedI(endpoints.writer, other.get(), handle), DDS_RETCODE_BAD_PARAMETER);
    const DDS_Time_t stamp{1700000000, 123456789};
    ASSERT_EQ(DDS_DataWriter_write_w_timestamp_untypedI(endpoints.writer, message.get(), handle, &stamp),
              DDS_RETCODE_OK);
    const DDS_Time_t invalid{-5, 0};
    EXPECT_EQ(DDS_DataWriter_write_w_timestamp_untypedI(endpoints.writer, message.get(), handle, &invalid),
              DDS_RETCODE_BAD_PARAMETER);

    ReceivedLogMessages received;
    ASSERT_TRUE(eventually([&] { return received.take(endpoints.reader) == DDS_RETCODE_OK; }));
    DDS_InstanceHandle_t readerHandle = received.info(0).instance_handle;
    EXPECT_EQ(DDS_DataReader_lookup_instance_untypedI(endpoints.reader, message.get()), readerHandle);
    ASSERT_EQ(received.returnLoan(endpoints.reader), DDS_RETCODE_OK);

    DDS_WriteParams_t params = DDS_WRITEPARAMS_DEFAULT;
    params.handle = handle;
    ASSERT_EQ(DDS_DataWriter_dispose_w_params_untypedI(endpoints.writer, nullptr, &params), DDS_RETCODE_OK);
    ASSERT_TRUE(eventually([&] { return received.take(endpoints.reader) == DDS_RETCODE_OK; }));
    EXPECT_FALSE(received.info(0).valid_data);
    EXPECT_EQ(received.info(0).instance_state, DDS_NOT_ALIVE_DISPOSED_INSTANCE_STATE);
    EXPECT_EQ(received.at(0).level, 700) << "the key of a dispose is readable";
    EXPECT_EQ(received.returnLoan(endpoints.reader), DDS_RETCODE_OK);
}

}  // namespace
