/// The inner loops of scaling, for whatever instructions the machine has.
#pragma once

#include "foundation/raster/scaling/value_shrinker.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace quorvex {

inline constexpr std::size_t kMostRowsAtOnce = 4;

/// The weighted sum of 1 to `kMostRowsAtOnce` rows of values becomes `sums`, or with `adds` is
/// added to it. The length of `sums` decides.
void WeighRows(std::span<const unsigned char* const> rows, ValueKind kind,
               std::span<const float> weights, bool adds, std::span<float> sums);
/// `sums` = `row` x `weight`, or with `adds` that on top.
void WeighRow(std::span<const float> row, float weight, bool adds, std::span<float> sums);
/// Nearest bytes of numbers; what lies outside 0 .. 255 is clamped.
void RoundRow(std::span<const float> row, std::span<unsigned char> bytes);

}  // namespace quorvex
