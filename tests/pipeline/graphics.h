/// Graphic annotations made by hand.
#pragma once

#include "quorvex/CXGSPSInfo.h"

#include <memory>
#include <vector>

namespace quorvex::pipeline_test {

enum Type { kPoint = 1, kPolyline, kInterpolated, kCircle, kEllipse };
constexpr int kPixel = 0;
constexpr int kDisplay = 1;

using Coordinates = std::vector<GSPSPoint>;

/// A graphic object of a record.
inline std::unique_ptr<GSPSGraphicObject> Graphic(int type, const Coordinates& points,
                                                  int units = kPixel, int filled = 0) {
    auto graphic = std::make_unique<GSPSGraphicObject>();
    graphic->graphicType = type;
    graphic->annotationUnits = units;
    graphic->filled = filled;
    for (const auto& point : points) graphic->points.Add(new GSPSPoint(point));
    return graphic;
}

}  // namespace quorvex::pipeline_test
