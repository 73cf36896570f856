/// What an object says about the shape of its Pixel Data.
#pragma once

#include "foundation/dicom/frames/native_frames.h"

namespace quorvex::dicom {

/// The two photometric interpretations in which two pixels share their colour.
[[nodiscard]] bool IsHalfChroma(const CString& photometric);

/// Absent attributes count as 0, Samples per Pixel and Number of Frames as 1.
[[nodiscard]] PixelShape ShapeOf(const CDcmObject& object);

}  // namespace quorvex::dicom
