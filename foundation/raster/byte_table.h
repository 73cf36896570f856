/// Bytes looked up in a table of 256, for whatever instructions the machine has.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace quorvex {

using ByteTable256 = std::span<const std::uint8_t, 256>;

/// Looks up all bytes of pixels of three bytes, and exchanges the first and the last one.
/// The two blocks do not overlap.
void MapColoursReversed(ByteTable256 table, const unsigned char* from, unsigned char* to,
                        std::size_t pixels);

}  // namespace quorvex
