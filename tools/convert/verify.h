/// Whether an output shows what its source shows.
#pragma once

#include "quorvex/DicomObject.h"
#include "quorvex/ResultCodes.h"

namespace quorvex::tools {

/// How the frames of two objects differ, as GetAFrame gives them.
struct FrameComparison {
    QUORVEX_MESSAGE result = QVM_SUCCESS;  ///< why a frame could not be fetched
    bool isSameShape = true;               ///< frame count and bytes of every frame
    bool isEqual = true;                   ///< every byte
    /// A value of the output does not fit into its Bits Stored, though the source's did: readers
    /// would take white for black there.
    bool overflows = false;
    double greatestError = 0.0;  ///< in stored values
    double psnr = 0.0;           ///< dB over all frames; infinite without any error
};

/// Compares frame by frame, holding one of each. A source of palette colour is compared by its
/// colours where the output has become RGB.
FrameComparison CompareFrames(CDcmObject& source, CDcmObject& output);

}  // namespace quorvex::tools
