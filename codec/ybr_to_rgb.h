/// Y, Cb, Cr bytes to R, G, B bytes.
///
/// The full-range conversion is this arithmetic, its results cut towards zero, their low 8 bits
/// kept, not clamped, with Cb and Cr less 128:
///
///     R = Y + 1.401987577 Cr - 0.00003682 Cb + 0.5
///     G = Y - 0.344113281 Cb - 0.714103821 Cr + 0.5
///     B = Y + 1.771978117 Cb - 0.000134583 Cr + 0.5
///
/// Every source has the bytes of `pixels` pixels, every `rgb` room for 3 bytes each.
#pragma once

#include <cstddef>
#include <span>

namespace quorvex {

void ConvertFullRangePlanes(std::span<const unsigned char> source, std::size_t pixels,
                            std::span<unsigned char> rgb) noexcept;
void ConvertFullRangePixels(std::span<const unsigned char> source, std::size_t pixels,
                            std::span<unsigned char> rgb) noexcept;
/// Groups of Y, Cb, Y, Cr, counted on across the ends of rows.
void ConvertFullRange422(std::span<const unsigned char> source, std::size_t pixels,
                         std::span<unsigned char> rgb) noexcept;

}  // namespace quorvex
