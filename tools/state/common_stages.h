/// What a greyscale state has only once, for all of its images.
#pragma once

#include "quorvex/CXGSPSInfo.h"
#include "tools/state/state.h"

#include <string>

namespace quorvex::tools {

/// Why one state cannot show an image as it is and another one, too: their rescales, their
/// directions of grey or their shutters differ. Empty where it can.
std::string DifferenceOf(const CXGSPSInfo& image, const CXGSPSInfo& first,
                         const std::string& firstPath, const StateArguments& arguments);

}  // namespace quorvex::tools
