#include "parser/frames/stored_frame.h"

#include "parser/frames/frame_events.h"
#include "parser/frames/frame_index.h"
#include "parser/source/stored_file.h"

#include <cstring>

namespace quorvex {

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
    frame.bytes_ = frame.joined_;
    return kMcContinue;
}

void StoredFrame::Find(const FrameIndex& index) {
    const auto pieces = index.PiecesOf(static_cast<std::size_t>(frameIndex_));
    pieces_.assign(pieces.begin(), pieces.end());
    for (const auto& piece : pieces_) length_ += piece.length;
    if (!pieces_.empty()) offset_ = pieces_.front().offset;
    ShowFrameEvents(pieces_.empty() ? static_cast<int>(index.FrameCount()) : frameIndex_ + 1);
}

bool StoredFrame::Read(FileReading& file) {
    if (pieces_.size() == 1) {
        bytes_ = file.Show(offset_, length_, block_);
        return bytes_.size() == length_;
    }
    if (pieces_.empty()) return true;
    // With the item headers between them they are one range.
    block_ = HeapBlock(pieces_.back().offset + pieces_.back().length - offset_);
    if (!file.Read(offset_, block_.Bytes())) return false;
    unsigned char* end = block_.Data();
    for (const auto& piece : pieces_) {
        std::memmove(end, block_.Data() + (piece.offset - offset_), piece.length);
        end += piece.length;
    }
    bytes_ = block_.Bytes().first(length_);
    return true;
}

}  // namespace quorvex
