#include "foundation/raster/scaling/value_shrinker.h"

#include "foundation/raster/scaling/scale_kernels.h"
#include "foundation/raster/scaling/scale_taps.h"

#include <vector>

namespace quorvex {

void ShrinkValues(const unsigned char* values, ValueKind kind, CSize size, CSize to,
                  const ValueSink& sink) {
    const auto columns = MakeScaleTaps(size.cx, to.cx, 0, to.cx, Interpolation::kLinear);
    const auto rows = MakeScaleTaps(size.cy, to.cy, 0, to.cy, Interpolation::kLinear);
    const auto width = static_cast<std::size_t>(size.cx);
    const std::size_t rowBytes = width * BytesOf(kind);
    std::vector<float> sums(width);
    std::vector<float> shrunk(static_cast<std::size_t>(to.cx));
    for (int y = 0; y < to.cy; ++y) {
        const ScaleTaps::Place& place = rows.places[static_cast<std::size_t>(y)];
        const unsigned char* row = values + static_cast<std::size_t>(place.first) * rowBytes;
        bool adds = false;
        for (const float weight : rows.WeightsOf(place)) {
            WeighRow({row, rowBytes}, kind, weight, adds, sums);
            adds = true;
            row += rowBytes;
        }
        ScaleColumns(columns, 0, sums, 1, shrunk);
        sink(y, shrunk);
    }
}

}  // namespace quorvex
