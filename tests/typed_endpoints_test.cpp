// Type support and typed endpoints on loopback, two participants in one
// process and then two processes: every topic type end to end, instances,
// history for late readers, copies into a caller's buffer, and misuse. Loans and deletion
// with a loan out are checked on the untyped layer that these wrap.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <vector>

#include "support/child_process.hpp"
#include "support/domains.h"
#include "support/log_capture.h"
#include "support/typed_topic.hpp"

namespace {

using namespace vexar_test;
using namespace std::chrono_literals;

// One domain per group; every test has its own topic.
constexpr int kRoundTripDomain = domains::kTypedEndpoints;
constexpr int kInstancesDomain = domains::kTypedEndpoints + 1;
constexpr int kLoansDomain = domains::kTypedEndpoints + 2;
constexpr int kMisuseDomain = domains::kTypedEndpoints + 3;
constexpr int kProcessesDomain = domains::kTypedEndpoints + 4;  // .. + 5
constexpr int kNextInstanceDomain = domains::kTypedEndpoints + 6;

std::string topicOfThisTest() {
    const testing::TestInfo *test = testing::UnitTest::GetInstance()->current_test_info();
    return std::string("vexar/test/") + test->test_suite_name() + "/" + test->name();
}

// Reads on loan until the reader holds `count` samples; the caller returns the loan.
bool readOnLoan(QTV_VX_LogMessageDataReader *reader, QTV_VX_LogMessageSeq &samples, DDS_SampleInfoSeq &infos,
                DDS_Long count) {
    return eventuallyWithin(10s, [&] {
        if (QTV_VX_LogMessageDataReader_read(reader, &samples, &infos, DDS_LENGTH_UNLIMITED, DDS_ANY_SAMPLE_STATE,
                                             DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE) != DDS_RETCODE_OK) {
            return false;
        }
        if (QTV_VX_LogMessageSeq_get_length(&samples) == count) return true;
        QTV_VX_LogMessageDataReader_return_loan(reader, &samples, &infos);
        return false;
    });
}

// A writer in one participant and a reader in another, on one topic.
template <typename T>
struct WriterAndReader {
    explicit WriterAndReader(int domain, bool withReader = true)
        : sending(domain, topicOfThisTest()), receiving(domain, topicOfThisTest()) {
        writer = sending.writer();
        if (withReader) reader = receiving.reader();
    }
    bool matched() const {
        return writer != nullptr && reader != nullptr &&
               eventuallyWithin(10s, [&] { return hasMatchedReaders(TopicType<T>::asDataWriter(writer), 1); });
    }
    void write(int marker) const {
        Sample<T> sample(marker);
        ASSERT_EQ(TopicType<T>::write(writer, sample.get(), DDS_HANDLE_NIL), DDS_RETCODE_OK);
    }

