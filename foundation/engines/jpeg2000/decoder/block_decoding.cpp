#include "foundation/engines/jpeg2000/decoder/block_decoding.h"

#include <algorithm>

namespace quorvex::j2k {
namespace {

std::size_t TotalSize(const TileData& tile, const BlockState& state) noexcept {
    std::size_t size = 0;
    for (std::uint32_t i = state.firstChunk; i != kNoChunk; i = tile.chunks[i].next) {
        size += tile.chunks[i].size;
    }
    return size;
}

// Chunks of one segment are joined; a segment of one chunk is used where it lies.
void GatherSegments(const TileData& tile, const BlockState& state, BlockScratch& scratch) {
    scratch.segments.clear();
    scratch.joined.clear();
    scratch.joined.reserve(TotalSize(tile, state));  // pointers into it must last
    for (std::uint32_t i = state.firstChunk; i != kNoChunk;) {
        const Chunk& first = tile.chunks[i];
        BlockSegment segment{tile.data.data() + first.offset, first.size, first.passes};
        i = first.next;
        if (i != kNoChunk && tile.chunks[i].isContinued) {
            const std::size_t begin = scratch.joined.size();
            scratch.joined.insert(scratch.joined.end(), segment.data, segment.data + segment.size);
            for (; i != kNoChunk && tile.chunks[i].isContinued; i = tile.chunks[i].next) {
                const Bytes more = tile.data.subspan(tile.chunks[i].offset, tile.chunks[i].size);
                scratch.joined.insert(scratch.joined.end(), more.begin(), more.end());
                segment.passes += tile.chunks[i].passes;
            }
            segment.data = scratch.joined.data() + begin;
            segment.size = static_cast<std::uint32_t>(scratch.joined.size() - begin);
        }
        scratch.segments.push_back(segment);
    }
}

// Coefficients of the region of interest stand above all others by the shift (Annex H). With the
// fraction bit, those are at least twice as large.
void TakeBackShift(std::span<std::int32_t> coefficients, unsigned shift) noexcept {
    if (shift >= 31) return;
    const std::int64_t least = std::int64_t{2} << shift;
    for (std::int32_t& value : coefficients) {
        const std::int64_t magnitude = std::abs(std::int64_t{value});
        if (magnitude < least) continue;
        const auto shifted = static_cast<std::int32_t>(magnitude >> shift);
        value = value < 0 ? -shifted : shifted;
    }
}

}  // namespace

bool DecodeBlock(const TileData& tile, const BlockPlace& place, const BlockState& state,
                 BlockScratch& scratch) {
    const ComponentParameters& parameters = tile.parameters.components[place.component];
    GatherSegments(tile, state, scratch);
    CodedBlock block;
    block.width = place.width;
    block.height = place.height;
    block.totalPlanes = place.band->totalPlanes + parameters.roiShift;
    block.bitPlanes = block.totalPlanes - state.zeroPlanes;
    block.segments = scratch.segments;
    block.band = place.band->orientation;
    block.style = parameters.style.blockStyle;
    if (state.isArithmetic) block.style &= ~(kStyleHighThroughput | kStyleMixed);
    std::int32_t* const out = scratch.coefficients.data();
    const bool isSound = (block.style & kStyleHighThroughput) != 0
                             ? DecodeHtBlock(block, out, block.width, scratch.ht)
                             : DecodeMqBlock(block, out, block.width, scratch.mq);
    if (parameters.roiShift > 0) {
        const auto area =
            static_cast<std::size_t>(block.width) * static_cast<std::size_t>(block.height);
        TakeBackShift(std::span(scratch.coefficients).first(area), parameters.roiShift);
    }
    return isSound && !state.isDamaged;
}

}  // namespace quorvex::j2k
