/// An image as it is seen by the standard rules: what shows of it in the view, rendered and drawn.
#pragma once

#include "quorvex/PixelTarget.h"
#include "quorvex/ResultCodes.h"
#include "quorvex/Types.h"

namespace quorvex {

struct DisplayedImage;

/// Renders what the view shows: all of the scaled image that lies in it.
/// @return QVM_SUCCESS, or with the last result kept QVM_ERROR_NO_IMAGE, or
///         QVM_ERROR_INVALID_OUTPUT_SIZE for a zoom or rotation that gives no image
QUORVEX_MESSAGE RenderStandardView(DisplayedImage& image);

/// The same into a host's memory; the last result stays as it is.
QUORVEX_MESSAGE RenderStandardViewInto(DisplayedImage& image, const PixelTarget& target);

/// What either of them would make now.
QUORVEX_MESSAGE DescribeStandardView(const DisplayedImage& image, PictureInfo& picture);

/// Whether the last result still has all that the view shows.
[[nodiscard]] bool IsResultStale(const DisplayedImage& image) noexcept;

/// Draws the last result where it lies in the view now, and the annotations over it.
void DrawStandardView(DrawingSurface& surface, const DisplayedImage& image);

}  // namespace quorvex
