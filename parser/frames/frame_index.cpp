#include "parser/frames/frame_index.h"

#include <algorithm>
#include <utility>

namespace quorvex {
namespace {

/// An index that is kept takes at most this part of the value, or so many bytes however small the
/// value is.
constexpr std::uint64_t kLargestPart = 8;
constexpr std::uint64_t kSmallIndexBytes = std::uint64_t{16} << 20;

template <class Item>
std::uint64_t BytesOf(const std::vector<Item>& items) noexcept {
    return items.capacity() * sizeof(Item);
}

}  // namespace

std::optional<FrameIndex> FrameIndex::Of(dicom::ValueReader& value, const Source& source) {
    auto items = dicom::ScanItems(value, source.hints.syntax);
    if (!items) return std::nullopt;
    auto found = dicom::FindScannedFrames(value, *items, source.hints);
    if (!found) return std::nullopt;
    FrameIndex index;
    index.offset_ = source.offset;
    index.bytes_ = source.bytes;
    index.frameCount_ = source.hints.frameCount;
    index.syntax_ = source.hints.syntax;
    const auto extended = source.hints.extendedOffsets;
    index.extendedOffsets_.assign(extended.begin(), extended.end());
    index.isGuessed_ = found->isGuessed;
    for (auto& fragment : items->fragments) fragment.offset += source.offset;
    index.fragments_ = std::move(items->fragments);
    index.firstFragments_ = std::move(found->firstFragments);
    return index;
}

bool FrameIndex::IsFrom(const Source& source) const noexcept {
    return source.offset == offset_ && source.bytes == bytes_ &&
           source.hints.frameCount == frameCount_ && source.hints.syntax == syntax_ &&
           std::ranges::equal(source.hints.extendedOffsets, extendedOffsets_);
}

bool FrameIndex::IsSmall() const noexcept {
    const std::uint64_t bytes =
        BytesOf(fragments_) + BytesOf(firstFragments_) + BytesOf(extendedOffsets_);
    return bytes <= std::max(kSmallIndexBytes, bytes_ / kLargestPart);
}

std::span<const dicom::FragmentPlace> FrameIndex::PiecesOf(std::size_t frame) const noexcept {
    if (frame >= firstFragments_.size()) return {};
    const std::size_t first = firstFragments_[frame];
    const std::size_t end =
        frame + 1 < firstFragments_.size() ? firstFragments_[frame + 1] : fragments_.size();
    return std::span(fragments_).subspan(first, end - first);
}

}  // namespace quorvex
