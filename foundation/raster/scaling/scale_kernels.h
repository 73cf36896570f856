/// The inner loops of scaling, for whatever instructions the machine has.
#pragma once

#include "foundation/raster/scaling/value_shrinker.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace quorvex {

/// `sums` = `bytes` x `weight`, or with `adds` that on top. Both have as many numbers.
void WeighRow(std::span<const unsigned char> bytes, float weight, bool adds, std::span<float> sums);
/// The same for values of another kind.
void WeighRow(std::span<const unsigned char> values, ValueKind kind, float weight, bool adds,
              std::span<float> sums);
/// `sums` = `row` x `weight`, or with `adds` that on top.
void WeighRow(std::span<const float> row, float weight, bool adds, std::span<float> sums);
/// Nearest bytes of numbers; what lies outside 0 .. 255 is clamped.
void RoundRow(std::span<const float> row, std::span<unsigned char> bytes);

}  // namespace quorvex
