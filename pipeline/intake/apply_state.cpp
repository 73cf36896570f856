#include "foundation/dicom/model/attributes.h"
#include "foundation/types/answer.h"
#include "pipeline/displayed_image.h"
#include "pipeline/intake/presentation_record.h"
#include "pipeline/intake/scaled_windowing.h"
#include "pipeline/recipe/established_rules.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSInfo.h"

#include <utility>

namespace quorvex {

QUORVEX_MESSAGE EstablishedRules::ApplyState(DisplayedImage& image, CDcmObject* state) const {
    const CDcmObject* header = image.parser->GetHeader();
    if (header == nullptr || !image.presentation) return QVM_SUCCESS;
    const CString imageUID = Read<CString>(*header, tag::kSOPInstanceUID).value_or(CString());
    auto record = ReadRecord(state, image.imageSize, imageUID);
    record->pixelBitDepth = Read<unsigned short>(*header, tag::kBitsAllocated).value_or(0);
    record->pixelRepresentation = image.pixelRepresentation;
    if (Read<unsigned short>(*header, tag::kSamplesPerPixel).value_or(1) == 1) {
        image.valueWindow = PrepareWindowing(
            *image.windowing, *record,
            {image.valueRange, image.valueScale, image.fullRange, image.bitsStored});
    }
    image.rotation = record->imageRotation;
    image.horizontalFlip = record->imageHorizontalFlip;
    image.presentation = std::move(record);
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
