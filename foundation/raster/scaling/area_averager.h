/// Averages of an image's values over the areas of a smaller image's pixels, before they are made
/// visible.
#pragma once

#include "foundation/raster/scaling/scale_kernels.h"
#include "foundation/raster/scaling/scale_taps.h"
#include "quorvex/Types.h"

#include <cstddef>
#include <span>
#include <vector>

namespace quorvex {

/// An image, or some rows of it, without gaps between them.
struct ValueImage {
    const unsigned char* values = nullptr;
    ValueKind kind = ValueKind::kUnsignedByte;
    std::size_t width = 0;
    std::size_t top = 0;  ///< the row that `values` begins with
};

/// Shrinks an image to a size that is larger in neither direction; all sides are above 0.
///
/// Takes all its memory when it is made (throws std::bad_alloc then). An average is the same to the
/// bit whatever else of its row is asked for, and whether its values were clamped or had no need.
class AreaAverager {
public:
    AreaAverager(CSize from, CSize to);

    [[nodiscard]] CSize Size() const noexcept { return to_; }
    /// The rows of the image that row `y` is made of.
    struct RowSpan {
        std::size_t first = 0;
        std::size_t count = 0;
    };
    [[nodiscard]] RowSpan RowsOf(int y) const noexcept;

    /// Averages pixels of row `y`, from `first` on, a multiple of `kColumnGroup`.
    /// @param clamp  what every value is clamped to ahead of that
    /// @param next   the row that is asked for a little later: its values are prefetched
    void Average(const ValueImage& image, ValueLimits clamp, int y, int next, std::size_t first,
                 std::span<float> averages);
    /// The lowest and highest value that weighs in each group of `kColumnGroup` pixels of row `y`.
    void FindLimits(const ValueImage& image, int y, std::span<ValueLimits> groups) const;

private:
    struct Source;
    [[nodiscard]] Source SourceOf(const ValueImage& image, int y, std::size_t first,
                                  std::size_t count) const;

    CSize to_;
    ScaleTaps columns_;
    ScaleTaps rows_;
    ColumnTaps groupedColumns_;
    std::vector<float> sums_;
};

}  // namespace quorvex
