// 8-bit lossy streams: libjpeg-turbo.
#include "foundation/engines/ijg/ijg_parts.h"

namespace quorvex {
namespace ijg_turbo {

extern "C" {
#include <jconfig.h>  // ahead of the codes, which depend on what the library can do
#include <jerror.h>
#include <jpeglib.h>
}

namespace {

#include "foundation/engines/ijg/ijg_trouble.inc"

void SetProcess(jpeg_compress_struct& codec, const JpegCodingBlock& coding);
void SetPrecision(jpeg_compress_struct&, const JpegCodingBlock&) {}

#include "foundation/engines/ijg/ijg_coder.inc"
#include "foundation/engines/ijg/ijg_decoder.inc"

void SetProcess(jpeg_compress_struct& codec, const JpegCodingBlock& coding) {
    SetLossy(codec, coding, true);
}

}  // namespace
}  // namespace ijg_turbo

std::unique_ptr<JpegLineDecoder> MakeTurboDecoder(JpegInput& input) {
    return std::make_unique<ijg_turbo::Decoder>(input);
}

std::unique_ptr<JpegLineCoder> MakeTurboCoder(const JpegCodingBlock& coding) {
    return std::make_unique<ijg_turbo::Coder>(coding);
}

}  // namespace quorvex
