/// Where the frames of a new object come from, one at a time.
#pragma once

#include "quorvex/CxDcmMaker.h"

namespace quorvex {

class FrameSupply {
public:
    virtual ~FrameSupply() = default;

    [[nodiscard]] virtual int Count() const = 0;
    /// Lends the record of a frame, each index once and in order. It is valid until the next call,
    /// and its blocks may be taken.
    virtual QUORVEX_MESSAGE Fetch(int index, _DCM_FRAME_BUFFER*& frame) = 0;
    /// Whether a pixel of 32 bits is a host's colour pixel, whatever its number of samples.
    [[nodiscard]] virtual bool HoldsBitmaps() const noexcept = 0;

protected:
    FrameSupply() = default;
    FrameSupply(const FrameSupply&) = default;
    FrameSupply& operator=(const FrameSupply&) = default;
};

}  // namespace quorvex
