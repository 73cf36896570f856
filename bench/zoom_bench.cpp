// A window change on a radiograph that is seen enlarged, and into a host's memory. The view stays
// as large as it is: what a render costs goes with the view, and not with the image or its zoom.
#include "bench/picture_file.h"
#include "quorvex/CXDIPP.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <vector>

namespace {

using quorvex::CSize;
using quorvex::CXDIPP;
using quorvex::Interpolation;
using quorvex::PixelFormat;

constexpr CSize kImage{3520, 4280};
constexpr CSize kView{1200, 1460};

void ShowZoomed(CXDIPP& dipp, quorvex::CDcmApp& app, double zoom) {
    dipp.SetRules(quorvex::Rules::kStandard);
    dipp.Initialize(&app, quorvex::CString(quorvex::bench::WritePicture(kImage.cx, kImage.cy)),
                    kView, 0);
    dipp.UpdateZoom_ABS(zoom);
}

int NextLevel(int level) {
    return level % 500 + 301;
}

void ChangeWindowZoomed(benchmark::State& state, double zoom, Interpolation enlarging) {
    quorvex::CDcmApp app;
    CXDIPP dipp;
    ShowZoomed(dipp, app, zoom);
    dipp.SetInterpolation(enlarging);
    int level = 0;
    for (auto _ : state) {
        dipp.UpdateVOILUT_ABS(level = NextLevel(level), 2000);
        if (dipp.Render() != quorvex::QVM_SUCCESS) state.SkipWithError("not shown");
    }
}

void PanZoomed(benchmark::State& state, double zoom) {
    quorvex::CDcmApp app;
    CXDIPP dipp;
    ShowZoomed(dipp, app, zoom);
    int step = 0;
    for (auto _ : state) {
        step = (step + 37) % 400;
        dipp.UpdatePan_ABS({step - 200, 200 - step});
        if (dipp.Render() != quorvex::QVM_SUCCESS) state.SkipWithError("not shown");
    }
}

void ChangeWindowIntoHost(benchmark::State& state, PixelFormat format, int pixelBytes) {
    quorvex::CDcmApp app;
    CXDIPP dipp;
    ShowZoomed(dipp, app, 1.0);
    std::vector<unsigned char> pixels(std::size_t{1200} * 1460 *
                                      static_cast<std::size_t>(pixelBytes));
    const quorvex::PixelTarget target{pixels.data(), kView, std::ptrdiff_t{kView.cx} * pixelBytes,
                                      format};
    int level = 0;
    for (auto _ : state) {
        dipp.UpdateVOILUT_ABS(level = NextLevel(level), 2000);
        if (dipp.RenderInto(target) != quorvex::QVM_SUCCESS) state.SkipWithError("not shown");
    }
}

#define QUORVEX_BENCH_JOB(...) BENCHMARK_CAPTURE(__VA_ARGS__)->Unit(benchmark::kMicrosecond)

QUORVEX_BENCH_JOB(ChangeWindowZoomed, Once, 1.0, Interpolation::kLinear);
QUORVEX_BENCH_JOB(ChangeWindowZoomed, Twice, 2.0, Interpolation::kLinear);
QUORVEX_BENCH_JOB(ChangeWindowZoomed, EightTimes, 8.0, Interpolation::kLinear);
QUORVEX_BENCH_JOB(ChangeWindowZoomed, EightTimesNearest, 8.0, Interpolation::kNearest);
QUORVEX_BENCH_JOB(ChangeWindowZoomed, EightTimesCubic, 8.0, Interpolation::kCubic);
QUORVEX_BENCH_JOB(PanZoomed, Once, 1.0);
QUORVEX_BENCH_JOB(PanZoomed, EightTimes, 8.0);
QUORVEX_BENCH_JOB(ChangeWindowIntoHost, Grey, PixelFormat::kGrey8, 1);
QUORVEX_BENCH_JOB(ChangeWindowIntoHost, Bgr, PixelFormat::kBgr24, 3);
QUORVEX_BENCH_JOB(ChangeWindowIntoHost, Bgra, PixelFormat::kBgra32, 4);

}  // namespace
