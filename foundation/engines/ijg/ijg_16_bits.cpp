// Lossless streams of up to 16 bits: the IJG library built for 16 bits.
#include "foundation/engines/ijg/ijg_parts.h"

namespace quorvex {
namespace ijg16 {

extern "C" {
#include <gdcm-3.0/gdcmjpeg/16/jerror.h>
#include <gdcm-3.0/gdcmjpeg/16/jpeglib.h>
}

namespace {

// Each body builds on the ones ahead of it.
// clang-format off
#include "foundation/engines/ijg/ijg_trouble.inc"
#include "foundation/engines/ijg/ijg_lossless.inc"
#include "foundation/engines/ijg/ijg_coder.inc"
#include "foundation/engines/ijg/ijg_decoder.inc"
// clang-format on

}  // namespace
}  // namespace ijg16

std::unique_ptr<JpegLineDecoder> Make16BitLosslessDecoder(JpegInput& input) {
    return std::make_unique<ijg16::Decoder>(input);
}

std::unique_ptr<JpegLineCoder> Make16BitLosslessCoder(const JpegCodingBlock& coding) {
    return std::make_unique<ijg16::Coder>(coding);
}

}  // namespace quorvex
