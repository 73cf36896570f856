/// How an image lies in the view by the standard rules: fitted with its turn, and turned ahead of
/// its flip.
#pragma once

#include "quorvex/Types.h"

namespace quorvex {

struct DisplayedImage;

/// Where the whole scaled image lies.
struct ViewPlacement {
    CSize scaled;             ///< upright
    CSize turned;             ///< the same as it lies on the screen
    int quarterTurns = 0;     ///< clockwise
    bool isMirrored = false;  ///< left to right, after the turn
    CPoint corner;            ///< its upper left corner in the view, in device pixels
};

/// Sets zoom and pan as the presentation asks: its displayed area, or the whole image, fitted and
/// centred.
void LayOutByStandard(DisplayedImage& image) noexcept;

/// The present placement. The zoom must be one that can be rendered.
[[nodiscard]] ViewPlacement PlacementOf(const DisplayedImage& image) noexcept;

/// Whether the image has a size at its zoom: at most 2^30 pixels a side.
[[nodiscard]] bool CanBePlaced(const DisplayedImage& image) noexcept;

/// Turns further, clockwise on the screen, and the pan with it.
void TurnOnScreen(DisplayedImage& image, int quarterTurns) noexcept;
/// Mirrors left to right on the screen, and the pan with it.
void MirrorOnScreen(DisplayedImage& image) noexcept;

}  // namespace quorvex
