/// Exact rearrangements of 8-bit pixels, for whatever instructions the machine has.
#pragma once

#include "foundation/raster/pixel_grid.h"

#include <cstddef>

namespace quorvex {

/// Reverses the order of the pixels of every row, in place; a pixel is 1, 2 or 3 bytes, and the row
/// whole pixels.
void ReverseRows(const PixelGrid<unsigned char>& image, std::size_t pixelBytes);

/// Turns counter-clockwise as rows run down, by 0 to 3 quarters. The destination has the size of
/// the turned source; both have 1 or 3 channels.
void TurnPixels(const PixelGrid<const unsigned char>& source,
                const PixelGrid<unsigned char>& destination, int quarters);

}  // namespace quorvex
