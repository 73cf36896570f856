#include "foundation/dicom/reading/element_reader.h"

#include "foundation/dicom/model/dictionary.h"
#include "foundation/dicom/model/tags.h"
#include "foundation/dicom/model/value_representation.h"
#include "foundation/dicom/reading/unknown_vr.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace quorvex::dicom {
namespace {

constexpr std::size_t kTypicalElements = 384;

bool IsRaw(MC_VR vr) {
    return Describe(vr).kind == ValueKind::kRaw;
}

bool IsBefore(const Element& a, const Element& b) {
    return a.tag < b.tag;
}

void SortByTag(std::vector<Element>& elements, std::size_t first) {
    const auto from = elements.begin() + static_cast<std::ptrdiff_t>(first);
    const auto isMisplaced = [](const Element& a, const Element& b) { return a.tag >= b.tag; };
    if (std::adjacent_find(from, elements.end(), isMisplaced) == elements.end()) return;
    std::stable_sort(from, elements.end(), IsBefore);
    const auto isSame = [](const Element& a, const Element& b) { return a.tag == b.tag; };
    elements.erase(std::unique(from, elements.end(), isSame), elements.end());
}

}  // namespace

bool ElementReader::Fail(const char* why) noexcept {
    failure_ = why;
    return false;
}

bool ElementReader::Fail(Limit limit) noexcept {
    failure_ = LimitSentence(limit);
    return RefuseBy(limit);
}

bool ElementReader::ReadMeta(Encoding encoding) {
    Level level{.encoding = encoding, .isMeta = true};
    return ReadElements(level);
}

bool ElementReader::ReadMain(Encoding encoding, std::uint32_t stopTag) {
    pending_.reserve(kTypicalElements);
    Level level{.encoding = encoding, .stopTag = stopTag};
    return ReadElements(level);
}

Bytes ElementReader::ValueRead(std::uint32_t tag) const noexcept {
    const auto place = std::find_if(pending_.begin(), pending_.end(),
                                    [&](const Element& element) { return element.tag == tag; });
    return place == pending_.end() ? Bytes{} : Bytes{feed_.At(place->offset), place->length};
}

std::shared_ptr<DataSet> ElementReader::TakeDataSet(Encoding encoding) {
    return MakeDataSet(0, encoding);
}

std::shared_ptr<DataSet> ElementReader::MakeDataSet(std::size_t first, Encoding encoding) {
    SortByTag(pending_, first);
    const auto from = pending_.begin() + static_cast<std::ptrdiff_t>(first);
    std::vector<Element> elements(std::make_move_iterator(from),
                                  std::make_move_iterator(pending_.end()));
    pending_.erase(from, pending_.end());
    auto dataSet = std::make_shared<DataSet>(feed_.Buffer(), std::move(elements));
    dataSet->encoding = encoding;
    return dataSet;
}

std::size_t ElementReader::Available(std::size_t length, std::size_t end) {
    const std::size_t wanted = std::min(length, end - position_);
    return feed_.Has(position_, wanted) ? wanted : feed_.Size() - position_;
}

bool ElementReader::IsAt(std::uint32_t tag, const Level& level) {
    return HasWithin(level.end, kShortHeader) && TagHere(level.encoding.isBigEndian) == tag;
}

bool ElementReader::ReadElements(Level& level) {
    while (HasWithin(level.end, kShortHeader)) {
        switch (NextStep(level)) {
            case Step::kEnd:
                return true;
            case Step::kSkip:
                position_ += kShortHeader;
                break;
            case Step::kStrayItem:
                StepOverItem(level);
                break;
            case Step::kFailure:
                return SkipJunk(level);
            case Step::kElement:
                if (!ReadElement(level)) return false;
        }
    }
    return true;
}

/// What the eight bytes here are to the data set that is being read.
ElementReader::Step ElementReader::NextStep(const Level& level) {
    const std::uint32_t tag = TagHere(level.encoding.isBigEndian);
    if (level.isMeta && !IsMetaTag(tag)) return Step::kEnd;
    if (level.depth > 0) {
        if (tag == tag::kItemDelimitationItem) position_ += kShortHeader;
        return IsItemTag(tag) ? Step::kEnd : Step::kElement;
    }
    if (tag == tag::kItem) return Step::kStrayItem;
    if (IsItemTag(tag)) return Step::kSkip;  // some writers close what they never opened
    if (tag > level.stopTag) return Step::kEnd;
    if (tag == 0) return pending_.empty() ? Step::kFailure : Step::kEnd;  // padded with zeros
    return Step::kElement;
}

