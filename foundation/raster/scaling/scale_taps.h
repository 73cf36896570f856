/// Where the pixels of a scaled row or column come from, whatever the filter.
#pragma once

#include "foundation/raster/scaling/column_kernels.h"
#include "quorvex/Types.h"

#include <cstdint>
#include <memory_resource>
#include <span>
#include <vector>

namespace quorvex {

/// The taps of a stretch of one axis: each destination pixel is a weighted sum of `count` source
/// pixels from `first` on. The weights of a pixel add up to 1.
struct ScaleTaps {
    struct Place {
        std::int32_t first = 0;
        std::uint32_t count = 0;
        std::uint32_t weights = 0;  ///< where its own begin
    };
    explicit ScaleTaps(std::pmr::memory_resource* memory = std::pmr::get_default_resource())
        : places(memory), weights(memory) {}

    std::pmr::vector<Place> places;
    std::pmr::vector<float> weights;

    [[nodiscard]] std::span<const float> WeightsOf(const Place& place) const noexcept {
        return {weights.data() + place.weights, place.count};
    }
    /// The source pixels that count: first one, and the one behind the last.
    [[nodiscard]] std::int32_t Begin() const noexcept;
    [[nodiscard]] std::int32_t End() const noexcept;
};

/// The taps of `length` pixels from `start` on, of an axis scaled from `source` pixels to `scaled`.
///
/// A shrunk axis averages the area of each pixel; an enlarged one goes by `enlarging`. The pixels
/// asked for lie within the scaled axis; all lengths are above 0.
/// @param memory  which they live in
[[nodiscard]] ScaleTaps MakeScaleTaps(
    int source, int scaled, int start, int length, Interpolation enlarging,
    std::pmr::memory_resource* memory = std::pmr::get_default_resource());

/// The taps of a row's columns, as many for each pixel: what has fewer weighs some by 0.
class ColumnTaps {
public:
    explicit ColumnTaps(std::pmr::memory_resource* memory = std::pmr::get_default_resource())
        : firsts_(memory), weights_(memory), grouped_(memory) {}
    explicit ColumnTaps(const ScaleTaps& taps,
                        std::pmr::memory_resource* memory = std::pmr::get_default_resource());

    /// The source pixels that count: first one, and how many from there on.
    [[nodiscard]] std::int32_t Begin() const noexcept { return begin_; }
    [[nodiscard]] std::size_t SourcePixels() const noexcept { return sourcePixels_; }
    /// Pixels that a source row must have room for, from `Begin` on; those behind `SourcePixels`
    /// count nothing but must be numbers.
    [[nodiscard]] std::size_t PaddedPixels() const noexcept {
        return sourcePixels_ + count_ + 2 * kColumnGroup;
    }

    /// Sums up a row: `whole` begins at source pixel `Begin`, and both rows have `channels` numbers
    /// a pixel.
    void Scale(std::span<const float> whole, std::size_t channels, std::span<float> scaled) const;
    /// Sums up pixels of one channel, from `first` on, which is the first one of a group. Each sum
    /// is the same whatever else is asked for.
    void ScalePart(std::span<const float> whole, std::size_t first, std::span<float> scaled) const;

private:
    void Group();
    void ScaleGroups(const float* whole, std::size_t first, std::span<float> scaled) const;
    void ScaleAny(const float* whole, std::size_t channels, std::size_t first,
                  std::span<float> scaled) const;

    std::int32_t begin_ = 0;
    std::size_t sourcePixels_ = 0;
    std::size_t count_ = 0;
    std::pmr::vector<std::int32_t> firsts_;  ///< counted from `begin_`; whole groups
    std::pmr::vector<float> weights_;        ///< `count_` for each pixel
    std::pmr::vector<float> grouped_;  ///< the same as `GroupedTaps` has them; where that is fast
};

}  // namespace quorvex
