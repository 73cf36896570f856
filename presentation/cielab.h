/// Colours as DICOM writes them for presentation.
#pragma once

#include "quorvex/DicomObject.h"

#include <array>
#include <cstdint>
#include <optional>

namespace quorvex {

/// L*, a*, b* as unsigned 16-bit numbers (DICOM PS3.3 C.10.7.1.1) to red, green, blue of sRGB; what
/// a screen cannot show is clamped.
[[nodiscard]] std::array<std::uint8_t, 3> RgbOfCieLab(
    const std::array<std::uint16_t, 3>& encoded) noexcept;

/// A presentation value as red, green, blue; 65535 is white.
[[nodiscard]] std::array<std::uint8_t, 3> GreyOfPresentationValue(std::uint16_t value) noexcept;

/// The three numbers of a colour attribute; nothing where it has fewer or more.
[[nodiscard]] std::optional<std::array<std::uint16_t, 3>> ReadCieLab(const CDcmObjectCommon& object,
                                                                     std::uint32_t tag);

}  // namespace quorvex
