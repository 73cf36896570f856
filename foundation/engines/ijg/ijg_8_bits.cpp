// Lossless streams of up to 8 bits: the IJG library built for 8 bits.
#include "foundation/engines/ijg/ijg_parts.h"

namespace quorvex {
namespace ijg8 {

extern "C" {
#include <gdcm-3.0/gdcmjpeg/8/jerror.h>
#include <gdcm-3.0/gdcmjpeg/8/jpeglib.h>
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
}  // namespace ijg8

std::unique_ptr<JpegLineDecoder> Make8BitLosslessDecoder(JpegInput& input) {
    return std::make_unique<ijg8::Decoder>(input);
}

std::unique_ptr<JpegLineCoder> Make8BitLosslessCoder(const JpegCodingBlock& coding) {
    return std::make_unique<ijg8::Coder>(coding);
}

}  // namespace quorvex
