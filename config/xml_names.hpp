// The names that the element's texts may use, shared by the converters that
// read them and the save that writes them back.
#pragma once

#include <array>

#include "platform/dds/thread_settings.h"

namespace vexar::xmlconfig {

struct LevelName {
    const char *name;
    DDS_Long level;
};

// Matched exactly: filter level names are case-sensitive.
inline constexpr std::array<LevelName, 9> kFilterLevelNames{{{"SILENT", 0},
                                                             {"FATAL", 100},
                                                             {"SEVERE", 200},
                                                             {"ERROR", 300},
                                                             {"WARNING", 400},
                                                             {"NOTICE", 500},
                                                             {"INFO", 600},
                                                             {"DEBUG", 700},
                                                             {"TRACE", 800}}};

// A value with its three accepted spellings, matched in any case; `saved`
// is the one that the save writes.
struct SpelledValue {
    DDS_Long value;
    const char *bare;
    const char *prefixed;
    const char *saved;
};

// In the order in which the save writes the bits.
inline constexpr std::array<SpelledValue, 5> kMaskKinds{{
    {DDS_THREAD_SETTINGS_KIND_MASK_DEFAULT, "MASK_DEFAULT", "DDS_THREAD_SETTINGS_KIND_MASK_DEFAULT",
     "THREAD_SETTINGS_KIND_MASK_DEFAULT"},
    {DDS_THREAD_SETTINGS_FLOATING_POINT, "FLOATING_POINT", "DDS_THREAD_SETTINGS_FLOATING_POINT",
     "THREAD_SETTINGS_FLOATING_POINT"},
    {DDS_THREAD_SETTINGS_STDIO, "STDIO", "DDS_THREAD_SETTINGS_STDIO", "THREAD_SETTINGS_STDIO"},
    {DDS_THREAD_SETTINGS_REALTIME_PRIORITY, "REALTIME_PRIORITY", "DDS_THREAD_SETTINGS_REALTIME_PRIORITY",
     "THREAD_SETTINGS_REALTIME_PRIORITY"},
    {DDS_THREAD_SETTINGS_PRIORITY_ENFORCE, "PRIORITY_ENFORCE", "DDS_THREAD_SETTINGS_PRIORITY_ENFORCE",
     "THREAD_SETTINGS_PRIORITY_ENFORCE"},
}};

inline constexpr std::array<SpelledValue, 2> kCpuRotations{{
    {DDS_THREAD_SETTINGS_CPU_NO_ROTATION, "CPU_NO_ROTATION", "DDS_THREAD_SETTINGS_CPU_NO_ROTATION",
     "THREAD_SETTINGS_CPU_NO_ROTATION"},
    {DDS_THREAD_SETTINGS_CPU_RR_ROTATION, "CPU_RR_ROTATION", "DDS_THREAD_SETTINGS_CPU_RR_ROTATION",
     "THREAD_SETTINGS_CPU_RR_ROTATION"},
}};

// The name that a priority of the platform's default is saved as.
inline constexpr const char *kDefaultPriorityName = "THREAD_PRIORITY_DEFAULT";

}  // namespace vexar::xmlconfig
