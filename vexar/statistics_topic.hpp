// The logger's message counts for remote tools: the process's statistics
// (vexar/Statistics.h) published as one QTV_VX_ADMIN_Statistics instance,
// keyed by the logger's application, by a writer on the logger's publisher.
// The write thread publishes them, so that logging calls pay nothing: at
// most once a second, and only when a count changed. Finalization publishes
// the final counts once the write thread has stopped.
#pragma once

#include "vexar/Vexar.h"

namespace vexar {

// Creates the writer, and the topic unless the participant has it, once the
// logger's entities exist. A failure is reported as a warning: the logger
// then runs without publishing its counts.
void startPublishingStatistics(QTV_VX_Vexar &logger) noexcept;

// For the write thread: publishes the counts when a second has passed since
// it last looked and a count differs from the last sample. Cheap otherwise:
// a lock and a clock read.
void publishStatisticsWhenDue() noexcept;

// Once the write thread has stopped and its queue is gone, so that the
// counts are final: publishes them if they changed, then deletes the writer
// and the topic made here. Does nothing when publishing never started.
void stopPublishingStatistics() noexcept;

}  // namespace vexar
