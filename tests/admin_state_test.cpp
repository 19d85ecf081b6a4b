// The administration State: nothing is written until a State reader is
// matched, then the sample with every change made so far; later changes are
// written again, later readers get the last sample from history.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "platform/logger.h"
#include "support/administrator.hpp"
#include "support/domains.h"
#include "vexar/Vexar.h"

namespace {

using vexar_test::Administrator;
using vexar_test::AdministeredLogger;
using vexar_test::StateSeen;

constexpr int kFirstWriteDomain = vexar_test::domains::kLoggerBase + 17;
constexpr int kHistoryDomain = vexar_test::domains::kLoggerBase + 18;
constexpr int kFinalizationDomain = vexar_test::domains::kLoggerBase + 19;

bool sameTime(const DDS_Time_t &a, const DDS_Time_t &b) { return a.sec == b.sec && a.nanosec == b.nanosec; }

TEST(AdminState, IsFirstWrittenWhenAReaderMatchesWithTheChangesMadeBefore) {
    AdministeredLogger logger(kFirstWriteDomain);
    ASSERT_NE(logger.logger(), nullptr);
    EXPECT_EQ(QTV_VX_DDSEntities_hasInitialStateBeenSent(logger.logger()->_ddsEntities), 0);
    EXPECT_EQ(QTV_VX_Vexar_setFilterLevel(logger.logger(), 300), 0);
    EXPECT_EQ(QTV_VX_Vexar_writeState(logger.logger()), 1) << "nothing to write to yet is a success";

    Administrator administrator(kFirstWriteDomain);
    auto states = administrator.stateReader();
    ASSERT_EQ(states.atLeast(1).size(), 1u);
    const StateSeen &first = states.now()[0];
    EXPECT_EQ(first.id.rtps_host_id, logger.id().rtps_host_id);
    EXPECT_EQ(first.id.rtps_app_id, logger.id().rtps_app_id);
    EXPECT_EQ(first.domainId, kFirstWriteDomain);
    EXPECT_EQ(first.kind, QTV_VX_STATE_OPERATIONAL);
    EXPECT_EQ(first.filterLevel, 300);
    OBLX_Config_Logger *middleware = OBLX_Config_Logger_get_instance();
    for (int category = 0; category < OBLX_CONFIG_LOG_CATEGORY_COUNT; ++category) {
        EXPECT_EQ(first.verbosities[category].category, category) << "one entry per category, in category order";
        EXPECT_EQ(first.verbosities[category].verbosity,
                  QTV_VX_translateFromQTVLoggerVerbosityToVXVerbosity(OBLX_Config_Logger_get_verbosity_by_category(
                      middleware, static_cast<OBLX_Config_LogCategory>(category))));
    }
    EXPECT_EQ(first.printFormat,
              QTV_VX_translateFromQTVLoggerPrintFormatToVXPrintFormat(OBLX_Config_Logger_get_print_format(middleware)));
    EXPECT_EQ(QTV_VX_DDSEntities_hasInitialStateBeenSent(logger.logger()->_ddsEntities), 1);

    EXPECT_EQ(QTV_VX_Vexar_setFilterLevel(logger.logger(), 200), 0);
    ASSERT_EQ(states.atLeast(2).size(), 2u);
    EXPECT_EQ(states.now()[1].filterLevel, 200);
}

TEST(AdminState, LaterReadersGetTheLastStateFromHistoryWithoutANewWrite) {
    AdministeredLogger logger(kHistoryDomain);
    ASSERT_NE(logger.logger(), nullptr);
    Administrator administrator(kHistoryDomain);
    auto early = administrator.stateReader();
    ASSERT_EQ(early.atLeast(1).size(), 1u);
    EXPECT_EQ(QTV_VX_Vexar_setFilterLevel(logger.logger(), 250), 0);
    ASSERT_EQ(early.atLeast(2).size(), 2u);
    const DDS_Time_t lastWrite = early.now()[1].written;

    auto late = administrator.stateReader();
    ASSERT_EQ(late.atLeast(1).size(), 1u);
    EXPECT_EQ(late.now()[0].filterLevel, 250);
    EXPECT_TRUE(sameTime(late.now()[0].written, lastWrite)) << "the sample kept by the writer, not a new one";
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_EQ(early.now().size(), 2u);
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
            return !states.now().empty() && states.now().back().kind == QTV_VX_STATE_OPERATIONAL;
        }));
        EXPECT_EQ(states.now().back().domainId, kFinalizationDomain);
    }
    ASSERT_TRUE(vexar_test::eventuallyWithin(std::chrono::seconds(5), [&] {
        return states.now().back().kind == QTV_VX_STATE_NONOPERATIONAL;
    }));
    QTV_VX_ADMIN_StateKind previous = QTV_VX_STATE_INITIALIZING;
    for (const StateSeen &state : states.now()) {
        EXPECT_GE(state.kind, previous) << "states only move forward";
        EXPECT_NE(state.kind, QTV_VX_STATE_SHUTTING_DOWN);
        EXPECT_EQ(state.id.rtps_host_id, id.rtps_host_id);
        EXPECT_EQ(state.id.rtps_app_id, id.rtps_app_id);
        previous = state.kind;
    }
}

}  // namespace
