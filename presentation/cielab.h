/// Colours as DICOM writes them for presentation.
#pragma once

#include <array>
#include <cstdint>

namespace quorvex {

/// L*, a*, b* as unsigned 16-bit numbers (DICOM PS3.3 C.10.7.1.1) to red, green, blue of sRGB; what
/// a screen cannot show is clamped.
[[nodiscard]] std::array<std::uint8_t, 3> RgbOfCieLab(
    const std::array<std::uint16_t, 3>& encoded) noexcept;

}  // namespace quorvex
