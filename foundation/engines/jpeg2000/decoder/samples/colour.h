/// From wavelet rows to whole numbers: the colour transforms of ISO/IEC 15444-1 Annex G, rounding.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quorvex::j2k {

/// Rows of Y, Cb, Cr to rows of R, G, B. Damaged streams wrap.
void RestoreReversible(const std::int32_t* const* rows, std::size_t count,
                       std::int32_t* const* out) noexcept;
void RestoreIrreversible(const float* const* rows, std::size_t count,
                         std::int32_t* const* out) noexcept;

/// To the nearest whole number, halves to the even one; far numbers are clamped, NaN is the least.
void RoundRow(const float* row, std::size_t count, std::int32_t* out) noexcept;

}  // namespace quorvex::j2k
