/// The pixels of a grey frame as whole numbers of 1, 2 or 4 bytes that hold their stored values.
#pragma once

#include "quorvex/CXDIPP.h"

#include <cstddef>
#include <cstdint>

namespace quorvex {

/// How a grey frame stores its pixels.
struct StoredLayout {
    std::size_t pixelCount = 0;
    int bitsAllocated = 0;
    int bitsStored = 0;
    int highBit = 0;
    bool isSigned = false;
    bool extendsSign = true;  ///< signed values take their sign from their highest stored bit

    /// Bytes of one element: 1, 2 or 4; 0 for more than 32 bits, or none.
    [[nodiscard]] int ElementBytes() const noexcept;
};

/// Lowest and highest of some values.
struct ValueSpan {
    std::int64_t low = 0;
    std::int64_t high = 0;
};

/// A frame as elements, with its lowest and highest one.
struct ElementFrame {
    PixelBlock elements;
    ValueSpan span;
};

/// Makes elements of a frame: whole bytes for every pixel, unused bits cleared or filled with the
/// sign. A frame that is too short ends in zeros. Where the frame is laid out that way already, it
/// becomes the elements itself.
[[nodiscard]] ElementFrame StoredElements(PixelBlock frame, const StoredLayout& layout);

/// A block of `size` bytes, undefined. Throws std::bad_alloc, BlockTooLarge.
[[nodiscard]] PixelBlock NewPixelBlock(std::size_t size);

}  // namespace quorvex
