/// Overlays as a render job takes them.
#pragma once

#include "pipeline/pixel_block.h"
#include "quorvex/Types.h"

#include <span>

namespace quorvex {

class CDcmObject;

/// All overlays of `object` over an image of that size, in the layout of the working image: rows
/// from the bottom, one byte a pixel, or blue, green, red for an image of more than 2 bytes a
/// pixel. `embedded` are the bits of planes that lie in the pixel data. Without an object all is
/// clear.
[[nodiscard]] PixelBlock OverlayLayer(const CDcmObject* object,
                                      std::span<const unsigned char> embedded, CSize imageSize,
                                      int imageBytesPerPixel);

/// The same for a frame as it is stored; empty where the header names no overlay.
[[nodiscard]] PixelBlock HeaderOverlays(const CDcmObject& object,
                                        std::span<const unsigned char> frame, CSize imageSize,
                                        int imageBytesPerPixel);

}  // namespace quorvex
