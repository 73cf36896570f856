/// The attributes that describe pixels and how they are shown, by name.
#pragma once

#include <cstdint>

namespace quorvex::tag {

inline constexpr std::uint32_t kSamplesPerPixel = 0x00280002;
inline constexpr std::uint32_t kPhotometricInterpretation = 0x00280004;
inline constexpr std::uint32_t kPlanarConfiguration = 0x00280006;
inline constexpr std::uint32_t kNumberOfFrames = 0x00280008;
inline constexpr std::uint32_t kRows = 0x00280010;
inline constexpr std::uint32_t kColumns = 0x00280011;
inline constexpr std::uint32_t kPixelSpacing = 0x00280030;
inline constexpr std::uint32_t kBitsAllocated = 0x00280100;
inline constexpr std::uint32_t kBitsStored = 0x00280101;
inline constexpr std::uint32_t kHighBit = 0x00280102;
inline constexpr std::uint32_t kPixelRepresentation = 0x00280103;
inline constexpr std::uint32_t kPaddingValue = 0x00280120;
inline constexpr std::uint32_t kWindowCenter = 0x00281050;
inline constexpr std::uint32_t kWindowWidth = 0x00281051;
inline constexpr std::uint32_t kRescaleIntercept = 0x00281052;
inline constexpr std::uint32_t kRescaleSlope = 0x00281053;

}  // namespace quorvex::tag
