#include "foundation/platform/region.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
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

/// Paints the ground, in one go, which is the fastest, and row by row what `paintRow` lays over it.
template <class PaintRow>
void PaintRows(const ByteMask& mask, std::uint8_t ground, PaintRow paintRow) {
    std::ranges::fill(mask.bytes, ground);
    for (std::int64_t row = 0; row < mask.rows; ++row) paintRow(row);
}

void PaintBox(const ByteMask& mask, const Box& box, const ShapePaint& paint) {
    PaintRows(mask, paint.outside, [&](std::int64_t row) {
        if (row < box.top || row >= box.bottom) return;
        mask.FillRow(row, box.left, box.right, paint.inside);
    });
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
    Edge(const CPoint& upper, const CPoint& lower) noexcept
        : top(upper.y),
          bottom(lower.y),
          x(upper.x),
          run(double{1} * lower.x - upper.x),
          rise(double{1} * lower.y - upper.y) {}

    /// The first pixel of a row that lies to the right of the edge or on it.
    [[nodiscard]] std::int64_t FirstPixel(std::int64_t row) const noexcept {
        const double place = x + static_cast<double>(row - top) * run / rise;
        const std::int64_t cut = ToInt64(place);
        return cut + static_cast<std::int64_t>(static_cast<double>(cut) < place);
    }

    std::int32_t top;
    std::int32_t bottom;
    double x;
    double run;
    double rise;
};

/// The edges that cross rows of the mask where that shows, by their upper ends.
std::vector<Edge> CrossingEdges(const ByteMask& mask, std::span<const CPoint> points) {
    std::vector<Edge> edges;
    edges.reserve(points.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        CPoint from = points[i];
        CPoint to = points[(i + 1) % points.size()];
        if (from.y > to.y) std::swap(from, to);
        const bool isBeside = from.x >= mask.columns && to.x >= mask.columns;
        const bool crossesRows = from.y < to.y && to.y > 0 && from.y < mask.rows;
        if (crossesRows && !isBeside) edges.emplace_back(from, to);
    }
    std::ranges::sort(edges, {}, [](const Edge& edge) { return edge.top; });
    return edges;
}

/// The pixels of one row at which edges are crossed. Only whether their number is odd counts, so a
/// bit stands for them, and no order has to be found.
class RowCrossings {
public:
    explicit RowCrossings(std::int64_t columns)
        : columns_(columns),
          words_(static_cast<std::size_t>(columns) / 64 + 1),
          touched_(words_.size() / 64 + 1) {}

    void Cross(std::int64_t pixel) noexcept {
        if (pixel >= columns_) return;
        const auto place = static_cast<std::size_t>(std::max<std::int64_t>(pixel, 0));
        words_[place / 64] ^= Bit(place);
        touched_[place / 4096] |= Bit(place / 64);
    }

    /// Fills what lies behind an odd number of crossings, and forgets them.
    void FillOdd(const ByteMask& mask, std::int64_t row, std::uint8_t value) {
        begin_ = kOutside;
        for (std::size_t i = 0; i < touched_.size(); ++i) {
            for (std::uint64_t left = std::exchange(touched_[i], 0); left != 0; left &= left - 1) {
                const std::size_t at = 64 * i + static_cast<std::size_t>(std::countr_zero(left));
                FillWord(mask, row, static_cast<std::int64_t>(64 * at),
                         std::exchange(words_[at], 0), value);
            }
        }
        if (begin_ != kOutside) mask.FillRow(row, begin_, columns_, value);
    }

private:
    static constexpr std::int64_t kOutside = -1;

    static std::uint64_t Bit(std::size_t place) noexcept {
        return std::uint64_t{1} << (place % 64);
    }

    static bool HasThree(std::uint64_t word) noexcept {
        word &= word - 1;
        return (word & (word - 1)) != 0;
    }

