// 12-bit lossy streams: the IJG library built for 12 bits.
#include "foundation/engines/ijg/ijg_parts.h"

namespace quorvex {
namespace ijg12 {

extern "C" {
#include <gdcm-3.0/gdcmjpeg/12/jerror.h>
#include <gdcm-3.0/gdcmjpeg/12/jpeglib.h>
}

namespace {

#include "foundation/engines/ijg/ijg_trouble.inc"

void SetProcess(jpeg_compress_struct& codec, const JpegCodingBlock& coding);
void SetPrecision(jpeg_compress_struct&, const JpegCodingBlock&) {}

#include "foundation/engines/ijg/ijg_coder.inc"
#include "foundation/engines/ijg/ijg_decoder.inc"

void SetProcess(jpeg_compress_struct& codec, const JpegCodingBlock& coding) {
    SetLossy(codec, coding, false);
}

}  // namespace
}  // namespace ijg12

std::unique_ptr<JpegLineDecoder> Make12BitDecoder(JpegInput& input) {
    return std::make_unique<ijg12::Decoder>(input);
}

std::unique_ptr<JpegLineCoder> Make12BitCoder(const JpegCodingBlock& coding) {
    return std::make_unique<ijg12::Coder>(coding);
}

}  // namespace quorvex
