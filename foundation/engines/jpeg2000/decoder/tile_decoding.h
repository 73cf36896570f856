/// From a tile's blocks to samples in the caller's planes.
#pragma once

#include "foundation/engines/jpeg2000/decoder/decoder.h"
#include "foundation/engines/jpeg2000/decoder/tile_data.h"

#include <span>
#include <vector>

namespace quorvex::j2k {

/// One component's way out of a tile.
struct ComponentTarget {
    unsigned resolution = 0;     ///< which of the tile's is taken
    Rect region;                 ///< what is taken of it
    std::uint32_t x = 0, y = 0;  ///< where its upper left corner lies in the plane
    const OutputPlane* plane = nullptr;
    SampleRange range;
};

/// False where blocks were damaged. Throws std::bad_alloc.
[[nodiscard]] bool DecodeTile(const TileData& tile, std::span<const ComponentTarget> targets,
                              const Executor& executor);

}  // namespace quorvex::j2k
