/// quorvex convert: files, folders and lists into another transfer syntax.
#pragma once

#include "tools/file_list.h"
#include "tools/report.h"

#include <optional>
#include <string>
#include <vector>

namespace quorvex::tools {

struct ConvertArguments {
    std::vector<std::string> files;  ///< files and folders
    std::string output;              ///< a folder when there may be several
    std::string target;              ///< a name that ConvertTargetOf knows
    std::optional<int> quality;
    unsigned jobs = 1;  ///< 0: one for each core
    std::string list;   ///< a file of paths, - for standard input; empty for none
    bool isNulSeparated = false;
    Shard shard;
    std::string manifest;  ///< empty for none
    bool isUnverified = false;
    bool keepsUnsupported = false;  ///< copies what the target cannot hold
    bool leavesLossy = false;       ///< copies what was coded with losses before
    bool isDryRun = false;          ///< tells, and places nothing
};
ExitStatus Convert(const ConvertArguments& arguments);

}  // namespace quorvex::tools
