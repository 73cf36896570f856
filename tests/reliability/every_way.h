/// One input on every way through the library.
#pragma once

#include "quorvex/DicomObject.h"

#include <string>
#include <vector>

namespace quorvex::test {

/// As a file: parser by either manner of reading, frames, thumbnail, palette, display with overlays,
/// shutter and annotations, window and view changes, skeleton of a new object, conversions, element
/// walk, copy, write and read again.
void ThroughEverything(const std::vector<unsigned char>& file);

/// The same for a data set that was not read from a file.
void ThroughEverything(CDcmObject& object);

/// As a presentation state over an image of 16 x 16 pixels, drawn with all it has; and as the source
/// of a new state.
void ThroughState(CDcmObject& state);

/// A path of this process's own, in the folder for temporary files.
std::string ScratchPath(const std::string& name);

}  // namespace quorvex::test
