/// Where a component's samples go, and in what form.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quorvex::j2k {

/// The memory of one component's samples; belongs to the caller.
struct OutputPlane {
    unsigned char* data = nullptr;    ///< of the first sample
    std::ptrdiff_t rowStride = 0;     ///< bytes from row to row
    std::ptrdiff_t sampleStride = 0;  ///< bytes from sample to sample
    int bytesPerSample = 1;           ///< 1, 2 or 4
    bool isBigEndian = false;
    bool keepsSign = false;     ///< negative values fill the sample; else only its precision
    std::uint32_t repeatX = 1;  ///< each sample stands so often side by side,
    std::uint32_t repeatY = 1;  ///< and in so many rows
    std::uint32_t width = 0;    ///< of the memory, repetitions counted
    std::uint32_t height = 0;
};

/// A component's range.
struct SampleRange {
    std::int32_t least = 0;
    std::int32_t greatest = 255;
    std::int32_t shift = 0;  ///< is added before clamping
    std::uint32_t mask = 0xFFFFFFFF;
};

/// `precision` is 1 to 31.
[[nodiscard]] SampleRange RangeOf(unsigned precision, bool isSigned, bool keepsSign) noexcept;

/// Writes `count` values of a row, from sample (x, y) of the plane on. What lies outside of the
/// plane is left away.
void StoreRow(const OutputPlane& plane, const SampleRange& range, const std::int32_t* values,
              std::uint32_t x, std::uint32_t y, std::uint32_t count) noexcept;

/// As StoreRow(), for samples that nothing is known of: 0.
void StoreZeros(const OutputPlane& plane, std::uint32_t x, std::uint32_t y,
                std::uint32_t count) noexcept;

}  // namespace quorvex::j2k
