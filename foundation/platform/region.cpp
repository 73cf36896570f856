#include "foundation/platform/region.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace quorvex {
namespace {

/// The rectangle [left, right) x [top, bottom), in numbers that cannot overflow.
struct Box {
    std::int64_t left;
    std::int64_t top;
    std::int64_t right;
    std::int64_t bottom;

    [[nodiscard]] std::int64_t Width() const noexcept { return right - left; }
    [[nodiscard]] std::int64_t Height() const noexcept { return bottom - top; }
};

Box Ordered(const Box& box) noexcept {
    return {std::min(box.left, box.right), std::min(box.top, box.bottom),
            std::max(box.left, box.right), std::max(box.top, box.bottom)};
}

void FillBox(const ByteMask& mask, const Box& box, std::uint8_t value) {
    const std::int64_t end = std::min(box.bottom, mask.rows);
    for (std::int64_t y = std::max<std::int64_t>(box.top, 0); y < end; ++y) {
        mask.FillRow(y, box.left, box.right, value);
    }
}

/// Half the ellipse's extent on a row, in half pixels: pixel x lies inside when |2x + 1 - left -
/// right| is at most that.
double HalfExtent(const Box& box, std::int64_t y) noexcept {
    const auto width = static_cast<double>(box.Width());
    const auto height = static_cast<double>(box.Height());
    const auto fromMiddle = static_cast<double>(2 * y + 1 - box.top - box.bottom);
    return std::sqrt((height - fromMiddle) * (height + fromMiddle)) * width / height;
}

std::int64_t ToInt64(double value) noexcept {
    return static_cast<std::int64_t>(value);
}

/// A side of a polygon that crosses rows, from its upper end to its lower one.
struct Edge {
    CPoint upper;
    CPoint lower;

    /// The first pixel of a row that lies to the right of the edge or on it.
    [[nodiscard]] std::int64_t FirstPixel(std::int64_t row) const noexcept {
        const double run = double{1} * lower.x - upper.x;
        const double rise = double{1} * lower.y - upper.y;
        const auto down = static_cast<double>(row - upper.y);
        return ToInt64(std::ceil(upper.x + down * run / rise));
    }
};

/// The edges that cross rows at all, by their upper ends.
std::vector<Edge> CrossingEdges(std::span<const CPoint> points) {
    std::vector<Edge> edges;
    edges.reserve(points.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        const CPoint& from = points[i];
        const CPoint& to = points[(i + 1) % points.size()];
        if (from.y < to.y) edges.push_back({from, to});
        if (to.y < from.y) edges.push_back({to, from});
    }
    std::ranges::sort(edges, {}, [](const Edge& edge) { return edge.upper.y; });
    return edges;
}

void FillBetweenEdges(const ByteMask& mask, std::int64_t row, std::span<const Edge> edges,
                      std::vector<std::int64_t>& crossings, std::uint8_t value) {
    crossings.clear();
    for (const Edge& edge : edges) crossings.push_back(edge.FirstPixel(row));
    std::ranges::sort(crossings);
    for (std::size_t i = 0; i + 1 < crossings.size(); i += 2) {
        mask.FillRow(row, crossings[i], crossings[i + 1], value);
    }
}

}  // namespace

void ByteMask::FillRow(std::int64_t row, std::int64_t begin, std::int64_t end,
                       std::uint8_t value) const {
    const std::int64_t first = std::max<std::int64_t>(begin, 0);
    const std::int64_t last = std::min(end, columns);
    if (row < 0 || row >= rows || first >= last) return;
    const auto offset = static_cast<std::size_t>(row * columns + first);
    std::ranges::fill(bytes.subspan(offset, static_cast<std::size_t>(last - first)), value);
}

void FillRectangle(const ByteMask& mask, const CRect& rectangle, std::uint8_t value) {
    FillBox(mask, {rectangle.left, rectangle.top, rectangle.right, rectangle.bottom}, value);
}

void FillEllipse(const ByteMask& mask, const CRect& box, std::uint8_t value) {
    Box inner = Ordered({box.left, box.top, box.right, box.bottom});
    --inner.right;
    --inner.bottom;
    if (inner.Width() < 2 || inner.Height() < 2) {
        FillBox(mask, Ordered(inner), value);
        return;
    }
    const auto middle = static_cast<double>(inner.left + inner.right - 1);
    const std::int64_t end = std::min(inner.bottom, mask.rows);
    for (std::int64_t y = std::max<std::int64_t>(inner.top, 0); y < end; ++y) {
        const double half = HalfExtent(inner, y);
        mask.FillRow(y, ToInt64(std::ceil((middle - half) / 2)),
                     ToInt64(std::floor((middle + half) / 2)) + 1, value);
    }
}

void FillPolygon(const ByteMask& mask, std::span<const CPoint> points, std::uint8_t value) {
    const std::vector<Edge> edges = CrossingEdges(points);
    std::vector<Edge> active;
    std::vector<std::int64_t> crossings;
    auto next = edges.begin();
    for (std::int64_t row = 0; row < mask.rows; ++row) {
        for (; next != edges.end() && next->upper.y <= row; ++next) active.push_back(*next);
        std::erase_if(active, [row](const Edge& edge) { return edge.lower.y <= row; });
        FillBetweenEdges(mask, row, active, crossings, value);
    }
}

}  // namespace quorvex
