/// The arithmetic of a window: from level and width to display bytes. Pure functions, no object.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace quorvex {

/// The window where neither a record nor the values of the image give one.
inline constexpr std::int32_t kFallbackWidth = 400;
inline constexpr std::int32_t kFallbackLevel = 0;

/// The window over all bytes.
inline constexpr std::int32_t kByteWidth = 256;
inline constexpr std::int32_t kByteLevel = 128;

/// How far one step moves a window of pixels with that many bits.
[[nodiscard]] std::int64_t StepFactor(std::int32_t pixelBits) noexcept;

/// The values of a table: entry i belongs to minimum + i.
struct ValueDomain {
    std::int64_t minimum;
    std::int64_t maximum;
};

/// A window in units of a table's domain.
///
/// The ramp runs from `lower` up to but not including `upper`, and rises by 255 over `width`. With
/// a width of 0 or less there is no ramp.
struct DomainWindow {
    std::int64_t lower;
    std::int64_t upper;
    std::int64_t width;
};

/// Takes a window from output units back through a rescale.
[[nodiscard]] DomainWindow ToDomainWindow(std::int32_t level, std::int32_t width, double slope,
                                          double intercept) noexcept;

/// The byte for each of the 256 steps of a ramp.
using RampBytes = std::array<std::uint8_t, 256>;

/// Bytes shown below, on and above the ramp.
struct DisplayBytes {
    std::uint8_t low;
    RampBytes ramp;
    std::uint8_t high;
};

/// What a window shows without any LUT. The flat ends take the values at the window's edges,
/// clipped to the domain, so that a window wider than the domain does not jump to white at its end.
[[nodiscard]] DisplayBytes PlainDisplayBytes(const DomainWindow& window, const ValueDomain& domain,
                                             bool isInverse) noexcept;

/// Fills a table, which may be shorter than its domain but not empty: below the ramp, the ramp,
/// above it. Where these overlap, as with a negative width, the later one wins.
void FillWindow(std::span<std::uint8_t> table, const ValueDomain& domain,
                const DomainWindow& window, const DisplayBytes& bytes) noexcept;

}  // namespace quorvex
