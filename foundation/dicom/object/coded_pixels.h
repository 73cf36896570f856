/// Encapsulated Pixel Data as an object describes it.
#pragma once

#include "foundation/dicom/frames/frame_boundaries.h"
#include "quorvex/DicomObject.h"

namespace quorvex::dicom {

/// What the object says about the frames of its encapsulated Pixel Data, wherever that lies. Valid
/// until the object changes.
[[nodiscard]] FrameHints HintsOf(const CDcmObject& object);

/// Whether frames of the object's own Pixel Data begin where an image seems to begin, since no
/// table and no number of fragments says where.
[[nodiscard]] bool AreCodedFramesGuessed(const CDcmObject& object);

}  // namespace quorvex::dicom
