/// quorvex frame: decoded frames as numbers.
#pragma once

#include "tools/report.h"

#include <string>

namespace quorvex::tools {

struct FrameArguments {
    std::string file;
    std::string output;  ///< .npy, .png or plain bytes, by its extension
    int frame = 0;
    bool all = false;
    bool describe = false;  ///< tells shape and type, and writes nothing
    bool isStream = false;  ///< writes coded frames as they are stored
};
ExitStatus Frame(const FrameArguments& arguments);

}  // namespace quorvex::tools
