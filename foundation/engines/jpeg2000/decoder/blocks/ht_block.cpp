#include "foundation/engines/jpeg2000/decoder/blocks/ht_block.h"

#include "foundation/engines/jpeg2000/decoder/blocks/ht_cleanup.h"
#include "foundation/engines/jpeg2000/decoder/blocks/ht_refinement.h"

#include <algorithm>
#include <array>

namespace quorvex::j2k {
namespace {

using Segment = std::span<const unsigned char>;

/// A clean-up segment, and the refinement segment that follows it.
struct HtSet {
    Segment cleanup;
    Segment refinement;
    int planes = 0;                 ///< coded planes down to that of the clean-up pass
    std::uint32_t refinements = 0;  ///< passes in the refinement segment
};

/// The sets of a block that are not placeholders.
struct HtSets {
    std::array<HtSet, kMostBitPlanes> sets;
    int count = 0;
    bool isSound = true;
};

/// Length of the suffix, Scup, which holds the MEL and the VLC stream; 0 where it cannot be right.
std::size_t SuffixOf(Segment cleanup) {
    const std::size_t length = cleanup.size();
    if (length < 2) return 0;
    const std::size_t suffix = cleanup[length - 1] * 16U + (cleanup[length - 2] & 15U);
    return suffix >= 2 && suffix <= std::min(length, kLargestHtSuffix) ? suffix : 0;
}

/// Adds a segment whose first pass is number `pass` of the block. Gives whether it fits there.
bool AddSegment(HtSets& sets, const CodedBlock& block, const BlockSegment& segment,
                std::uint32_t pass) {
    const Segment bytes(segment.data, segment.size);
    if (pass % 3 == 0) {
        if (segment.passes % 3 != 1) return false;
        if (bytes.empty()) return true;  // placeholders
        const std::uint32_t below = (pass + segment.passes - 1) / 3;
        if (below >= static_cast<std::uint32_t>(block.bitPlanes)) return false;
        const int planes = block.bitPlanes - static_cast<int>(below);
        sets.sets[static_cast<std::size_t>(sets.count++)] = {bytes, {}, planes};
        return true;
    }
    if (pass % 3 != 1 || segment.passes > 2) return false;
    if (bytes.empty() || sets.count == 0) return true;
    HtSet& set = sets.sets[static_cast<std::size_t>(sets.count - 1)];
    if (set.planes != block.bitPlanes - static_cast<int>(pass / 3)) return false;
    if (set.planes == 1) return false;  // there is no plane below
    set.refinement = bytes;
    set.refinements = segment.passes;
    return true;
}

HtSets FindSets(const CodedBlock& block) {
    HtSets sets;
    std::uint32_t pass = 0;
    for (const BlockSegment& segment : block.segments) {
        if (segment.passes == 0 && segment.size == 0) continue;
        if (segment.passes == 0 || segment.passes > 3 * kMostBitPlanes ||
            pass > 3 * kMostBitPlanes || !AddSegment(sets, block, segment, pass)) {
            sets.isSound = false;
            break;
        }
        pass += segment.passes;
    }
    return sets;
}

/// The streams of a clean-up segment.
HtCleanup Streams(Segment cleanup, std::size_t suffix, int width, HtScratch& scratch,
                  bool& isSound) {
    const std::size_t length = cleanup.size();
    const auto magnitudes = cleanup.first(std::min(length - suffix, kLargestHtMagnitudes));
    const unsigned head = cleanup[length - 2] >> 4;
    const bool isStuffed = (head & 7) == 7;
    const HtHead codes{.bits = isStuffed ? 7 : head,
                       .count = isStuffed ? 3U : 4U,
                       .isAbove8F = cleanup[length - 2] > 0x8F};
    return {.mel = HtMelReader(cleanup.subspan(length - suffix, suffix - 1)),
            .codes = UnstuffBackward(cleanup.subspan(length - suffix, suffix - 2), codes,
                                     HtRowCodeBytes(width), scratch.backward.data()),
            .magnitudes = UnstuffForward(magnitudes, 0xFF, HtRowBytes(width),
                                         scratch.forward.data(), isSound)};
}

/// Decodes one set. Gives how many rows of it are sound.
int DecodeSet(const CodedBlock& block, const HtSet& set, std::int32_t* out, std::ptrdiff_t stride,
              HtScratch& scratch, bool& isSound) {
    const std::size_t suffix = SuffixOf(set.cleanup);
    if (suffix == 0) return 0;
    HtCleanup pass = Streams(set.cleanup, suffix, block.width, scratch, isSound);
    pass.width = block.width;
    pass.height = block.height;
    pass.shift = static_cast<unsigned>(set.planes - 1);
    // A sign and the planes down to this one, within 31 bits after the shift.
    pass.mostBits =
        static_cast<unsigned>(std::min(block.totalPlanes - set.planes + 2, 32 - set.planes));
    pass.keepsSignificance = set.refinements > 0;
    if (pass.keepsSignificance) scratch.groups.fill(0);
    const int rows = DecodeHtCleanup(pass, out, stride, scratch);
    if (rows < block.height || set.refinements == 0) return rows;
    const HtRefinement passes{
        .width = block.width,
        .height = block.height,
        .shift = pass.shift,
        .isVerticallyCausal = (block.style & kStyleVerticallyCausal) != 0,
        .refines = set.refinements > 1,
        .segment = set.refinement,
    };
    DecodeHtRefinement(passes, out, stride, scratch);
    return rows;
}

bool IsPossible(const CodedBlock& block) {
    return block.width > 0 && block.width <= kLargestBlockSide && block.height > 0 &&
           block.height <= kLargestBlockSide && block.width * block.height <= kLargestBlock &&
           block.bitPlanes > 0 && block.bitPlanes <= kMostBitPlanes &&
           block.totalPlanes >= block.bitPlanes;
}

}  // namespace

bool DecodeHtBlock(const CodedBlock& block, std::int32_t* out, std::ptrdiff_t stride,
                   HtScratch& scratch) {
    bool isSound = block.segments.empty() || IsPossible(block);
    int rows = 0;
    if (isSound) {
        const HtSets found = FindSets(block);
        isSound = found.isSound;
        for (int i = found.count - 1; i >= 0 && rows < block.height; --i) {
            const HtSet& set = found.sets[static_cast<std::size_t>(i)];
            rows = DecodeSet(block, set, out, stride, scratch, isSound);
            if (rows < block.height) isSound = false;
        }
    }
    for (int y = rows; y < block.height; ++y) std::fill_n(out + y * stride, block.width, 0);
    return isSound;
}

}  // namespace quorvex::j2k
