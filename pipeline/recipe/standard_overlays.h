/// Overlays as marks over an image: clipped to it, each in its colour.
#pragma once

#include "pipeline/recipe/standard_image.h"

#include <span>
#include <vector>

namespace quorvex {

/// The overlays of an image for one of its frames (counted from 1): those in unused bits of its
/// pixels included.
/// @param frame     as stored, before its unused bits are cleared
/// @param isColour  whether the image has colours; marks on grey are white
[[nodiscard]] std::vector<OwnedMarks> ImageOverlays(const CDcmObject& object,
                                                    std::span<const unsigned char> frame,
                                                    CSize imageSize, int frameNumber,
                                                    bool isColour);

/// The overlays that a presentation state activates, its own and the image's: each in the grey or
/// colour of its layer, in the order of the layers (DICOM PS3.3 C.11.7).
[[nodiscard]] std::vector<OwnedMarks> StateOverlays(const CDcmObject& state,
                                                    const std::vector<OwnedMarks>& ofImage,
                                                    CSize imageSize, int frameNumber);

}  // namespace quorvex
