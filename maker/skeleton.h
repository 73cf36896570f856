/// What a new object takes over from its source, and what it gets of its own, before its pixels.
#pragma once

#include "quorvex/CxDcmMaker.h"

#include <memory>

namespace quorvex {

/// The work of `CxDcmMaker::MakeDcmSkeleton`; half of it may be done when it throws.
void FillSkeleton(const CDcmObject& source, CDcmObject& target);

/// Copies what an image object takes over besides: type, rescale, position and orientation.
void SetBasicInfo(const CDcmObject& source, CDcmObject& target);

/// A new object with all but its pixel attributes. `settings` may be null, and win over the source.
[[nodiscard]] std::unique_ptr<CDcmObject> MakeBasicObject(const CDcmObject& source,
                                                          const _USER_SETTING_INFO* settings);

}  // namespace quorvex
