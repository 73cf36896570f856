/// One input on every route through the library.
#pragma once

#include "tests/support/answers.h"

#include <vector>

namespace quorvex::test {

/// What a host asks of a file with one frame, by every route, as a list to compare: the frame from
/// the file and from the object, three thumbnails, the rendered image, two conversions; or the one
/// answer of a file that does not open.
std::vector<Answered> AskEverything(const Bytes& file);

/// A file that may do anything but harm: both ways of reading, frames, thumbnails, display with
/// overlays, shutter and annotations, changes of window and view, a copy that is changed, written
/// and read again, conversions, the skeleton of a new object.
void ThroughEverything(const Bytes& file);

/// As a presentation state over an image of 16 x 16 pixels, drawn with all that it has; and as the
/// source of a new state.
void ThroughState(CDcmObject& state);

/// The frames of an object converted to a QUORVEX_XFERSYNTAX, one behind the other.
Answered ConvertedOf(CDcmObject object, std::int32_t form);

}  // namespace quorvex::test
