#include "foundation/engines/jpeg2000/decoder/tile_data.h"

#include <limits>

namespace quorvex::j2k {
namespace {

// One tile-part is used where it lies.
Bytes JoinBodies(std::span<const TilePart> parts, std::vector<unsigned char>& joined) {
    if (parts.size() == 1) return parts.front().body;
    std::size_t size = 0;
    for (const TilePart& part : parts) size += part.body.size();
    joined.reserve(size);
    for (const TilePart& part : parts) {
        joined.insert(joined.end(), part.body.begin(), part.body.end());
    }
    return joined;
}

}  // namespace

TileRead ReadTile(const Codestream& codestream, std::uint32_t tile,
                  const PacketSelection& selection, std::uint64_t mostPrecincts, TileData& data) {
    TileHeader header = ReadTileHeader(codestream, tile);
    data.parameters = std::move(header.parameters);
    data.isWhole = header.isSound;
    if (!LayOutTile(codestream.size, data.parameters, tile, mostPrecincts, data.layout))
        return TileRead::kRefused;
    data.data = JoinBodies(codestream.PartsOf(tile), data.joined);
    if (data.data.size() >= std::numeric_limits<std::uint32_t>::max()) return TileRead::kRefused;
    PacketReader reader(data.layout, data.parameters, selection, data.data, header.packed,
                        header.hasPackedHeaders);
    data.isWhole &= reader.Read(codestream.size);
    data.chunks = std::move(reader.Chunks());
    return TileRead::kDone;
}

}  // namespace quorvex::j2k
