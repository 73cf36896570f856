/// Scaling of an image that is handed over row by row, to any size, and any part of it.
#pragma once

#include "foundation/raster/pixel_grid.h"
#include "foundation/raster/raster.h"
#include "foundation/raster/scaling/resize_rows.h"
#include "foundation/raster/scaling/scale_taps.h"
#include "quorvex/Types.h"

#include <array>
#include <memory_resource>
#include <optional>
#include <span>
#include <vector>

namespace quorvex {

struct ScaleShape {
    CSize source;       ///< pixels of the image
    CSize scaled;       ///< and of the whole image scaled; both sides of both above 0
    RasterRect window;  ///< the part of the scaled image to make; lies in it, not empty
    int channels = 1;
    Interpolation enlarging = Interpolation::kLinear;
};

/// Shrinks by the average of each new pixel's area, enlarges by the chosen interpolation; each axis
/// for itself. Only source pixels that count are read. Takes all its memory when it is made (throws
/// std::bad_alloc then).
class ViewScaler {
public:
    /// @param memory  which all its memory comes from, and which outlives it
    explicit ViewScaler(const ScaleShape& shape,
                        std::pmr::memory_resource* memory = std::pmr::get_default_resource());

    /// Fills `destination`, which has the window's size.
    void Run(const RowSource& rowAt, const PixelGrid<unsigned char>& destination);

private:
    static constexpr std::size_t kMostRowsOfPixel = 4;  ///< of an enlarged image
    void ShrinkRows(const RowSource& rowAt, const PixelGrid<unsigned char>& destination);
    void EnlargeRows(const RowSource& rowAt, const PixelGrid<unsigned char>& destination);
    [[nodiscard]] std::span<const float> ScaledRow(int y, const RowSource& rowAt);

    ScaleShape shape_;
    std::optional<RowResizer> linear_;  ///< for what it does: linear, and no side shrunk
    ColumnTaps columns_;
    ScaleTaps rows_;
    std::pmr::vector<float> whole_;   ///< the source columns that count, of a row or a sum of rows
    std::size_t counted_ = 0;         ///< numbers of them; those behind stay 0
    std::pmr::vector<float> scaled_;  ///< the same with its columns scaled
    // Of an image whose rows are not shrunk: scaled rows that may count again, and their sum.
    std::pmr::vector<float> cache_;
    std::array<int, kMostRowsOfPixel> cachedRows_{};
    std::pmr::vector<float> sums_;
};

}  // namespace quorvex
