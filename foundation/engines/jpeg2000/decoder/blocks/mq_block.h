/// The arithmetic-coded code block of ISO/IEC 15444-1 Annexes C and D.
#pragma once

#include "foundation/engines/jpeg2000/decoder/blocks/coded_block.h"
#include "foundation/engines/jpeg2000/decoder/blocks/mq_passes.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quorvex::j2k {

/// What one thread needs to decode blocks, kept from block to block.
struct MqScratch {
    std::vector<Tract> tracts;
    std::vector<std::uint32_t> columns;
    std::vector<std::uint32_t> values;
    std::vector<unsigned char> bits;
};

/// Writes `height` rows of `width` coefficients to `out`, `stride` values apart, in the form that
/// coded_block.h tells. Returns whether the whole block was sound; what was decoded until a fault
/// stays, and all of `out` is written in any case. Throws std::bad_alloc.
[[nodiscard]] bool DecodeMqBlock(const CodedBlock& coded, std::int32_t* out, std::ptrdiff_t stride,
                                 MqScratch& scratch);

}  // namespace quorvex::j2k
