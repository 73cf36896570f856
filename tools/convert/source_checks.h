/// What keeps an object from being converted.
#pragma once

#include "quorvex/DicomObject.h"
#include "tools/convert_target.h"

namespace quorvex::tools {

/// Number of Frames; 1 where it is absent.
int FramesOf(const CDcmObject& object);

/// Throws a Refusal for an object without pixels, with fewer than its header says, or with values
/// that the target's coder cannot hold.
void RefuseUnfitSource(CDcmObject& source, const ConvertTarget& target);

}  // namespace quorvex::tools
