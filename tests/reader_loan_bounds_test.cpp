// Loans stay bounded: under a long burst an unlimited take or read returns
// at most the ceiling, later takes still deliver every sample once, and the
// loan that grew for the burst shrinks once takes need little again.
#include "platform/dds/entity.hpp"  // first (see there): the reader's loan records

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "support/dds_bridge.hpp"
#include "support/domains.h"

namespace {

using namespace vexar_test;

constexpr int kDomain = domains::kBridgeBase + 35;
constexpr DDS_Long kCeiling = OBLX_DATAREADER_MAX_LOANED_SAMPLES;

// The room of the reader's largest loan record, out or idle.
std::uint32_t largestLoan(DDS_DataReader *reader) {
    std::lock_guard lock(reader->loanMutex);
    std::uint32_t largest = 0;
    for (const auto &loan : reader->loans) largest = std::max(largest, loan->capacity());
    for (const auto &loan : reader->idleLoans) largest = std::max(largest, loan->capacity());
    return largest;
}

TEST(DdsLoanBounds, BurstStaysUnderTheCeilingEverySampleArrivesAndTheLoanShrinks) {
    BridgeParticipant participant(kDomain);
    DDS_Topic *topic = participant.logTopic();
    DDS_DataWriter *writer = participant.writer(topic);
    DDS_DataReader *reader = participant.reader(DDS_Topic_as_topicdescription(topic));
    ASSERT_NE(reader, nullptr);
    int written = 0;
    auto writeSome = [&](int count) {
        for (int i = 0; i < count; ++i) {
            Sample<QTV_VX_LogMessage> sample(written++);
            ASSERT_EQ(DDS_DataWriter_write_untypedI(writer, sample.get(), DDS_HANDLE_NIL), DDS_RETCODE_OK);
        }
    };
    std::set<int> seen;
    std::uint32_t largest = 0;
    DDS_Long taken = 0;  // by the last take
    ReceivedLogMessages received;
    auto takeOnce = [&](DDS_Long maxSamples) {
        DDS_ReturnCode_t result = received.take(reader, maxSamples);
        taken = received.length();
        if (result != DDS_RETCODE_OK) return result;
        for (DDS_Long i = 0; i < received.length(); ++i) {
            EXPECT_TRUE(seen.insert(markerOf(received.at(i))).second) << "taken twice";
        }
        largest = std::max(largest, largestLoan(reader));
        EXPECT_EQ(received.returnLoan(reader), DDS_RETCODE_OK);
        return result;
    };

    // Cyclone delivers to a local reader inside the write, so each take
    // finds three ceilings' worth waiting, more arriving before the next.
    for (int round = 0; round < 4; ++round) {
        writeSome(3 * kCeiling);
        ASSERT_EQ(takeOnce(DDS_LENGTH_UNLIMITED), DDS_RETCODE_OK);
        EXPECT_EQ(taken, kCeiling);
    }
    ASSERT_EQ(received.readOrTake(reader, DDS_LENGTH_UNLIMITED, false), DDS_RETCODE_OK);
    EXPECT_EQ(received.length(), kCeiling) << "a read is bounded too";
    ASSERT_EQ(received.returnLoan(reader), DDS_RETCODE_OK);
    while (takeOnce(2 * kCeiling) == DDS_RETCODE_OK) EXPECT_LE(taken, kCeiling);
    EXPECT_EQ(seen.size(), static_cast<size_t>(written));
    EXPECT_EQ(largest, static_cast<std::uint32_t>(kCeiling));

    writeSome(1);
    ASSERT_EQ(takeOnce(DDS_LENGTH_UNLIMITED), DDS_RETCODE_OK);
    EXPECT_EQ(taken, 1);
    EXPECT_LE(largestLoan(reader), static_cast<std::uint32_t>(kCeiling / 8)) << "the burst's room was given back";
    EXPECT_EQ(seen.size(), static_cast<size_t>(written));
}

}  // namespace
