/// Colour frames as `CXDIPP` holds them: one byte a sample, red, green, blue.
#pragma once

#include "pipeline/pixel_block.h"

namespace quorvex {

struct PixelHeader;

/// Makes one of a frame whose samples are interleaved.
///
/// Of wider samples the eight highest stored bits are taken; of more than three samples a pixel the
/// first three, and of two the second one twice. A frame that is too short ends in zeros. The
/// frame's own block is used again where it has that layout already.
[[nodiscard]] PixelBlock RgbFrame(PixelBlock frame, const PixelHeader& header);

}  // namespace quorvex
