/// The modality stage: a grey frame as stored becomes one of modality values, once for each frame.
#pragma once

#include "pipeline/intake/modality_transform.h"
#include "pipeline/pixel_block.h"
#include "pipeline/pixel_elements.h"
#include "pipeline/value_range.h"

#include <cstdint>

namespace quorvex {

/// A grey frame after the modality stage.
///
/// Elements hold the low bits of their values, two's complement, when the values of the frame
/// differ by less than their width can tell apart. Byte frames whose values do not are widened to
/// words, and frames for which words are too narrow are scaled to 0 .. 65535. Where a small slope
/// would cost detail, elements are as fine as stored values: these themselves, their complement
/// where the slope falls, or, of 32 bits, the frame's values scaled to 0 .. 65535.
struct ModalityFrame {
    PixelBlock pixels;
    int bytesPerPixel = 0;
    ValueSpan values;    ///< lowest and highest modality value of the frame
    ValueSpan elements;  ///< the same as elements; the same numbers unless scaled
    ValueScale scale;
};

/// Runs the stage.
///
/// @param frame  the frame as stored; its block is used again where it can be
/// @param met    values met so far: a frame that words are too narrow for is scaled so that these
///               fit too, and looks alike from frame to frame
[[nodiscard]] ModalityFrame ApplyModalityStage(PixelBlock frame, const StoredLayout& layout,
                                               const ModalityTransform& transform, ValueSpan met);

}  // namespace quorvex
