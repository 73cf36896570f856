#include "parser/frames/frame_index.h"

#include <algorithm>

namespace quorvex {
namespace {

/// An index takes at most this part of the value, or so many bytes however small the value is.
constexpr std::size_t kLargestPart = 8;
constexpr std::size_t kSmallIndexBytes = std::size_t{16} << 20;

}  // namespace

MC_STATUS FrameIndex::Collect(int item, unsigned long length, unsigned char* data, int skip,
                              int event, void* user) {
    auto& index = *static_cast<FrameIndex*>(user);
    if (item != 0 && skip == 0 && event == 0) index.pieces_.emplace_back(data, length);
    if (event == kPixelFrameEnds) index.ends_.push_back(index.pieces_.size());
    return kMcContinue;
}

void FrameIndex::Close(bool isWalkWhole) {
    const std::size_t bytes = pieces_.size() * sizeof(decltype(pieces_)::value_type) +
                              ends_.size() * sizeof(decltype(ends_)::value_type);
    const std::size_t most = std::max(kSmallIndexBytes, source_.bytes / kLargestPart);
    if (isWalkWhole && bytes <= most) return;
    pieces_ = {};
    ends_ = {};
}

std::span<const std::span<unsigned char>> FrameIndex::PiecesOf(std::size_t frame) const noexcept {
    if (frame >= ends_.size()) return {};
    const std::size_t first = frame == 0 ? 0 : ends_[frame - 1];
    return std::span(pieces_).subspan(first, ends_[frame] - first);
}

}  // namespace quorvex
