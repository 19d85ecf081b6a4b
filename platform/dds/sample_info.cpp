// The sequence of sample infos.
#include "platform/dds/sample_info.h"

#include "platform/types/sequence.hpp"

OBLX_SEQUENCE_DEFINE(DDS_SampleInfoSeq, DDS_SampleInfo, vexar::types::PlainElementTraits<DDS_SampleInfo>);
