#include "foundation/dicom/model/attributes.h"
#include "foundation/types/answer.h"
#include "pipeline/displayed_image.h"
#include "pipeline/intake/presentation_record.h"
#include "pipeline/recipe/established_rules.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSInfo.h"

#include <utility>

namespace quorvex {

QUORVEX_MESSAGE EstablishedRules::ApplyState(DisplayedImage& shown, CDcmObject* state) const {
    const CDcmObject* image = shown.parser->GetHeader();
    if (image == nullptr || !shown.presentation) return QVM_SUCCESS;
    const CString imageUID = Read<CString>(*image, tag::kSOPInstanceUID).value_or(CString());
    auto record = ReadRecord(state, shown.imageSize, imageUID);
    record->pixelBitDepth = Read<unsigned short>(*image, tag::kBitsAllocated).value_or(0);
    record->pixelRepresentation = shown.pixelRepresentation;
    if (Read<unsigned short>(*image, tag::kSamplesPerPixel).value_or(1) == 1) {
        shown.windowing->PrepareGSPSProcessing2(record.get(), shown.valueRange.domainLow,
                                                shown.valueRange.domainHigh);
    }
    shown.rotation = record->imageRotation;
    shown.horizontalFlip = record->imageHorizontalFlip;
    shown.presentation = std::move(record);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::ApllyGSPSObject(CDcmApp* app, CString path) {
    return Answer(QVM_ERROR_NO_IMAGE, [&] {
        CxDcmParser state;
        state.Initialize(app, std::move(path), 0);
        return RulesOf(*image_).ApplyState(*image_, state.GetHeader());
    });
}

QUORVEX_MESSAGE CXDIPP::ApllyGSPSObject(CDcmApp*, CDcmObject* object) {
    return Answer(QVM_ERROR_NO_IMAGE, [&] { return RulesOf(*image_).ApplyState(*image_, object); });
}

}  // namespace quorvex
