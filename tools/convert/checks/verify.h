/// Whether an output shows what its source shows.
#pragma once

#include "quorvex/CxDcmParser.h"
#include "quorvex/DicomObject.h"
#include "quorvex/ResultCodes.h"
#include "tools/convert/frame_watch.h"

#include <functional>
#include <optional>

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

/// Compares frame by frame, holding one of each: stored samples where both objects have the same
/// colours, R, G, B where the coding has changed them.
FrameComparison CompareFrames(CDcmObject& source, CDcmObject& output, const FrameWatch& watch);

/// Calls the first for every frame, in any thread, and the second one for each in their order.
using FrameRun = std::function<void(int count, const std::function<void(int)>& make,
                                    const std::function<void(int)>& take)>;

/// The same of two parsers that are open by the standard rules, of each of which every thread at
/// work takes a copy.
/// @param window  so many frames may be made and not taken
FrameComparison CompareFrames(CxDcmParser& before, CxDcmParser& after, const FrameWatch& watch,
                              const FrameRun& run, int window);

/// Whether native Pixel Data is the same to the byte, whatever its samples are; nothing where it is
/// coded, or has another byte order.
std::optional<bool> HaveSameNativePixels(const CDcmObject& source, const CDcmObject& output);

}  // namespace quorvex::tools
