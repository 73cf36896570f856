/// Numbers into int: what does not fit becomes the nearest value that does.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace quorvex {

/// The nearest value that an int holds.
[[nodiscard]] constexpr std::int32_t SaturateToInt(std::int64_t value) noexcept {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, Limits::min(), Limits::max()));
}

/// Cut towards zero, to the nearest value that an int holds; NaN gives 0.
[[nodiscard]] inline std::int32_t TruncateToInt(double value) noexcept {
    using Limits = std::numeric_limits<std::int32_t>;
    if (std::isnan(value)) return 0;
    return static_cast<std::int32_t>(
        std::clamp(value, double{Limits::min()}, double{Limits::max()}));
}

/// Cut towards zero, to the nearest value within +-2^53, where doubles are exact; NaN gives 0.
[[nodiscard]] inline std::int64_t TruncateToInt64(double value) noexcept {
    constexpr double kLimit = 9007199254740992.0;
    if (std::isnan(value)) return 0;
    return static_cast<std::int64_t>(std::clamp(value, -kLimit, kLimit));
}

}  // namespace quorvex
