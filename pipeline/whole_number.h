/// Real numbers to whole ones, where the real ones may be anything.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace quorvex {

/// `value` held within the numbers that an int can be.
[[nodiscard]] constexpr int HeldToInt(std::int64_t value) noexcept {
    return static_cast<int>(std::clamp<std::int64_t>(value, std::numeric_limits<int>::min(),
                                                     std::numeric_limits<int>::max()));
}

/// `value` cut towards zero and held within +-2^53, where doubles are exact; 0 for not-a-number.
[[nodiscard]] inline std::int64_t TruncatedToInt64(double value) noexcept {
    constexpr double kLimit = 9007199254740992.0;
    if (std::isnan(value)) return 0;
    return static_cast<std::int64_t>(std::clamp(value, -kLimit, kLimit));
}

/// `value` cut towards zero and held within the numbers that an int can be; 0 for not-a-number.
[[nodiscard]] inline int TruncatedToInt(double value) noexcept {
    return HeldToInt(TruncatedToInt64(value));
}

}  // namespace quorvex
