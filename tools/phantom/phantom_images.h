/// The pictures of the sample objects.
#pragma once

#include "quorvex/Types.h"

#include <cstdint>
#include <vector>

namespace quorvex::tools {

/// A CT-like slice through a chest: 12-bit samples, Hounsfield units + 1024.
std::vector<std::uint16_t> DrawSlice(CSize size);

/// A radiograph-like view of a chest: 12-bit samples, more where more radiation came through.
std::vector<std::uint16_t> DrawRadiograph(CSize size);

/// One frame of an ultrasound-like loop with coloured flow: red, green, blue, interleaved.
/// `phase` runs from 0 to 1 once through the loop.
std::vector<unsigned char> DrawLoopFrame(CSize size, double phase);

}  // namespace quorvex::tools
