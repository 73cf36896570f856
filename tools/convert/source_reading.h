/// The object of a file, pixels included.
#pragma once

#include "quorvex/DicomObject.h"
#include "tools/file_list.h"

#include <string>

namespace quorvex::tools {

/// Throws a Refusal for what cannot be read.
CDcmObject ReadWhole(const std::string& path);

/// The same for an input: one that is not DICOM, and that nobody named, is refused as such.
CDcmObject ReadSource(const InputFile& input);

/// Whether a file is a Part 10 one with nothing in its preamble, where a file of another kind may
/// begin.
bool HasClearPreamble(const std::string& path);

}  // namespace quorvex::tools
