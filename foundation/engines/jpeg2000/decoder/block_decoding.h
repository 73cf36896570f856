/// From a block's chunks to its coefficients.
#pragma once

#include "foundation/engines/jpeg2000/decoder/blocks/ht_block.h"
#include "foundation/engines/jpeg2000/decoder/blocks/mq_block.h"
#include "foundation/engines/jpeg2000/decoder/tile_data.h"

#include <array>
#include <cstdint>
#include <vector>

namespace quorvex::j2k {

inline constexpr std::size_t kMostBlockArea = 4096;

/// What one thread needs to decode blocks, kept from block to block.
struct BlockScratch {
    MqScratch mq;
    HtScratch ht;
    std::vector<BlockSegment> segments;
    std::vector<unsigned char> joined;
    std::array<std::int32_t, kMostBlockArea> coefficients;
};

struct BlockPlace {
    unsigned component = 0;
    const BandLayout* band = nullptr;
    int width = 0;
    int height = 0;
};

/// Fills the scratch's coefficients row by row, as coded_block.h tells, a region of interest's
/// shift taken back. Returns whether the block was sound. Throws std::bad_alloc.
[[nodiscard]] bool DecodeBlock(const TileData& tile, const BlockPlace& place,
                               const BlockState& state, BlockScratch& scratch);

}  // namespace quorvex::j2k
