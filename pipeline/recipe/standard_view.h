/// An image as it is seen by the standard rules: what shows of it in the view, rendered and drawn.
#pragma once

#include "quorvex/ResultCodes.h"
#include "quorvex/Types.h"

namespace quorvex {

struct DisplayedImage;

/// Renders what the view shows: all of the scaled image that lies in it.
/// @return QVM_SUCCESS, or with the last result kept QVM_ERROR_NO_IMAGE, or
///         QVM_ERROR_INVALID_OUTPUT_SIZE for a zoom or rotation that gives no image
QUORVEX_MESSAGE RenderStandardView(DisplayedImage& image);

/// Whether the last result still has all that the view shows.
[[nodiscard]] bool IsResultStale(const DisplayedImage& image) noexcept;

/// Draws the last result where it lies in the view now, and the annotations over it.
void DrawStandardView(DrawingSurface& surface, const DisplayedImage& image);

}  // namespace quorvex
