/// The clean-up pass of a high-throughput block (ISO/IEC 15444-15 clause 7).
#pragma once

#include "foundation/engines/jpeg2000/decoder/blocks/ht_scratch.h"

#include <cstddef>
#include <cstdint>

namespace quorvex::j2k {

struct HtCleanup {
    int width = 0;
    int height = 0;
    unsigned shift = 0;     ///< planes below the pass
    unsigned mostBits = 0;  ///< a magnitude with its sign has at most these (U)
    HtMelReader mel;
    HtBits codes;                    ///< the VLC stream
    HtBits magnitudes;               ///< the MagSgn stream
    bool keepsSignificance = false;  ///< fills HtScratch::groups for the passes that follow
};

/// Rows of HtScratch, from their first value on: all of them stand at fixed distances from one
/// address, which saves registers.
class HtRows {
public:
    HtRows(HtScratch& scratch, int width)
        : count(static_cast<std::size_t>(width + 1) / 2), scratch_(&scratch) {}

    [[nodiscard]] std::uint32_t* Quads() const { return scratch_->quads.data() + kPad; }
    [[nodiscard]] std::uint32_t* Offsets() const { return scratch_->offsets.data(); }
    [[nodiscard]] std::uint32_t* OffsetBits() const { return scratch_->offsetBits.data(); }
    [[nodiscard]] std::uint32_t* Bounds() const { return scratch_->bounds.data(); }
    [[nodiscard]] std::uint32_t* Places() const { return scratch_->places.data(); }
    [[nodiscard]] std::uint32_t* Contexts() const { return scratch_->contexts.data(); }
    [[nodiscard]] std::uint32_t* Lowers() const { return scratch_->lowers.data() + kPad; }

    std::size_t count;  ///< quads

private:
    static constexpr std::size_t kPad = HtScratch::kPad;

    HtScratch* scratch_;
};

/// Where the groups of a stripe of four rows begin in HtScratch::groups: one group is before each
/// stripe and one behind, one stripe above and one below, all empty.
constexpr std::size_t GroupsAt(int width, int stripe) {
    const auto groups = static_cast<std::size_t>(width + 3) / 4 + 1;
    return groups * static_cast<std::size_t>(stripe + 1) + 1;
}

/// Writes coefficients as coded_block.h has them. Gives how many rows are sound; those behind them
/// are untouched.
int DecodeHtCleanup(const HtCleanup& pass, std::int32_t* out, std::ptrdiff_t stride,
                    HtScratch& scratch);

}  // namespace quorvex::j2k
