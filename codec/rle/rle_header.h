/// The header of an RLE frame: how many segments there are, and where each lies.
#pragma once

#include "foundation/types/limits.h"

#include <array>
#include <cstddef>
#include <optional>
#include <span>

namespace quorvex {

/// One segment's bytes, as far as the source has them.
struct RleSegment {
    std::span<const unsigned char> bytes;
    bool isInside = false;  ///< it begins and ends inside the source
};

struct RleHeader {
    std::size_t count = 0;
    std::array<RleSegment, kMostRleSegments> segments;
};

/// Nothing for a source without a whole header, or with a count that no header has room for.
[[nodiscard]] std::optional<RleHeader> ReadRleHeader(
    std::span<const unsigned char> source) noexcept;

}  // namespace quorvex
