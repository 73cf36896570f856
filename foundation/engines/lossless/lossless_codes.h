/// Huffman codes made for one picture's differences.
#pragma once

#include "foundation/engines/lossless/lossless_scan.h"

#include <array>
#include <cstdint>

namespace quorvex {

/// How often differences of each category occur.
using LosslessCounts = std::array<std::uint64_t, kLosslessCategories>;

/// The table that codes them shortest, in ITU-T T.81's way (Annex K.2). Categories that do not
/// occur have no code.
[[nodiscard]] LosslessTableSegment ShortestTable(const LosslessCounts& counts) noexcept;

/// What is written for a difference: its category's code ahead of as many bits as the category has.
struct LosslessCode {
    std::uint32_t code = 0;    ///< with room below it for the difference's bits
    std::uint32_t length = 1;  ///< of code and bits together
};
using LosslessCodes = std::array<LosslessCode, kLosslessCategories>;

[[nodiscard]] LosslessCodes CodesOf(const LosslessTableSegment& table) noexcept;

}  // namespace quorvex
