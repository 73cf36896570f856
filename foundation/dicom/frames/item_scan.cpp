#include "foundation/dicom/frames/item_scan.h"

#include "foundation/dicom/model/encoding.h"
#include "foundation/dicom/model/tags.h"

#include <algorithm>
#include <array>

namespace quorvex::dicom {
namespace {

/// Behind a longer item nothing but the next header is read; behind shorter ones more and more.
constexpr std::uint64_t kShortItem = 4096;
constexpr std::uint64_t kLargestWindow = std::uint64_t{64} << 10;
/// What is read at first: most often both item headers and the offset table.
constexpr std::uint64_t kFirstWindow = 1024;

/// Goes from item to item through a window of the value.
class ItemCursor {
public:
    explicit ItemCursor(ValueReader& value, bool isBigEndian = false)
        : value_(value), isBigEndian_(isBigEndian) {}

    /// Steps over the next item and tells where its content lies; nothing where none is.
    [[nodiscard]] std::optional<ByteRange> Next();
    /// What is left is nothing, or a delimiter.
    [[nodiscard]] bool IsAtEnd() {
        return position_ == value_.Size() || BeginsWith(tag::kSequenceDelimitationItem);
    }
    [[nodiscard]] bool HasFailed() const noexcept { return hasFailed_; }

private:
    [[nodiscard]] bool BeginsWith(std::uint32_t tag) {
        const unsigned char* here = Peek(kTagBytes);
        return here != nullptr && LoadTag(here, isBigEndian_) == tag;
    }
    [[nodiscard]] const unsigned char* Peek(std::uint64_t count);
    void Fill(std::uint64_t count);

    ValueReader& value_;
    bool isBigEndian_;
    bool hasFailed_ = false;
    std::uint64_t position_ = 0;
    std::uint64_t windowStart_ = 0;
    std::uint64_t nextWindow_ = kFirstWindow;
    std::uint64_t growing_ = kFirstWindow;  ///< of short items
    ByteBuffer window_;
};

/// Null where the value ends before.
const unsigned char* ItemCursor::Peek(std::uint64_t count) {
    if (hasFailed_ || count > value_.Size() - position_) return nullptr;
    const bool isThere =
        position_ >= windowStart_ && position_ + count <= windowStart_ + window_.size();
    if (!isThere) Fill(count);
    return hasFailed_ ? nullptr : window_.data() + (position_ - windowStart_);
}

void ItemCursor::Fill(std::uint64_t count) {
    const std::uint64_t left = value_.Size() - position_;
    if (nextWindow_ == growing_) growing_ = std::min(2 * growing_, kLargestWindow);
    window_.resize(std::min(left, std::max(nextWindow_, count)));
    windowStart_ = position_;
    hasFailed_ = !value_.Read(position_, window_);
}

std::optional<ByteRange> ItemCursor::Next() {
    const unsigned char* here = Peek(kItemHeader);
    if (here == nullptr || LoadTag(here, isBigEndian_) != tag::kItem) return std::nullopt;
    const std::uint64_t start = position_ + kItemHeader;
    const auto length =
        std::min<std::uint64_t>(LoadItemLength(here, isBigEndian_), value_.Size() - start);
    position_ = start + length;
    nextWindow_ = length <= kShortItem ? growing_ : kItemHeader;
    return ByteRange{start, length};
}

/// The first bytes of a fragment, as many as tell an image's start.
class Head {
public:
    [[nodiscard]] bool Read(ValueReader& value, std::uint64_t offset, std::uint64_t length) {
        bytes_ = std::span(room_).first(std::min<std::uint64_t>(length, room_.size()));
        return value.Read(offset, bytes_);
    }
    [[nodiscard]] Bytes Content() const noexcept { return bytes_; }

private:
    std::array<unsigned char, kLongestStartOfImage> room_{};
    std::span<unsigned char> bytes_;
};

FragmentPlace PlaceOf(const ByteRange& range) {
    return {range.offset, static_cast<std::uint32_t>(range.length)};
}

class ScannedFragments final : public FragmentList {
public:
    ScannedFragments(ValueReader& value, const ScannedItems& items, TRANSFER_SYNTAX syntax)
        : value_(value), places_(items.fragments), syntax_(syntax) {}

    [[nodiscard]] std::size_t Count() const override { return places_.size(); }
    [[nodiscard]] std::uint64_t OffsetOf(std::size_t index) const override {
        return places_[index].offset - places_.front().offset;
    }
    [[nodiscard]] std::uint64_t LengthOf(std::size_t index) const override {
        return places_[index].length;
    }
    [[nodiscard]] bool IsStartOfImage(std::size_t index) override {
        Head head;
        if (hasFailed_ || !head.Read(value_, places_[index].offset, places_[index].length))
            hasFailed_ = true;
        return !hasFailed_ && BeginsImage(head.Content(), syntax_);
    }
    [[nodiscard]] bool HasFailed() const noexcept { return hasFailed_; }

private:
    ValueReader& value_;
    std::span<const FragmentPlace> places_;
    TRANSFER_SYNTAX syntax_;
    bool hasFailed_ = false;
};

}  // namespace

std::optional<ScannedItems> ScanItems(ValueReader& value, TRANSFER_SYNTAX syntax) {
    ScannedItems items;
    ItemCursor cursor(value);
    if (const auto first = cursor.Next()) {
        Head head;
        if (!head.Read(value, first->offset, first->length)) return std::nullopt;
        if (BeginsImage(head.Content(), syntax)) {
            items.fragments.push_back(PlaceOf(*first));
        } else {
            items.offsetTable.resize(first->length);
            if (!value.Read(first->offset, items.offsetTable)) return std::nullopt;
        }
    }
    while (const auto item = cursor.Next()) items.fragments.push_back(PlaceOf(*item));
    if (cursor.HasFailed()) return std::nullopt;
    return items;
}

std::optional<bool> ScanForChain(ValueReader& value) {
    for (const bool isBigEndian : {false, true}) {
        ItemCursor cursor(value, isBigEndian);
        bool hasItem = false;
        while (cursor.Next()) hasItem = true;
        const bool isChain = hasItem && cursor.IsAtEnd();
        if (cursor.HasFailed()) return std::nullopt;
        if (isChain) return true;
    }
    return false;
}

std::optional<FrameStarts> FindScannedFrames(ValueReader& value, const ScannedItems& items,
                                             const FrameHints& hints) {
    ScannedFragments fragments(value, items, hints.syntax);
    FrameStarts found = FindFrames(fragments, items.offsetTable, hints);
    if (fragments.HasFailed()) return std::nullopt;
    return found;
}

}  // namespace quorvex::dicom
