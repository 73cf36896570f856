/// The values that the pixels of a frame have.
#pragma once

#include <cstdint>

namespace quorvex {

/// Lowest and highest of some values.
struct ValueSpan {
    std::int64_t low = 0;
    std::int64_t high = 0;
};

/// The same in modality units, fractions included.
struct ExactSpan {
    double low = 0.0;
    double high = 0.0;
};

/// A value is an element times `step` plus `offset`.
struct ValueScale {
    double step = 1.0;  ///< above 0
    double offset = 0.0;
    [[nodiscard]] bool IsPlain() const noexcept { return step == 1.0 && offset == 0.0; }
    /// Whether elements tell more values apart than whole numbers do.
    [[nodiscard]] bool IsFractional() const noexcept { return step < 1.0; }
    [[nodiscard]] double ValueOf(std::int64_t element) const noexcept {
        return static_cast<double>(element) * step + offset;
    }
};

/// A window in modality units.
struct ValueWindow {
    double level = 0.0;
    double width = 0.0;
};

/// What the elements of a displayed frame stand for.
struct ValueRange {
    std::int64_t low = 0;   ///< lowest value of the frame: an element holds a value's low bits
    std::int64_t high = 0;  ///< highest value of the frame
    int domainLow = 0;      ///< lowest value that windowing has a display value for
    int domainHigh = 0;     ///< highest one
};

}  // namespace quorvex
