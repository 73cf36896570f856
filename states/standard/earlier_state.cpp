#include "states/standard/earlier_state.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/object/element_copy.h"
#include "foundation/dicom/object/object_state.h"
#include "presentation/presentation_reader.h"
#include "states/standard/standard_state.h"

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

namespace quorvex {
namespace {

/// Those that a state has besides its modules with fields.
constexpr std::uint32_t kWithoutField[] = {tag::kContentCreatorIdentificationCodeSequence,
                                           tag::kAlternateContentDescriptionSequence};

bool IsOfGroups(std::uint32_t tag, std::uint32_t first, std::uint32_t last) {
    const std::uint32_t group = dicom::GroupOf(tag);
    return group >= first && group <= last && group % 2 == 0 && !dicom::IsGroupLength(tag);
}

std::vector<std::uint32_t> TagsOf(const CDcmObject& object, std::uint32_t firstGroup,
                                  std::uint32_t lastGroup) {
    std::vector<std::uint32_t> tags;
    for (const dicom::Element& element : ObjectState::Of(object).Content().Elements())
        if (IsOfGroups(element.tag, firstGroup, lastGroup)) tags.push_back(element.tag);
    return tags;
}

/// The group that a bitmap shutter takes its overlay from; 0 without such a shutter.
std::uint32_t BitmapGroup(const CDcmObject& state) {
    bool isBitmap = false;
    ForEachValue<CString>(state, tag::kShutterShape, [&](const CString& word) {
        isBitmap = isBitmap || word == CString("BITMAP");
    });
    const std::uint32_t group = Read<unsigned short>(state, tag::kShutterOverlayGroup).value_or(0);
    const bool isOverlay = group >= tag::kFirstOverlayGroup && group <= tag::kLastOverlayGroup;
    return isBitmap && isOverlay ? group : 0U;
}

/// A mask is made of the bits in their order, whatever rows and columns the overlay has.
bool IsMaskOf(std::span<const unsigned char> bits, std::span<const std::uint8_t> mask) {
    for (std::size_t i = 0; i < mask.size(); ++i) {
        const bool isSet = i / 8 < bits.size() && (bits[i / 8] >> (i % 8) & 1U) != 0;
        if (isSet != (mask[i] != 0)) return false;
    }
    return true;
}

}  // namespace

std::optional<CDcmItem> EarlierTable(const CDcmObjectCommon& from, std::uint32_t sequence,
                                     const LUTContent& lut) {
    auto item = Read<CDcmItem>(from, sequence);
    const auto stored = item ? PresentationReader::GetLUTData(*item) : std::nullopt;
    if (!stored) return std::nullopt;
    const bool isSameForm = stored->count == static_cast<std::uint16_t>(lut.count) &&
                            stored->first == lut.first && stored->bits == lut.bits;
    if (!isSameForm || !std::equal(lut.data, lut.data + lut.Entries(), stored->data.get()))
        return std::nullopt;
    return ForAnyCharacterSet(*std::move(item));
}

bool IsEarlierWindow(const CXGSPSInfo& record) {
    bool isFound = false;
    if (record.state == nullptr) return false;
    ForEachItem(*record.state, tag::kSoftcopyVOILUTSequence, [&](const CDcmItem& item) {
        const auto center = Read<CString>(item, tag::kWindowCenter);
        isFound = isFound ||
                  (center && PresentationReader::WholeCenterOf(*center) == record.windowCenter &&
                   Read<double>(item, tag::kWindowCenter) == record.exactWindowCenter &&
                   Read<double>(item, tag::kWindowWidth) == record.exactWindowWidth);
    });
    return isFound;
}

std::optional<CDcmItem> EarlierVOITable(const CXGSPSInfo& record) {
    std::optional<CDcmItem> found;
    if (record.state == nullptr) return found;
    ForEachItem(*record.state, tag::kSoftcopyVOILUTSequence, [&](const CDcmItem& item) {
        auto table = EarlierTable(item, tag::kVOILUTSequence, VOILUTOf(record));
        if (table) found = std::move(table);
    });
    return found;
}

bool CopyEarlierBitmap(const CXGSPSInfo& record, std::size_t pixels, CDcmObject& target) {
    if (record.state == nullptr) return false;
    const CDcmObject state = ForAnyCharacterSet(*record.state);
    const std::uint32_t group = BitmapGroup(state);
    const auto bits = ReadBytes(state, tag::InGroup(group, tag::kOverlayData));
    if (group == 0 || !bits || !IsMaskOf(*bits, {record.shutterMask, pixels})) return false;
    for (const std::uint32_t tag : TagsOf(state, group, group)) CopyElement(state, target, tag);
    return CopyElement(state, target, tag::kShutterOverlayGroup);
}

void WriteEarlierAttributes(const StateDraft& draft) {
    if (draft.Earlier() == nullptr) return;
    const CDcmObject earlier = ForAnyCharacterSet(*draft.Earlier());
    for (const std::uint32_t tag : kWithoutField) CopyElement(earlier, draft.target, tag);
    const std::uint32_t shutter = BitmapGroup(earlier);
    for (const auto& [first, last] : {std::pair(tag::kFirstCurveGroup, tag::kLastCurveGroup),
                                      std::pair(tag::kFirstOverlayGroup, tag::kLastOverlayGroup)}) {
        for (const std::uint32_t tag : TagsOf(earlier, first, last))
            if (dicom::GroupOf(tag) != shutter) CopyElement(earlier, draft.target, tag);
    }
}

}  // namespace quorvex