/// Skips the rest of an item whose end is known; anywhere else nothing more can be read.
bool ElementReader::SkipJunk(const Level& level) {
    if (level.depth == 0 || level.end == kOpenEnd)
        return Fail("there is no element where one should begin");
    position_ += Available(level.end - position_, level.end);
    return true;
}

std::optional<HeaderForm> ElementReader::UnknownForm(Encoding encoding, std::size_t end,
                                                     bool isItem) {
    if (!LacksVr(feed_.At(position_), encoding)) return std::nullopt;
    return UnknownVr(feed_, end, encoding.isBigEndian, isItem).FormAt(position_);
}

bool ElementReader::ReadElement(Level& level) {
    const auto unknown = UnknownForm(level.encoding, level.end, level.depth > 0);
    const HeaderForm form = unknown.value_or(HeaderFormOf(feed_.At(position_), level.encoding));
    const std::size_t headerBytes = HeaderBytes(form);
    if (!HasWithin(level.end, headerBytes)) {
        position_ += Available(headerBytes, level.end);
        return true;
    }
    const ElementHeader header = ReadHeader(feed_.At(position_), level.encoding, form);
    if (header.isGuessed && !feed_.Has(position_ + header.bytes, header.length) &&
        !header.IsUndefined()) {
        return SkipJunk(level);
    }
    if (!CountPart()) return false;
    position_ += header.bytes;
    Element element{.tag = header.tag, .vr = header.vr, .offset = position_};
    if (header.isUsOrSs && level.isSigned) element.vr = MC_VR_SS;
    element.isBigEndian = level.encoding.isBigEndian && header.vr != MC_VR_UN;
    return header.IsUndefined() ? ReadUndefined(header, std::move(element), level)
                                : ReadDefined(header, std::move(element), level);
}

bool ElementReader::ReadDefined(const ElementHeader& header, Element element, Level& level) {
    const bool isSequenceInUn = header.vr == MC_VR_UN && LookUp(header.tag).vr == MC_VR_SQ;
    if (header.vr == MC_VR_SQ || isSequenceInUn) {
        const std::size_t left = level.end - position_;
        element.isCut = header.length > left;
        const std::size_t end = position_ + std::min<std::size_t>(header.length, left);
        Level inner = level;
        if (isSequenceInUn && level.encoding.isExplicit) inner.encoding = {false, false};
        return ReadSequence(std::move(element), inner, end, false);
    }
    element.length = Available(header.length, level.end);
    element.isCut = element.length < header.length;
    position_ += element.length;
    Note(element, level);
    pending_.push_back(std::move(element));
    return true;
}

/// Keeps what the elements that follow, and the items among them, depend on.
void ElementReader::Note(const Element& element, Level& level) {
    const unsigned char* value = feed_.At(element.offset);
    if (element.tag == tag::kPixelRepresentation && element.length >= 2) {
        level.isSigned = Load<std::uint16_t>(value, element.isBigEndian) != 0;
    }
    if (element.tag == tag::kSpecificCharacterSet) {
        level.characterSet = std::make_shared<const std::string>(
            reinterpret_cast<const char*>(value), element.length);
    }
}

bool ElementReader::ReadUndefined(const ElementHeader& header, Element element,
                                  const Level& level) {
    Level inner = level;
    if (header.vr == MC_VR_UN && level.encoding.isExplicit) inner.encoding = {false, false};
    const bool isTaggedPixels = header.tag == tag::kPixelData && header.vr != MC_VR_SQ;
    const bool isPixels = isTaggedPixels || (IsRaw(header.vr) && header.vr != MC_VR_UN);
    if (isPixels && IsAt(tag::kItem, level)) return ReadFragments(std::move(element), level);
    if (isPixels) {
        ReadOpenValue(std::move(element), level);
        return true;
    }
    const bool isSequence = header.vr == MC_VR_SQ || IsAt(tag::kItem, inner) ||
                            IsAt(tag::kSequenceDelimitationItem, inner);
    if (!isSequence) return SkipJunk(level);
    return ReadSequence(std::move(element), inner, level.end, true);
}

}  // namespace quorvex::dicom
