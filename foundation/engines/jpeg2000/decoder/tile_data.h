/// One tile as its packets have brought it: all that its blocks are decoded from.
#pragma once

#include "foundation/engines/jpeg2000/decoder/codestream/codestream.h"
#include "foundation/engines/jpeg2000/decoder/packets/packet_reader.h"
#include "foundation/engines/jpeg2000/decoder/packets/tile_layout.h"

#include <cstdint>
#include <vector>

namespace quorvex::j2k {

struct TileData {
    Parameters parameters;
    TileLayout layout;
    Bytes data;                         ///< the bodies of all tile-parts
    std::vector<unsigned char> joined;  ///< what `data` shows where there are several
    std::vector<Chunk> chunks;
    bool isWhole = true;  ///< all packets were there and sound
};

enum class TileRead { kDone, kRefused };

/// kRefused for a tile that would take too much memory for `mostPrecincts`, or whose parameters do
/// not fit together. Throws std::bad_alloc.
[[nodiscard]] TileRead ReadTile(const Codestream& codestream, std::uint32_t tile,
                                const PacketSelection& selection, std::uint64_t mostPrecincts,
                                TileData& data);

}  // namespace quorvex::j2k
