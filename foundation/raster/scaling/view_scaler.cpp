#include "foundation/raster/scaling/view_scaler.h"

#include "foundation/raster/scaling/scale_kernels.h"

#include <algorithm>

namespace quorvex {
namespace {

constexpr std::size_t kMostRowsOfPixel = 4;  ///< of an enlarged image

bool IsLinear(const ScaleShape& shape) {
    const bool isEnlarged = shape.scaled.cx > shape.source.cx || shape.scaled.cy > shape.source.cy;
    return shape.scaled.cx >= shape.source.cx && shape.scaled.cy >= shape.source.cy &&
           (!isEnlarged || shape.enlarging == Interpolation::kLinear);
}

bool IsHalf(const ScaleShape& shape) {
    const RasterRect& window = shape.window;
    return shape.source.cx == 2 * shape.scaled.cx && shape.source.cy == 2 * shape.scaled.cy &&
           window.width == shape.scaled.cx && window.height == shape.scaled.cy;
}

}  // namespace

ViewScaler::ViewScaler(const ScaleShape& shape) : shape_(shape) {
    if (IsLinear(shape) || IsHalf(shape)) {
        linear_.emplace(shape.source, shape.scaled, shape.window, shape.channels);
        return;
    }
    const RasterRect& window = shape.window;
    columns_ =
        MakeScaleTaps(shape.source.cx, shape.scaled.cx, window.x, window.width, shape.enlarging);
    rows_ =
        MakeScaleTaps(shape.source.cy, shape.scaled.cy, window.y, window.height, shape.enlarging);
    const auto channels = static_cast<std::size_t>(shape.channels);
    whole_.resize(static_cast<std::size_t>(columns_.End() - columns_.Begin()) * channels);
    scaled_.resize(static_cast<std::size_t>(window.width) * channels);
    if (shape.scaled.cy < shape.source.cy) return;
    cache_.resize(kMostRowsOfPixel);
    for (CachedRow& row : cache_) row.samples.resize(scaled_.size());
}

void ViewScaler::Run(const RowSource& rowAt, const PixelGrid<unsigned char>& destination) {
    if (linear_) return linear_->Run(rowAt, destination);
    cache_.empty() ? ShrinkRows(rowAt, destination) : EnlargeRows(rowAt, destination);
}

/// Rows are added up first: that is what vectors do best, and it leaves few rows to scale.
void ViewScaler::ShrinkRows(const RowSource& rowAt, const PixelGrid<unsigned char>& destination) {
    const auto skipped =
        static_cast<std::size_t>(columns_.Begin()) * static_cast<std::size_t>(shape_.channels);
    const int last = rows_.End() - 1;
    int present = -1;
    const unsigned char* bytes = nullptr;
    for (int y = 0; y < destination.size.cy; ++y) {
        const ScaleTaps::Place& place = rows_.places[static_cast<std::size_t>(y)];
        int row = place.first;
        bool adds = false;
        for (const float weight : rows_.WeightsOf(place)) {
            if (row != present) bytes = rowAt(row, std::min(row + 1, last));
            present = row++;
            WeighRow(std::span(bytes + skipped, whole_.size()), weight, adds, whole_);
            adds = true;
        }
        ScaleColumns(columns_, columns_.Begin(), whole_, static_cast<std::size_t>(shape_.channels),
                     scaled_);
        RoundRow(scaled_, destination.Row(y));
    }
}

void ViewScaler::EnlargeRows(const RowSource& rowAt, const PixelGrid<unsigned char>& destination) {
    std::vector<float> sums(scaled_.size());
    for (CachedRow& row : cache_) row.y = -1;
    for (int y = 0; y < destination.size.cy; ++y) {
        const ScaleTaps::Place& place = rows_.places[static_cast<std::size_t>(y)];
        int row = place.first;
        bool adds = false;
        for (const float weight : rows_.WeightsOf(place)) {
            WeighRow(ScaledRow(row++, rowAt), weight, adds, sums);
            adds = true;
        }
        RoundRow(sums, destination.Row(y));
    }
}

const std::vector<float>& ViewScaler::ScaledRow(int y, const RowSource& rowAt) {
    CachedRow& row = cache_[static_cast<std::size_t>(y) % cache_.size()];
    if (row.y == y) return row.samples;
    const auto skipped =
        static_cast<std::size_t>(columns_.Begin()) * static_cast<std::size_t>(shape_.channels);
    WeighRow(std::span(rowAt(y, y) + skipped, whole_.size()), 1.0F, false, whole_);
    ScaleColumns(columns_, columns_.Begin(), whole_, static_cast<std::size_t>(shape_.channels),
                 scaled_);
    std::ranges::copy(scaled_, row.samples.begin());
    row.y = y;
    return row.samples;
}

}  // namespace quorvex
