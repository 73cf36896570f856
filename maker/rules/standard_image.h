/// A new image by the standard rules: its class, what it takes over, its pixels.
#pragma once

#include "maker/rules/host_frames.h"

namespace quorvex {

/// Frames like those of the source, as many, make an image of its class that is derived from it,
/// with all of its attributes that do not speak of other pixels; all others make a secondary
/// capture.
/// @return as `CxDcmMaker::MakeDcmObject`
[[nodiscard]] QUORVEX_MESSAGE MakeStandardImage(const NewImage& image, FrameSupply& frames,
                                                CDcmObject& target);
/// A secondary capture, whatever the frames are like.
[[nodiscard]] QUORVEX_MESSAGE MakeStandardCapture(const NewImage& image, FrameSupply& frames,
                                                  CDcmObject& target);

}  // namespace quorvex
