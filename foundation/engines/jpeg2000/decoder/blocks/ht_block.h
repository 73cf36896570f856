/// The high-throughput code block of ISO/IEC 15444-15 clause 7.
#pragma once

#include "foundation/engines/jpeg2000/decoder/blocks/coded_block.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quorvex::j2k {

/// What one thread needs to decode blocks, kept from block to block.
struct HtScratch {
    std::vector<std::uint32_t> words;
};

/// As DecodeMqBlock() of mq_block.h.
[[nodiscard]] bool DecodeHtBlock(const CodedBlock& block, std::int32_t* out, std::ptrdiff_t stride,
                                 HtScratch& scratch);

}  // namespace quorvex::j2k
