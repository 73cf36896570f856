/// Overlay planes drawn into an overlay image: a byte image of the size of the picture.
#pragma once

#include "pipeline/layers/bit_planes.h"

#include <cstddef>
#include <span>

namespace quorvex {

class CDcmObject;

/// The picture that an overlay image lies over.
struct OverlayPicture {
    PlaneSize size;
    /// Bytes from one pixel of the overlay image to the next: 1 for grey, 3 or more for colour.
    std::size_t pixelBytes = 1;

    [[nodiscard]] std::size_t ImageBytes() const noexcept { return size.BitCount() * pixelBytes; }
};

/// The picture that a header describes; attributes that are absent count as 0.
[[nodiscard]] OverlayPicture PictureOf(const CDcmObject& object);

/// Bytes of a pixel in the overlay image: 1 for pixels of up to 2 bytes, else as many as they have.
[[nodiscard]] constexpr std::size_t OverlayPixelBytes(unsigned bitsAllocated,
                                                      unsigned samplesPerPixel) noexcept {
    const std::size_t bytes = std::size_t{bitsAllocated} * samplesPerPixel / 8;
    return bytes > 2 ? bytes : 1;
}

/// Draws the first plane that has Overlay Data. `image` has the picture's `ImageBytes()`.
void BurnFirstOverlay(const CDcmObject& object, const OverlayPicture& picture,
                      std::span<unsigned char> image);

/// Draws all planes. `embedded` are the bits of those that lie in the pixel data; it may be empty.
void BurnOverlays(const CDcmObject& object, std::span<const unsigned char> embedded,
                  const OverlayPicture& picture, std::span<unsigned char> image);

}  // namespace quorvex
