#include "foundation/dicom/model/attributes.h"
#include "foundation/types/answer.h"
#include "quorvex/CXGSPSObject.h"
#include "quorvex/CxDcmMaker.h"
#include "states/attribute_writing.h"
#include "states/standard/standard_state.h"
#include "states/state_writer.h"

#include <algorithm>
#include <cstddef>
#include <memory>

namespace quorvex {
namespace {

bool AreUsable(CXGSPSInfo** infos, int count) {
    return infos != nullptr && count > 0 &&
           std::ranges::none_of(std::span(infos, static_cast<std::size_t>(count)),
                                [](const CXGSPSInfo* info) { return info == nullptr; });
}

CDcmItem SeriesReference(std::span<CXGSPSInfo* const> infos) {
    CDcmItem series = NewItem();
    series.SetValue(tag::kSeriesInstanceUID, infos.front()->referencedSeriesUID);
    ValueWriter images(series, tag::kReferencedImageSequence);
    for (const CXGSPSInfo* info : infos) images.Add(ImageReference(*info));
    return series;
}

}  // namespace

int CXGSPSObject::MakeGSPSObject(CDcmObject* source, CXGSPSInfo** infos, int count,
                                 CDcmObject*& result) {
    outcome_ = QVM_ERROR_NO_SOURCE_OBJECT;
    if (source == nullptr || !AreUsable(infos, count)) return 0;
    const std::span records(infos, static_cast<std::size_t>(count));
    outcome_ = Answer(QVM_ERROR_FAILED_TO_SET_PIXEL_DATA, [&] {
        if (rules_ == Rules::kStandard) {
            std::unique_ptr<CDcmObject> made;
            const auto done = MakeStandardState(*source, records, made);
            if (made) result = made.release();
            return done;
        }
        auto state = std::make_unique<CDcmObject>();
        CxDcmMaker maker;
        state->Open("test.dcm");  // only names the object: nothing is written
        maker.MakeDcmSkeleton(source, state.get());
        maker.UpdateUserSettingInfo(infos[0], state.get());
        StateWriter(*source, records, *state).WriteAllModules();
        result = state.release();
        return QVM_SUCCESS;
    });
    return outcome_ == QVM_SUCCESS ? 1 : 0;
}

void StateWriter::WriteAllModules() {
    SetPresentationStateModule();
    SetDisplayedAreaModule();
    SetSoftcopyPresentationLUTModule();
    SetMaskModule();
    SetDisplayShutterModule();
    SetBitmapDisplayShutterModule();
    SetOverlayCurveActivationModule();
    SetOverlayPlaneModule();
    SetGraphicAnnotationModule();
    SetGraphicLayerModule();
    SetSpatialTransformationModule();
    SetModalityLUTModule();
    SetSoftcopyVOILUTModule();
}

void StateWriter::SetPresentationStateModule() {
    target_.SetValue(tag::kContentLabel, first_.contentLabel);
    target_.SetValue(tag::kContentDescription, first_.contentDescription);
    target_.SetValue(tag::kPresentationCreationDate, CxDcmMaker::GetDate());
    target_.SetValue(tag::kPresentationCreationTime, CxDcmMaker::GetTime());
    target_.SetValue(tag::kContentCreatorName, first_.contentCreatorName);
    CDcmItem series = SeriesReference(infos_);
    target_.SetValue(tag::kReferencedSeriesSequence, &series);
    if (const auto value = Read<unsigned short>(source_, tag::kShutterPresentationValue)) {
        target_.SetValue(tag::kShutterPresentationValue, *value);
    }
}

void StateWriter::SetMaskModule() {
    CopyFirstItem(source_, target_, tag::kMaskSubtractionSequence);
    CopyFirst(source_, target_, tag::kRecommendedViewingMode);
}

void StateWriter::SetModalityLUTModule() {
    if (CopyFirstItem(source_, target_, tag::kModalityLUTSequence)) return;
    for (const auto tag : {tag::kRescaleIntercept, tag::kRescaleSlope, tag::kRescaleType}) {
        CopyFirst(source_, target_, tag);
    }
}

}  // namespace quorvex
