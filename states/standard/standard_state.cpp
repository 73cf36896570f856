#include "states/standard/standard_state.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/object/element_copy.h"
#include "foundation/dicom/object/functional_groups.h"
#include "maker/rules/making_rules.h"
#include "maker/rules/standard_skeleton.h"
#include "presentation/one_modality.h"
#include "quorvex/CXGSPSObject.h"
#include "states/attribute_writing.h"

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

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
    const auto known = [&](const CString& text, std::uint32_t tag) {
        return draft.Earlier() != nullptr ? Or(text, *draft.Earlier(), tag) : text;
    };
    draft.target.SetValue(tag::kContentLabel,
                          LabelOf(known(first.contentLabel, tag::kContentLabel)));
    draft.target.SetValue(tag::kContentDescription,
                          known(first.contentDescription, tag::kContentDescription));
    draft.target.SetValue(tag::kPresentationCreationDate, CxDcmMaker::GetDate());
    draft.target.SetValue(tag::kPresentationCreationTime, StandardTime());
    draft.target.SetValue(tag::kContentCreatorName,
                          known(first.contentCreatorName, tag::kContentCreatorName));
}

/// A state subtracts by average or by time; images know other ways too.
void WriteMask(const StateDraft& draft) {
    if (draft.Earlier() != nullptr) {
        for (const auto tag : {tag::kMaskSubtractionSequence, tag::kRecommendedViewingMode})
            CopyElement(*draft.Earlier(), draft.target, tag);
        return;
    }
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
    WriteEarlierAttributes(draft);
    WriteShutters(draft);
    WriteAnnotations(draft);
    WriteSpatial(draft);
    WriteModality(draft);
    WriteVOI(draft);
}

/// One transform is for all that the state names (PS3.3 A.33.1.1).
bool HaveOneModality(const CDcmObject& source, std::span<const ImageState> images) {
    const CXGSPSInfo* known = nullptr;
    for (const ImageState& image : images) {
        if (image.record->modalityVaries != 0) return false;
        if (known == nullptr) known = image.record;
        if (!CXGSPSObject::HaveOneModality(*known, *image.record)) return false;
        if (!KnowsModality(*known)) known = image.record;
    }
    if (images.front().record->state != nullptr) return true;
    const auto own = Read<CString>(source, tag::kSOPInstanceUID);
    std::vector<int> frames;
    bool areAll = false;
    for (const ImageState& image : images) {
        if (image.instance != own) continue;
        areAll = areAll || image.frame < 1;
        frames.push_back(image.frame - 1);
    }
    if (frames.empty()) return true;
    return HaveOneModality(source, areAll ? std::span<const int>() : std::span<const int>(frames));
}

/// What keeps the images out of one state.
QUORVEX_MESSAGE Check(const CDcmObject& source, std::span<const ImageState> images) {
    const bool areNamed = std::ranges::all_of(images, [](const ImageState& image) {
        return !image.series.IsEmpty() && !image.sopClass.IsEmpty() && !image.instance.IsEmpty();
    });
    if (!areNamed) return QVM_ERROR_NO_SOURCE_OBJECT;
    const bool haveSizes = std::ranges::all_of(
        images, [](const ImageState& image) { return image.columns > 0 && image.rows > 0; });
    if (!haveSizes || images.front().record->imageRotation % kQuarter != 0)
        return QVM_ERROR_INVALID_IMAGE_FORMAT;
    return HaveOneModality(source, images) ? QVM_SUCCESS : QVM_ERROR_INVALID_PIXEL_REPRESENTATION;
}

}  // namespace

CDcmItem ImageState::Item() const {
    CDcmItem item = NewItem();
    CDcmItem reference = Reference(*this);
    item.SetValue(tag::kReferencedImageSequence, &reference);
    return item;
}

QUORVEX_MESSAGE MakeStandardState(const CDcmObject& source, std::span<CXGSPSInfo* const> infos,
                                  std::unique_ptr<CDcmObject>& made) {
    std::vector<ImageState> images;
    for (const CXGSPSInfo* info : infos) images.push_back(ImageOf(*info, *infos.front(), source));
    const auto checked = Check(source, images);
    if (checked != QVM_SUCCESS) return checked;
    const MakingRules& rules = MakingRulesOf(Rules::kStandard);
    auto state = std::make_unique<CDcmObject>();
    state->Open("test.dcm");  // only names the object: nothing is written
    const auto begun = rules.FillSkeleton(source, *state);
    if (begun != QVM_SUCCESS) return begun;
    rules.ApplyRecord(*infos.front(), *state);
    WriteModules({.source = source, .images = images, .target = *state});
    made = std::move(state);
    return QVM_SUCCESS;
}

}  // namespace quorvex
