/// JPEG 2000 pictures at the resolutions that their streams hold.
#pragma once

#include "quorvex/Types.h"

#include <cstdint>
#include <optional>
#include <span>

namespace quorvex {

/// One resolution of a stream.
struct Jpeg2000Reduction {
    int discardedLevels = 0;  ///< each halves width and height
    CSize whole;              ///< of the full resolution
    CSize reduced;
    int precision = 0;  ///< bits of a sample
};

/// The lowest resolution with at least `least` columns and rows. Nothing where that is the full
/// one, or where the stream is not decoded or has components of unequal size. Throws
/// std::bad_alloc.
[[nodiscard]] std::optional<Jpeg2000Reduction> ReduceJpeg2000(std::span<const unsigned char> stream,
                                                              CSize least);

/// The size of a stream's picture with so many levels discarded; nothing where it has not as many.
/// Throws std::bad_alloc.
[[nodiscard]] std::optional<CSize> ReducedSizeOf(std::span<const unsigned char> stream,
                                                 int discardedLevels);

}  // namespace quorvex
