#include "foundation/raster/scaling/view_scaler.h"

#include "foundation/raster/scaling/scale_kernels.h"

#include <algorithm>
#include <array>

namespace quorvex {
namespace {

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

bool IsLeftToResizer(const ScaleShape& shape) {
    return IsLinear(shape) || IsHalf(shape);
}

ScaleTaps TapsOfColumns(const ScaleShape& shape, std::pmr::memory_resource* memory) {
    return MakeScaleTaps(shape.source.cx, shape.scaled.cx, shape.window.x, shape.window.width,
                         shape.enlarging, memory);
}
ScaleTaps TapsOfRows(const ScaleShape& shape, std::pmr::memory_resource* memory) {
    return MakeScaleTaps(shape.source.cy, shape.scaled.cy, shape.window.y, shape.window.height,
                         shape.enlarging, memory);
}

}  // namespace

ViewScaler::ViewScaler(const ScaleShape& shape, std::pmr::memory_resource* memory)
    : shape_(shape),
      columns_(IsLeftToResizer(shape) ? ColumnTaps(memory)
                                      : ColumnTaps(TapsOfColumns(shape, memory), memory)),
      rows_(IsLeftToResizer(shape) ? ScaleTaps(memory) : TapsOfRows(shape, memory)),
      whole_(memory),
      scaled_(memory),
      cache_(memory),
      sums_(memory) {
    if (IsLeftToResizer(shape)) {
        linear_.emplace(shape.source, shape.scaled, shape.window, shape.channels, memory);
        return;
    }
    const auto channels = static_cast<std::size_t>(shape.channels);
    whole_.resize(columns_.PaddedPixels() * channels);
    counted_ = columns_.SourcePixels() * channels;
    scaled_.resize(static_cast<std::size_t>(shape.window.width) * channels);
    if (shape.scaled.cy < shape.source.cy) return;
    cache_.resize(kMostRowsOfPixel * scaled_.size());
    sums_.resize(scaled_.size());
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
        const auto weights = rows_.WeightsOf(place);
        std::array<const unsigned char*, 2> pair{};
        std::size_t waiting = 0;
        for (std::size_t i = 0; i < weights.size(); ++i) {
            const int row = place.first + static_cast<int>(i);
            if (row != present) bytes = rowAt(row, std::min(row + 1, last));
            present = row;
            pair[waiting++] = bytes + skipped;
            if (waiting < pair.size() && i + 1 < weights.size()) continue;
            WeighRows(std::span(pair).first(waiting), ValueKind::kUnsignedByte,
                      weights.subspan(i + 1 - waiting, waiting),
                      {.adds = i + 1 > waiting, .clamp = {}}, std::span(whole_).first(counted_));
            waiting = 0;
        }
        columns_.Scale(whole_, static_cast<std::size_t>(shape_.channels), scaled_);
        RoundRow(scaled_, destination.Row(y));
    }
}

void ViewScaler::EnlargeRows(const RowSource& rowAt, const PixelGrid<unsigned char>& destination) {
    cachedRows_.fill(-1);
    for (int y = 0; y < destination.size.cy; ++y) {
        const ScaleTaps::Place& place = rows_.places[static_cast<std::size_t>(y)];
        int row = place.first;
        bool adds = false;
        for (const float weight : rows_.WeightsOf(place)) {
            WeighRow(ScaledRow(row++, rowAt), weight, adds, sums_);
            adds = true;
        }
        RoundRow(sums_, destination.Row(y));
    }
}

std::span<const float> ViewScaler::ScaledRow(int y, const RowSource& rowAt) {
    const std::size_t place = static_cast<std::size_t>(y) % kMostRowsOfPixel;
    const auto row = std::span(cache_).subspan(place * scaled_.size(), scaled_.size());
    if (cachedRows_[place] == y) return row;
    const auto skipped =
        static_cast<std::size_t>(columns_.Begin()) * static_cast<std::size_t>(shape_.channels);
    const unsigned char* const bytes = rowAt(y, y) + skipped;
    constexpr float kWhole[] = {1.0F};
    WeighRows({&bytes, 1}, ValueKind::kUnsignedByte, kWhole, {}, std::span(whole_).first(counted_));
    columns_.Scale(whole_, static_cast<std::size_t>(shape_.channels), row);
    cachedRows_[place] = y;
    return row;
}

}  // namespace quorvex
