/// How large the mask of a shutter is.
#pragma once

#include "quorvex/CXGSPSInfo.h"
#include "quorvex/DicomObject.h"

namespace quorvex {

/// The object's own size, or that of the image that the record names where it has no Rows: what
/// reading a shutter of `object` makes the mask as large as.
[[nodiscard]] CSize ShutterMaskSize(const CDcmObject& object, const CXGSPSInfo& info);

}  // namespace quorvex
