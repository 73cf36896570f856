#include "foundation/dicom/model/tags.h"
#include "foundation/types/answer.h"
#include "pipeline/intake/presentation_record.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXWindowing.h"
#include "quorvex/CxDcmParser.h"

#include <cstdint>
#include <memory>
#include <utility>

namespace quorvex {

namespace {}  // namespace

void CXDIPP::ApplyState(CDcmObject* state) {
    const CDcmObject* image = parser->GetHeader();
    if (image == nullptr || !presentation) return;
    unsigned short bitsAllocated = 0;
    unsigned short samplesPerPixel = 1;
    CString imageUID;
    image->GetValue(tag::kBitsAllocated, bitsAllocated);
    image->GetValue(tag::kSamplesPerPixel, samplesPerPixel);
    image->GetValue(tag::kSOPInstanceUID, imageUID, -1);

    auto record = ReadRecord(state, imageSize, imageUID);
    record->pixelBitDepth = bitsAllocated;
    record->pixelRepresentation = pixelRepresentation;
    if (samplesPerPixel == 1) {
        windowing->PrepareGSPSProcessing2(record.get(), valueRange.domainLow,
                                          valueRange.domainHigh);
    }
    rotation = record->imageRotation;
    horizontalFlip = record->imageHorizontalFlip;
    presentation = std::move(record);
}

QUORVEX_MESSAGE CXDIPP::ApllyGSPSObject(CDcmApp* app, CString path) {
    return Answer(QVM_ERROR_NO_IMAGE, [&] {
        CxDcmParser state;
        state.Initialize(app, std::move(path), 0);
        ApplyState(state.GetHeader());
        return QVM_SUCCESS;
    });
}

QUORVEX_MESSAGE CXDIPP::ApllyGSPSObject(CDcmApp*, CDcmObject* object) {
    return Answer(QVM_ERROR_NO_IMAGE, [&] {
        ApplyState(object);
        return QVM_SUCCESS;
    });
}

}  // namespace quorvex
