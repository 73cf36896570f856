// The modality, VOI and presentation stages.
#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/object/element_copy.h"
#include "foundation/dicom/object/functional_groups.h"
#include "states/attribute_writing.h"
#include "states/standard/earlier_state.h"
#include "states/standard/standard_state.h"

#include <cmath>
#include <optional>
#include <utility>

namespace quorvex {
namespace {

void TakeRescale(const CDcmObjectCommon& from, const StateDraft& draft) {
    const bool hasIntercept = CopyElement(from, draft.target, tag::kRescaleIntercept);
    const bool hasSlope = CopyElement(from, draft.target, tag::kRescaleSlope);
    if (!hasIntercept && !hasSlope) return;
    if (!hasIntercept) draft.target.SetValue(tag::kRescaleIntercept, "0");
    if (!hasSlope) draft.target.SetValue(tag::kRescaleSlope, "1");
    const bool hasType = CopyElement(from, draft.target, tag::kRescaleType) &&
                         !Read<CString>(from, tag::kRescaleType).value_or(CString()).IsEmpty();
    const bool isCt = TextIs(draft.source, tag::kModality, "CT");
    if (!hasType) draft.target.SetValue(tag::kRescaleType, isCt ? "HU" : "US");
}

void TakeModality(const CDcmObjectCommon& from, const StateDraft& draft) {
    if (!CopyElement(from, draft.target, tag::kModalityLUTSequence)) TakeRescale(from, draft);
}

struct ExactWindow {
    double centre = 0.0;
    double width = 0.0;
    bool isAsRead = false;
};

/// Nothing without a window. A host that sets whole numbers is heard.
std::optional<ExactWindow> WindowOf(const CXGSPSInfo& info) {
    const bool isCenterAsRead =
        std::trunc(info.exactWindowCenter) == info.windowCenter || IsEarlierWindow(info);
    const bool isAsRead = isCenterAsRead && info.exactWindowWidth > 0.0 &&
                          std::trunc(info.exactWindowWidth) == info.windowWidth;
    if (isAsRead) return ExactWindow{info.exactWindowCenter, info.exactWindowWidth, true};
    if (info.windowWidth <= 0) return std::nullopt;
    return ExactWindow{static_cast<double>(info.windowCenter),
                       static_cast<double>(info.windowWidth), false};
}

void WriteWindow(const CXGSPSInfo& info, const ExactWindow& window, CDcmItem& item) {
    item.SetValue(tag::kWindowCenter, window.centre);
    item.SetValue(tag::kWindowWidth, window.width);
    if (!window.isAsRead) return;
    if (!info.windowFunction.IsEmpty()) item.SetValue(tag::kVOILUTFunction, info.windowFunction);
    if (!info.windowExplanation.IsEmpty())
        item.SetValue(tag::kWindowCenterWidthExplanation, info.windowExplanation);
}

/// IDENTITY or INVERSE; what the record does not know follows from the image.
const char* ShapeOf(const StateDraft& draft) {
    constexpr std::int32_t kInverse = 1;
    constexpr std::int32_t kNeither = 2;
    const std::int32_t shape = draft.First().presentationShape;
    const bool isInverse =
        shape == kNeither ? TextIs(draft.source, tag::kPhotometricInterpretation, "MONOCHROME1")
                          : shape == kInverse;
    return isInverse ? "INVERSE" : "IDENTITY";
}

}  // namespace

void WriteModality(const StateDraft& draft) {
    if (draft.Earlier() != nullptr)
        return TakeModality(ForAnyCharacterSet(*draft.Earlier()), draft);
    const int frame = draft.images.front().frame;
    const auto described =
        frame > 0 ? HeaderOfFrame(draft.source, frame - 1) : HeaderOfAllFrames(draft.source);
    TakeModality(described ? *described : draft.source, draft);
}

void WriteVOI(const StateDraft& draft) {
    ValueWriter images(draft.target, tag::kSoftcopyVOILUTSequence);
    for (const ImageState& image : draft.images) {
        const CXGSPSInfo& info = *image.record;
        const auto window = WindowOf(info);
        if (info.voiLUTData == nullptr && !window) continue;
        CDcmItem item = image.Item();
        if (info.voiLUTData != nullptr) {
            auto earlier = EarlierVOITable(info);
            CDcmItem lut = earlier ? *std::move(earlier) : PackedLUTItem(VOILUTOf(info));
            item.SetValue(tag::kVOILUTSequence, &lut);
        } else {
            WriteWindow(info, *window, item);
        }
        images.Add(std::move(item));
    }
}

void WritePresentationLUT(const StateDraft& draft) {
    if (draft.First().presentationLUTData == nullptr) {
        draft.target.SetValue(tag::kPresentationLUTShape, ShapeOf(draft));
        return;
    }
    const LUTContent table = PresentationLUTOf(draft.First());
    std::optional<CDcmItem> earlier;
    if (draft.Earlier() != nullptr)
        earlier = EarlierTable(*draft.Earlier(), tag::kPresentationLUTSequence, table);
    CDcmItem lut = earlier ? *std::move(earlier) : PackedLUTItem(table);
    draft.target.SetValue(tag::kPresentationLUTSequence, &lut);
}

}  // namespace quorvex
