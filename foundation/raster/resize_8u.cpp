#include <algorithm>

#include "foundation/raster/resize_rows.h"

namespace quorvex {
namespace {

constexpr std::size_t kWindowBytes = 16;
constexpr std::size_t kWindowSamples = 4;
constexpr std::uint8_t kZeroByte = 0x80;

std::vector<SamplePair> MakePairs(const std::vector<ResizeTap>& taps, std::uint32_t channels) {
    std::vector<SamplePair> pairs;
    pairs.reserve(taps.size() * channels);
    for (const ResizeTap& tap : taps) {
        const auto left = static_cast<std::uint32_t>(tap.first) * channels;
        const auto right = static_cast<std::uint32_t>(tap.Second()) * channels;
        const auto weight = static_cast<std::uint16_t>(tap.weight);
        for (std::uint32_t channel = 0; channel < channels; ++channel) {
            pairs.push_back({left + channel, right + channel,
                             static_cast<std::uint16_t>(kWholeWeight - weight), weight});
        }
    }
    return pairs;
}

PairWindow MakeWindow(std::span<const SamplePair> pairs, std::uint32_t start) {
    PairWindow window{};
    std::ranges::fill(window.shuffle, kZeroByte);
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        window.shuffle[2 * i + 1] = static_cast<std::uint8_t>(pairs[i].left - start);
        window.shuffle[2 * i + 9] = static_cast<std::uint8_t>(pairs[i].right - start);
        window.weights[i] = pairs[i].leftWeight;
        window.weights[i + 4] = pairs[i].rightWeight;
    }
    return window;
}

/// Adds a window for four pairs; false where their bytes spread too far.
bool AddWindow(HorizontalPlan& plan, std::span<const SamplePair> pairs, std::size_t rowBytes) {
    std::size_t first = rowBytes - kWindowBytes;  // the window ends inside the row
    std::size_t last = 0;
    for (const SamplePair& pair : pairs) {
        first = std::min<std::size_t>(first, pair.left);
        last = std::max<std::size_t>(last, pair.right);
    }
    const auto start = static_cast<std::uint32_t>(first);
    if (last - start >= kWindowBytes) return false;
    plan.windows.push_back(MakeWindow(pairs, start));
    plan.windowStarts.push_back(start);
    return true;
}

void MakeWindows(HorizontalPlan& plan, std::size_t rowBytes) {
    if (rowBytes < kWindowBytes) return;
    const std::span<const SamplePair> pairs = plan.pairs;
    bool fits = true;
    for (std::size_t i = 0; fits && i < pairs.size(); i += kWindowSamples) {
        fits =
            AddWindow(plan, pairs.subspan(i, std::min(kWindowSamples, pairs.size() - i)), rowBytes);
    }
    if (!fits) {
        plan.windows.clear();
        plan.windowStarts.clear();
    } else if (plan.windows.size() % 2 != 0) {
        plan.windows.push_back({});
        plan.windowStarts.push_back(0);
    }
}

bool IsIdentity(const std::vector<ResizeTap>& taps) {
    std::int32_t i = 0;
    return std::ranges::all_of(
        taps, [&i](const ResizeTap& tap) { return tap.first == i++ && tap.weight == 0; });
}

}  // namespace

RowResizer::RowResizer(const ResizeShape& shape)
    : columns_(ResizeTaps(shape.source.cx, shape.destination.cx, shape.xFactor, kResizeWeightBits)),
      rows_(ResizeTaps(shape.source.cy, shape.destination.cy, shape.yFactor, kResizeWeightBits)) {
    if (!IsUsable()) return;
    isCopy_ = IsIdentity(columns_) && IsIdentity(rows_);
    if (isCopy_) return;
    const auto channels = static_cast<std::uint32_t>(shape.channels);
    plan_.pairs = MakePairs(columns_, channels);
    MakeWindows(plan_, static_cast<std::size_t>(shape.source.cx) * channels);
    upper_.samples.resize(PaddedRow(plan_.pairs.size()));
    lower_.samples.resize(PaddedRow(plan_.pairs.size()));
}

void RowResizer::Run(const RowSource& rowAt, const PixelGrid<unsigned char>& destination) {
    if (isCopy_) return CopyRows(rowAt, destination);
    upper_.y = lower_.y = -1;
    int y = 0;
    for (const ResizeTap& tap : rows_) {
        Cache(tap, rowAt);
        const auto& lower = tap.weight != 0 ? lower_ : upper_;
        ResizeVertically(upper_.samples, lower.samples, static_cast<std::uint16_t>(tap.weight),
                         destination.Row(y++));
    }
}

void RowResizer::CopyRows(const RowSource& rowAt,
                          const PixelGrid<unsigned char>& destination) const {
    for (int y = 0; y < destination.size.cy; ++y) {
        std::copy_n(rowAt(y), destination.RowSamples(), destination.Row(y).data());
    }
}

void RowResizer::Cache(const ResizeTap& tap, const RowSource& rowAt) {
    if (lower_.y == tap.first) std::swap(upper_, lower_);
    Fill(upper_, tap.first, rowAt);
    if (tap.weight != 0) Fill(lower_, tap.first + 1, rowAt);
}

void RowResizer::Fill(CachedRow& row, int y, const RowSource& rowAt) const {
    if (row.y == y) return;
    ResizeHorizontally(plan_, rowAt(y), row.samples);
    row.y = y;
}

}  // namespace quorvex
