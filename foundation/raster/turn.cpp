#include "foundation/raster/turn_kernels.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>

namespace quorvex {
namespace {

constexpr double kLargestShift = 1e12;

struct Interval {
    std::int64_t first = 0;
    std::int64_t last = 0;  ///< exclusive

    [[nodiscard]] Interval Shifted(std::int64_t by) const { return {first + by, last + by}; }
    /// Place p becomes end - 1 - p, and back.
    [[nodiscard]] Interval Mirrored(std::int64_t end) const { return {end - last, end - first}; }
    [[nodiscard]] Interval CutTo(const Interval& other) const {
        return {std::max(first, other.first), std::min(last, other.last)};
    }
};

struct Box {
    Interval x;
    Interval y;
    [[nodiscard]] bool IsEmpty() const { return x.first >= x.last || y.first >= y.last; }
};

struct Turning {
    int quarters = 0;
    std::int64_t xShift = 0;
    std::int64_t yShift = 0;
};

std::optional<Turning> MakeTurning(double angle, double xShift, double yShift) {
    // Written so that NaN is refused too.
    if (!(std::abs(angle) <= kLargestShift) || std::fmod(angle, 90.0) != 0.0) return std::nullopt;
    if (!(std::abs(xShift) <= kLargestShift) || !(std::abs(yShift) <= kLargestShift)) {
        return std::nullopt;
    }
    const int quarters = (static_cast<int>(std::fmod(angle, 360.0) / 90.0) + 4) % 4;
    return Turning{quarters, std::llround(xShift), std::llround(yShift)};
}

Box Forward(const Turning& turning, const Box& box) {
    const auto [quarters, right, down] = turning;
    switch (quarters) {
        case 1:
            return {box.y.Shifted(right), box.x.Mirrored(down)};
        case 2:
            return {box.x.Mirrored(right), box.y.Mirrored(down)};
        case 3:
            return {box.y.Mirrored(right), box.x.Shifted(down)};
        default:
            return {box.x.Shifted(right), box.y.Shifted(down)};
    }
}

Box Backward(const Turning& turning, const Box& box) {
    const auto [quarters, right, down] = turning;
    switch (quarters) {
        case 1:
            return {box.y.Mirrored(down), box.x.Shifted(-right)};
        case 2:
            return {box.x.Mirrored(right), box.y.Mirrored(down)};
        case 3:
            return {box.y.Shifted(-down), box.x.Mirrored(right)};
        default:
            return {box.x.Shifted(-right), box.y.Shifted(-down)};
    }
}

Box BoxOf(const RasterRect& rect) {
    return {{rect.x, std::int64_t{rect.x} + rect.width},
            {rect.y, std::int64_t{rect.y} + rect.height}};
}

RasterRect RectOf(const Box& box) {
    return {static_cast<int>(box.x.first), static_cast<int>(box.y.first),
            static_cast<int>(box.x.last - box.x.first), static_cast<int>(box.y.last - box.y.first)};
}

/// The smallest size that holds `rect`; what lies left of or above the buffer is nowhere.
CSize SizeUpTo(const RasterRect& rect) {
    const Box box = BoxOf(rect);
    constexpr std::int64_t kMost = INT32_MAX;
    return {static_cast<std::int32_t>(std::clamp<std::int64_t>(box.x.last, 0, kMost)),
            static_cast<std::int32_t>(std::clamp<std::int64_t>(box.y.last, 0, kMost))};
}

bool Rotate(const PixelGrid<const unsigned char>& source, const RasterRect& rect,
            const PixelGrid<unsigned char>& destination, const RasterRect& destinationRect,
            const std::optional<Turning>& turning) {
    if (!turning || !source.IsUsable() || !destination.IsUsable()) return false;
    const Box turned = Forward(*turning, BoxOf(CutToSize(rect, source.size)));
    const Box room = BoxOf(CutToSize(destinationRect, destination.size));
    const Box target{turned.x.CutTo(room.x), turned.y.CutTo(room.y)};
    if (target.IsEmpty()) return true;
    TurnPixels(Part(source, RectOf(Backward(*turning, target))), Part(destination, RectOf(target)),
               turning->quarters);
    return true;
}

}  // namespace

bool ippiRotate_8u_C1R(const unsigned char* source, CSize sourceSize, std::ptrdiff_t sourceStep,
                       RasterRect rect, unsigned char* destination, std::ptrdiff_t destinationStep,
                       RasterRect destinationRect, double angle, double xShift, double yShift,
                       int /*interpolation*/) {
    return Rotate({source, sourceStep, sourceSize, 1}, rect,
                  {destination, destinationStep, SizeUpTo(destinationRect), 1}, destinationRect,
                  MakeTurning(angle, xShift, yShift));
}

bool ippiRotate_8u_C3R(const unsigned char* source, CSize sourceSize, std::ptrdiff_t sourceStep,
                       RasterRect rect, unsigned char* destination, std::ptrdiff_t destinationStep,
                       RasterRect destinationRect, double angle, double xShift, double yShift,
                       int /*interpolation*/) {
    return Rotate({source, sourceStep, sourceSize, 3}, rect,
                  {destination, destinationStep, SizeUpTo(destinationRect), 3}, destinationRect,
                  MakeTurning(angle, xShift, yShift));
}

}  // namespace quorvex
