// A QoS record that frees what it owns when it goes, whatever happened: the
// logger fills one per entity it creates.
#pragma once

#include "platform/dds/qos.h"

namespace vexar {

template <typename Qos, DDS_ReturnCode_t (*finalize)(Qos *)>
struct ScopedQos {
    Qos value;
    ~ScopedQos() { finalize(&value); }
};

}  // namespace vexar
