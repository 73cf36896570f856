/// What one thread needs to decode high-throughput blocks, kept from block to block.
#pragma once

#include "foundation/engines/jpeg2000/decoder/blocks/ht_streams.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace quorvex::j2k {

inline constexpr int kLargestBlockSide = 1024;
inline constexpr int kLargestBlock = 4096;  ///< samples

inline constexpr std::size_t kLargestHtSuffix = 4079;  ///< Scup
/// What 4096 samples of 31 bits can use, stuffing included; the rest of a stream is not looked at.
inline constexpr std::size_t kLargestHtMagnitudes = 17408;

/// What the magnitudes and the codes of a row of quads take at most. They are read as if the
/// streams had them, even where these have ended.
constexpr std::size_t HtRowBytes(int width) {
    return static_cast<std::size_t>(width + 1) * 8;
}
constexpr std::size_t HtRowCodeBytes(int width) {
    return static_cast<std::size_t>(width) + 4;
}

/// Groups of 4 x 4 samples of a block, with one around on each side: the most for any shape.
inline constexpr std::size_t kMostHtGroups = 1024;

struct HtScratch {
    static constexpr std::size_t kPad = 16;  ///< values on both sides of a row that are 0
    static constexpr std::size_t kQuads = kLargestBlockSide / 2 + 2 * kPad;

    alignas(64) std::array<unsigned char,
                           kLargestHtMagnitudes + HtRowBytes(kLargestBlockSide) + kHtSlack> forward;
    alignas(
        64) std::array<unsigned char, kLargestHtSuffix + kLargestBlock / 4 + 2 * kHtSlack> backward;

    /// A row of quads: its entries of HtTables::quads; for each pair the entry of
    /// HtTables::offsets and the bits that it was found by.
    alignas(64) std::array<std::uint32_t, kQuads> quads;
    alignas(64) std::array<std::uint32_t, kQuads> offsets;
    alignas(64) std::array<std::uint32_t, kQuads> offsetBits;

    /// The quads with the exponent bound U, where their magnitudes begin in the stream, bits, and
    /// what they give to the contexts of the next row.
    alignas(64) std::array<std::uint32_t, kQuads> bounds;
    alignas(64) std::array<std::uint32_t, kQuads> places;
    alignas(64) std::array<std::uint32_t, kQuads> contexts;

    /// The lower samples of a row of quads as they were coded, 0 where insignificant; and a row for
    /// samples that lie below the block.
    alignas(64) std::array<std::uint32_t, kLargestBlockSide + 2 * kPad> lowers;
    alignas(64) std::array<std::int32_t, kLargestBlockSide + 2 * kPad> below;

    /// Significance after the clean-up pass: bit 4 x column + row of groups of 4 x 4 samples. What
    /// the propagation pass adds.
    std::array<std::uint16_t, kMostHtGroups> groups;
    std::array<std::uint16_t, kMostHtGroups> found;
};

}  // namespace quorvex::j2k
