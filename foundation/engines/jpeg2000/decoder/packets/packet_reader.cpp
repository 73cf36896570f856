#include "foundation/engines/jpeg2000/decoder/packets/packet_reader.h"

#include "foundation/engines/jpeg2000/decoder/codestream/markers.h"
#include "foundation/engines/jpeg2000/decoder/packets/codeword_segments.h"

#include <algorithm>
#include <bit>

namespace quorvex::j2k {
namespace {

// Progression volumes may name packets again and again that have been read: only so often.
constexpr std::uint64_t kMostIdleVisits = std::uint64_t{1} << 26;
constexpr unsigned kMostZeroPlanes = 80;
constexpr unsigned kMostLengthBits = 32;

bool IsMixed(unsigned style) noexcept {
    constexpr unsigned kBoth = kStyleHighThroughput | kStyleMixed;
    return (style & kBoth) == kBoth;
}

// The style without what does not hold for a block's own coder.
unsigned CoderOf(unsigned style, const BlockState& block) noexcept {
    return block.isArithmetic ? style & ~(kStyleHighThroughput | kStyleMixed) : style;
}

// Of the two coders that a mixed block may have, high throughput writes its first length with a
// leading zero and the other one as short as it can be (ISO/IEC 15444-15 Annex B).
bool IsArithmetic(const BlockState& block, std::uint32_t size, unsigned passes) noexcept {
    constexpr unsigned kLeastLengthBits = 3;
    const unsigned topBit = block.lengthBits + std::bit_width(passes) - 2U;
    return block.lengthBits <= kLeastLengthBits || size <= 1 || (size >> topBit) != 0;
}

}  // namespace

unsigned ReadPassCount(HeaderBits& bits) noexcept {
    if (bits.Bit() == 0) return 1;
    if (bits.Bit() == 0) return 2;
    if (const unsigned few = bits.Bits(2); few != 3) return 3 + few;
    if (const unsigned some = bits.Bits(5); some != 31) return 6 + some;
    return 37 + bits.Bits(7);
}

PacketReader::PacketReader(TileLayout& layout, const Parameters& parameters,
                           PacketSelection selection, Bytes data, Bytes headers,
                           bool hasPackedHeaders) noexcept
    : layout_(layout),
      parameters_(parameters),
      selection_(selection),
      data_(data),
      rest_(data),
      headers_(headers),
      hasPackedHeaders_(hasPackedHeaders) {}

bool PacketReader::Read(const ImageSize& size) {
    if (parameters_.volumes.empty()) {
        ProgressionVolume whole;
        whole.endLayer = parameters_.tile.layers;
        whole.order = parameters_.tile.progression;
        return ReadVolume(size, whole);
    }
    return std::all_of(parameters_.volumes.begin(), parameters_.volumes.end(),
                       [&](ProgressionVolume volume) {
                           volume.endLayer = std::min(volume.endLayer, parameters_.tile.layers);
                           return ReadVolume(size, volume);
                       });
}

bool PacketReader::ReadVolume(const ImageSize& size, const ProgressionVolume& volume) {
    const std::vector<PrecinctPlace> places = PlacesInOrder(size, layout_, volume);
    return ForPackets(places, volume, [&](const PrecinctPlace& place, std::uint32_t layer) {
        PrecinctSlot& slot =
            layout_.components[place.component].resolutions[place.resolution].slots[place.slot];
        if (layer < slot.layersRead) return ++idleVisits_ < kMostIdleVisits;
        ++slot.layersRead;
        return ReadPacket(place, layer);
    });
}

void PacketReader::SkipMarker(Bytes& from, unsigned marker, std::size_t bytes) noexcept {
    if (ByteReader(from).Ahead() == marker) from = from.subspan(std::min(bytes, from.size()));
}

bool PacketReader::ReadPacket(const PrecinctPlace& place, std::uint32_t layer) {
    constexpr std::size_t kSopBytes = 6;
    if (parameters_.tile.hasSop) SkipMarker(rest_, kSop, kSopBytes);
    contributions_.clear();
    if (!ReadHeader(place, layer)) return false;
    const std::size_t resolutions = layout_.components[place.component].resolutions.size();
    const bool isWanted =
        layer < selection_.layers && place.resolution + selection_.discardedLevels < resolutions;
    return ReadBody(isWanted);
}

bool PacketReader::ReadHeader(const PrecinctPlace& place, std::uint32_t layer) {
    constexpr std::size_t kEphBytes = 2;
    Bytes& from = hasPackedHeaders_ ? headers_ : rest_;
    if (from.empty()) return false;
    HeaderBits bits(from);
    bool isSound = true;
    if (bits.Bit() != 0) {
        ResolutionLayout& resolution =
            layout_.components[place.component].resolutions[place.resolution];
        const unsigned style = parameters_.components[place.component].style.blockStyle;
        for (PrecinctBand& band : BuildPrecinct(resolution, place.slot).bands) {
            for (std::uint32_t y = 0; y < band.blocks.Height() && isSound; ++y) {
                for (std::uint32_t x = 0; x < band.blocks.Width() && isSound; ++x) {
                    isSound = ReadBlock(band, x, y, layer, style, bits);
                }
            }
        }
    }
    const std::size_t end = bits.End();
    if (!isSound || bits.RanOut()) return false;
    from = from.subspan(end);
    if (parameters_.tile.hasEph) SkipMarker(from, kEph, kEphBytes);
    return true;
}

bool PacketReader::ReadBlock(PrecinctBand& band, std::uint32_t x, std::uint32_t y,
                             std::uint32_t layer, unsigned style, HeaderBits& bits) {
    BlockState& block = band.states[std::size_t{y} * band.blocks.Width() + x];
    if (block.isIncluded) {
        if (bits.Bit() == 0) return true;
    } else {
        if (!band.inclusion.IsBelow(x, y, layer + 1, bits)) return !bits.RanOut();
        block.isIncluded = true;
        unsigned planes = 0;
        while (!band.zeroPlanes.IsBelow(x, y, planes + 1, bits)) {
            if (++planes > kMostZeroPlanes || bits.RanOut()) return false;
        }
        block.zeroPlanes = static_cast<std::uint8_t>(planes);
    }
    unsigned passes = ReadPassCount(bits);
    while (bits.Bit() != 0) {
        if (++block.lengthBits > kMostLengthBits) return false;
    }
    return !bits.RanOut() && ReadLengths(block, passes, style, bits);
}

bool PacketReader::ReadLengths(BlockState& block, unsigned passes, unsigned style,
                               HeaderBits& bits) {
    constexpr unsigned kMostPasses = 3 * 38;
    if ((CoderOf(style, block) & kStyleHighThroughput) != 0 && !block.hasCleanUp) {
        if (!ReadFirstCleanUp(block, passes, style, bits)) return false;
    }
    const unsigned coder = CoderOf(style, block);
    while (passes > 0) {
        if (block.passes > kMostPasses) return false;
        const unsigned count = std::min(passes, PassesLeftInSegment(coder, block.passes));
        if (!AddContribution(block, count, count, BeginsSegment(coder, block.passes), bits))
            return false;
        block.passes = static_cast<std::uint16_t>(block.passes + count);
        passes -= count;
    }
    return true;
}

// High throughput: passes of planes that are known to be zero come first and have no bytes. They
// count with the first clean-up pass (ISO/IEC 15444-15 Annex B). Leaves the passes behind it. Where
// blocks are mixed, one that turns out to be arithmetic is left to be read from the start.
bool PacketReader::ReadFirstCleanUp(BlockState& block, unsigned& passes, unsigned style,
                                    HeaderBits& bits) {
    const unsigned behind = (block.passes + passes - 1) % 3;
    const unsigned first = passes > behind ? passes - behind : passes;
    const unsigned before = block.passes;
    if (before > 3 * kMostZeroPlanes) return false;
    const HeaderBits start = bits;
    if (!AddContribution(block, 1, first, true, bits)) return false;
    const std::uint32_t size = contributions_.back().size;
    const bool isFirst = size > 0 && passes > behind;
    const unsigned more = std::bit_width(passes) - std::bit_width(first);
    if (isFirst && !(IsMixed(style) && IsArithmetic(block, size, first))) {
        block.hasCleanUp = true;
        block.passes = static_cast<std::uint16_t>(before + first);
        block.zeroPlanes = static_cast<std::uint8_t>(block.zeroPlanes + (before + first - 1) / 3);
        passes = behind;
        return true;
    }
    contributions_.pop_back();
    if (!isFirst && size == 0 && bits.Bits(more) == 0) {
        // Nothing but such passes: the length is written as if for all of them.
        block.passes = static_cast<std::uint16_t>(before + passes);
        passes = 0;
        return true;
    }
    if (!IsMixed(style)) return false;
    bits = start;
    TurnArithmetic(block);
    return true;
}

// Passes that came before without bytes are passes of the block's first segment.
void PacketReader::TurnArithmetic(BlockState& block) {
    block.isArithmetic = true;
    if (block.passes == 0) return;
    contributions_.push_back({&block, 0, static_cast<std::uint8_t>(block.passes), false});
}

// The length is written with more bits for more passes.
bool PacketReader::AddContribution(BlockState& block, unsigned passes, unsigned countedPasses,
                                   bool beginsSegment, HeaderBits& bits) {
    const unsigned lengthBits = block.lengthBits + std::bit_width(countedPasses) - 1U;
    if (lengthBits > kMostLengthBits) return false;
    contributions_.push_back(
        {&block, bits.Bits(lengthBits), static_cast<std::uint8_t>(passes), !beginsSegment});
    return true;
}

// A block that is not whole in this packet is cut off at the packet before.
bool PacketReader::ReadBody(bool isWanted) {
    bool isWhole = true;
    for (const Contribution& contribution : contributions_) {
        isWhole = isWhole && contribution.size <= rest_.size();
        if (!isWhole) {
            contribution.block->isDamaged = true;
            continue;
        }
        if (isWanted && !contribution.block->isDamaged) {
            Keep(contribution, static_cast<std::uint32_t>(data_.size() - rest_.size()));
        }
        rest_ = rest_.subspan(contribution.size);
    }
    return isWhole;
}

void PacketReader::Keep(const Contribution& contribution, std::uint32_t offset) {
    BlockState& block = *contribution.block;
    const auto index = static_cast<std::uint32_t>(chunks_.size());
    chunks_.push_back({.offset = offset,
                       .size = contribution.size,
                       .passes = contribution.passes,
                       .isContinued = contribution.isContinued});
    if (block.firstChunk == kNoChunk) {
        block.firstChunk = index;
    } else {
        chunks_[block.lastChunk].next = index;
    }
    block.lastChunk = index;
}

}  // namespace quorvex::j2k
