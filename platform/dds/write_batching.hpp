// Cyclone's write batching, one switch for the whole process in Cyclone
// 0.10 (see platform/dds/qos.h for what it means to applications).
#pragma once

#include "platform/dds/cyclone.hpp"

namespace vexar::dds {

// Turns batching on for every domain of the process that exists now (a
// domain created later starts from its configuration, so each batched
// writer calls this again). Says once, through the middleware logger, that
// the switch is process-wide.
void enableWriteBatching(const char *context) noexcept;

// Sends at once what an unbatched writer just wrote, when batching is on
// and Cyclone may have kept it back.
void flushUnbatched(dds_entity_t writer, bool batched) noexcept;

}  // namespace vexar::dds
