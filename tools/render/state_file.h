/// A presentation state, checked against the image that it is for.
#pragma once

#include "quorvex/CxDcmParser.h"
#include "tools/report.h"

#include <string>

namespace quorvex::tools {

/// Reads a state and makes sure that it speaks of an image.
class StateFile {
public:
    /// Opens both files. kBadInput, with its line on standard error, when one cannot be read or the
    /// state refers to other images only.
    ExitStatus Open(CDcmApp& app, const std::string& statePath, const std::string& imagePath);

    [[nodiscard]] CDcmObject* Object() const { return state_.GetHeader(); }

private:
    mutable CxDcmParser state_;
};

}  // namespace quorvex::tools
