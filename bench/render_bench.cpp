// A window change on a digital plate: a new table, then the picture for a view. The peer maps the
// whole plate through the same table and lets OpenCV resize it.
#include "quorvex/CXImageCreator.h"

#include <benchmark/benchmark.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <random>
#include <vector>

namespace quorvex {
namespace {

constexpr CSize kPlate{3520, 4280};
constexpr CSize kView{1200, 1460};

std::vector<std::uint16_t> PlatePixels(int bits) {
    std::vector<std::uint16_t> pixels(std::size_t{3520} * 4280);
    std::mt19937 engine(1);
    // A slow ramp with grain, as of a plate: neighbours lie near each other.
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const auto ramp = (i % 3520 + i / 3520) << (bits - 12) >> 1;
        pixels[i] = static_cast<std::uint16_t>((ramp + engine() % 64) & ((1U << bits) - 1));
    }
    return pixels;
}

std::vector<unsigned char> WindowTable(int bits, int level, int width) {
    std::vector<unsigned char> table(std::size_t{1} << bits);
    for (std::size_t i = 0; i < table.size(); ++i) {
        const double value = 255.0 * (static_cast<double>(i) - level + width / 2.0) / width;
        table[i] = static_cast<unsigned char>(std::clamp(value, 0.0, 255.0));
    }
    return table;
}

void WindowChangeOurs(benchmark::State& state, int bits, int rotation) {
    auto pixels = PlatePixels(bits);
    const CSize size = rotation == 90 ? CSize{kView.cy, kView.cx} : kView;
    std::vector<unsigned char> output(std::size_t{1200} * 1460);
    int level = 1000;
    for (auto _ : state) {
        auto table = WindowTable(bits, ++level, 2000);
        _IMAGE_INFO info;
        info.bytesPerPixel = 2;
        info.bitsStored = static_cast<unsigned short>(bits);
        info.imageWidth = kPlate.cx;
        info.imageHeight = kPlate.cy;
        info.pixels = reinterpret_cast<unsigned char*>(pixels.data());
        info.output = output.data();
        info.outputWidth = size.cx;
        info.outputHeight = size.cy;
        info.roi = {0, 0, kPlate.cx, kPlate.cy};
        info.rotation = rotation;
        info.lut = table.data();
        info.lutCount = static_cast<int>(table.size());
        benchmark::DoNotOptimize(CXImageCreator().GetImageWithInfo(info));
        benchmark::ClobberMemory();
    }
}

void WindowChangePeer(benchmark::State& state, int bits, int rotation) {
    cv::setNumThreads(1);
    const auto pixels = PlatePixels(bits);
    cv::Mat mapped(kPlate.cy, kPlate.cx, CV_8UC1);
    cv::Mat resized(kView.cy, kView.cx, CV_8UC1);
    cv::Mat turned;
    int level = 1000;
    for (auto _ : state) {
        const auto table = WindowTable(bits, ++level, 2000);
        for (std::size_t i = 0; i < pixels.size(); ++i) mapped.data[i] = table[pixels[i]];
        cv::resize(mapped, resized, resized.size(), 0, 0, cv::INTER_LINEAR);
        if (rotation == 90) cv::rotate(resized, turned, cv::ROTATE_90_COUNTERCLOCKWISE);
        benchmark::ClobberMemory();
    }
}

BENCHMARK_CAPTURE(WindowChangeOurs, Plate12, 12, 0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(WindowChangePeer, Plate12, 12, 0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(WindowChangeOurs, Plate16, 16, 0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(WindowChangePeer, Plate16, 16, 0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(WindowChangeOurs, Plate12Turned, 12, 90)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(WindowChangePeer, Plate12Turned, 12, 90)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quorvex
