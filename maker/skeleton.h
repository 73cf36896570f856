/// What a new object takes over from its source, and what it gets of its own, before its pixels.
#pragma once

#include "quorvex/CxDcmMaker.h"

namespace quorvex {

/// The work of `CxDcmMaker::MakeDcmSkeleton` by the established rules; half of it may be done when
/// it throws.
void FillEstablishedSkeleton(const CDcmObject& source, CDcmObject& target);

/// Copies what an image object takes over besides: type, rescale, position and orientation.
void SetBasicInfo(const CDcmObject& source, CDcmObject& target);

}  // namespace quorvex
