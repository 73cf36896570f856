#include "foundation/dicom/frames/pixel_walk.h"

namespace quorvex::dicom {
namespace {

bool GoesOn(MC_STATUS status) {
    return status == kMcContinue;
}

}  // namespace

bool WalkEncapsulated(const EncapsulatedItems& items, const FrameHints& hints, FrameSink& sink) {
    if (!GoesOn(sink.Begin()) || !GoesOn(sink.OffsetTable(items.offsetTable))) return false;
    const auto starts = FindFrames(items.fragments, items.offsetTable, hints).firstFragments;
    for (std::size_t frame = 0; frame < starts.size(); ++frame) {
        const std::size_t first = starts[frame];
        const std::size_t end =
            frame + 1 < starts.size() ? starts[frame + 1] : items.fragments.size();
        for (std::size_t i = first; i < end; ++i) {
            const auto piece = items.fragments[i].bytes;
            if (!GoesOn(sink.Piece(frame, piece, i == first, i + 1 == end))) return false;
        }
        if (!GoesOn(sink.EndFrame())) return false;
    }
    return true;
}

bool WalkNative(const NativeFrames& frames, std::span<unsigned char> block, FrameSink& sink) {
    if (!GoesOn(sink.Begin())) return false;
    for (std::size_t frame = 0; frame < frames.Count(); ++frame) {
        if (!GoesOn(sink.Piece(frame, frames.Frame(frame, block), true, true))) return false;
        if (!GoesOn(sink.EndFrame())) return false;
    }
    return true;
}

}  // namespace quorvex::dicom
