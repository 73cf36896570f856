/// Samples of the whole range of 8 or 16 bits, as the library takes and gives them, and samples of
/// fewer bits.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace quorvex {

/// In place: the nearest value of that precision to each.
void NarrowSamples(std::span<unsigned char> samples, std::size_t sampleBytes,
                   unsigned precision) noexcept;

/// Appends each sample spread over the whole range, so that NarrowSamples() gives it back.
/// @return false for a sample beyond the precision. Throws std::bad_alloc
[[nodiscard]] bool SpreadSamples(std::span<const unsigned char> samples, std::size_t sampleBytes,
                                 unsigned precision, std::vector<unsigned char>& spread);

}  // namespace quorvex
