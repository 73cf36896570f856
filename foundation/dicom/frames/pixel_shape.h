/// What an object says about the shape of its Pixel Data.
#pragma once

#include "foundation/dicom/frames/native_frames.h"

namespace quorvex::dicom {

/// Absent attributes count as 0, Samples per Pixel and Number of Frames as 1.
[[nodiscard]] PixelShape ShapeOf(const CDcmObject& object);

}  // namespace quorvex::dicom
