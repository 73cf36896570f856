/// A codestream taken apart: its main header, and where its tile-parts lie.
#pragma once

#include "foundation/engines/jpeg2000/decoder/codestream/byte_reader.h"
#include "foundation/engines/jpeg2000/decoder/codestream/parameters.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace quorvex::j2k {

struct TilePart {
    std::uint32_t tile = 0;
    Bytes header;         ///< the marker segments between SOT and SOD
    Bytes body;           ///< behind SOD
    Bytes packedHeaders;  ///< this tile-part's share of PPM
};

/// Points into the bytes that it was read from, and into its own `packed`: not to be copied.
struct Codestream {
    ImageSize size;
    Parameters parameters;
    std::vector<TilePart> parts;        ///< by tile, each tile's in their order
    std::vector<unsigned char> packed;  ///< the contents of all PPM segments
    bool hasPackedHeaders = false;
    bool isCut = false;             ///< a tile-part is not whole or damaged
    bool isMultiComponent = false;  ///< a transform of ISO/IEC 15444-2 is asked for

    [[nodiscard]] std::span<const TilePart> PartsOf(std::uint32_t tile) const noexcept;
};

/// Reads what is there; tile-parts end with the first that is damaged. False without a sound main
/// header. Throws std::bad_alloc.
[[nodiscard]] bool ReadCodestream(Bytes bytes, Codestream& codestream);

/// What a tile's own headers make of the main header's parameters.
struct TileHeader {
    Parameters parameters;
    std::vector<unsigned char> packed;  ///< the tile's packet headers from PPM or PPT, joined
    bool hasPackedHeaders = false;
    bool isSound = true;
};

/// Throws std::bad_alloc.
[[nodiscard]] TileHeader ReadTileHeader(const Codestream& codestream, std::uint32_t tile);

}  // namespace quorvex::j2k
