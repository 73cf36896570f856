/// The drawing surface of this platform: bitmaps put one to one onto a host's pixel memory.
#pragma once

#include "quorvex/Types.h"

#include <cstdint>
#include <span>

namespace quorvex {

/// One entry of a bitmap's colour table.
struct RGBQUAD {
    std::uint8_t rgbBlue = 0;
    std::uint8_t rgbGreen = 0;
    std::uint8_t rgbRed = 0;
    std::uint8_t rgbReserved = 0;
};

inline constexpr int kStretchHalftone = 4;

/// Chooses how stretched bitmaps are sampled. Nothing is stretched here, so it has no effect.
void SetStretchBltMode(DrawingSurface& surface, int mode) noexcept;

/// Puts a bitmap's pixels onto the surface, one to one, its upper left corner at `place`.
///
/// What lies outside the surface is cut off. Rows of the bitmap run from the bottom and are padded
/// to whole 32-bit words.
///
/// @param header   biBitCount 8 (through `colours`) or 24 (blue, green, red); positive height
/// @param colours  the colour table; an index past its end is black
/// @param bits     the rows; a block that is too short draws nothing
/// @return lines drawn; 0 also for a surface without pixels or one that is not 3 or 4 bytes a pixel
int SetDIBitsToDevice(DrawingSurface& surface, CPoint place, const tagBITMAPINFOHEADER& header,
                      std::span<const RGBQUAD> colours, std::span<const unsigned char> bits);

/// The same for a picture whose rows have no padding, of 1 byte a pixel (grey) or 3 (blue, green,
/// red).
int PutPicture(DrawingSurface& surface, CPoint place, CSize size, int pixelBytes,
               std::span<const unsigned char> bits);

}  // namespace quorvex
