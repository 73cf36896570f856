/// Where a block's codeword segments end (ISO/IEC 15444-1 Tables D.8 and D.9), and how its packet
/// headers count passes.
#pragma once

#include "foundation/engines/jpeg2000/decoder/blocks/coded_block.h"
#include "foundation/engines/jpeg2000/decoder/packets/header_bits.h"

namespace quorvex::j2k {

/// The new passes of a block in a packet (Table B.4): 1 to 164.
[[nodiscard]] unsigned ReadPassCount(HeaderBits& bits) noexcept;

/// How many more passes the segment takes that pass `pass` of the block is in.
[[nodiscard]] constexpr unsigned PassesLeftInSegment(unsigned style, unsigned pass) noexcept {
    constexpr unsigned kUnlimited = 1024;
    constexpr unsigned kFirstRaw = 10;
    if ((style & kStyleHighThroughput) != 0) return pass % 3 == 1 ? 2 : 1;
    if ((style & kStyleTerminateAll) != 0) return 1;
    if ((style & kStyleBypass) == 0) return kUnlimited;
    if (pass < kFirstRaw) return kFirstRaw - pass;
    return (pass - kFirstRaw) % 3 == 0 ? 2 : 1;
}

/// Whether pass `pass` of the block begins a segment.
[[nodiscard]] constexpr bool BeginsSegment(unsigned style, unsigned pass) noexcept {
    return pass == 0 || PassesLeftInSegment(style, pass - 1) == 1;
}

}  // namespace quorvex::j2k
