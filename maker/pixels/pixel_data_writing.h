/// Pixel Data on its way into an object, frame by frame.
#pragma once

#include "quorvex/DicomObject.h"
#include "quorvex/ResultCodes.h"

#include <span>
#include <vector>

namespace quorvex {

/// Frames without coding, each gone before the next one comes.
class PlainFrameSource {
public:
    virtual ~PlainFrameSource() = default;
    [[nodiscard]] virtual bool AreAtEnd() const = 0;
    /// The next frame's bytes, valid until the next call.
    virtual QUORVEX_MESSAGE Next(std::span<unsigned char>& bytes) = 0;

protected:
    PlainFrameSource() = default;
    PlainFrameSource(const PlainFrameSource&) = default;
    PlainFrameSource& operator=(const PlainFrameSource&) = default;
};

/// Makes all frames one native value, as the object asks for it; offset tables go.
/// @return QVM_SUCCESS, what a frame failed with, or QVM_ERROR_FAILED_TO_SET_PIXEL_DATA
[[nodiscard]] QUORVEX_MESSAGE PutNativeFrames(PlainFrameSource& frames, bool areWords,
                                              CDcmObject& object);

/// Makes each coded frame an item; the object pads those of odd length.
/// @return QVM_SUCCESS or QVM_ERROR_FAILED_TO_SET_PIXEL_DATA
[[nodiscard]] QUORVEX_MESSAGE PutCodedFrames(std::vector<std::vector<unsigned char>>& frames,
                                             CDcmObject& object);

}  // namespace quorvex
