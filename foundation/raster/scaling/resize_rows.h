/// Linear resizing of an image that is handed over row by row.
#pragma once

#include "foundation/raster/pixel_grid.h"
#include "foundation/raster/scaling/resize_kernels.h"
#include "foundation/raster/scaling/resize_taps.h"
#include "foundation/types/function_ref.h"
#include "quorvex/Types.h"

#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <vector>

namespace quorvex {

/// Both sizes in pixels, the factors in destination pixels for one source pixel.
struct ResizeShape {
    CSize source;
    CSize destination;
    double xFactor = 1.0;
    double yFactor = 1.0;
    int channels = 1;
};

/// The bytes of source row `y`; a row and the next one are readable at once. Only rows that count
/// are asked for, each once and in rising order. Row `prefetch` is asked for a little later (or it
/// is `y` or one before it): what it is made of can be prefetched.
using RowSource = FunctionRef<const unsigned char*(int y, int prefetch)>;

/// Resizes 8-bit pixels with any number of channels. Takes all its memory when it is made (throws
/// std::bad_alloc then), so that nothing can fail once rows are written.
class RowResizer {
public:
    /// @param memory  which all its memory comes from, and which outlives it
    explicit RowResizer(const ResizeShape& shape,
                        std::pmr::memory_resource* memory = std::pmr::get_default_resource());
    /// Makes only the part `window` of an image that is resized from `source` to `whole`.
    RowResizer(CSize source, CSize whole, const RasterRect& window, int channels,
               std::pmr::memory_resource* memory = std::pmr::get_default_resource());

    /// False for sizes or factors by which nothing can be resized.
    [[nodiscard]] bool IsUsable() const noexcept { return !columns_.empty() && !rows_.empty(); }

    /// Fills `destination`, which has the shape's size and channels.
    void Run(const RowSource& rowAt, const PixelGrid<unsigned char>& destination);

private:
    struct CachedRow {
        explicit CachedRow(std::pmr::memory_resource* memory) : samples(memory) {}
        int y = -1;
        std::pmr::vector<std::uint16_t> samples;
    };
    void Plan(CSize source, int channelCount);
    void CopyRows(const RowSource& rowAt, const PixelGrid<unsigned char>& destination) const;
    void HalveAll(const RowSource& rowAt, const PixelGrid<unsigned char>& destination) const;
    void Cache(const ResizeTap& tap, const ResizeTap& next, const RowSource& rowAt);
    void Fill(CachedRow& row, int y, int prefetch, const RowSource& rowAt) const;

    std::pmr::vector<ResizeTap> columns_;
    std::pmr::vector<ResizeTap> rows_;
    bool isCopy_ = false;
    bool isHalf_ = false;
    HorizontalPlan plan_;
    CachedRow upper_;
    CachedRow lower_;
};

/// The same for a whole image in 16-bit samples.
bool Resize16u(const PixelGrid<const std::uint16_t>& source,
               const PixelGrid<std::uint16_t>& destination, double xFactor, double yFactor);

}  // namespace quorvex
