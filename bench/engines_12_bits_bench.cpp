// 12-bit JPEG through CxImageProcessor, beside the IJG library built for 12 bits.
#include "bench/engine_pictures.h"

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace quorvex::bench {
namespace {

extern "C" {
#include <gdcm-3.0/gdcmjpeg/12/jpeglib.h>
}

#include "bench/ijg_direct.inc"

constexpr Picture kRadiograph{.columns = 1760, .rows = 2140, .precision = 12};

void ExtendedEncodeDirectly(benchmark::State& state) {
    EncodeDirectly(state, kRadiograph,
                   [](jpeg_compress_struct& codec) { jpeg_set_quality(&codec, 50, FALSE); });
}

BENCHMARK_CAPTURE(DecodeOurs, , kRadiograph, kXferJpegExtended, 1, kJpegExtended)
    ->Name("ExtendedDecodeOurs");
BENCHMARK_CAPTURE(DecodeDirectly, , kRadiograph, kXferJpegExtended, 1)
    ->Name("ExtendedDecodeDirectly");
BENCHMARK_CAPTURE(EncodeOurs, , kRadiograph, kXferJpegExtended, 1)->Name("ExtendedEncodeOurs");
BENCHMARK(ExtendedEncodeDirectly);

}  // namespace
}  // namespace quorvex::bench
