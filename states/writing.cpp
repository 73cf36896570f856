#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/model/tags.h"
#include "foundation/types/answer.h"
#include "quorvex/CXGSPSObject.h"
#include "quorvex/CxDcmMaker.h"
#include "states/attribute_writing.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <span>

namespace quorvex {
namespace {

void CopyText(const CDcmObject& source, CDcmObject& target, std::uint32_t tag) {
    if (const auto text = Read<CString>(source, tag)) target.SetValue(tag, *text, -1);
}

bool CopyFirstItem(const CDcmObject& source, CDcmObject& target, std::uint32_t tag) {
    CDcmItem item(1);
    if (source.GetValue(tag, item) != kDcmSuccess) return false;
    target.SetValue(tag, &item);
    return true;
}

bool AreUsable(CXGSPSInfo** infos, int count) {
    return infos != nullptr && count > 0 &&
           std::ranges::none_of(std::span(infos, static_cast<std::size_t>(count)),
                                [](const CXGSPSInfo* info) { return info == nullptr; });
}

CDcmItem SeriesReference(std::span<CXGSPSInfo* const> infos) {
    CDcmItem series = NewItem();
    series.SetValue(tag::kSeriesInstanceUID, infos.front()->referencedSeriesUID, -1);
    SequenceWriter images(series, tag::kReferencedImageSequence);
    for (const CXGSPSInfo* info : infos) {
        CDcmItem image = ImageReference(*info);
        images.Add(image);
    }
    return series;
}

}  // namespace

int CXGSPSObject::MakeGSPSObject(CDcmObject* source, CXGSPSInfo** infos, int count,
                                 CDcmObject*& result) {
    if (source == nullptr || !AreUsable(infos, count)) return 0;
    return Answer(0, [&] {
        auto state = std::make_unique<CDcmObject>();
        CDcmObject* target = state.get();
        CxDcmMaker maker;
        target->Open("test.dcm");
        maker.MakeDcmSkeleton(source, target);
        maker.UpdateUserSettingInfo(infos[0], target);
        SetPresentationStateModule(source, infos, count, target);
        SetDisplayedAreaModule(infos, count, target);
        SetSoftcopyPresentationLUTModule(infos[0], target);
        SetMaskModule(source, target);
        SetDisplayShutterModule(infos[0], target);
        SetBitmapDisplayShutterModule(infos[0], target);
        SetOverlayCurveActivationModule(infos[0], target);
        SetOverlayPlaneModule(infos[0], target);
        SetGraphicAnnotationModule(infos, count, target);
        SetGraphicLayerModule(infos[0], target);
        SetSpatialTransformationModule(infos[0], target);
        SetModalityLUTModule(source, target);
        SetSoftcopyVOILUTModule(infos, count, target);
        result = state.release();
        return 1;
    });
}

int CXGSPSObject::SetPresentationStateModule(CDcmObject* source, CXGSPSInfo** infos, int count,
                                             CDcmObject* target) {
    const std::span records(infos, static_cast<std::size_t>(count));
    const CXGSPSInfo& first = *records.front();
    target->SetValue(tag::kContentLabel, first.contentLabel, -1);
    target->SetValue(tag::kContentDescription, first.contentDescription, -1);
    target->SetValue(tag::kPresentationCreationDate, CxDcmMaker::GetDate(), -1);
    target->SetValue(tag::kPresentationCreationTime, CxDcmMaker::GetTime(), -1);
    target->SetValue(tag::kContentCreatorName, first.contentCreatorName, -1);
    CDcmItem series = SeriesReference(records);
    target->SetValue(tag::kReferencedSeriesSequence, &series);
    if (const auto value = Read<unsigned short>(*source, tag::kShutterPresentationValue))
        target->SetValue(tag::kShutterPresentationValue, *value);
    return 1;
}

int CXGSPSObject::SetMaskModule(CDcmObject* source, CDcmObject* target) {
    CopyFirstItem(*source, *target, tag::kMaskSubtractionSequence);
    CopyText(*source, *target, tag::kRecommendedViewingMode);
    return 1;
}

int CXGSPSObject::SetModalityLUTModule(CDcmObject* source, CDcmObject* target) {
    if (CopyFirstItem(*source, *target, tag::kModalityLUTSequence)) return 1;
    for (const auto tag : {tag::kRescaleIntercept, tag::kRescaleSlope, tag::kRescaleType})
        CopyText(*source, *target, tag);
    return 1;
}

int CXGSPSObject::SetOverlayCurveActivationModule(CXGSPSInfo*, CDcmObject*) {
    return 1;
}
int CXGSPSObject::SetOverlayPlaneModule(CXGSPSInfo*, CDcmObject*) {
    return 1;
}

}  // namespace quorvex
