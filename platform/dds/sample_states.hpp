// The reader's sample, view and instance states between their OMG bit
// values (platform/dds/entity.h) and Cyclone's, and sample infos from Cyclone's.
#pragma once

#include "platform/dds/entity.hpp"

namespace vexar::dds {

// Cyclone's state mask for the three OMG masks; empty when one of them
// selects no state at all (Cyclone would read a zero group as "any").
std::optional<std::uint32_t> toCycloneStates(DDS_SampleStateMask sampleStates, DDS_ViewStateMask viewStates,
                                             DDS_InstanceStateMask instanceStates) noexcept;

DDS_SampleInfo fromCyclone(const dds_sample_info_t &info) noexcept;

}  // namespace vexar::dds
