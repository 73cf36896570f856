/// What else a DICOM file pretends to be.
#pragma once

#include <string>
#include <string_view>

namespace quorvex::tools {

/// The kind of program or picture whose first bytes stand in the file's 128-byte preamble; empty
/// for an ordinary preamble and for a file without one. Such a file can be started or opened as the
/// other kind, so a reader should know.
std::string_view PreambleKind(const std::string& path);

}  // namespace quorvex::tools
