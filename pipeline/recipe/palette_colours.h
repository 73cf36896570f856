/// Frames and values in the colours of an exact palette.
#pragma once

#include "parser/palette/exact_palette.h"
#include "pipeline/pixel_block.h"
#include "presentation/grey/grey_stages.h"
#include "quorvex/DicomObject.h"
#include "render/view_job.h"

#include <vector>

namespace quorvex {

/// Every element of a frame in its colour: red, green, blue.
[[nodiscard]] PixelBlock ColouredBy(const ExactPalette& palette, const PixelBlock& elements,
                                    int elementBytes, bool isSigned);

/// The colours of a supplemental palette for every value of an element of 1 or 2 bytes, by its
/// bits. Empty without one.
[[nodiscard]] std::vector<ValueColour> SupplementalColoursOf(CDcmObject& object,
                                                             const StoredForm& form,
                                                             int elementBytes);

}  // namespace quorvex
