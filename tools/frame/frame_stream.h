/// quorvex frame --stream: coded frames as they are stored.
#pragma once

#include "tools/report.h"

#include <string>

namespace quorvex::tools {

/// Writes what the fragments of a file's Pixel Data hold, one behind the other: the whole of a
/// video, or of a coded still.
ExitStatus WriteStream(const std::string& file, const std::string& output);

}  // namespace quorvex::tools
