/// What an object says of the mask that is taken off its frames.
#pragma once

#include "quorvex/CXGSPSInfo.h"
#include "quorvex/DicomObject.h"

namespace quorvex {

/// Reads the first item of the Mask Subtraction Sequence, and the viewing mode, into the mask fields.
/// Attributes that are not there leave their fields as they are. The two lists come from new[] and
/// belong to the caller.
void ReadMaskSubtraction(const CDcmObject& object, CXGSPSInfo& info);

}  // namespace quorvex
