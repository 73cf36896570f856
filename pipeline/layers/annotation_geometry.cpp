#include "pipeline/layers/annotation_geometry.h"

#include "foundation/types/limits.h"
#include "quorvex/CXGSPSInfo.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <span>
#include <utility>

namespace quorvex {

namespace {

enum GraphicType { kPoint = 1, kPolyline, kInterpolated, kCircle, kEllipse };
constexpr int kPixelUnits = 0;
constexpr int kMagnify = 2;

using Points = std::vector<CanvasPoint>;

CanvasPoint operator+(CanvasPoint a, CanvasPoint b) {
    return {a.x + b.x, a.y + b.y};
}
CanvasPoint operator-(CanvasPoint a, CanvasPoint b) {
    return {a.x - b.x, a.y - b.y};
}
CanvasPoint operator*(CanvasPoint a, double factor) {
    return {a.x * factor, a.y * factor};
}
double Length(CanvasPoint a) {
    return std::hypot(a.x, a.y);
}
bool IsFinite(CanvasPoint a) {
    return std::isfinite(a.x) && std::isfinite(a.y);
}
bool IsSame(CanvasPoint a, CanvasPoint b) {
    return a.x == b.x && a.y == b.y;
}

bool LiesOnItsSide(const RenderedView& view) {
    return view.rotation == 90 || view.rotation == 270;
}

Points PlacedPoints(const GSPSGraphicObject& graphic, const AnnotationPlace& place) {
    const auto there = static_cast<std::size_t>(graphic.points.GetSize());
    Points points;
    for (std::size_t i = 0; i < std::min(there, kMostGraphicPoints); ++i) {
        const auto& stored =
            *static_cast<const GSPSPoint*>(graphic.points.GetAt(static_cast<int>(i)));
        const CanvasPoint point = place({stored.x, stored.y}, graphic.annotationUnits);
        if (IsFinite(point)) points.push_back(point);
    }
    return points;
}

/// A closed line around `centre`: `across` and `along` are where it is a quarter turn apart.
Points Round(CanvasPoint centre, CanvasPoint across, CanvasPoint along) {
    const double reach = std::max(Length(across), Length(along));
    const auto quarter = static_cast<std::size_t>(std::clamp(std::sqrt(reach) * 2.0, 4.0, 512.0));
    const std::size_t steps = 4 * quarter;  // passes through the ends of both axes
    Points line;
    for (std::size_t i = 0; i < steps; ++i) {
        const double angle =
            2 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(steps);
        line.push_back(centre + across * std::cos(angle) + along * std::sin(angle));
    }
    line.push_back(line.front());
    return line;
}

Points Circle(std::span<const CanvasPoint> points) {
    if (points.size() < 2) return {};
    const CanvasPoint radius = points[1] - points[0];
    return Round(points[0], radius, {-radius.y, radius.x});
}

Points Ellipse(std::span<const CanvasPoint> points) {
    if (points.size() < 4) return {};
    return Round((points[0] + points[1]) * 0.5, (points[1] - points[0]) * 0.5,
                 (points[3] - points[2]) * 0.5);
}

/// The point at `t` (0 to 1) of the cubic between `from` and `to` that leaves and arrives along the
/// line through the neighbours of each.
CanvasPoint OnCurve(CanvasPoint before, CanvasPoint from, CanvasPoint to, CanvasPoint after,
                    double t) {
    const CanvasPoint leaves = (to - before) * 0.5;
    const CanvasPoint arrives = (after - from) * 0.5;
    const double t2 = t * t;
    const double t3 = t2 * t;
    return from * (2 * t3 - 3 * t2 + 1) + leaves * (t3 - 2 * t2 + t) + to * (3 * t2 - 2 * t3) +
           arrives * (t3 - t2);
}

/// A smooth line through all points, also where it closes.
Points Curve(const Points& points) {
    const std::size_t last = points.size() - 1;
    if (points.size() < 3) return points;
    const bool isClosed = IsSame(points.front(), points.back());
    const std::size_t most = std::clamp<std::size_t>(kMostGraphicPoints / last, 1, 64);
    Points line{points.front()};
    for (std::size_t i = 0; i < last; ++i) {
        const CanvasPoint before = i > 0 ? points[i - 1] : points[isClosed ? last - 1 : 0];
        const CanvasPoint after = i + 2 <= last ? points[i + 2] : points[isClosed ? 1 : last];
        const double length = Length(points[i + 1] - points[i]);
        const auto steps =
            static_cast<std::size_t>(std::clamp(length / 4.0, 1.0, static_cast<double>(most)));
        for (std::size_t step = 1; step < steps; ++step) {
            line.push_back(OnCurve(before, points[i], points[i + 1], after,
                                   static_cast<double>(step) / static_cast<double>(steps)));
        }
        line.push_back(points[i + 1]);
    }
    return line;
}

Points OutlineOf(int graphicType, Points points) {
    if (points.empty()) return {};
    switch (graphicType) {
        case kPoint:
            return {points.front()};
        case kPolyline:
            return points;
        case kInterpolated:
            return Curve(points);
        case kCircle:
            return Circle(points);
        case kEllipse:
            return Ellipse(points);
        default:
            return {};
    }
}

/// Width and height of what a record's displayed area covers, in image pixels.
CanvasPoint AreaExtent(const CXGSPSInfo& record, CSize image) {
    const auto extent = [](std::int64_t one, std::int64_t other) {
        return static_cast<double>(std::abs(other - one) + 1);
    };
    if (record.displayedAreaRight == 0 && record.displayedAreaBottom == 0) {
        return {static_cast<double>(image.cx), static_cast<double>(image.cy)};
    }
    return {extent(record.displayedAreaLeft, record.displayedAreaRight),
            extent(record.displayedAreaTop, record.displayedAreaBottom)};
}

}  // namespace

ImageToSurface::ImageToSurface(const RenderedView& view, CSize result, CPoint corner) noexcept
    : view_(view),
      upright_(LiesOnItsSide(view) ? CSize{result.cy, result.cx} : result),
      corner_(corner) {
    const int length = LiesOnItsSide(view) ? view.imageSize.cx : view.imageSize.cy;
    scale_.x = result.cy / (length * view.aspectRatio);
    scale_.y = scale_.x * view.aspectRatio;
}

ImageToSurface ImageToSurface::Placed(CSize image, CSize scaled, int quarterTurns, bool isMirrored,
                                      CPoint corner) noexcept {
    RenderedView view;
    view.imageSize = image;
    view.rotation = 90 * quarterTurns;
    ImageToSurface way(view, quarterTurns % 2 != 0 ? CSize{scaled.cy, scaled.cx} : scaled, corner);
    way.scale_ = {static_cast<double>(scaled.cx) / image.cx,
                  static_cast<double>(scaled.cy) / image.cy};
    way.isMirroredLast_ = isMirrored;
    return way;
}

CanvasPoint ImageToSurface::operator()(CanvasPoint image) const noexcept {
    const double width = upright_.cx;
    const double height = upright_.cy;
    const double across = image.x * scale_.x;
    const double x = view_.isFlipped ? width - across : across;
    const double y = height - (view_.imageSize.cy - image.y) * scale_.y;
    CanvasPoint turned{x, y};
    if (view_.rotation == 90) turned = {height - y, x};
    if (view_.rotation == 180) turned = {width - x, height - y};
    if (view_.rotation == 270) turned = {y, width - x};
    if (isMirroredLast_) turned.x = (LiesOnItsSide(view_) ? height : width) - turned.x;
    return {corner_.x + turned.x, corner_.y + turned.y};
}

SurfaceArea DisplayedArea(const CXGSPSInfo& record, const RenderedView& image,
                          CSize viewSize) noexcept {
    CanvasPoint extent = AreaExtent(record, image.imageSize);
    extent.y *= image.aspectRatio;
    if (LiesOnItsSide(image)) std::swap(extent.x, extent.y);
    const double zoom = record.presentationSizeMode == kMagnify
                            ? record.presentationMagnification
                            : std::min(viewSize.cx / extent.x, viewSize.cy / extent.y);
    const double left = (viewSize.cx - extent.x * zoom) / 2;
    const double top = (viewSize.cy - extent.y * zoom) / 2;
    return {left, top, left + extent.x * zoom, top + extent.y * zoom};
}

CanvasPoint AnnotationPlace::operator()(CanvasPoint point, int units) const noexcept {
    if (units == kPixelUnits) return image(point);
    return {displayed.left + point.x * (displayed.right - displayed.left),
            displayed.top + point.y * (displayed.bottom - displayed.top)};
}

DrawnShape ShapeOf(const GSPSGraphicObject& graphic, const AnnotationPlace& place) {
    DrawnShape shape;
    shape.outline = OutlineOf(graphic.graphicType, PlacedPoints(graphic, place));
    const bool isClosed =
        shape.outline.size() > 2 && IsSame(shape.outline.front(), shape.outline.back());
    shape.isFilled = graphic.filled != 0 && isClosed;
    return shape;
}

}  // namespace quorvex
