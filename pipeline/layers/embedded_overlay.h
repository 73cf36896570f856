/// Overlays that lie in bits of the pixel data which hold no image.
#pragma once

#include <span>
#include <vector>

namespace quorvex {

class CDcmObject;

/// All of them that have the size of the image, in one plane in overlay order; empty without any.
/// `frame` is as it is stored; pixels past its end have no overlay bits.
[[nodiscard]] std::vector<unsigned char> EmbeddedOverlays(const CDcmObject& object,
                                                          std::span<const unsigned char> frame);

}  // namespace quorvex
