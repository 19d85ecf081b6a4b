// Reader states and sample infos between OMG and Cyclone values.
#include "platform/dds/sample_states.hpp"

namespace vexar::dds {
namespace {

// One state: its OMG bit and Cyclone's.
struct StateBit {
    DDS_UnsignedLong omg;
    std::uint32_t cyclone;
};

constexpr StateBit kSampleStates[] = {{DDS_READ_SAMPLE_STATE, DDS_SST_READ},
                                      {DDS_NOT_READ_SAMPLE_STATE, DDS_SST_NOT_READ}};
constexpr StateBit kViewStates[] = {{DDS_NEW_VIEW_STATE, DDS_VST_NEW}, {DDS_NOT_NEW_VIEW_STATE, DDS_VST_OLD}};
constexpr StateBit kInstanceStates[] = {{DDS_ALIVE_INSTANCE_STATE, DDS_IST_ALIVE},
                                        {DDS_NOT_ALIVE_DISPOSED_INSTANCE_STATE, DDS_IST_NOT_ALIVE_DISPOSED},
                                        {DDS_NOT_ALIVE_NO_WRITERS_INSTANCE_STATE, DDS_IST_NOT_ALIVE_NO_WRITERS}};

template <std::size_t N>
std::uint32_t toCyclone(DDS_UnsignedLong mask, const StateBit (&bits)[N]) noexcept {
    std::uint32_t cyclone = 0;
    for (const StateBit &bit : bits) {
        if ((mask & bit.omg) != 0) cyclone |= bit.cyclone;
    }
    return cyclone;
}

template <std::size_t N>
DDS_UnsignedLong toOmg(std::uint32_t state, const StateBit (&bits)[N]) noexcept {
    for (const StateBit &bit : bits) {
        if (state == bit.cyclone) return bit.omg;
    }
    return 0;
}

}  // namespace

std::optional<std::uint32_t> toCycloneStates(DDS_SampleStateMask sampleStates, DDS_ViewStateMask viewStates,
                                             DDS_InstanceStateMask instanceStates) noexcept {
    std::uint32_t sample = toCyclone(sampleStates, kSampleStates);
    std::uint32_t view = toCyclone(viewStates, kViewStates);
    std::uint32_t instance = toCyclone(instanceStates, kInstanceStates);
    if (sample == 0 || view == 0 || instance == 0) return std::nullopt;
    return sample | view | instance;
}

DDS_SampleInfo fromCyclone(const dds_sample_info_t &info) noexcept {
    DDS_SampleInfo converted{};
    converted.sample_state = toOmg(info.sample_state, kSampleStates);
    converted.view_state = toOmg(info.view_state, kViewStates);
    converted.instance_state = toOmg(info.instance_state, kInstanceStates);
    converted.source_timestamp = fromCycloneTime(info.source_timestamp);
    converted.instance_handle = info.instance_handle;
    converted.publication_handle = info.publication_handle;
    converted.disposed_generation_count = static_cast<DDS_Long>(info.disposed_generation_count);
    converted.no_writers_generation_count = static_cast<DDS_Long>(info.no_writers_generation_count);
    converted.sample_rank = static_cast<DDS_Long>(info.sample_rank);
    converted.generation_rank = static_cast<DDS_Long>(info.generation_rank);
    converted.absolute_generation_rank = static_cast<DDS_Long>(info.absolute_generation_rank);
    converted.valid_data = info.valid_data ? DDS_BOOLEAN_TRUE : DDS_BOOLEAN_FALSE;
    return converted;
}

}  // namespace vexar::dds
