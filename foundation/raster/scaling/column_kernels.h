/// The inner loop of scaling a row's columns, for whatever instructions the machine has.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quorvex {

inline constexpr std::size_t kColumnGroup = 16;  ///< pixels that are summed up together

/// Taps of pixels in whole groups, as many taps for each pixel.
struct GroupedTaps {
    const std::int32_t* firsts = nullptr;  ///< source pixel of each pixel's first tap, rising
    /// Group by group: the first weights of its pixels, their second ones, and so on.
    const float* weights = nullptr;
    std::size_t count = 0;  ///< of taps
    std::size_t groups = 0;
};

/// The weighted sums of all pixels, each added up from its first tap on. Up to 2 x
/// `kColumnGroup` numbers behind the last one that counts are read.
void SumColumns(const GroupedTaps& taps, const float* row, float* sums);

}  // namespace quorvex
