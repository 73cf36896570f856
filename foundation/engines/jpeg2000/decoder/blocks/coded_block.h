/// One code block as the packets give it: what both block decoders start from.
///
/// A block decoder fills `height` rows of `width` values: coefficients in two's complement with ONE
/// fraction bit below the lowest plane. A coefficient that became significant and whose planes were
/// cut off has the bit below its last known plane set (the midpoint); one that is known down to the
/// lowest plane has the fraction bit set. A coefficient that never became significant is 0.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace quorvex::j2k {

/// The sub-band: horizontally first, then vertically.
// NOLINTNEXTLINE(readability-identifier-naming): the standard's own names
enum class Orientation : std::uint8_t { LL = 0, HL = 1, LH = 2, HH = 3 };

/// The code-block style byte of COD and COC (ISO/IEC 15444-1 Table A.19, 15444-15 Table A.4).
enum BlockStyle : unsigned {
    kStyleBypass = 0x01,
    kStyleReset = 0x02,
    kStyleTerminateAll = 0x04,
    kStyleVerticallyCausal = 0x08,
    kStylePredictableTermination = 0x10,
    kStyleSegmentationSymbols = 0x20,
    kStyleHighThroughput = 0x40,
    kStyleMixed = 0x80,  ///< with kStyleHighThroughput: a block's first bytes tell its coder
};

/// A codeword segment, joined where packets split it. Not readable past `size`.
///
/// High throughput: the first segment is the clean-up pass; the second, if any, holds the
/// significance propagation pass and, with two passes, the magnitude refinement pass. Placeholder
/// passes are taken off before: they count as zero bit planes.
struct BlockSegment {
    const unsigned char* data = nullptr;
    std::uint32_t size = 0;
    std::uint32_t passes = 0;
};

/// The caller has checked: width and height are 1 to 1024, with a product of at most 4096.
struct CodedBlock {
    int width = 0;
    int height = 0;
    int bitPlanes = 0;  ///< coded magnitude planes: totalPlanes - zero planes; may be out of range
    int totalPlanes = 0;  ///< Mb, with the shift of a region of interest added
    std::span<const BlockSegment> segments;
    Orientation band = Orientation::LL;
    unsigned style = 0;  ///< BlockStyle
};

/// Planes above this do not fit into 32 bits beside sign and fraction.
inline constexpr int kMostBitPlanes = 30;

}  // namespace quorvex::j2k
