/// Frames with settings of their own: the functional groups of an enhanced multi-frame object.
#pragma once

#include "quorvex/DicomObject.h"

#include <optional>

namespace quorvex {

/// The header as a single-frame file of that frame would have it: rescale, window or VOI LUT, and
/// pixel spacing, taken from the frame's own functional groups, else from the shared ones, put at
/// the top level.
///
/// Each of the three stays as it is where any of its attributes lies at the top level already.
///
/// @param frameIndex  0 for the first frame
/// @return nothing where the groups have nothing to add; else a copy, which shares the content
[[nodiscard]] std::optional<CDcmObject> HeaderOfFrame(const CDcmObject& header, int frameIndex);

}  // namespace quorvex
