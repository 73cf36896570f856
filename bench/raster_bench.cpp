#include "foundation/raster/raster.h"
#include "foundation/raster/scaling/view_scaler.h"

#include <benchmark/benchmark.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <random>
#include <vector>

namespace quorvex {
namespace {

constexpr CSize kPlate{3520, 4280};
constexpr CSize kView{1200, 1460};
constexpr CSize kSlice{512, 512};
constexpr CSize kZoomed{1640, 1640};

cv::Mat Noise(CSize size, int channels) {
    cv::setNumThreads(1);
    cv::Mat image(size.cy, size.cx, CV_8UC(channels));
    cv::randu(image, 0, 256);
    return image;
}

std::ptrdiff_t Step(const cv::Mat& image) {
    return static_cast<std::ptrdiff_t>(image.step[0]);
}

void Count(benchmark::State& state, CSize size) {
    state.SetItemsProcessed(state.iterations() * size.cx * size.cy);
}

void ResizeOurs(benchmark::State& state, CSize from, CSize to, int channels) {
    const cv::Mat source = Noise(from, channels);
    cv::Mat result(to.cy, to.cx, CV_8UC(channels));
    const auto operation = channels == 3 ? ippiResize_8u_C3R : ippiResize_8u_C1R;
    for (auto _ : state) {
        operation(source.data, from, Step(source), {0, 0, from.cx, from.cy}, result.data,
                  Step(result), to, double(to.cx) / from.cx, double(to.cy) / from.cy,
                  kLinearInterpolation);
        benchmark::ClobberMemory();
    }
    Count(state, to);
}

void ResizePeer(benchmark::State& state, CSize from, CSize to, int channels) {
    const cv::Mat source = Noise(from, channels);
    cv::Mat result(to.cy, to.cx, CV_8UC(channels));
    for (auto _ : state) {
        cv::resize(source, result, result.size(), 0, 0, cv::INTER_LINEAR);
        benchmark::ClobberMemory();
    }
    Count(state, to);
}

void AreaOurs(benchmark::State& state, CSize from, CSize to, int channels) {
    const cv::Mat source = Noise(from, channels);
    cv::Mat result(to.cy, to.cx, CV_8UC(channels));
    for (auto _ : state) {
        ViewScaler scaler({from, to, {0, 0, to.cx, to.cy}, channels, Interpolation::kLinear});
        scaler.Run([&](int y, int) { return source.ptr(y); },
                   {result.data, Step(result), to, channels});
        benchmark::ClobberMemory();
    }
    Count(state, from);
}

void AreaPeer(benchmark::State& state, CSize from, CSize to, int channels) {
    const cv::Mat source = Noise(from, channels);
    cv::Mat result(to.cy, to.cx, CV_8UC(channels));
    for (auto _ : state) {
        cv::resize(source, result, result.size(), 0, 0, cv::INTER_AREA);
        benchmark::ClobberMemory();
    }
    Count(state, from);
}

void MirrorOurs(benchmark::State& state, CSize size, int channels) {
    cv::Mat image = Noise(size, channels);
    const auto operation = channels == 3 ? ippiMirror_8u_C3IR : ippiMirror_8u_C1IR;
    for (auto _ : state) {
        operation(image.data, Step(image), size, kVerticalAxis);
        benchmark::ClobberMemory();
    }
    Count(state, size);
}

void MirrorPeer(benchmark::State& state, CSize size, int channels) {
    cv::Mat image = Noise(size, channels);
    for (auto _ : state) {
        cv::flip(image, image, 1);
        benchmark::ClobberMemory();
    }
    Count(state, size);
}

void TurnOurs(benchmark::State& state, CSize size, int channels, int angle) {
    const cv::Mat image = Noise(size, channels);
    const CSize turned = angle == 180 ? size : CSize{size.cy, size.cx};
    cv::Mat result(turned.cy, turned.cx, CV_8UC(channels));
    const auto operation = channels == 3 ? ippiRotate_8u_C3R : ippiRotate_8u_C1R;
    for (auto _ : state) {
        operation(image.data, size, Step(image), {0, 0, size.cx, size.cy}, result.data,
                  Step(result), {0, 0, turned.cx, turned.cy}, angle, angle == 90 ? 0 : turned.cx,
                  angle == 270 ? 0 : turned.cy, kLinearInterpolation);
        benchmark::ClobberMemory();
    }
    Count(state, size);
}

void TurnPeer(benchmark::State& state, CSize size, int channels, int angle) {
    const cv::Mat image = Noise(size, channels);
    const int code = angle == 90    ? cv::ROTATE_90_COUNTERCLOCKWISE
                     : angle == 180 ? cv::ROTATE_180
                                    : cv::ROTATE_90_CLOCKWISE;
    cv::Mat result;
    for (auto _ : state) {
        cv::rotate(image, result, code);
        benchmark::ClobberMemory();
    }
    Count(state, size);
}

// Ours and its peer side by side.
#define QUORVEX_BENCH_PAIR(job, name, ...)           \
    BENCHMARK_CAPTURE(job##Ours, name, __VA_ARGS__); \
    BENCHMARK_CAPTURE(job##Peer, name, __VA_ARGS__)

QUORVEX_BENCH_PAIR(Resize, PlateToView1, kPlate, kView, 1);
QUORVEX_BENCH_PAIR(Resize, PlateToView3, kPlate, kView, 3);
QUORVEX_BENCH_PAIR(Resize, PlateToThumbnail1, kPlate, (CSize{128, 156}), 1);
QUORVEX_BENCH_PAIR(Resize, SliceZoomed1, kSlice, kZoomed, 1);
QUORVEX_BENCH_PAIR(Resize, SliceZoomed3, kSlice, kZoomed, 3);
QUORVEX_BENCH_PAIR(Resize, SliceSmaller1, kSlice, (CSize{400, 400}), 1);
QUORVEX_BENCH_PAIR(Resize, SliceSmaller3, kSlice, (CSize{400, 400}), 3);
QUORVEX_BENCH_PAIR(Resize, SliceHalved1, kSlice, (CSize{256, 256}), 1);
QUORVEX_BENCH_PAIR(Resize, SliceHalved3, kSlice, (CSize{256, 256}), 3);
QUORVEX_BENCH_PAIR(Area, PlateToView1, kPlate, kView, 1);
QUORVEX_BENCH_PAIR(Area, PlateToView3, kPlate, kView, 3);
QUORVEX_BENCH_PAIR(Area, PlateToThumbnail1, kPlate, (CSize{128, 156}), 1);
QUORVEX_BENCH_PAIR(Area, PlateToQuarter1, kPlate, (CSize{880, 1070}), 1);
QUORVEX_BENCH_PAIR(Area, SliceSmaller1, kSlice, (CSize{400, 400}), 1);
QUORVEX_BENCH_PAIR(Area, SliceSmaller3, kSlice, (CSize{400, 400}), 3);
QUORVEX_BENCH_PAIR(Area, SliceHalved1, kSlice, (CSize{256, 256}), 1);
QUORVEX_BENCH_PAIR(Area, SliceHalved3, kSlice, (CSize{256, 256}), 3);
QUORVEX_BENCH_PAIR(Mirror, View1, kView, 1);
QUORVEX_BENCH_PAIR(Mirror, View3, kView, 3);
QUORVEX_BENCH_PAIR(Turn, ViewLeft1, kView, 1, 90);
QUORVEX_BENCH_PAIR(Turn, ViewRight1, kView, 1, 270);
QUORVEX_BENCH_PAIR(Turn, ViewHalf1, kView, 1, 180);
QUORVEX_BENCH_PAIR(Turn, ViewLeft3, kView, 3, 90);
QUORVEX_BENCH_PAIR(Turn, ViewRight3, kView, 3, 270);
QUORVEX_BENCH_PAIR(Turn, ViewHalf3, kView, 3, 180);

}  // namespace
}  // namespace quorvex
