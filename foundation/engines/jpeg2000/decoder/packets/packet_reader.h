/// Reads a tile's packets: which bytes belong to which block.
#pragma once

#include "foundation/engines/jpeg2000/decoder/codestream/byte_reader.h"
#include "foundation/engines/jpeg2000/decoder/packets/progression.h"
#include "foundation/engines/jpeg2000/decoder/packets/tile_layout.h"

#include <cstdint>
#include <vector>

namespace quorvex::j2k {

/// What is wanted of a tile. The rest is read, since packets tell only where the next one begins,
/// but not kept.
struct PacketSelection {
    unsigned layers = 65535;
    unsigned discardedLevels = 0;
};

class PacketReader {
public:
    /// `headers` holds the packet headers where they stand apart; else they are in `data`.
    PacketReader(TileLayout& layout, const Parameters& parameters, PacketSelection selection,
                 Bytes data, Bytes headers, bool hasPackedHeaders) noexcept;

    /// False where the packets end too early or are damaged: those before are kept.
    /// Throws std::bad_alloc.
    [[nodiscard]] bool Read(const ImageSize& size);

    [[nodiscard]] std::vector<Chunk>& Chunks() noexcept { return chunks_; }

private:
    /// A block's new bytes, as the packet's header tells them.
    struct Contribution {
        BlockState* block;
        std::uint32_t size;
        std::uint8_t passes;
        bool isContinued;
    };

    [[nodiscard]] bool ReadVolume(const ImageSize& size, const ProgressionVolume& volume);
    [[nodiscard]] bool ReadPacket(const PrecinctPlace& place, std::uint32_t layer);
    [[nodiscard]] bool ReadHeader(const PrecinctPlace& place, std::uint32_t layer);
    [[nodiscard]] bool ReadBlock(PrecinctBand& band, std::uint32_t x, std::uint32_t y,
                                 std::uint32_t layer, unsigned style, HeaderBits& bits);
    [[nodiscard]] bool ReadLengths(BlockState& block, unsigned passes, unsigned style,
                                   HeaderBits& bits);
    [[nodiscard]] bool ReadFirstCleanUp(BlockState& block, unsigned& passes, unsigned style,
                                        HeaderBits& bits);
    void TurnArithmetic(BlockState& block);
    [[nodiscard]] bool AddContribution(BlockState& block, unsigned passes, unsigned countedPasses,
                                       bool beginsSegment, HeaderBits& bits);
    [[nodiscard]] bool ReadBody(bool isWanted);
    void Keep(const Contribution& contribution, std::uint32_t offset);
    void SkipMarker(Bytes& from, unsigned marker, std::size_t bytes) noexcept;

    TileLayout& layout_;
    const Parameters& parameters_;
    PacketSelection selection_;
    Bytes data_;
    Bytes rest_;     ///< of data_
    Bytes headers_;  ///< what is left of separate headers
    bool hasPackedHeaders_;
    std::uint64_t idleVisits_ = 0;
    std::vector<Contribution> contributions_;
    std::vector<Chunk> chunks_;
};

}  // namespace quorvex::j2k
