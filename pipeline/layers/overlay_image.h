/// Overlay planes drawn into an overlay image: a byte image of the size of the picture.
#pragma once

#include "pipeline/layers/bit_planes.h"

#include <cstddef>
#include <optional>
#include <span>

namespace quorvex {

class CDcmObject;

/// The picture that an overlay image lies over.
struct OverlayPicture {
    PlaneSize size;
    /// Bytes from one pixel of the overlay image to the next: 1 for grey, 3 or more for colour.
    std::size_t pixelBytes = 1;

    [[nodiscard]] bool IsColour() const noexcept { return pixelBytes > 2; }
    [[nodiscard]] std::size_t ImageBytes() const noexcept { return size.BitCount() * pixelBytes; }
};

/// The picture of a header: a pixel of up to 2 bytes has one in the overlay image.
[[nodiscard]] OverlayPicture PictureOf(const CDcmObject& object);
[[nodiscard]] constexpr std::size_t OverlayPixelBytes(unsigned bitsAllocated,
                                                      unsigned samplesPerPixel) noexcept {
    const std::size_t bytes = std::size_t{bitsAllocated} * samplesPerPixel / 8;
    return bytes > 2 ? bytes : 1;
}

/// Draws the first plane that has Overlay Data. `image` has the picture's ImageBytes().
void BurnFirstOverlay(const CDcmObject& object, const OverlayPicture& picture,
                      std::span<unsigned char> image);

/// Draws all planes. `embedded` are the bits of those that lie in the pixel data; it may be empty.
void BurnOverlays(const CDcmObject& object, std::span<const unsigned char> embedded,
                  const OverlayPicture& picture, std::span<unsigned char> image);

}  // namespace quorvex
