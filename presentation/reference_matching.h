/// Which parts of a presentation state apply to which image.
#pragma once

#include "quorvex/DicomObject.h"

#include <cstdint>

namespace quorvex {

/// Whether an item of a presentation state applies to a frame of an image: it refers to no image at
/// all, or one of its references names the image and, where it lists frames, the frame. UIDs
/// compare without regard to case.
[[nodiscard]] bool AppliesTo(const CDcmItem& item, const CString& imageUID,
                             std::int32_t frameNumber);

}  // namespace quorvex
