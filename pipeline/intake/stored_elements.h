/// The stored values of a grey frame, one element each.
#pragma once

#include "pipeline/pixel_block.h"
#include "pipeline/pixel_elements.h"
#include "pipeline/value_range.h"

namespace quorvex {

/// A frame as elements, with its lowest and highest one.
struct ElementFrame {
    PixelBlock elements;
    ValueSpan span;
};

/// Makes elements of a frame: whole bytes for every pixel, unused bits cleared or filled with the
/// sign. A frame that is too short ends in zeros. The frame's own block is used again where it is
/// laid out that way already.
[[nodiscard]] ElementFrame StoredElements(PixelBlock frame, const StoredLayout& layout);

}  // namespace quorvex
