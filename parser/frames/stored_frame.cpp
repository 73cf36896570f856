#include "parser/frames/stored_frame.h"

#include "parser/frames/frame_events.h"
#include "parser/frames/frame_index.h"

namespace quorvex {

MC_STATUS StoredFrame::CollectFromBuffer(int item, unsigned long length, unsigned char* data,
                                         int skip, int event, void* user) {
    auto& frame = *static_cast<StoredFrame*>(user);
    if (item == 0 && skip == 0 && event == 0) return kMcContinue;  // the offset table
    if (skip != 0 || event != 0) return frame.CountEvent(event);
    if (frame.events_ == frame.frameIndex_) frame.Take({data, length});
    return kMcContinue;
}

MC_STATUS StoredFrame::CountEvent(int event) noexcept {
    if (event == kPixelFrameEnds) {
        isWhole_ = events_ == frameIndex_ && !pieces_.empty();
        ++events_;
    } else if (event == kPixelWalkBegins) {
        events_ = 0;
    }
    ShowFrameEvents(events_);
    return isWhole_ ? kMcRefuse : kMcContinue;
}

void StoredFrame::Take(std::span<unsigned char> piece) {
    pieces_.push_back(piece);
    length_ += piece.size();
}

MC_STATUS StoredFrame::CollectFromObject(int /*messageId*/, std::uint32_t /*tag*/, void* user,
                                         int item, unsigned long length, unsigned char* data,
                                         int first, int last) {
    auto& frame = *static_cast<StoredFrame*>(user);
    if (item == 0 && first == 0 && last == 0) {
        frame.hasOffsetTable_ = true;
        return kMcContinue;
    }
    if (item != frame.frameIndex_ + 1) return kMcContinue;
    frame.joined_.insert(frame.joined_.end(), data, data + length);
    frame.length_ += length;
    return kMcContinue;
}

void StoredFrame::TakeFrom(const FrameIndex& index) {
    for (const auto piece : index.PiecesOf(static_cast<std::size_t>(frameIndex_))) Take(piece);
    isWhole_ = !pieces_.empty();
    events_ = isWhole_ ? frameIndex_ + 1 : static_cast<int>(index.FrameCount());
    ShowFrameEvents(events_);
}

const unsigned char* StoredFrame::FirstPiece() const noexcept {
    return pieces_.empty() ? nullptr : pieces_.front().data();
}

std::span<unsigned char> StoredFrame::Join() {
    if (pieces_.size() == 1) return pieces_.front();
    if (!pieces_.empty()) {
        joined_.reserve(length_);
        for (const auto piece : pieces_) joined_.insert(joined_.end(), piece.begin(), piece.end());
        pieces_.clear();
    }
    return joined_;
}

}  // namespace quorvex
