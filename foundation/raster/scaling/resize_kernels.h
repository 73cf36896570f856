/// The inner loops of the 8-bit resize, for whatever instructions the machine has.
///
/// Between the two passes a row holds each sample times 128, as 16-bit numbers. Each product is
/// cut, not rounded, and added to its partner, so the order of the two neighbours never shows: a
/// mirrored row gives the mirrored result, bit for bit.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <span>
#include <vector>

namespace quorvex {

/// Bits of the weights of both passes: they fit 16-bit unsigned lanes, 1.0 included.
inline constexpr int kResizeWeightBits = 15;
inline constexpr std::uint16_t kWholeWeight = 1U << kResizeWeightBits;

/// Sixteen destination samples: four each from four windows of 16 source bytes.
///
/// Windows 0 and 2 lie side by side, as do 1 and 3, so that halves of two wide vectors put together
/// have their samples in order.
struct WindowGroup {
    static constexpr std::size_t kWindows = 4;
    /// Where a group keeps window `i`.
    [[nodiscard]] static constexpr std::size_t Place(std::size_t i) noexcept {
        return i % 2 * 2 + i / 2;
    }
    /// Bytes of a window as the high halves of 8 words: 4 left, 4 right.
    std::uint8_t shuffle[kWindows][16];
    std::uint16_t weights[kWindows][8];
    std::uint32_t starts[kWindows];  ///< of the windows in the row
};

/// What the horizontal pass of one image reads, row for row: for each destination sample two source
/// bytes of its row, the second one with the weight that is missing to kWholeWeight.
struct HorizontalPlan {
    explicit HorizontalPlan(std::pmr::memory_resource* memory = std::pmr::get_default_resource())
        : lefts(memory), leftWeights(memory), groups(memory) {}

    std::pmr::vector<std::uint32_t> lefts;
    std::uint32_t toRight = 0;  ///< from the first byte to the second, in every pair
    std::pmr::vector<std::uint16_t> leftWeights;  ///< padded as rows are
    std::pmr::vector<WindowGroup> groups;  ///< empty where some four samples do not fit a window
};

/// Numbers that a row between the passes must have room for: whole vectors are written.
[[nodiscard]] constexpr std::size_t PaddedRow(std::size_t samples) noexcept {
    return (samples + 63) / 64 * 64;
}

/// Makes `row` (destination samples, padded) from the source row `bytes`.
void ResizeHorizontally(const HorizontalPlan& plan, const unsigned char* bytes,
                        std::span<std::uint16_t> row);

/// Mixes two rows by `lowerWeight` of the second into destination bytes.
void ResizeVertically(std::span<const std::uint16_t> upper, std::span<const std::uint16_t> lower,
                      std::uint16_t lowerWeight, std::span<unsigned char> destination);

/// The plain case of half the size, with 1 or 3 channels: the mean of two and two pixels.
void HalveRows(const unsigned char* upper, const unsigned char* lower, std::size_t channels,
               std::span<unsigned char> destination);

}  // namespace quorvex
