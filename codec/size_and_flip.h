/// Frames scaled and flipped.
#pragma once

#include "codec/frame_description.h"
#include "quorvex/Types.h"

#include <span>

namespace quorvex {

/// Scales a frame with rows and columns, of 1, 3 or 4 samples, into `result`, which has
/// `bytesPerPixel` for each pixel of `size`. Pixels without a whole byte for each sample, and grey
/// ones of more than 2 bytes, have no resize: then nothing is written. Throws std::bad_alloc.
void ResizeFrame(const FrameDescription& frame, const unsigned char* source,
                 std::span<unsigned char> result, CSize size, int bytesPerPixel);

/// Exchanges top and bottom in place, and of colour red and blue: the rows of a bitmap.
///
/// @param bits     8, or 16 for one sample
/// @param samples  1, or 3
/// @return 1, or 0 for any other pixels and for an image without size: nothing is written
int HorizontalFlipImage(unsigned char* image, CSize size, unsigned short bits,
                        unsigned short samples);

}  // namespace quorvex
