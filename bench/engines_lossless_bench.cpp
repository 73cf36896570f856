// Lossless 16-bit JPEG through CxImageProcessor, beside the IJG library built for 16 bits.
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "bench/engine_pictures.h"

namespace quorvex::bench {
namespace {

extern "C" {
#include <gdcm-3.0/gdcmjpeg/16/jpeglib.h>
}

#include "bench/ijg_direct.inc"

constexpr Picture kSlice{.columns = 512, .rows = 512, .precision = 16};

void LosslessDecodeOurs(benchmark::State& state) {
    DecodeOurs(state, kSlice, kXferJpegLossless, 1, kJpegLosslessFirstOrder);
}
void LosslessDecodeDirectly(benchmark::State& state) {
    DecodeDirectly(state, kSlice, kXferJpegLossless, 1);
}
void LosslessEncodeOurs(benchmark::State& state) {
    EncodeOurs(state, kSlice, kXferJpegLossless, 1);
}
void LosslessEncodeDirectly(benchmark::State& state) {
    const Bytes pixels = Pixels(kSlice);
    for (auto _ : state) {
        const Bytes stream = DirectEncode(
            pixels, kSlice.columns, kSlice.rows, 1,
            [](jpeg_compress_struct& codec) { jpeg_simple_lossless(&codec, 1, 0); },
            [](jpeg_compress_struct&) {});
        benchmark::DoNotOptimize(stream.data());
    }
    CountBytes(state, kSlice);
}

BENCHMARK(LosslessDecodeOurs);
BENCHMARK(LosslessDecodeDirectly);
BENCHMARK(LosslessEncodeOurs);
BENCHMARK(LosslessEncodeDirectly);

}  // namespace
}  // namespace quorvex::bench
