/// What the stages of a render job agree on.
#pragma once

#include "quorvex/CXImageCreator.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace quorvex {

// Results of the operations.
inline constexpr int kJobDone = 0;
inline constexpr int kJobRefused = 1;
inline constexpr int kModalityRefused = 2;
inline constexpr int kJobWithoutTable = 3;  ///< or without memory

inline constexpr int kColourBytes = 3;
/// Result rows end on 32 bits, as rows of a bitmap do.
inline constexpr int kRowAlignment = 4;

[[nodiscard]] constexpr bool IsHalfTurn(int rotation) noexcept {
    return rotation == 0 || rotation == 180;
}
[[nodiscard]] constexpr bool IsQuarterTurn(int rotation) noexcept {
    return rotation == 90 || rotation == 270;
}
[[nodiscard]] constexpr bool IsColour(const _IMAGE_INFO& info) noexcept {
    return info.bytesPerPixel > 2;
}
[[nodiscard]] constexpr bool IsComposite(const _IMAGE_INFO& info) noexcept {
    return info.renderMode == kRenderSupplementalPalette && !IsColour(info);
}

/// An aspect ratio that cannot be one (0, as of a file that has none) counts as that of square pixels.
[[nodiscard]] inline double UsableAspectRatio(double aspectRatio) noexcept {
    return aspectRatio > 0.0 ? aspectRatio : 1.0;
}

/// Half up, cut towards zero; what no int holds stops at its ends, and no number is 0.
[[nodiscard]] inline int Rounded(double value) noexcept {
    if (std::isnan(value)) return 0;
    constexpr double kLowest = std::numeric_limits<int>::min();
    constexpr double kHighest = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(value + 0.5, kLowest, kHighest));
}

}  // namespace quorvex
