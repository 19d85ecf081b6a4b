// The loopback Cyclone configuration that every DDS test relies on works.
#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/cyclone.hpp"
#include "support/domains.h"

TEST(CycloneSmoke, ParticipantOnLoopbackConfigurationIsCreatedAndDeleted) {
    ASSERT_NE(std::getenv("CYCLONEDDS_URI"), nullptr) << "run under ctest or source scripts/env.sh";
    const dds_entity_t participant = dds_create_participant(vexar_test::domains::kPlatformSmoke, nullptr, nullptr);
    ASSERT_GT(participant, 0) << dds_strretcode(participant);
    EXPECT_EQ(dds_delete(participant), 0);
}
