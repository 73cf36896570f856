/// quorvex info: everything that files say about themselves.
#pragma once

#include "tools/report.h"

#include <string>
#include <vector>

namespace quorvex::tools {

struct InfoArguments {
    std::vector<std::string> files;
    bool asJson = false;  ///< one JSON object a file, one a line
};
ExitStatus Info(const InfoArguments& arguments);

}  // namespace quorvex::tools
