/// How a tile divides into components, resolutions, bands, precincts and code blocks
/// (ISO/IEC 15444-1 Annex B), and what the packets have brought for each block.
#pragma once

#include "foundation/engines/jpeg2000/decoder/blocks/coded_block.h"
#include "foundation/engines/jpeg2000/decoder/codestream/parameters.h"
#include "foundation/engines/jpeg2000/decoder/packets/tag_tree.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

namespace quorvex::j2k {

inline constexpr std::uint32_t kNoChunk = std::numeric_limits<std::uint32_t>::max();

/// One packet's bytes for one codeword segment of a block, in a list from block to chunk.
struct Chunk {
    std::uint32_t offset = 0;  ///< in the tile's data
    std::uint32_t size = 0;
    std::uint32_t next = kNoChunk;
    std::uint8_t passes = 0;
    bool isContinued = false;  ///< goes on with the segment of the chunk before
};

struct BlockState {
    std::uint32_t firstChunk = kNoChunk;
    std::uint32_t lastChunk = kNoChunk;
    std::uint16_t passes = 0;
    std::uint8_t zeroPlanes = 0;
    std::uint8_t lengthBits = 3;
    bool isIncluded = false;
    bool isDamaged = false;
    bool hasCleanUp = false;    ///< high throughput: more than placeholder passes have come
    bool isArithmetic = false;  ///< of mixed styles: this one is coded without high throughput
};

/// The blocks of one band in one precinct.
struct PrecinctBand {
    Rect blocks;  ///< by the band's grid of blocks
    TagTree inclusion;
    TagTree zeroPlanes;
    std::vector<BlockState> states;  ///< row by row
};

/// Built when its first packet comes.
struct Precinct {
    std::vector<PrecinctBand> bands;
};

struct PrecinctSlot {
    std::unique_ptr<Precinct> precinct;
    std::uint16_t layersRead = 0;
};

struct BandLayout {
    Orientation orientation = Orientation::LL;
    Rect area;
    int totalPlanes = 0;  ///< Mb, without a region of interest's shift
    float step = 1;       ///< irreversible only
};

struct ResolutionLayout {
    Rect area;
    Rect precincts;  ///< by the grid of precincts
    std::uint8_t precinctWidthExponent = 15, precinctHeightExponent = 15;
    std::uint8_t blockWidthExponent = 6, blockHeightExponent = 6;
    std::vector<BandLayout> bands;
    std::vector<PrecinctSlot> slots;  ///< row by row

    /// Exponents of a precinct's part of a band.
    [[nodiscard]] unsigned BandPrecinctWidth() const noexcept;
    [[nodiscard]] unsigned BandPrecinctHeight() const noexcept;
    /// The block at a place in the band's grid of blocks; null where no packet brought any.
    [[nodiscard]] const BlockState* Find(std::size_t band, std::uint32_t x,
                                         std::uint32_t y) const noexcept;
};

struct ComponentLayout {
    Rect area;  ///< in the component's own samples
    std::vector<ResolutionLayout> resolutions;
};

struct TileLayout {
    Rect area;
    std::vector<ComponentLayout> components;
    std::uint64_t precincts = 0;
};

/// Nothing of the precincts' contents is built yet. False where the tile would have more precincts
/// than `mostPrecincts`, or steps are missing. Throws std::bad_alloc.
[[nodiscard]] bool LayOutTile(const ImageSize& size, const Parameters& parameters,
                              std::uint32_t tile, std::uint64_t mostPrecincts, TileLayout& layout);

/// The precinct of slot `index`, built if it is not there. Throws std::bad_alloc.
[[nodiscard]] Precinct& BuildPrecinct(ResolutionLayout& resolution, std::uint32_t index);

/// ceil(value / 2^exponent), for exponents up to 32.
[[nodiscard]] constexpr std::uint32_t CeilShift(std::uint32_t value, unsigned exponent) noexcept {
    return static_cast<std::uint32_t>((std::uint64_t{value} + (std::uint64_t{1} << exponent) - 1) >>
                                      exponent);
}

[[nodiscard]] constexpr std::uint32_t CeilDivide(std::uint32_t value, std::uint32_t by) noexcept {
    return static_cast<std::uint32_t>((std::uint64_t{value} + by - 1) / by);
}

}  // namespace quorvex::j2k
