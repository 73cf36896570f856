/// The walk over Pixel Data: frames and their pieces, told to whoever collects them.
#pragma once

#include "foundation/dicom/frames/encapsulated_items.h"
#include "foundation/dicom/frames/native_frames.h"

namespace quorvex::dicom {

/// Receives a walk. Every answer but `kMcContinue` ends it.
class FrameSink {
public:
    virtual ~FrameSink() = default;
    virtual MC_STATUS Begin() { return kMcContinue; }
    virtual MC_STATUS OffsetTable(Bytes table) = 0;
    /// A piece of frame `frame`, counted from 0; the two flags say whether it is that frame's
    /// first and last.
    virtual MC_STATUS Piece(std::size_t frame, Bytes piece, bool isFirst, bool isLast) = 0;
    virtual MC_STATUS EndFrame() { return kMcContinue; }

protected:
    FrameSink() = default;
    FrameSink(const FrameSink&) = default;
    FrameSink& operator=(const FrameSink&) = default;
};

/// True when the walk came to its end.
[[nodiscard]] bool WalkEncapsulated(const EncapsulatedItems& items, const FrameHints& hints,
                                    FrameSink& sink);
/// `block` has at least `frames.BlockBytes()`.
[[nodiscard]] bool WalkNative(const NativeFrames& frames, std::span<unsigned char> block,
                              FrameSink& sink);

}  // namespace quorvex::dicom