    TypedParticipant<T> sending;
    TypedParticipant<T> receiving;
    typename TopicType<T>::DataWriter *writer = nullptr;
    typename TopicType<T>::DataReader *reader = nullptr;
};

// ---- every topic type ----------------------------------------------------

template <typename T>
class TypedEndpointsEachType : public testing::Test {};
using TopicTypes =
    testing::Types<QTV_VX_LogMessage, QTV_VX_ADMIN_State, QTV_VX_ADMIN_CommandRequest, QTV_VX_ADMIN_CommandResponse>;
TYPED_TEST_SUITE(TypedEndpointsEachType, TopicTypes);

// What was written before the reader came arrives as history, what is
// written after the match arrives live; all of it in order.
TYPED_TEST(TypedEndpointsEachType, LateReaderOfAnotherParticipantReceivesHistoryThenLiveSamples) {
    WriterAndReader<TypeParam> endpoints(kRoundTripDomain, false);
    for (int marker = 1; marker <= 3; ++marker) endpoints.write(marker);
    endpoints.reader = endpoints.receiving.reader();
    ASSERT_TRUE(endpoints.matched());
    for (int marker = 4; marker <= 5; ++marker) endpoints.write(marker);
    EXPECT_EQ(takeMarkers<TypeParam>(endpoints.reader, 5), (std::vector<int>{1, 2, 3, 4, 5}));
}

// ---- instances (LogMessage) --------------------------------

TEST(TypedEndpointsInstances, TwoLevelsOfOneApplicationAreTwoInstances) {
    WriterAndReader<QTV_VX_LogMessage> endpoints(kInstancesDomain);
    ASSERT_TRUE(endpoints.matched());
    Sample<QTV_VX_LogMessage> info(1), debug(2);
    debug->level = 700;
    ASSERT_EQ(QTV_VX_LogMessageDataWriter_write(endpoints.writer, info.get(), DDS_HANDLE_NIL), DDS_RETCODE_OK);
    ASSERT_EQ(QTV_VX_LogMessageDataWriter_write(endpoints.writer, debug.get(), DDS_HANDLE_NIL), DDS_RETCODE_OK);

    QTV_VX_LogMessageSeq samples = DDS_SEQUENCE_INITIALIZER;
    DDS_SampleInfoSeq infos = DDS_SEQUENCE_INITIALIZER;
    ASSERT_TRUE(readOnLoan(endpoints.reader, samples, infos, 2));
    DDS_Long debugIndex = QTV_VX_LogMessageSeq_get_reference(&samples, 0)->level == 700 ? 0 : 1;
    DDS_InstanceHandle_t debugHandle = DDS_SampleInfoSeq_get_reference(&infos, debugIndex)->instance_handle;
    EXPECT_NE(debugHandle, DDS_SampleInfoSeq_get_reference(&infos, 1 - debugIndex)->instance_handle);
    EXPECT_EQ(QTV_VX_LogMessageDataReader_lookup_instance(endpoints.reader, debug.get()), debugHandle);
    ASSERT_EQ(QTV_VX_LogMessageDataReader_return_loan(endpoints.reader, &samples, &infos), DDS_RETCODE_OK);

    // A handle's key comes back into a key holder.
    Sample<QTV_VX_LogMessage> key;
    ASSERT_EQ(QTV_VX_LogMessageDataReader_get_key_value(endpoints.reader, key.get(), debugHandle), DDS_RETCODE_OK);
    EXPECT_EQ(key->level, 700);
    EXPECT_EQ(key->hostAndAppId.rtps_app_id, 8);

    // Taking one instance leaves the other.
    ASSERT_EQ(QTV_VX_LogMessageDataReader_take_instance(endpoints.reader, &samples, &infos, DDS_LENGTH_UNLIMITED,
                                                        debugHandle, DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE,
                                                        DDS_ANY_INSTANCE_STATE),
              DDS_RETCODE_OK);
    ASSERT_EQ(QTV_VX_LogMessageSeq_get_length(&samples), 1);
    EXPECT_EQ(markerOf(*QTV_VX_LogMessageSeq_get_reference(&samples, 0)), 2);
    ASSERT_EQ(QTV_VX_LogMessageDataReader_return_loan(endpoints.reader, &samples, &infos), DDS_RETCODE_OK);
    EXPECT_EQ(takeMarkers<QTV_VX_LogMessage>(endpoints.reader, 1), std::vector<int>{1});
}

// ---- the next instance ------------------------------------------------------

using LogSeq = QTV_VX_LogMessageSeq;
// One read_next_instance or take_next_instance call, after `previous`.
using NextInstance = std::function<DDS_ReturnCode_t(LogSeq *, DDS_SampleInfoSeq *, DDS_InstanceHandle_t previous)>;

// What one call returned: its instance's handle and level, and how many
// samples, each checked to be of that instance.
struct Visit {
    DDS_InstanceHandle_t handle = DDS_HANDLE_NIL;
    int level = 0;
    DDS_Long samples = 0;
};

Visit visitNext(const NextInstance &next, DDS_InstanceHandle_t previous, QTV_VX_LogMessageDataReader *reader,
                bool copies, DDS_ReturnCode_t &result) {
    LogSeq samples = DDS_SEQUENCE_INITIALIZER;
    DDS_SampleInfoSeq infos = DDS_SEQUENCE_INITIALIZER;
    if (copies) {
        EXPECT_TRUE(QTV_VX_LogMessageSeq_set_maximum(&samples, 10));
    }
    Visit visit;
    result = next(&samples, &infos, previous);
    visit.samples = QTV_VX_LogMessageSeq_get_length(&samples);
    if (result == DDS_RETCODE_OK && visit.samples > 0) {
        visit.handle = DDS_SampleInfoSeq_get_reference(&infos, 0)->instance_handle;
        visit.level = QTV_VX_LogMessageSeq_get_reference(&samples, 0)->level;
        for (DDS_Long i = 0; i < visit.samples; ++i)
            EXPECT_EQ(DDS_SampleInfoSeq_get_reference(&infos, i)->instance_handle, visit.handle);
    }
    if (result == DDS_RETCODE_OK) {
        EXPECT_EQ(QTV_VX_LogMessageSeq_has_ownership(&samples), copies ? DDS_BOOLEAN_TRUE : DDS_BOOLEAN_FALSE);
    }
    EXPECT_EQ(QTV_VX_LogMessageDataReader_return_loan(reader, &samples, &infos), DDS_RETCODE_OK);
    QTV_VX_LogMessageSeq_finalize(&samples);
    DDS_SampleInfoSeq_finalize(&infos);
    return visit;
}

// Every instance from the first, each after the last one's handle, until
// NO_DATA, checking that the handles rise: the levels of the instances.
std::vector<int> visitAll(const NextInstance &next, QTV_VX_LogMessageDataReader *reader, bool copies,
                          DDS_Long samplesEach) {
    std::vector<int> levels;
    DDS_InstanceHandle_t previous = DDS_HANDLE_NIL;
    DDS_ReturnCode_t result = DDS_RETCODE_OK;
    for (int guard = 0; guard < 10; ++guard) {
        Visit visit = visitNext(next, previous, reader, copies, result);
        if (result != DDS_RETCODE_OK) break;
        EXPECT_GT(visit.handle, previous);
        EXPECT_EQ(visit.samples, samplesEach) << "level " << visit.level;
        levels.push_back(visit.level);
        previous = visit.handle;
    }
    EXPECT_EQ(result, DDS_RETCODE_NO_DATA);
    std::sort(levels.begin(), levels.end());
    return levels;
}

// A writer and a reader of one participant (delivery is immediate) with
// four instances of one application, two samples each: level 100 read,
// level 400 disposed, 200 and 300 alive and unread.
struct FourInstances {
    explicit FourInstances(const std::string &topic) : participant(kNextInstanceDomain, topic) {
        writer = participant.writer();
        reader = participant.reader();
        if (writer == nullptr || reader == nullptr) return;
        for (int level : {100, 200, 300, 400}) {
            for (int marker : {1, 2}) {
                Sample<QTV_VX_LogMessage> sample(marker);
                sample->level = level;
                EXPECT_EQ(QTV_VX_LogMessageDataWriter_write(writer, sample.get(), DDS_HANDLE_NIL), DDS_RETCODE_OK);
            }
        }
        Sample<QTV_VX_LogMessage> key;
        key->level = 100;
        LogSeq samples = DDS_SEQUENCE_INITIALIZER;
        DDS_SampleInfoSeq infos = DDS_SEQUENCE_INITIALIZER;
        EXPECT_EQ(
            QTV_VX_LogMessageDataReader_read_instance(reader, &samples, &infos, DDS_LENGTH_UNLIMITED,
                                                      QTV_VX_LogMessageDataReader_lookup_instance(reader, key.get()),
                                                      DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE),
            DDS_RETCODE_OK);
        EXPECT_EQ(QTV_VX_LogMessageDataReader_return_loan(reader, &samples, &infos), DDS_RETCODE_OK);
        key->level = 400;
        EXPECT_EQ(QTV_VX_LogMessageDataWriter_dispose(writer, key.get(), DDS_HANDLE_NIL), DDS_RETCODE_OK);
    }

