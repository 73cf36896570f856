#include "pipeline/intake/presentation_record.h"

#include "presentation/presentation_reader.h"
#include "presentation/shutter_size.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXGSPSObject.h"

namespace quorvex {

namespace {

void RemoveGSPSInfo(CXGSPSInfo* record) noexcept {
    delete[] record->modalityLUTData;
    delete[] record->voiLUTData;
    delete[] record->presentationLUTData;
    delete[] record->shutterMask;
    delete record;
}

constexpr int kNoFrameInParticular = -1;

void DropMaskOfAnotherSize(const CDcmObject& object, CSize imageSize, CXGSPSInfo& record) {
    if (record.shutterMask == nullptr || ShutterMaskSize(object, record) == imageSize) return;
    delete[] record.shutterMask;
    record.shutterMask = nullptr;
}

}  // namespace

std::shared_ptr<CXGSPSInfo> NewRecord(CSize imageSize) {
    std::shared_ptr<CXGSPSInfo> record(new CXGSPSInfo, RemoveGSPSInfo);
    record->imageColumns = imageSize.cx;
    record->imageRows = imageSize.cy;
    return record;
}

std::shared_ptr<CXGSPSInfo> ReadRecord(CDcmObject* object, CSize imageSize,
                                       const CString& imageUID) {
    auto record = NewRecord(imageSize);
    CXGSPSObject().GSPSApplier(object, record.get(), imageUID, kNoFrameInParticular);
    if (object != nullptr) DropMaskOfAnotherSize(*object, imageSize, *record);
    return record;
}

std::shared_ptr<CXGSPSInfo> ReadViewRecord(const CDcmObject& object, CSize imageSize,
                                           const CString& imageUID, int frameNumber) {
    auto record = NewRecord(imageSize);
    PresentationReader reader(object, *record, imageUID, frameNumber);
    reader.GetSpatialTransformation();
    reader.GetDisplayTransformation();
    reader.GetAnnotation();
    return record;
}

}  // namespace quorvex
