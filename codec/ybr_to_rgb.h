/// Y, Cb, Cr bytes to R, G, B bytes.
///
/// Every source has the bytes of `pixels` pixels, every `rgb` room for 3 bytes each.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace quorvex {

/// How a colour is computed. Cb and Cr are less 128.
///
/// The wrapped and the clamped kind are this arithmetic, its results cut towards zero; of wrapped
/// ones the low 8 bits are kept:
///
///     R = Y + 1.401987577 Cr - 0.00003682 Cb + 0.5
///     G = Y - 0.344113281 Cb - 0.714103821 Cr + 0.5
///     B = Y + 1.771978117 Cb - 0.000134583 Cr + 0.5
///
/// The exact kinds invert Y = 0.299 R + 0.587 G + 0.114 B and the colour differences that go with
/// it, with Y in the full range (DICOM PS3.3 C.7.6.3.1.2, YBR_FULL) or from 16 to 235 and Cb and Cr
/// from 16 to 240 (YBR_PARTIAL_422). Their results are rounded, halves up, and clamped.
enum class YbrArithmetic : std::uint8_t { kWrapped, kClamped, kExact, kExactVideo };

void ConvertYbrPlanes(std::span<const unsigned char> source, std::size_t pixels,
                      YbrArithmetic arithmetic, std::span<unsigned char> rgb) noexcept;
void ConvertYbrPixels(std::span<const unsigned char> source, std::size_t pixels,
                      YbrArithmetic arithmetic, std::span<unsigned char> rgb) noexcept;
/// Groups of Y, Cb, Y, Cr, counted on across the ends of rows.
void ConvertYbr422(std::span<const unsigned char> source, std::size_t pixels,
                   YbrArithmetic arithmetic, std::span<unsigned char> rgb) noexcept;

}  // namespace quorvex
