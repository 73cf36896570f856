/// What the stages of a render job agree on.
#pragma once

#include "quorvex/CXImageCreator.h"

namespace quorvex {

// Results of the operations.
inline constexpr int kJobDone = 0;
inline constexpr int kJobRefused = 1;
inline constexpr int kModalityRefused = 2;
inline constexpr int kJobWithoutTable = 3;  ///< or without memory

inline constexpr int kColourBytes = 3;
/// Rows of the output are a multiple of 4 pixels, as rows of a bitmap end on 32 bits.
inline constexpr int kRowAlignment = 4;

/// Whether width and height change places: any rotation but 0 and 180.
[[nodiscard]] constexpr bool SwapsSides(int rotation) noexcept {
    return rotation != 0 && rotation != 180;
}
/// The two rotations of those that a job can do.
[[nodiscard]] constexpr bool IsQuarterTurn(int rotation) noexcept {
    return rotation == 90 || rotation == 270;
}
[[nodiscard]] constexpr bool IsColour(const _IMAGE_INFO& info) noexcept {
    return info.bytesPerPixel > 2;
}
[[nodiscard]] constexpr bool IsComposite(const _IMAGE_INFO& info) noexcept {
    return info.renderMode == kRenderSupplementalPalette && !IsColour(info);
}

/// An aspect ratio that cannot be one (0, as of a file that has none) counts as that of square
/// pixels.
[[nodiscard]] inline double UsableAspectRatio(double aspectRatio) noexcept {
    return aspectRatio > 0.0 ? aspectRatio : 1.0;
}

}  // namespace quorvex
