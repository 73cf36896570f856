// The display table of 65,536 entries: rebuilt, copied, and as a division for each entry makes it.
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXWindowing.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <vector>

namespace quorvex {
namespace {

constexpr int kEntries = 65536;

void Prepare(CXWindowing& windowing) {
    CXGSPSInfo info;
    info.pixelBitDepth = 16;
    windowing.PrepareGSPSProcessing2(&info, 0, kEntries - 1);
}

void RebuildTable(benchmark::State& state) {
    CXWindowing windowing;
    Prepare(windowing);
    int window[2] = {static_cast<int>(state.range(0)), kEntries / 2};
    for (auto _ : state)
        benchmark::DoNotOptimize(windowing.SetValue(CXWindowing::kWindow, window, nullptr));
}
BENCHMARK(RebuildTable)->Arg(400)->Arg(4096)->Arg(kEntries);

void CopyTable(benchmark::State& state) {
    CXWindowing windowing;
    Prepare(windowing);
    std::vector<std::uint8_t> table(kEntries);
    for (auto _ : state) {
        windowing.GetValue(CXWindowing::kDisplayTable, table.data(), nullptr);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(CopyTable);

void DivideForEachEntry(benchmark::State& state) {
    std::vector<std::uint8_t> table(kEntries);
    const auto width = static_cast<double>(state.range(0));
    for (auto _ : state) {
        for (int x = 0; x < kEntries; ++x) {
            table[static_cast<std::size_t>(x)] = static_cast<std::uint8_t>(255.0 * x / width);
        }
        benchmark::ClobberMemory();
    }
}
BENCHMARK(DivideForEachEntry)->Arg(kEntries);

}  // namespace
}  // namespace quorvex
