/// Rows of pixels in someone else's buffer.
#pragma once

#include "foundation/raster/raster.h"
#include "quorvex/Types.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

namespace quorvex {

/// Samples; a place in a row always fits 32 bits.
inline constexpr std::size_t kLongestRow = std::size_t{1} << 31;

template <class Sample>
struct PixelGrid {
    Sample* samples = nullptr;
    std::ptrdiff_t step = 0;  ///< bytes
    CSize size;
    int channels = 1;

    [[nodiscard]] std::size_t RowSamples() const noexcept {
        return static_cast<std::size_t>(size.cx) * static_cast<std::size_t>(channels);
    }
    [[nodiscard]] bool IsUsable() const noexcept {
        return samples != nullptr && size.cx > 0 && size.cy > 0 && channels > 0 && step > 0 &&
               RowSamples() <= kLongestRow &&
               static_cast<std::size_t>(step) / sizeof(Sample) >= RowSamples() &&
               static_cast<std::size_t>(step) % sizeof(Sample) == 0;
    }
    /// The samples of row `y`, which must be one of them.
    [[nodiscard]] std::span<Sample> Row(int y) const noexcept {
        const auto samplesPerStep = step / static_cast<std::ptrdiff_t>(sizeof(Sample));
        return {samples + y * samplesPerStep, RowSamples()};
    }
};

/// A rectangle of pixels that certainly lies in the image, or is empty.
[[nodiscard]] inline RasterRect CutToSize(const RasterRect& rect, CSize size) noexcept {
    const auto cut = [](int start, int length, int side) {
        const std::int64_t limit = std::max(side, 0);
        const std::int64_t first = std::clamp<std::int64_t>(start, 0, limit);
        const std::int64_t last =
            std::clamp<std::int64_t>(std::int64_t{start} + length, first, limit);
        return std::pair(static_cast<int>(first), static_cast<int>(last - first));
    };
    const auto [x, width] = cut(rect.x, rect.width, size.cx);
    const auto [y, height] = cut(rect.y, rect.height, size.cy);
    return {x, y, width, height};
}

/// The part of `grid` inside `rect`, which lies in it.
template <class Sample>
[[nodiscard]] PixelGrid<Sample> Part(const PixelGrid<Sample>& grid,
                                     const RasterRect& rect) noexcept {
    const auto offset = static_cast<std::size_t>(rect.x) * static_cast<std::size_t>(grid.channels);
    return {grid.Row(rect.y).data() + offset, grid.step, {rect.width, rect.height}, grid.channels};
}

}  // namespace quorvex
