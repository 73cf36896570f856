/// Shapes on a picture of bytes: which pixels lie in a rectangle, an ellipse or a polygon.
///
/// A pixel is the point (x, y), counted from 0; of what bounds a shape, the left and upper edges
/// lie inside and the right and lower ones outside. Whatever the coordinates, only pixels of the
/// picture are written, and all of them; the work goes by its rows, and by the rows that edges
/// cross, not by the shape's size.
#pragma once

#include "quorvex/Types.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace quorvex {

/// A picture of one byte a pixel, row by row from the top; `bytes` has columns x rows of them.
struct ByteMask {
    std::span<std::uint8_t> bytes;
    std::int64_t columns = 0;
    std::int64_t rows = 0;

    /// Writes the pixels from `begin` up to but not including `end` of a row, as far as they exist.
    void FillRow(std::int64_t row, std::int64_t begin, std::int64_t end, std::uint8_t value) const;
};

/// What a shape makes of every pixel of a picture.
struct ShapePaint {
    std::uint8_t inside = 0;
    std::uint8_t outside = 0;
};

void PaintRectangle(const ByteMask& mask, const CRect& rectangle, const ShapePaint& paint);

/// The ellipse in a box whose last column and row do not count either: a box 10 wide holds an
/// ellipse 9 wide. Corners may be given in any order; a box less than 3 wide or high is filled
/// whole.
void PaintEllipse(const ByteMask& mask, const CRect& box, const ShapePaint& paint);

/// The polygon through the points, closed from the last to the first: where edges enclose a pixel
/// an even number of times, it lies outside.
void PaintPolygon(const ByteMask& mask, std::span<const CPoint> points, const ShapePaint& paint);

}  // namespace quorvex
