/// quorvex capture: pictures as an object of a patient's study.
#pragma once

#include "tools/report.h"

#include <string>
#include <vector>

namespace quorvex::tools {

struct CaptureArguments {
    std::string source;                 ///< whose patient and study the pictures belong to
    std::vector<std::string> pictures;  ///< PNG files of one size, a frame each
    std::string output;
    std::string target = "explicit";  ///< a name that CodingTargetOf knows
};
ExitStatus Capture(const CaptureArguments& arguments);

}  // namespace quorvex::tools
