#include "pipeline/layers/annotation_geometry.h"
#include "tests/pipeline/graphics.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace quorvex::pipeline_test {
namespace {

// On a surface that shows a 100 x 100 image as it is.
DrawnShape Shape(int type, const Coordinates& points, int filled = 0) {
    const RenderedView view{{100, 100}, 1.0, 0, false};
    const AnnotationPlace place{ImageToSurface(view, {100, 100}, {0, 0}), {0, 0, 100, 100}};
    return ShapeOf(*Graphic(type, points, kPixel, filled), place);
}

double NearestTo(const std::vector<CanvasPoint>& outline, GSPSPoint place) {
    double nearest = std::numeric_limits<double>::infinity();
    for (const auto& point : outline) {
        nearest = std::min(nearest, std::hypot(point.x - place.x, point.y - place.y));
    }
    return nearest;
}

TEST(AnnotationShapes, AreRoundAndSmooth) {
    for (const auto& point : Shape(kCircle, {{50, 40}, {53, 44}}).outline) {
        EXPECT_NEAR(std::hypot(point.x - 50, point.y - 40), 5.0, 1e-9);
    }
    const Coordinates ends = {{20, 50}, {80, 50}, {50, 35}, {50, 65}};
    const auto ellipse = Shape(kEllipse, ends).outline;
    for (const auto& point : ellipse) {
        EXPECT_NEAR(std::hypot((point.x - 50) / 30, (point.y - 50) / 15), 1.0, 1e-9);
    }
    for (const auto& end : ends) EXPECT_LT(NearestTo(ellipse, end), 1e-9);

    const Coordinates bends = {{10, 10}, {40, 60}, {70, 10}, {90, 80}};
    const auto curve = Shape(kInterpolated, bends).outline;
    EXPECT_GT(curve.size(), 20U);
    for (const auto& bend : bends) EXPECT_LT(NearestTo(curve, bend), 1e-9);
    for (std::size_t i = 2; i < curve.size(); ++i) {  // no corner anywhere
        const double before =
            std::atan2(curve[i - 1].y - curve[i - 2].y, curve[i - 1].x - curve[i - 2].x);
        const double after = std::atan2(curve[i].y - curve[i - 1].y, curve[i].x - curve[i - 1].x);
        EXPECT_LT(std::abs(std::remainder(after - before, 6.2831853)), 0.9) << i;
    }
}

TEST(AnnotationShapes, AreFilledWhereTheyClose) {
    const Coordinates open = {{10, 10}, {40, 10}, {40, 40}};
    Coordinates closed = open;
    closed.push_back(open.front());
    EXPECT_FALSE(Shape(kPolyline, open, 1).isFilled);
    EXPECT_TRUE(Shape(kPolyline, closed, 1).isFilled);
    EXPECT_FALSE(Shape(kPolyline, closed, 0).isFilled);
    EXPECT_TRUE(Shape(kCircle, {{9, 9}, {9, 4}}, 1).isFilled);
    EXPECT_LE(Shape(kInterpolated, Coordinates(100000, {5, 5})).outline.size(), 65535U);
}

}  // namespace
}  // namespace quorvex::pipeline_test
