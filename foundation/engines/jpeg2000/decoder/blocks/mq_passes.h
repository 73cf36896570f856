/// The coding passes of ISO/IEC 15444-1 Annex D over one block.
///
/// A word holds the state of four rows of one column, a stripe: bits 0 to 17 the significance of
/// 3 columns x 6 rows around them (bit 3 * row + column, row 0 above the stripe), then for row i of
/// the stripe bit 18 + 3i "refined before", 19 + 3i "coded in this plane", 20 + 3i its sign; bit 30
/// the sign above the stripe, bit 31 the one below. So one shift by 3i serves all of row i.
#pragma once

#include "foundation/engines/jpeg2000/decoder/blocks/mq_decoder.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace quorvex::j2k {

inline constexpr std::uint32_t kEachRow = 0x249;  ///< bit 3i for each row i
inline constexpr std::uint32_t kAround = 0x1EF;   ///< the eight neighbours of row 0
inline constexpr std::uint32_t kAnySignificant = 0x3FFFF;
inline constexpr unsigned kSelf = 4;
inline constexpr unsigned kRefined = 18;
inline constexpr unsigned kCoded = 19;
inline constexpr unsigned kSign = 20;
inline constexpr unsigned kSignAbove = 30;
inline constexpr unsigned kSignBelow = 31;

/// A block in the making. `flags` has a border of one word on each side; `values` holds the four
/// rows of a column side by side, as magnitude with the sign in bit 31.
struct BlockInWork {
    int width = 0;
    int height = 0;
    std::ptrdiff_t flagStride = 0;
    std::uint32_t* flags = nullptr;  ///< of the first column of the first stripe
    std::uint32_t* values = nullptr;
    const ZeroCodingTable* zeroCoding = nullptr;
    bool isCausal = false;
    std::array<MqState, kContexts> contexts = kFirstStates;

    [[nodiscard]] int Stripes() const noexcept { return (height + 3) / 4; }
    /// Bit 3i for each row that the stripe has.
    [[nodiscard]] std::uint32_t RowsOf(int stripe) const noexcept {
        const int rows = height - 4 * stripe;
        return rows >= 4 ? kEachRow : kEachRow & ((1U << (3 * rows)) - 1);
    }
};

/// `plane` counts from 1, since bit 0 of a value is its fraction.
void SignificancePass(BlockInWork& block, MqDecoder& decoder, int plane) noexcept;
void RefinementPass(BlockInWork& block, MqDecoder& decoder, int plane) noexcept;
void CleanUpPass(BlockInWork& block, MqDecoder& decoder, int plane) noexcept;
void RawSignificancePass(BlockInWork& block, RawBits& bits, int plane) noexcept;
void RawRefinementPass(BlockInWork& block, RawBits& bits, int plane) noexcept;

}  // namespace quorvex::j2k
