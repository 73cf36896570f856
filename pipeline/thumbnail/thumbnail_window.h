/// From 16-bit values to 8 bits for a thumbnail.
#pragma once

#include "quorvex/DicomObject.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace quorvex {

/// A byte for every value from -65,536 to 65,535.
class ThumbnailWindow {
public:
    static constexpr int kLowest = -65536;
    static constexpr int kHighest = 65535;

    explicit ThumbnailWindow(unsigned char all) : table_(kHighest - kLowest + 1, all) {}

    [[nodiscard]] unsigned char At(int value) const noexcept { return table_[Place(value)]; }
    /// Does nothing for values outside the table.
    void Set(int value, unsigned char byte) noexcept {
        if (value >= kLowest && value <= kHighest) table_[Place(value)] = byte;
    }
    /// From `first` to the highest value.
    void SetFrom(std::int64_t first, unsigned char byte) noexcept {
        if (first > kHighest) return;
        const auto from = static_cast<int>(std::max<std::int64_t>(first, kLowest));
        std::fill(table_.begin() + (from - kLowest), table_.end(), byte);
    }

private:
    static std::size_t Place(int value) noexcept {
        return static_cast<std::size_t>(value - kLowest);
    }

    std::vector<unsigned char> table_;
};

/// An attribute as a number; nothing where it is absent, NaN or infinite.
[[nodiscard]] std::optional<double> ReadFinite(const CDcmObject& header, std::uint32_t tag);

/// The window that the data spans, at most 3,000 values wide. Pixels equal to a `padding` other
/// than 0 do not count, and are shown as 0. A flat image is all 0.
[[nodiscard]] ThumbnailWindow MakeWindowTable(std::span<const std::uint16_t> pixels, bool isSigned,
                                              int padding);

/// The header's window, divided by its rescale slope. A width of 0 leaves a step at the center, a
/// slope of 0 counts as 1.
[[nodiscard]] ThumbnailWindow MakeWindowTableFromHeader(const CDcmObject& header);

}  // namespace quorvex
