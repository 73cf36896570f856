/// Pictures in a host's memory.
#pragma once

#include "foundation/raster/pixel_grid.h"
#include "quorvex/PixelTarget.h"
#include "quorvex/ResultCodes.h"

#include <span>

namespace quorvex {

/// Whether a picture of 1 or 3 bytes a pixel can be put there.
/// @return QVM_SUCCESS, QVM_ERROR_INVALID_OUTPUT_SIZE or QVM_ERROR_INVALID_IMAGE_FORMAT
[[nodiscard]] QUORVEX_MESSAGE CheckTarget(const PixelTarget& target, CSize picture,
                                          int pixelSize) noexcept;

/// Where such a picture is rendered to, rows from the bottom: each of its rows begins where the
/// target's does, with pixels as wide as they are made. `SpreadPixels` follows.
[[nodiscard]] PixelGrid<unsigned char> RowsOf(const PixelTarget& target, CSize picture,
                                              int pixelSize) noexcept;

/// Brings the pixels of such rows into the target's format, where they lie.
void SpreadPixels(const PixelTarget& target, CSize picture, int pixelSize) noexcept;

/// Copies a picture, rows from the bottom and without gaps.
void CopyInto(const PixelTarget& target, std::span<const unsigned char> pixels, CSize picture,
              int pixelSize) noexcept;

}  // namespace quorvex
