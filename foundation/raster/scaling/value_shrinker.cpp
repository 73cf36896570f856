#include "foundation/raster/scaling/value_shrinker.h"

#include "foundation/raster/scaling/scale_kernels.h"
#include "foundation/raster/scaling/scale_taps.h"

#include <algorithm>
#include <array>
#include <vector>

namespace quorvex {

void ShrinkValues(const unsigned char* values, ValueKind kind, CSize size, CSize to,
                  const ValueSink& sink) {
    const ColumnTaps columns(MakeScaleTaps(size.cx, to.cx, 0, to.cx, Interpolation::kLinear));
    const auto rows = MakeScaleTaps(size.cy, to.cy, 0, to.cy, Interpolation::kLinear);
    const auto width = static_cast<std::size_t>(size.cx);
    const std::size_t rowBytes = width * BytesOf(kind);
    std::vector<float> sums(columns.PaddedPixels());
    std::vector<float> shrunk(static_cast<std::size_t>(to.cx));
    for (int y = 0; y < to.cy; ++y) {
        const ScaleTaps::Place& place = rows.places[static_cast<std::size_t>(y)];
        const auto weights = rows.WeightsOf(place);
        for (std::size_t i = 0; i < weights.size(); i += kMostRowsAtOnce) {
            const std::size_t count = std::min(weights.size() - i, kMostRowsAtOnce);
            std::array<const unsigned char*, kMostRowsAtOnce> at{};
            for (std::size_t j = 0; j < count; ++j) {
                at[j] = values + (static_cast<std::size_t>(place.first) + i + j) * rowBytes;
            }
            WeighRows(std::span(at).first(count), kind, weights.subspan(i, count), i > 0,
                      std::span(sums).first(width));
        }
        columns.Scale(sums, 1, shrunk);
        sink(y, shrunk);
    }
}

}  // namespace quorvex
