#include "foundation/raster/scaling/resize_rows.h"

#include <algorithm>
#include <cstring>

namespace quorvex {
namespace {

constexpr std::size_t kWindowBytes = 16;
constexpr std::size_t kWindowSamples = 4;
constexpr std::uint8_t kZeroByte = 0x80;

/// The last pixel counts as the right one of the last pair, so that all pairs are neighbours.
void AddPairs(HorizontalPlan& plan, const std::pmr::vector<ResizeTap>& taps, int width,
              std::uint32_t channels) {
    const std::size_t samples = taps.size() * channels;
    plan.toRight = width > 1 ? channels : 0;
    plan.lefts.resize(samples);
    plan.leftWeights.assign(PaddedRow(samples), kWholeWeight);
    std::size_t i = 0;
    for (const ResizeTap& tap : taps) {
        const bool isLast = width > 1 && tap.first == width - 1;
        const auto left = static_cast<std::uint32_t>(isLast ? tap.first - 1 : tap.first);
        const auto weight = isLast ? 0U : kWholeWeight - tap.weight;
        for (std::uint32_t channel = 0; channel < channels; ++channel, ++i) {
            plan.lefts[i] = left * channels + channel;
            plan.leftWeights[i] = static_cast<std::uint16_t>(weight);
        }
    }
}

void FillWindow(WindowGroup& group, std::size_t place, const HorizontalPlan& plan,
                std::size_t first, std::size_t end) {
    std::uint8_t* const shuffle = group.shuffle[place];
    std::uint16_t* const weights = group.weights[place];
    const std::uint32_t start = group.starts[place];
    std::fill_n(shuffle, kWindowBytes, kZeroByte);
    for (std::size_t i = first, lane = 0; i < end; ++i, ++lane) {
        shuffle[2 * lane + 1] = static_cast<std::uint8_t>(plan.lefts[i] - start);
        shuffle[2 * lane + 9] = static_cast<std::uint8_t>(plan.lefts[i] + plan.toRight - start);
        weights[lane] = plan.leftWeights[i];
        weights[lane + 4] = static_cast<std::uint16_t>(kWholeWeight - plan.leftWeights[i]);
    }
}

/// Adds a window for the samples from `first`; false where their bytes spread too far.
bool AddWindow(HorizontalPlan& plan, std::size_t first, std::size_t rowBytes) {
    const std::size_t end = std::min(first + kWindowSamples, plan.lefts.size());
    std::size_t start = rowBytes - kWindowBytes;  // the window ends inside the row
    std::size_t last = 0;
    for (std::size_t i = first; i < end; ++i) {
        start = std::min<std::size_t>(start, plan.lefts[i]);
        last = std::max<std::size_t>(last, plan.lefts[i] + plan.toRight);
    }
    if (last - start >= kWindowBytes) return false;
    const std::size_t window = first / kWindowSamples % WindowGroup::kWindows;
    if (window == 0) plan.groups.push_back({});
    const std::size_t place = WindowGroup::Place(window);
    plan.groups.back().starts[place] = static_cast<std::uint32_t>(start);
    FillWindow(plan.groups.back(), place, plan, first, end);
    return true;
}

void AddWindows(HorizontalPlan& plan, std::size_t rowBytes) {
    if (rowBytes < kWindowBytes) return;
    constexpr std::size_t kGroupSamples = kWindowSamples * WindowGroup::kWindows;
    plan.groups.reserve((plan.lefts.size() + kGroupSamples - 1) / kGroupSamples);
    for (std::size_t i = 0; i < plan.lefts.size(); i += kWindowSamples) {
        if (!AddWindow(plan, i, rowBytes)) return plan.groups.clear();
    }
}

/// Whether pixel i is the mean of 2 i and 2 i + 1.
bool IsHalving(const std::pmr::vector<ResizeTap>& taps) {
    std::int32_t i = 0;
    return std::ranges::all_of(taps, [&i](const ResizeTap& tap) {
        return tap.first == 2 * i++ && tap.weight == kWholeWeight / 2;
    });
}

bool IsIdentity(const std::pmr::vector<ResizeTap>& taps) {
    std::int32_t i = taps.front().first;
    return std::ranges::all_of(
        taps, [&i](const ResizeTap& tap) { return tap.first == i++ && tap.weight == 0; });
}

}  // namespace

RowResizer::RowResizer(const ResizeShape& shape, std::pmr::memory_resource* memory)
    : columns_(ResizeTaps(shape.source.cx, shape.destination.cx, shape.xFactor, kResizeWeightBits,
                          memory)),
      rows_(ResizeTaps(shape.source.cy, shape.destination.cy, shape.yFactor, kResizeWeightBits,
                       memory)),
      plan_(memory),
      upper_(memory),
      lower_(memory) {
    if (IsUsable()) Plan(shape.source, shape.channels);
}

RowResizer::RowResizer(CSize source, CSize whole, const RasterRect& window, int channels,
                       std::pmr::memory_resource* memory)
    : columns_(
          ResizeTapsOfPart(source.cx, whole.cx, window.x, window.width, kResizeWeightBits, memory)),
      rows_(ResizeTapsOfPart(source.cy, whole.cy, window.y, window.height, kResizeWeightBits,
                             memory)),
      plan_(memory),
      upper_(memory),
      lower_(memory) {
    Plan(source, channels);
}

void RowResizer::Plan(CSize source, int channelCount) {
    isCopy_ = IsIdentity(columns_) && IsIdentity(rows_);
    isHalf_ = (channelCount == 1 || channelCount == 3) && IsHalving(columns_) && IsHalving(rows_);
    if (isCopy_ || isHalf_) return;
    const auto channels = static_cast<std::uint32_t>(channelCount);
    AddPairs(plan_, columns_, source.cx, channels);
    AddWindows(plan_, static_cast<std::size_t>(source.cx) * channels);
    upper_.samples.resize(PaddedRow(plan_.lefts.size()));
    lower_.samples.resize(PaddedRow(plan_.lefts.size()));
}

void RowResizer::Run(const RowSource& rowAt, const PixelGrid<unsigned char>& destination) {
    if (isCopy_) return CopyRows(rowAt, destination);
    if (isHalf_) return HalveAll(rowAt, destination);
    upper_.y = lower_.y = -1;
    for (std::size_t y = 0; y < rows_.size(); ++y) {
        const ResizeTap& tap = rows_[y];
        Cache(tap, rows_[std::min(y + 1, rows_.size() - 1)], rowAt);
        const auto& lower = tap.weight != 0 ? lower_ : upper_;
        ResizeVertically(upper_.samples, lower.samples, static_cast<std::uint16_t>(tap.weight),
                         destination.Row(static_cast<int>(y)));
    }
}

void RowResizer::CopyRows(const RowSource& rowAt,
                          const PixelGrid<unsigned char>& destination) const {
    const int top = rows_.front().first;
    const int last = destination.size.cy - 1;
    const auto skipped = std::ptrdiff_t{columns_.front().first} * destination.channels;
    for (int y = 0; y <= last; ++y) {
        const unsigned char* const row = rowAt(top + y, top + std::min(y + 2, last));
        std::memcpy(destination.Row(y).data(), row + skipped, destination.RowSamples());
    }
}

void RowResizer::HalveAll(const RowSource& rowAt,
                          const PixelGrid<unsigned char>& destination) const {
    const int last = 2 * destination.size.cy - 1;
    for (int y = 0; y < last; y += 2) {
        const unsigned char* const upper = rowAt(y, std::min(y + 2, last));
        HalveRows(upper, rowAt(y + 1, std::min(y + 3, last)),
                  static_cast<std::size_t>(destination.channels), destination.Row(y / 2));
    }
}

void RowResizer::Cache(const ResizeTap& tap, const ResizeTap& next, const RowSource& rowAt) {
    if (lower_.y == tap.first) std::swap(upper_, lower_);
    Fill(upper_, tap.first, next.first, rowAt);
    if (tap.weight != 0) Fill(lower_, tap.first + 1, next.Second(), rowAt);
}

void RowResizer::Fill(CachedRow& row, int y, int prefetch, const RowSource& rowAt) const {
    if (row.y == y) return;
    ResizeHorizontally(plan_, rowAt(y, prefetch), row.samples);
    row.y = y;
}

}  // namespace quorvex
