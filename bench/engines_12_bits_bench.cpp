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

void ExtendedDecodeOurs(benchmark::State& state) {
    DecodeOurs(state, kRadiograph, kXferJpegExtended, 1, kJpegExtended);
}
void ExtendedDecodeDirectly(benchmark::State& state) {
    DecodeDirectly(state, kRadiograph, kXferJpegExtended, 1);
}
void ExtendedEncodeOurs(benchmark::State& state) {
    EncodeOurs(state, kRadiograph, kXferJpegExtended, 1);
}
void ExtendedEncodeDirectly(benchmark::State& state) {
    const Bytes pixels = Pixels(kRadiograph);
    for (auto _ : state) {
        const Bytes stream = DirectEncode(
            pixels, kRadiograph.columns, kRadiograph.rows, 1,
            [](jpeg_compress_struct& codec) { jpeg_set_quality(&codec, 50, FALSE); },
            [](jpeg_compress_struct&) {});
        benchmark::DoNotOptimize(stream.data());
    }
    CountBytes(state, kRadiograph);
}

BENCHMARK(ExtendedDecodeOurs);
BENCHMARK(ExtendedDecodeDirectly);
BENCHMARK(ExtendedEncodeOurs);
BENCHMARK(ExtendedEncodeDirectly);

}  // namespace
}  // namespace quorvex::bench
