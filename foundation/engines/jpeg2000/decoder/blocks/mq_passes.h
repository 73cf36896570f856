/// The coding passes of ISO/IEC 15444-1 Annex D over one block.
///
/// Four rows are a stripe. Sixteen columns of a stripe have their state in words of 64 bits, whose
/// bits stand in the order of the scan, bit 4 * column + row: so the members of a pass are one
/// expression, and counting zeros leads from one to the next. For the contexts there is besides a
/// word for each column of a stripe: bits 0 to 17 the significance of 3 columns x 6 rows around it
/// (bit 3 * row + column, row 0 above the stripe), bit 20 + 3i the sign of row i, bit 30 the sign
/// above the stripe, bit 31 the one below. So one shift by 3i serves all of row i.
#pragma once

#include "foundation/engines/jpeg2000/decoder/blocks/mq_decoder.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace quorvex::j2k {

/// Sixteen columns of a stripe.
struct Tract {
    std::uint64_t significant = 0;
    std::uint64_t near = 0;     ///< has a significant neighbour
    std::uint64_t coded = 0;    ///< in this plane's significance pass
    std::uint64_t refined = 0;  ///< before
    std::uint64_t valid = 0;    ///< lies in the block
};

inline constexpr int kTractColumns = 16;
inline constexpr int kTractValues = 64;

/// A block in the making. Tracts and columns have a border on each side. `values` holds 64 values a
/// tract in the order of its bits, as magnitude with the sign in bit 31.
struct BlockInWork {
    int width = 0;
    int height = 0;
    int tractsAcross = 0;
    std::ptrdiff_t tractStride = 0;
    std::ptrdiff_t columnStride = 0;
    Tract* tracts = nullptr;  ///< the first of the first stripe
    std::uint32_t* columns = nullptr;
    std::uint32_t* values = nullptr;
    const ZeroCodingTable* zeroCoding = nullptr;
    bool isCausal = false;
    std::array<MqState, kContexts> contexts = kFirstStates;

    [[nodiscard]] int Stripes() const noexcept { return (height + 3) / 4; }
};

/// `plane` counts from 1, since bit 0 of a value is its fraction.
void SignificancePass(BlockInWork& block, MqDecoder& decoder, int plane) noexcept;
void RefinementPass(BlockInWork& block, MqDecoder& decoder, int plane) noexcept;
void CleanUpPass(BlockInWork& block, MqDecoder& decoder, int plane) noexcept;
void RawSignificancePass(BlockInWork& block, RawBits& bits, int plane) noexcept;
void RawRefinementPass(BlockInWork& block, RawBits& bits, int plane) noexcept;

}  // namespace quorvex::j2k
