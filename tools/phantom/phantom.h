/// quorvex phantom: sample objects for trying things out.
#pragma once

#include "tools/report.h"

#include <string>

namespace quorvex::tools {

struct PhantomArguments {
    std::string folder;
    bool small = false;
};
ExitStatus Phantom(const PhantomArguments& arguments);

}  // namespace quorvex::tools
