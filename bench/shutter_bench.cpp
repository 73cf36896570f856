// Shutter masks of a radiograph beside a new block of as many bytes, filled.
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXGSPSObject.h"
#include "quorvex/DicomObject.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <cstring>
#include <memory>
#include <numbers>
#include <random>

namespace quorvex {
namespace {

constexpr unsigned short kColumns = 3520;
constexpr unsigned short kRows = 4280;

CDcmObject Plate(const char* shape) {
    CDcmObject plate;
    plate.SetValue(0x00280010, kRows);
    plate.SetValue(0x00280011, kColumns);
    plate.SetValue(0x00181600, shape);
    return plate;
}

CDcmObject Circle() {
    CDcmObject plate = Plate("CIRCULAR");
    plate.SetValue(0x00181610, kRows / 2);
    plate.SetNextValue(0x00181610, kColumns / 2);
    plate.SetValue(0x00181612, 1600);
    return plate;
}

/// Vertices round the middle, each at a distance of its own.
CDcmObject Polygon(int vertices) {
    CDcmObject plate = Plate("POLYGONAL");
    std::mt19937 random(3);
    std::uniform_real_distribution<double> radius(1200, 1700);
    for (int i = 0; i < vertices; ++i) {
        const double angle = 2 * std::numbers::pi * i / vertices;
        const double r = radius(random);
        const auto row = static_cast<int>(kRows / 2.0 + r * std::sin(angle));
        const auto column = static_cast<int>(kColumns / 2.0 + r * std::cos(angle));
        i == 0 ? plate.SetValue(0x00181620, row) : plate.SetNextValue(0x00181620, row);
        plate.SetNextValue(0x00181620, column);
    }
    return plate;
}

/// Each side crosses every row.
CDcmObject Zigzag(int vertices) {
    CDcmObject plate = Plate("POLYGONAL");
    for (int i = 0; i < vertices; ++i) {
        const int row = i % 2 == 0 ? 0 : kRows;
        i == 0 ? plate.SetValue(0x00181620, row) : plate.SetNextValue(0x00181620, row);
        plate.SetNextValue(0x00181620, i * 7919 % kColumns);
    }
    return plate;
}

void Mask(benchmark::State& state, CDcmObject (*make)(int), int vertices) {
    CDcmObject plate = make(vertices);
    for (auto _ : state) {
        CXGSPSInfo info;
        CXGSPSObject reader;
        reader.GetGSPSModule(1, &plate, &info);
        if (info.shutterMask == nullptr) state.SkipWithError("no mask");
        benchmark::DoNotOptimize(info.shutterMask);
        delete[] info.shutterMask;
    }
}

void Fill(benchmark::State& state) {
    constexpr std::size_t kBytes = std::size_t{kRows} * kColumns;
    for (auto _ : state) {
        const std::unique_ptr<unsigned char[]> block(new unsigned char[kBytes]);
        std::memset(block.get(), 255, kBytes);
        benchmark::DoNotOptimize(block.get());
    }
}

CDcmObject CircleOf(int /*vertices*/) {
    return Circle();
}

BENCHMARK(Fill)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Mask, Circle, CircleOf, 0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Mask, Polygon200, Polygon, 200)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Mask, Polygon16000, Polygon, 16000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Mask, Zigzag200, Zigzag, 200)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Mask, Zigzag2000, Zigzag, 2000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Mask, Zigzag16000, Zigzag, 16000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quorvex
