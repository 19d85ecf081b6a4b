// Arbitrary bytes into the QTV_VX_LogMessage decoder.
#include "decode_fuzz.hpp"

VEXAR_DECODER_FUZZ_TARGET(QTV_VX_LogMessage)
