// The sequence of sample infos.
#include "platform/sample_info.h"

#include "platform/sequence.hpp"

OBLX_SEQUENCE_DEFINE(DDS_SampleInfoSeq, DDS_SampleInfo, vexar::platform::PlainElementTraits<DDS_SampleInfo>);