    TypedParticipant<QTV_VX_LogMessage> participant;
    QTV_VX_LogMessageDataWriter *writer = nullptr;
    QTV_VX_LogMessageDataReader *reader = nullptr;
};

// Each mask, through the state-mask forms and through a read condition,
// read and taken, on loan and into a buffer: the instances that it selects,
// in handle order, each with its two samples.
TEST(TypedEndpointsNextInstance, VisitsTheInstancesThatEachMaskSelectsInHandleOrder) {
    const DDS_SampleStateMask anySample = DDS_ANY_SAMPLE_STATE;
    const DDS_ViewStateMask anyView = DDS_ANY_VIEW_STATE;
    const DDS_InstanceStateMask anyInstance = DDS_ANY_INSTANCE_STATE;
    const struct {
        const char *name;
        DDS_SampleStateMask samples;
        DDS_ViewStateMask views;
        DDS_InstanceStateMask instances;
        bool take;
        bool throughCondition;
        std::vector<int> levels;
    } cases[] = {
        {"any", anySample, anyView, anyInstance, false, false, {100, 200, 300, 400}},
        {"not read", DDS_NOT_READ_SAMPLE_STATE, anyView, anyInstance, false, false, {200, 300, 400}},
        {"read", DDS_READ_SAMPLE_STATE, anyView, anyInstance, false, false, {100}},
        {"new", anySample, DDS_NEW_VIEW_STATE, anyInstance, false, false, {200, 300, 400}},
        {"not new", anySample, DDS_NOT_NEW_VIEW_STATE, anyInstance, false, false, {100}},
        {"alive", anySample, anyView, DDS_ALIVE_INSTANCE_STATE, false, false, {100, 200, 300}},
        {"disposed", anySample, anyView, DDS_NOT_ALIVE_DISPOSED_INSTANCE_STATE, false, false, {400}},
        {"no sample state", 0, anyView, anyInstance, false, false, {}},
        {"take any", anySample, anyView, anyInstance, true, false, {100, 200, 300, 400}},
        {"take not read", DDS_NOT_READ_SAMPLE_STATE, anyView, anyInstance, true, false, {200, 300, 400}},
        {"condition: not read", DDS_NOT_READ_SAMPLE_STATE, anyView, anyInstance, false, true, {200, 300, 400}},
        {"condition: take alive", anySample, anyView, DDS_ALIVE_INSTANCE_STATE, true, true, {100, 200, 300}},
    };
    int row = 0;
    for (const auto &each : cases) {
        for (bool copies : {false, true}) {
            SCOPED_TRACE(std::string(each.name) + (copies ? ", copies" : ", loan"));
            FourInstances endpoints(topicOfThisTest() + "/" + std::to_string(row++));
            QTV_VX_LogMessageDataReader *reader = endpoints.reader;
            ASSERT_NE(reader, nullptr);
            DDS_DataReader *untyped = QTV_VX_LogMessageDataReader_as_datareader(reader);
            DDS_ReadCondition *condition =
                each.throughCondition
                    ? DDS_DataReader_create_readcondition(untyped, each.samples, each.views, each.instances)
                    : nullptr;
            NextInstance next = [&](LogSeq *samples, DDS_SampleInfoSeq *infos, DDS_InstanceHandle_t previous) {
                auto byMasks = each.take ? QTV_VX_LogMessageDataReader_take_next_instance
                                         : QTV_VX_LogMessageDataReader_read_next_instance;
                auto byCondition = each.take ? QTV_VX_LogMessageDataReader_take_next_instance_w_condition
                                             : QTV_VX_LogMessageDataReader_read_next_instance_w_condition;
                if (condition != nullptr)
                    return byCondition(reader, samples, infos, DDS_LENGTH_UNLIMITED, previous, condition);
                return byMasks(reader, samples, infos, DDS_LENGTH_UNLIMITED, previous, each.samples, each.views,
                               each.instances);
            };
            EXPECT_EQ(visitAll(next, reader, copies, 2), each.levels);
            if (condition != nullptr) {
                EXPECT_EQ(DDS_DataReader_delete_readcondition(untyped, condition), DDS_RETCODE_OK);
            }
        }
    }
}

// Instances passed over and instances not returned keep their samples and
// states: a read marks only what it returns, a take removes only that.
TEST(TypedEndpointsNextInstance, ChangesOnlyTheInstanceItReturns) {
    TypedParticipant<QTV_VX_LogMessage> participant(kNextInstanceDomain, topicOfThisTest());
    QTV_VX_LogMessageDataWriter *writer = participant.writer();
    QTV_VX_LogMessageDataReader *reader = participant.reader();
    ASSERT_TRUE(writer && reader);
    for (int level : {100, 200, 300}) {
        Sample<QTV_VX_LogMessage> sample;
        sample->level = level;
        ASSERT_EQ(QTV_VX_LogMessageDataWriter_write(writer, sample.get(), DDS_HANDLE_NIL), DDS_RETCODE_OK);
    }
    auto nextBy = [&](auto operation, DDS_SampleStateMask states) -> NextInstance {
        return [=](LogSeq *samples, DDS_SampleInfoSeq *infos, DDS_InstanceHandle_t previous) {
            return operation(reader, samples, infos, DDS_LENGTH_UNLIMITED, previous, states, DDS_ANY_VIEW_STATE,
                             DDS_ANY_INSTANCE_STATE);
        };
    };
    const NextInstance readNext = nextBy(QTV_VX_LogMessageDataReader_read_next_instance, DDS_ANY_SAMPLE_STATE);
    const NextInstance takeNext = nextBy(QTV_VX_LogMessageDataReader_take_next_instance, DDS_ANY_SAMPLE_STATE);
    const NextInstance readUnread = nextBy(QTV_VX_LogMessageDataReader_read_next_instance, DDS_NOT_READ_SAMPLE_STATE);
    const NextInstance readRead = nextBy(QTV_VX_LogMessageDataReader_read_next_instance, DDS_READ_SAMPLE_STATE);
    DDS_ReturnCode_t result = DDS_RETCODE_OK;

    // The first instance read; looking for another read one passes over the
    // other two, which stay unread.
    const Visit first = visitNext(readNext, DDS_HANDLE_NIL, reader, false, result);
    ASSERT_EQ(result, DDS_RETCODE_OK);
    EXPECT_EQ(visitNext(readRead, first.handle, reader, false, result).samples, 0);
    EXPECT_EQ(result, DDS_RETCODE_NO_DATA);
    std::vector<int> others = {100, 200, 300};
    others.erase(std::find(others.begin(), others.end(), first.level));
    EXPECT_EQ(visitAll(readUnread, reader, false, 1), others);

    // The second instance taken: the others stay.
    const Visit taken = visitNext(takeNext, first.handle, reader, false, result);
    ASSERT_EQ(result, DDS_RETCODE_OK);
    EXPECT_EQ(taken.samples, 1);
    std::vector<int> left = {100, 200, 300};
    left.erase(std::find(left.begin(), left.end(), taken.level));
    EXPECT_EQ(visitAll(readNext, reader, true, 1), left);
}

// How many samples each instance has, as read_next_instance visits them.
template <typename T>
std::vector<DDS_Long>
samplesPerInstance(typename TopicType<T>::DataReader *reader,
                   DDS_ReturnCode_t (*readNext)(typename TopicType<T>::DataReader *, typename TopicType<T>::Seq *,
                                                DDS_SampleInfoSeq *, DDS_Long, DDS_InstanceHandle_t,
                                                DDS_SampleStateMask, DDS_ViewStateMask, DDS_InstanceStateMask)) {
    using Type = TopicType<T>;
    std::vector<DDS_Long> counts;
    DDS_InstanceHandle_t previous = DDS_HANDLE_NIL;
    for (int guard = 0; guard < 5; ++guard) {
        typename Type::Seq samples = DDS_SEQUENCE_INITIALIZER;
        DDS_SampleInfoSeq infos = DDS_SEQUENCE_INITIALIZER;
        if (readNext(reader, &samples, &infos, DDS_LENGTH_UNLIMITED, previous, DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE,
                     DDS_ANY_INSTANCE_STATE) != DDS_RETCODE_OK)
            break;
        counts.push_back(Type::length(&samples));
        previous = DDS_SampleInfoSeq_get_reference(&infos, 0)->instance_handle;
        EXPECT_EQ(Type::returnLoan(reader, &samples, &infos), DDS_RETCODE_OK);
    }
    return counts;
}

// A loan for one instance has room for all that a keep-last reader holds of
// it: its depth, and the sample that tells a dispose after they were read.
TEST(TypedEndpointsNextInstance, ALoanHoldsTheWholeHistoryOfTheInstanceAndItsDispose) {
    TypedParticipant<QTV_VX_LogMessage> participant(kNextInstanceDomain, topicOfThisTest(), 2);
    QTV_VX_LogMessageDataWriter *writer = participant.writer();
    QTV_VX_LogMessageDataReader *reader = participant.reader();
    ASSERT_TRUE(writer && reader);
    for (int marker : {1, 2, 3}) {
        Sample<QTV_VX_LogMessage> sample(marker);
        ASSERT_EQ(QTV_VX_LogMessageDataWriter_write(writer, sample.get(), DDS_HANDLE_NIL), DDS_RETCODE_OK);
    }
    EXPECT_EQ(samplesPerInstance<QTV_VX_LogMessage>(reader, QTV_VX_LogMessageDataReader_read_next_instance),
              std::vector<DDS_Long>{2});
    Sample<QTV_VX_LogMessage> key;
    ASSERT_EQ(QTV_VX_LogMessageDataWriter_dispose(writer, key.get(), DDS_HANDLE_NIL), DDS_RETCODE_OK);
    EXPECT_EQ(samplesPerInstance<QTV_VX_LogMessage>(reader, QTV_VX_LogMessageDataReader_read_next_instance),
              std::vector<DDS_Long>{3});
}

// An unkeyed type's samples are all one instance. Types whose keys have the
// same bytes (State and CommandResponse: the application's ids) keep
// instances of their own, wherever the first of them was written.
TEST(TypedEndpointsNextInstance, AnUnkeyedTypeIsOneInstanceAndTypesDoNotShareInstances) {
    TypedParticipant<QTV_VX_ADMIN_State> states(kNextInstanceDomain, topicOfThisTest() + "/state");
    TypedParticipant<QTV_VX_ADMIN_CommandResponse> responses(kNextInstanceDomain, topicOfThisTest() + "/response");
    TypedParticipant<QTV_VX_ADMIN_CommandRequest> requests(kNextInstanceDomain, topicOfThisTest() + "/request");
    QTV_VX_ADMIN_StateDataReader *stateReader = states.reader();
    QTV_VX_ADMIN_CommandResponseDataReader *responseReader = responses.reader();
    QTV_VX_ADMIN_CommandRequestDataReader *requestReader = requests.reader();
    ASSERT_TRUE(stateReader && responseReader && requestReader);
    Sample<QTV_VX_ADMIN_State> state(1);
    ASSERT_EQ(QTV_VX_ADMIN_StateDataWriter_write(states.writer(), state.get(), DDS_HANDLE_NIL), DDS_RETCODE_OK);
    auto *responseWriter = responses.writer();
    auto *requestWriter = requests.writer();
    for (int marker : {1, 2, 3}) {
        Sample<QTV_VX_ADMIN_CommandResponse> response(marker);
        Sample<QTV_VX_ADMIN_CommandRequest> request(marker);
        ASSERT_EQ(QTV_VX_ADMIN_CommandResponseDataWriter_write(responseWriter, response.get(), DDS_HANDLE_NIL),
                  DDS_RETCODE_OK);
        ASSERT_EQ(QTV_VX_ADMIN_CommandRequestDataWriter_write(requestWriter, request.get(), DDS_HANDLE_NIL),
                  DDS_RETCODE_OK);
    }

    EXPECT_EQ(samplesPerInstance<QTV_VX_ADMIN_CommandResponse>(
                  responseReader, QTV_VX_ADMIN_CommandResponseDataReader_read_next_instance),
              std::vector<DDS_Long>{3});
    EXPECT_EQ(samplesPerInstance<QTV_VX_ADMIN_CommandRequest>(requestReader,
                                                              QTV_VX_ADMIN_CommandRequestDataReader_read_next_instance),
              std::vector<DDS_Long>{3});
    EXPECT_EQ(samplesPerInstance<QTV_VX_ADMIN_State>(stateReader, QTV_VX_ADMIN_StateDataReader_read_next_instance),
              std::vector<DDS_Long>{1});
}

// ---- loans and copies -------------------------------------------------------

TEST(TypedEndpointsLoans, SequenceWithABufferReceivesCopiesUpToItsMaximum) {
    WriterAndReader<QTV_VX_LogMessage> endpoints(kLoansDomain);
    ASSERT_TRUE(endpoints.matched());
    for (int marker = 1; marker <= 12; ++marker) endpoints.write(marker);
    QTV_VX_LogMessageSeq samples = DDS_SEQUENCE_INITIALIZER;
    DDS_SampleInfoSeq infos = DDS_SEQUENCE_INITIALIZER;
    ASSERT_TRUE(readOnLoan(endpoints.reader, samples, infos, 12));
    ASSERT_EQ(QTV_VX_LogMessageDataReader_return_loan(endpoints.reader, &samples, &infos), DDS_RETCODE_OK);
    ASSERT_TRUE(QTV_VX_LogMessageSeq_set_maximum(&samples, 10));
    QTV_VX_LogMessage *buffer = QTV_VX_LogMessageSeq_get_contiguous_buffer(&samples);
    auto take = [&](DDS_Long maxSamples) {
        return QTV_VX_LogMessageDataReader_take(endpoints.reader, &samples, &infos, maxSamples, DDS_ANY_SAMPLE_STATE,
                                                DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE);
    };

    ASSERT_EQ(take(DDS_LENGTH_UNLIMITED), DDS_RETCODE_OK);
    EXPECT_TRUE(QTV_VX_LogMessageSeq_has_ownership(&samples));
    EXPECT_EQ(QTV_VX_LogMessageSeq_get_contiguous_buffer(&samples), buffer);
    EXPECT_EQ(QTV_VX_LogMessageSeq_get_maximum(&samples), 10);
    ASSERT_EQ(QTV_VX_LogMessageSeq_get_length(&samples), 10);
    EXPECT_EQ(markerOf(buffer[0]), 1);
    EXPECT_EQ(markerOf(buffer[9]), 10);
    EXPECT_EQ(QTV_VX_LogMessageDataReader_return_loan(endpoints.reader, &samples, &infos), DDS_RETCODE_OK);

    // The rest fit; the buffer is reused.
    ASSERT_EQ(take(5), DDS_RETCODE_OK);
    EXPECT_EQ(QTV_VX_LogMessageSeq_get_length(&samples), 2);
    EXPECT_EQ(markerOf(buffer[1]), 12);
    // Nothing left: no data, and nothing stays in the sequence.
    EXPECT_EQ(take(5), DDS_RETCODE_NO_DATA);
    EXPECT_EQ(QTV_VX_LogMessageSeq_get_length(&samples), 0);
    QTV_VX_LogMessageSeq_finalize(&samples);
    DDS_SampleInfoSeq_finalize(&infos);
}

// ---- misuse ------------------------------------------------

// Narrow accepts a writer of the type under whatever name the caller
// registered it, and refuses one of another type.
TEST(TypedEndpointsMisuse, NarrowRefusesAnotherTypeWithAReport) {
    TypedParticipant<QTV_VX_ADMIN_State> participant(kMisuseDomain, topicOfThisTest());
    DDS_DataWriter *stateWriter = participant.untypedWriter();
    DDS_DataReader *stateReader = participant.untypedReader();
    ASSERT_NE(stateWriter, nullptr);
    ASSERT_NE(stateReader, nullptr);
    DDS_DomainParticipant *owner = participant.get();
    ASSERT_EQ(QTV_VX_LogMessageTypeSupport_register_type(owner, "my::Log"), DDS_RETCODE_OK);
    DDS_Topic *topic = DDS_DomainParticipant_create_topic(owner, "my/log", "my::Log", nullptr, nullptr, 0);
    ASSERT_NE(topic, nullptr);
    DDS_DataWriter *logWriter = DDS_Publisher_create_datawriter(participant.publisher(), topic, nullptr, nullptr, 0);
    EXPECT_NE(QTV_VX_LogMessageDataWriter_narrow(logWriter), nullptr);

    LogCapture log;
    EXPECT_EQ(QTV_VX_LogMessageDataWriter_narrow(stateWriter), nullptr);
    EXPECT_TRUE(log.contains("TDataWriter_narrow: bad parameter: wrong type writer")) << log.text();
    EXPECT_EQ(QTV_VX_LogMessageDataReader_narrow(stateReader), nullptr);
    EXPECT_TRUE(log.contains("TDataReader_narrow: bad parameter: wrong type reader")) << log.text();
    QTV_VX_ADMIN_StateDataWriter *typed = QTV_VX_ADMIN_StateDataWriter_narrow(stateWriter);
    EXPECT_EQ(QTV_VX_ADMIN_StateDataWriter_as_datawriter(typed), stateWriter);
}

// Such samples encode, but a reader in the same process would be handed
// what a failed decode leaves: the writer refuses them, saying why.
TEST(TypedEndpointsMisuse, WriterRefusesEnumerationValuesWithoutEnumerator) {
    WriterAndReader<QTV_VX_ADMIN_CommandRequest> endpoints(kMisuseDomain);
    ASSERT_TRUE(endpoints.matched());
    // Where such values hide in a sample is the check's own test; here the
    // writer must apply it.
    const DDS_Long noEnumerator = 7;  // stored as C code would
    Sample<QTV_VX_ADMIN_CommandRequest> unknownKind(1);
    std::memcpy(&unknownKind->command._d, &noEnumerator, sizeof noEnumerator);
    LogCapture log;
    EXPECT_EQ(QTV_VX_ADMIN_CommandRequestDataWriter_write(endpoints.writer, unknownKind.get(), DDS_HANDLE_NIL),
              DDS_RETCODE_BAD_PARAMETER);
    EXPECT_TRUE(log.contains("7 is not a value of QTV::VX::ADMIN::CommandKind")) << log.text();
    endpoints.write(3);
    // Local delivery happens within write: whatever got through is there now.
    EXPECT_EQ(takeMarkers<QTV_VX_ADMIN_CommandRequest>(endpoints.reader, 3, 300ms), std::vector<int>{3});
}

// ---- across processes: the helper program tests/helpers/typed_endpoint_peer.cpp
// writes or reads on the other side.

template <typename T>
ChildProcess startPeer(const char *role, int domain, const std::string &topic, int count) {
    return ChildProcess("typed_endpoint_peer",
                        {role, TopicType<T>::registeredTypeName, std::to_string(domain), topic, std::to_string(count)});
}

template <typename T>
class TypedEndpointsAcrossProcesses : public testing::Test {};
TYPED_TEST_SUITE(TypedEndpointsAcrossProcesses, TopicTypes);

TYPED_TEST(TypedEndpointsAcrossProcesses, ReaderHereReceivesWhatThePeerWrites) {
    const std::string topic = std::string(TopicType<TypeParam>::topicName) + "/from_peer";
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

// Batching only shows across processes (local readers get samples within
// write). Once a batched writer exists, Cyclone batches the writers created
// after it too; both kinds must still deliver to a best-effort reader, which
// gets nothing that is not sent, in the order that they were sent.
TEST(TypedEndpointsAcrossProcesses, BatchedWriterAndTheWritersCreatedAfterItDeliver) {
    const std::string topic = "vexar/test/batched";
    ChildProcess peer = startPeer<QTV_VX_LogMessage>("read", kProcessesDomain + 1, topic, 2);
    ASSERT_TRUE(peer.started());
    TypedParticipant<QTV_VX_LogMessage> here(kProcessesDomain + 1, topic);
    DDS_DataWriterQos qos = historyQos(DDS_DataWriterQos(DDS_DataWriterQos_INITIALIZER), 16);
    qos.batch.enable = DDS_BOOLEAN_TRUE;
    LogCapture log;
    DDS_DataWriter *batched = DDS_Publisher_create_datawriter(here.publisher(), here.topic(), &qos, nullptr, 0);
    DDS_DataWriter *unbatched = here.untypedWriter();
    ASSERT_NE(batched, nullptr);
    ASSERT_NE(unbatched, nullptr);
    EXPECT_TRUE(log.contains("write batching is process-wide in Cyclone DDS")) << log.text();
    ASSERT_TRUE(
        eventuallyWithin(20s, [&] { return hasMatchedReaders(batched, 1) && hasMatchedReaders(unbatched, 1); }));
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
