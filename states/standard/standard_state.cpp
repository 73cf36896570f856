#include "states/standard/standard_state.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/object/element_copy.h"
#include "maker/rules/making_rules.h"
#include "maker/rules/standard_skeleton.h"
#include "states/attribute_writing.h"

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

namespace quorvex {
namespace {

constexpr int kQuarter = 90;

/// What the skeleton took from an image.
constexpr std::uint32_t kOfImages[] = {
    tag::kPixelPaddingValue,         tag::kPixelPaddingRangeLimit, tag::kSmallestPixelValueInSeries,
    tag::kLargestPixelValueInSeries, tag::kPatientPosition,
};

CString Or(const CString& text, const CDcmObject& source, std::uint32_t tag) {
    return text.IsEmpty() ? Read<CString>(source, tag).value_or(CString()) : text;
}

ImageState ImageOf(const CXGSPSInfo& record, const CXGSPSInfo& first, const CDcmObject& source) {
    const CString& series = record.referencedSeriesUID.IsEmpty() ? first.referencedSeriesUID
                                                                 : record.referencedSeriesUID;
    const auto size = [&](std::int32_t own, std::uint32_t tag) {
        return own > 0 ? own : Read<int>(source, tag).value_or(0);
    };
    return {.record = &record,
            .series = Or(series, source, tag::kSeriesInstanceUID),
            .sopClass = Or(record.referencedSOPClassUID, source, tag::kSOPClassUID),
            .instance = Or(record.referencedSOPInstanceUID, source, tag::kSOPInstanceUID),
            .frame = std::max(record.referencedFrameNumber, 0),
            .columns = size(record.imageColumns, tag::kColumns),
            .rows = size(record.imageRows, tag::kRows)};
}

bool IsWhole(const ImageState& image) {
    return !image.series.IsEmpty() && !image.sopClass.IsEmpty() && !image.instance.IsEmpty() &&
           image.columns > 0 && image.rows > 0;
}

CDcmItem Reference(const ImageState& image) {
    CDcmItem item = NewItem();
    item.SetValue(tag::kReferencedSOPClassUID, image.sopClass);
    item.SetValue(tag::kReferencedSOPInstanceUID, image.instance);
    if (image.frame > 0) item.SetValue(tag::kReferencedFrameNumber, image.frame);
    return item;
}

/// Images of which several frames are meant are named once.
void WriteReferences(std::span<const ImageState* const> images, CDcmItem& series) {
    ValueWriter references(series, tag::kReferencedImageSequence);
    for (std::size_t i = 0; i < images.size(); ++i) {
        const auto isSame = [&](const ImageState* other) {
            return other->instance == images[i]->instance;
        };
        if (std::ranges::any_of(images.first(i), isSame)) continue;
        CDcmItem reference = Reference(*images[i]);
        const auto later = images.subspan(i + 1);
        const bool areFrames = std::ranges::all_of(
            images, [&](const ImageState* other) { return !isSame(other) || other->frame > 0; });
        if (!areFrames) reference.RemoveValue(tag::kReferencedFrameNumber);
        for (const ImageState* other : later) {
            if (areFrames && isSame(other))
                reference.SetNextValue(tag::kReferencedFrameNumber, other->frame);
        }
        references.Add(std::move(reference));
    }
}

void WriteRelationship(const StateDraft& draft) {
    ValueWriter all(draft.target, tag::kReferencedSeriesSequence);
    std::vector<CString> done;
    for (const ImageState& image : draft.images) {
        if (std::ranges::find(done, image.series) != done.end()) continue;
        done.push_back(image.series);
        std::vector<const ImageState*> ofSeries;
        for (const ImageState& other : draft.images) {
            if (other.series == image.series) ofSeries.push_back(&other);
        }
        CDcmItem series = NewItem();
        series.SetValue(tag::kSeriesInstanceUID, image.series);
        WriteReferences(ofSeries, series);
        all.Add(std::move(series));
    }
}

/// As a code string: up to 16 capital letters, digits, spaces and underscores.
CString LabelOf(const CString& text) {
    constexpr std::size_t kLongest = 16;
    constexpr std::string_view kAllowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789 _";
    std::string label = text.ToUtf8().substr(0, kLongest);
    for (char& c : label) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
        if (kAllowed.find(c) == std::string_view::npos) c = '_';
    }
    return label.empty() ? CString("STATE") : CString(label);
}

void WriteIdentification(const StateDraft& draft) {
    const CXGSPSInfo& first = draft.First();
    draft.target.SetValue(tag::kContentLabel, LabelOf(first.contentLabel));
    draft.target.SetValue(tag::kContentDescription, first.contentDescription);
    draft.target.SetValue(tag::kPresentationCreationDate, CxDcmMaker::GetDate());
    draft.target.SetValue(tag::kPresentationCreationTime, StandardTime());
    draft.target.SetValue(tag::kContentCreatorName, first.contentCreatorName);
}

/// A state subtracts by average or by time; images know other ways too.
void WriteMask(const StateDraft& draft) {
    const auto mask = Read<CDcmItem>(draft.source, tag::kMaskSubtractionSequence);
    if (!mask) return;
    const auto operation = Read<CString>(*mask, tag::kMaskOperation);
    if (operation != CString("AVG_SUB") && operation != CString("TID")) return;
    CopyFirstItem(draft.source, draft.target, tag::kMaskSubtractionSequence);
    draft.target.SetValue(tag::kRecommendedViewingMode, "SUB");
}

void WriteSpatial(const StateDraft& draft) {
    const int rotation = (draft.First().imageRotation % 360 + 360) % 360;
    draft.target.SetValue(tag::kImageRotation, rotation);
    draft.target.SetValue(tag::kImageHorizontalFlip, YesOrNo(draft.First().imageHorizontalFlip));
}

void WriteModules(const StateDraft& draft) {
    for (const auto tag : kOfImages) draft.target.RemoveValue(tag);
    WriteIdentification(draft);
    WriteRelationship(draft);
    WriteDisplayedAreas(draft);
    WritePresentationLUT(draft);
    WriteMask(draft);
    WriteShutters(draft);
    WriteAnnotations(draft);
    WriteSpatial(draft);
    WriteModality(draft);
    WriteVOI(draft);
}

}  // namespace

CDcmItem ImageState::Item() const {
    CDcmItem item = NewItem();
    CDcmItem reference = Reference(*this);
    item.SetValue(tag::kReferencedImageSequence, &reference);
    return item;
}

std::unique_ptr<CDcmObject> MakeStandardState(const CDcmObject& source,
                                              std::span<CXGSPSInfo* const> infos) {
    if (infos.front()->imageRotation % kQuarter != 0) return nullptr;
    std::vector<ImageState> images;
    for (const CXGSPSInfo* info : infos) images.push_back(ImageOf(*info, *infos.front(), source));
    if (!std::ranges::all_of(images, IsWhole)) return nullptr;
    const MakingRules& rules = MakingRulesOf(Rules::kStandard);
    auto state = std::make_unique<CDcmObject>();
    state->Open("test.dcm");  // only names the object: nothing is written
    if (rules.FillSkeleton(source, *state) != QVM_SUCCESS) return nullptr;
    rules.ApplyRecord(*infos.front(), *state);
    WriteModules({.source = source, .images = images, .target = *state});
    return state;
}

}  // namespace quorvex
