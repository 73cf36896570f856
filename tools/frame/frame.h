/// quorvex frame: decoded frames as raw pixels.
#pragma once

#include "tools/report.h"

#include <string>

namespace quorvex::tools {

struct FrameArguments {
    std::string file;
    std::string output;
    int frame = 0;
    bool all = false;
};
ExitStatus Frame(const FrameArguments& arguments);

}  // namespace quorvex::tools
