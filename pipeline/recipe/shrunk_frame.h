/// A grey frame at the size at which it is seen, made once for many windows.
#pragma once

#include "quorvex/Types.h"

#include <cstdint>
#include <vector>

namespace quorvex {

struct DisplayedImage;
struct DisplayFunction;

/// A frame whose stored values have been averaged over the area of each new pixel, with fractions,
/// so that a window change reads no more pixels than are seen.
///
/// What lies over it is shrunk alike: how much of each pixel the shutter and the marks of a layer
/// cover, 0 to 255.
struct ShrunkFrame {
    CSize size;
    std::vector<std::uint16_t> words;  ///< rows from the top: (stored value - low) x steps
    double low = 0.0;
    double steps = 1.0;
    std::size_t wordCount = 1;  ///< words that occur are below that
};

/// The size that a frame is shrunk to where it is scaled to `scaled`: an axis that is enlarged
/// stays.
[[nodiscard]] CSize ShrunkSize(CSize image, CSize scaled) noexcept;

/// Whether averaging a frame's values gives the average of its display values: grey of up to 16
/// bits, and a straight line over all values of the frame, none of them beyond black or white.
[[nodiscard]] bool CanShrink(const DisplayedImage& image, const DisplayFunction& function) noexcept;

[[nodiscard]] ShrunkFrame Shrink(const DisplayedImage& image, CSize size);

/// How much of each pixel of a shrunk image a layer covers. `bits` is in overlay order, a bit a
/// pixel of the image.
[[nodiscard]] std::vector<unsigned char> CoverageOfBits(const std::vector<unsigned char>& bits,
                                                        CSize image, CSize size);
/// The same for a mask of bytes: what is not 0 covers.
[[nodiscard]] std::vector<unsigned char> CoverageOfMask(const std::vector<unsigned char>& mask,
                                                        CSize image, CSize size);

}  // namespace quorvex
