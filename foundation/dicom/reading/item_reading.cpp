/// ElementReader: sequences, items and fragments.
#include "foundation/dicom/model/tags.h"
#include "foundation/dicom/reading/element_reader.h"
#include "foundation/dicom/reading/unknown_vr.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace quorvex::dicom {

/// Reads items up to the delimiter or `end`, whatever comes first.
bool ElementReader::ReadSequence(Element element, const Level& level, std::size_t end,
                                 bool isUndefined) {
    if (level.depth == kDeepestNesting) return Fail(Limit::kDeepestNesting);
    Items items;
    bool isClosed = false;
    while (HasWithin(end, kShortHeader)) {
        const std::uint32_t tag = TagHere(level.encoding.isBigEndian);
        isClosed = tag == tag::kSequenceDelimitationItem;
        if (tag != tag::kItem) break;
        if (!ReadItem(items, level, end)) return false;
    }
    if (!isUndefined) position_ += Available(end - position_, end);
    element.length = position_ - element.offset;
    element.isCut = element.isCut || (isUndefined ? !isClosed : position_ < end);
    if (isUndefined && isClosed) position_ += kShortHeader;
    element.vr = MC_VR_SQ;
    element.content = std::make_shared<Content>(std::move(items));
    pending_.push_back(std::move(element));
    return true;
}

bool ElementReader::ReadItem(Items& items, const Level& level, std::size_t end) {
    const auto length = LoadItemLength(feed_.At(position_), level.encoding.isBigEndian);
    if (!CountPart()) return false;
    position_ += kShortHeader;
    Level inner = level;
    inner.depth += 1;
    const bool isUndefined = length == kUndefinedLength;
    inner.end = isUndefined ? end : position_ + std::min<std::size_t>(length, end - position_);
    const std::size_t first = pending_.size();
    if (!ReadElements(inner)) return false;
    if (!isUndefined) position_ += Available(inner.end - position_, inner.end);
    items.push_back(MakeDataSet(first, level.encoding));
    items.back()->InheritCharacterSet(level.characterSet);
    return true;
}

bool ElementReader::ReadFragments(Element element, const Level& level) {
    Fragments fragments;
    bool isClosed = false;
    while (HasWithin(level.end, kShortHeader)) {
        const std::uint32_t tag = TagHere(level.encoding.isBigEndian);
        isClosed = tag == tag::kSequenceDelimitationItem;
        if (tag != tag::kItem) break;
        if (!CountPart()) return false;
        const auto length = LoadItemLength(feed_.At(position_), level.encoding.isBigEndian);
        position_ += kShortHeader;
        const std::size_t there = Available(length, level.end);
        fragments.ranges.push_back({position_, there});
        position_ += there;
    }
    element.length = position_ - element.offset;
    element.isCut = !isClosed;
    if (isClosed) position_ += kShortHeader;
    element.content = std::make_shared<Content>(std::move(fragments));
    pending_.push_back(std::move(element));
    return true;
}

/// Native data of undefined length: all that is left, without a delimiter that may close it.
void ElementReader::ReadOpenValue(Element element, const Level& level) {
    feed_.PullAll();
    element.length = Available(feed_.Size() - position_, level.end);
    position_ += element.length;
    if (element.length >= kShortHeader) {
        const unsigned char* last = feed_.At(position_ - kShortHeader);
        const bool isDelimiter =
            LoadTag(last, level.encoding.isBigEndian) == tag::kSequenceDelimitationItem &&
            LoadItemLength(last, false) == 0;
        if (isDelimiter) element.length -= kShortHeader;
    }
    pending_.push_back(std::move(element));
}

/// Some writers leave items behind outside of any sequence. What stands in them belongs to none, so
/// it is dropped where the end of the item is plain; else the header alone is stepped over.
void ElementReader::StepOverItem(const Level& level) {
    const std::size_t content = position_ + kShortHeader;
    const auto length = LoadItemLength(feed_.At(position_), level.encoding.isBigEndian);
    const bool isUndefined = length == kUndefinedLength;
    const bool isPlain = isUndefined
                             ? DropItem(level)
                             : feed_.Has(content, length) && GoesOnAt(content + length, level);
    if (!isPlain) {
        position_ = content;
    } else if (!isUndefined) {
        position_ = content + length;
    }
}

/// Reads an item of undefined length up to its delimiter; false where it has none.
bool ElementReader::DropItem(const Level& level) {
    const std::size_t content = position_ + kShortHeader;
    const auto former = static_cast<std::ptrdiff_t>(pending_.size());
    Items dropped;
    const bool isRead = ReadItem(dropped, level, level.end);
    pending_.erase(pending_.begin() + former, pending_.end());
    if (!isRead) return false;
    const bool isBigEndian = level.encoding.isBigEndian;
    const bool isDelimited =
        position_ >= content + kShortHeader &&
        LoadTag(feed_.At(position_ - kShortHeader), isBigEndian) == tag::kItemDelimitationItem;
    return isDelimited || (HasWithin(level.end, kShortHeader) && IsItemTag(TagHere(isBigEndian)));
}

/// Whether the main data set can go on at a place behind what was read.
bool ElementReader::GoesOnAt(std::size_t position, const Level& level) {
    if (!feed_.Has(position, kShortHeader)) return position == feed_.Size();
    const unsigned char* header = feed_.At(position);
    const std::uint32_t tag = LoadTag(header, level.encoding.isBigEndian);
    if (IsItemTag(tag)) return true;
    const bool isAbove = pending_.empty() || tag > pending_.back().tag;
    return isAbove && !LacksVr(header, level.encoding);
}

}  // namespace quorvex::dicom
