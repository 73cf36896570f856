/// Which attributes a conversion may change.
#pragma once

#include "tools/convert/checks/attribute_comparison.h"
#include "tools/convert_target.h"

namespace quorvex::tools {

/// What was done with an object's frames.
struct Recoding {
    const ConvertTarget* target = nullptr;
    bool hasNewFrames = false;   ///< they were decoded and coded
    bool isLossySource = false;  ///< their former coding may have lost something
};

/// Whether the standard demands the change: Transfer Syntax UID for all, the colour attributes for
/// new frames, and what tells of losses where there are some.
bool IsDemanded(const ChangedAttribute& changed, const Recoding& recoding);

/// "Rows, Columns", at most a few of them; empty where every change is demanded.
std::string NamesOfUndemanded(const std::vector<ChangedAttribute>& changed,
                              const Recoding& recoding);

}  // namespace quorvex::tools
