#include "foundation/raster/scaling/area_averager.h"

#include <algorithm>
#include <array>

namespace quorvex {

AreaAverager::AreaAverager(CSize from, CSize to)
    : to_(to),
      columns_(MakeScaleTaps(from.cx, to.cx, 0, to.cx, Interpolation::kLinear)),
      rows_(MakeScaleTaps(from.cy, to.cy, 0, to.cy, Interpolation::kLinear)),
      groupedColumns_(columns_),
      sums_(groupedColumns_.PaddedPixels()) {}

/// What some pixels of a row are made of.
struct AreaAverager::Source {
    std::size_t column;  ///< its first one
    std::size_t columns;
    std::size_t rows;
    std::size_t rowBytes;
    const unsigned char* values;
};

AreaAverager::RowSpan AreaAverager::RowsOf(int y) const noexcept {
    const ScaleTaps::Place& place = rows_.places[static_cast<std::size_t>(y)];
    return {static_cast<std::size_t>(place.first), place.count};
}

AreaAverager::Source AreaAverager::SourceOf(const ValueImage& image, int y, std::size_t first,
                                            std::size_t count) const {
    const auto [top, rows] = RowsOf(y);
    const ScaleTaps::Place& last = columns_.places[first + count - 1];
    const std::size_t bytes = BytesOf(image.kind);
    Source source{};
    source.column = static_cast<std::size_t>(columns_.places[first].first);
    source.columns = static_cast<std::size_t>(last.first) + last.count - source.column;
    source.rows = rows;
    source.rowBytes = image.width * bytes;
    source.values = image.values + (top - image.top) * source.rowBytes + source.column * bytes;
    return source;
}

void AreaAverager::Average(const ValueImage& image, ValueLimits clamp, int y, int next,
                           std::size_t first, std::span<float> averages) {
    const Source source = SourceOf(image, y, first, averages.size());
    const ScaleTaps::Place& place = rows_.places[static_cast<std::size_t>(y)];
    const std::ptrdiff_t rowsAhead =
        rows_.places[static_cast<std::size_t>(next)].first - place.first;
    RowTask task;
    task.clamp = clamp;
    task.ahead = rowsAhead * static_cast<std::ptrdiff_t>(source.rowBytes);
    // Whole vectors are faster than the rest of one.
    constexpr std::size_t kWhole = 16;
    const std::size_t columns =
        std::min((source.columns + kWhole - 1) / kWhole * kWhole, image.width - source.column);
    const auto weights = rows_.WeightsOf(place);
    for (std::size_t i = 0; i < weights.size(); i += kMostRowsAtOnce) {
        const std::size_t count = std::min(weights.size() - i, kMostRowsAtOnce);
        std::array<const unsigned char*, kMostRowsAtOnce> at{};
        for (std::size_t j = 0; j < count; ++j) at[j] = source.values + (i + j) * source.rowBytes;
        task.adds = i > 0;
        WeighRows(std::span(at).first(count), image.kind, weights.subspan(i, count), task,
                  std::span(sums_).subspan(source.column, columns));
    }
    groupedColumns_.ScalePart(sums_, first, averages);
}

void AreaAverager::FindLimits(const ValueImage& image, int y, std::span<ValueLimits> groups) const {
    const auto width = static_cast<std::size_t>(to_.cx);
    for (std::size_t i = 0; i < groups.size(); ++i) {
        const std::size_t first = i * kColumnGroup;
        const Source source = SourceOf(image, y, first, std::min(kColumnGroup, width - first));
        groups[i] =
            LimitsOf(source.values, image.kind, source.rowBytes, source.rows, source.columns);
    }
}

}  // namespace quorvex
