/// Thumbnails by the standard rules: what a view of that size shows of the image.
#pragma once

#include "pipeline/thumbnail/thumbnail_image.h"

namespace quorvex {

class CxDcmParser;

/// The whole image, drawn as `CXDIPP` draws it at first and fitted into the size, on black. For the
/// coder without gaps and as R, G, B, else as the bitmap header says.
/// Results: those of `StandardRules::ShowFrame` and `RenderStandardView`, or
/// QVM_ERROR_INVALID_OUTPUT_SIZE for more than `kLargestBlock` bytes.
[[nodiscard]] ThumbnailImage MakeStandardThumbnail(CxDcmParser& parser, const ThumbnailForm& form);

}  // namespace quorvex