    /// Many crossings close together are filled by bits.
    void FillWord(const ByteMask& mask, std::int64_t row, std::int64_t first, std::uint64_t word,
                  std::uint8_t value) {
        const bool isWhole = first + 64 <= columns_;
        if (isWhole && HasThree(word)) return FillDense(mask, row, first, word, value);
        for (; word != 0; word &= word - 1) {
            const std::int64_t pixel = first + std::countr_zero(word);
            if (begin_ != kOutside) mask.FillRow(row, begin_, pixel, value);
            begin_ = begin_ == kOutside ? pixel : kOutside;
        }
    }

    void FillDense(const ByteMask& mask, std::int64_t row, std::int64_t first, std::uint64_t word,
                   std::uint8_t value) {
        if (begin_ != kOutside) mask.FillRow(row, begin_, first, value);
        for (unsigned shift = 1; shift < 64; shift *= 2) word ^= word << shift;
        if (begin_ != kOutside) word = ~word;
        FillBits(mask.bytes.subspan(static_cast<std::size_t>(row * columns_ + first), 64), word,
                 value);
        begin_ = word >> 63U != 0 ? first + 64 : kOutside;
    }

    /// Eight pixels at a time: each byte of a word gets its bit, and grows it to all of its bits.
    static void FillBits(std::span<std::uint8_t> pixels, std::uint64_t bits, std::uint8_t value) {
        constexpr std::uint64_t kOnes = 0x0101010101010101;
        for (std::size_t i = 0; i < pixels.size(); i += 8, bits >>= 8U) {
            const std::uint64_t own = (bits & 0xFFU) * kOnes & 0x8040201008040201;
            const std::uint64_t inside = ((own + 0x7F * kOnes) >> 7U & kOnes) * 0xFF;
            std::uint64_t word = 0;
            std::memcpy(&word, pixels.data() + i, 8);
            word = (word & ~inside) | (value * kOnes & inside);
            std::memcpy(pixels.data() + i, &word, 8);
        }
    }

    std::int64_t columns_;
    std::int64_t begin_ = kOutside;  ///< where the pixels to be filled begin
    std::vector<std::uint64_t> words_;
    std::vector<std::uint64_t> touched_;  ///< a bit for each word with crossings
};

/// Crosses the edges that reach `row`, and forgets those that ended above it.
void CrossEdges(std::vector<Edge>& edges, std::int64_t row, RowCrossings& crossings) {
    for (std::size_t i = 0; i < edges.size();) {
        if (edges[i].bottom > row) {
            crossings.Cross(edges[i++].FirstPixel(row));
        } else {
            edges[i] = edges.back();
            edges.pop_back();
        }
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

void PaintRectangle(const ByteMask& mask, const CRect& rectangle, const ShapePaint& paint) {
    PaintBox(mask, {rectangle.left, rectangle.top, rectangle.right, rectangle.bottom}, paint);
}

void PaintEllipse(const ByteMask& mask, const CRect& box, const ShapePaint& paint) {
    Box inner = Ordered({box.left, box.top, box.right, box.bottom});
    --inner.right;
    --inner.bottom;
    if (inner.Width() < 2 || inner.Height() < 2) return PaintBox(mask, Ordered(inner), paint);
    const auto middle = static_cast<double>(inner.left + inner.right - 1);
    PaintRows(mask, paint.outside, [&](std::int64_t row) {
        if (row < inner.top || row >= inner.bottom) return;
        const double half = HalfExtent(inner, row);
        mask.FillRow(row, ToInt64(std::ceil((middle - half) / 2)),
                     ToInt64(std::floor((middle + half) / 2)) + 1, paint.inside);
    });
}

void PaintPolygon(const ByteMask& mask, std::span<const CPoint> points, const ShapePaint& paint) {
    const std::vector<Edge> edges = CrossingEdges(mask, points);
    std::vector<Edge> active;
    RowCrossings crossings(mask.columns);
    auto next = edges.begin();
    PaintRows(mask, paint.outside, [&](std::int64_t row) {
        for (; next != edges.end() && next->top <= row; ++next) active.push_back(*next);
        CrossEdges(active, row, crossings);
        crossings.FillOdd(mask, row, paint.inside);
    });
}

}  // namespace quorvex
