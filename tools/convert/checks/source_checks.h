/// What an object is made of, and what keeps it from being converted at all.
#pragma once

#include "quorvex/DicomObject.h"

namespace quorvex::tools {

/// Number of Frames; 1 where it is absent.
int FramesOf(const CDcmObject& object);

/// Whether there is Pixel Data of any kind, of whole numbers or of fractions, or that of an
/// image was cut off.
bool IsImage(const CDcmObject& object);
/// Whether there is Pixel Data that holds fractions.
bool HoldsFractions(const CDcmObject& object);

/// Whether its frames have lost something, by their transfer syntax or by what it says of itself.
bool IsCodedWithLosses(const CDcmObject& object);

/// Whether its values count the bytes of its own file, so that it cannot be written anew.
bool IsDirectory(const CDcmObject& object);

/// Throws a Refusal for an object that ends before its data does.
void RefuseWhatIsCut(const CDcmObject& source);

/// Throws a Refusal for an image without a size, or with fewer pixels than its header says.
void RefuseUnfitImage(const CDcmObject& source);

/// Throws a Refusal for native frames beyond those that the header counts: coded ones would be
/// without them.
void RefuseUncountedFrames(const CDcmObject& source);

}  // namespace quorvex::tools
