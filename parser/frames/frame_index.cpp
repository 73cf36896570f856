#include "parser/frames/frame_index.h"

#include <algorithm>

namespace quorvex {
namespace {

constexpr int kFrameEnded = 1;
constexpr std::size_t kContextWord = 5;
/// An index takes at most this part of what it tells of, or so many bytes for anybody.
constexpr std::size_t kLargestPart = 8;
constexpr std::size_t kIndexForAnybody = std::size_t{16} << 20;

}  // namespace

MC_STATUS FrameIndex::Collect(int item, unsigned long length, unsigned char* data, int skip,
                              int event, void* user) {
    auto& index = *static_cast<FrameIndex*>(static_cast<void**>(user)[kContextWord]);
    const bool isPiece = item != 0 && skip == 0 && event == 0;
    if (isPiece && !index.source_.Holds(data)) return kMcRefuse;
    if (isPiece) index.pieces_.emplace_back(data, length);
    if (event == kFrameEnded) index.ends_.push_back(index.pieces_.size());
    return kMcContinue;
}

void FrameIndex::Close(bool isWalkWhole) {
    const std::size_t bytes =
        pieces_.size() * sizeof pieces_.front() + ends_.size() * sizeof ends_.front();
    const std::size_t most = std::max(kIndexForAnybody, source_.bytes / kLargestPart);
    if (isWalkWhole && bytes <= most) return;
    pieces_ = {};
    ends_ = {};
}

std::size_t FrameIndex::LengthAhead(std::size_t frame) const noexcept {
    const auto pieces = PiecesOf(frame);
    if (pieces.empty()) return 0;
    return static_cast<std::size_t>(pieces.front().data() - pieces_.front().data());
}

std::span<const std::span<unsigned char>> FrameIndex::PiecesOf(std::size_t frame) const noexcept {
    if (frame >= ends_.size()) return {};
    const std::size_t first = frame == 0 ? 0 : ends_[frame - 1];
    return std::span(pieces_).subspan(first, ends_[frame] - first);
}

}  // namespace quorvex
