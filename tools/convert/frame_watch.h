/// Who wants to know how far the work inside one file is.
#pragma once

#include <functional>

namespace quorvex::tools {

/// Takes what is being done ("coding"), how many frames of it are done, and how many there are.
/// Never empty.
using FrameWatch = std::function<void(const char* step, int done, int all)>;

}  // namespace quorvex::tools
