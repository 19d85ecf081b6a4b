// The administration State: nothing is written until a State reader is
// matched, then the sample with every change made so far; later changes are
// written again, later readers get the last sample from history; finalizing
// ends at NONOPERATIONAL.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "support/administrator.hpp"
#include "support/domains.h"
#include "vexar/Vexar.h"

namespace {

using vexar_test::AdministeredLogger;
using vexar_test::Administrator;
using vexar_test::StateSeen;

constexpr int kFirstWriteDomain = vexar_test::domains::kLoggerBase + 17;
constexpr int kFinalizationDomain = vexar_test::domains::kLoggerBase + 19;

// A reader that joins later gets the last State from the writer's history
// (a depth of one), not a new write.
TEST(AdminState, IsFirstWrittenWhenAReaderMatchesThenRewrittenAndKeptForLateReaders) {
    AdministeredLogger logger(kFirstWriteDomain);
    ASSERT_NE(logger.logger(), nullptr);
    EXPECT_EQ(QTV_VX_DDSEntities_hasInitialStateBeenSent(logger.logger()->_ddsEntities), 0);
    EXPECT_EQ(QTV_VX_Vexar_setFilterLevel(logger.logger(), 300), 0);
    EXPECT_EQ(QTV_VX_Vexar_writeState(logger.logger()), 1) << "nothing to write to yet is a success";

    Administrator administrator(kFirstWriteDomain);
    auto states = administrator.stateReader();
    ASSERT_EQ(states.atLeast(1).size(), 1u);
    const StateSeen first = states.now()[0];
    EXPECT_EQ(first.hostAndAppId.rtps_host_id, logger.id().rtps_host_id);
    EXPECT_EQ(first.hostAndAppId.rtps_app_id, logger.id().rtps_app_id);
    EXPECT_EQ(first.administrationDomainId, kFirstWriteDomain);
    EXPECT_EQ(first.state, QTV_VX_STATE_OPERATIONAL);
    EXPECT_EQ(first.filterLevel, 300);
    // Its middleware logger settings, by category, are followed through the
    // remote commands that change them.

    EXPECT_EQ(QTV_VX_Vexar_setFilterLevel(logger.logger(), 200), 0);
    ASSERT_EQ(states.atLeast(2).size(), 2u);
    EXPECT_EQ(states.now()[1].filterLevel, 200);
    const DDS_Time_t lastWrite = states.now()[1].written;

    auto late = administrator.stateReader();
    ASSERT_EQ(late.atLeast(1).size(), 1u);
    EXPECT_EQ(late.now()[0].filterLevel, 200);
    EXPECT_EQ(late.now()[0].written.sec, lastWrite.sec);
    EXPECT_EQ(late.now()[0].written.nanosec, lastWrite.nanosec) << "the sample kept by the writer, not a new one";
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_EQ(states.now().size(), 2u);
    EXPECT_EQ(late.now().size(), 1u);
}

// A State reader that is there before the logger is matched while the
// logger is being created: it may see INITIALIZING first, never anything
// after NONOPERATIONAL, and every sample is the logger's one instance.
TEST(AdminState, AReaderFromBeforeCreationFollowsTheLoggerToNonOperational) {
    Administrator administrator(kFinalizationDomain);
    auto states = administrator.stateReader();
    QTV_VX_HostAndAppId id{};
    {
        AdministeredLogger logger(kFinalizationDomain);
        ASSERT_NE(logger.logger(), nullptr);
        id = logger.id();
        ASSERT_TRUE(vexar_test::eventuallyWithin(std::chrono::seconds(5), [&] {
            return !states.now().empty() && states.now().back().state == QTV_VX_STATE_OPERATIONAL;
        }));
    }
    ASSERT_TRUE(vexar_test::eventuallyWithin(std::chrono::seconds(5),
                                             [&] { return states.now().back().state == QTV_VX_STATE_NONOPERATIONAL; }));
    QTV_VX_ADMIN_StateKind previous = QTV_VX_STATE_INITIALIZING;
    for (const StateSeen &sample : states.now()) {
        EXPECT_GE(sample.state, previous) << "states only move forward";
        EXPECT_NE(sample.state, QTV_VX_STATE_SHUTTING_DOWN);
        EXPECT_EQ(sample.hostAndAppId.rtps_host_id, id.rtps_host_id);
        EXPECT_EQ(sample.hostAndAppId.rtps_app_id, id.rtps_app_id);
        previous = sample.state;
    }
}

}  // namespace
