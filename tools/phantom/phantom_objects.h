/// The sample objects themselves.
#pragma once

#include "quorvex/Types.h"
#include "tools/phantom/phantom_object.h"

#include <memory>

namespace quorvex::tools {

/// An object is a sample of one kind at one size.
std::unique_ptr<CDcmObject> MakeSlice();
std::unique_ptr<CDcmObject> MakeRadiograph(CSize size, int number);
std::unique_ptr<CDcmObject> MakeLoop(CSize size, int frames, int number);
/// A presentation of the slice: lung window, a part of the image, a ring and words.
std::unique_ptr<CDcmObject> MakeSliceState();

/// Identity of the slice, which its presentation refers to.
Identity SliceIdentity();
inline constexpr CSize kSliceSize = {512, 512};

}  // namespace quorvex::tools
