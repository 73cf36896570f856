/// quorvex info: what files are and hold.
#pragma once

#include "tools/info/element_filter.h"
#include "tools/report.h"

#include <string>
#include <vector>

namespace quorvex::tools {

struct InfoArguments {
    std::vector<std::string> files;  ///< files and folders, - for standard input
    std::vector<WantedTag> tags;     ///< empty for every element
    bool asJson = false;             ///< one JSON object a file, one a line
    bool asDicomJson = false;        ///< the same in the standard's own form
};
ExitStatus Info(const InfoArguments& arguments);

}  // namespace quorvex::tools
