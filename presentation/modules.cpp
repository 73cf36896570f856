#include "foundation/types/answer.h"
#include "quorvex/CXGSPSObject.h"

#include <iterator>
#include <utility>

namespace quorvex {

int CXGSPSObject::GSPSApplier(CDcmObject* object, CXGSPSInfo* info, CString uid, int frame) {
    using Reader = int (CXGSPSObject::*)(CDcmObject*, CXGSPSInfo*);
    static constexpr Reader kReaders[] = {
        &CXGSPSObject::GetModalityLUT,
        &CXGSPSObject::GetVOILUT,
        &CXGSPSObject::GetPresentationLUT,
        &CXGSPSObject::GetShutter,
        &CXGSPSObject::GetSpatialTransformation,
        &CXGSPSObject::GetDisplayTransformation,
        &CXGSPSObject::GetAnnotation,
    };
    if (object == nullptr || info == nullptr) return 0;
    info->pixelValueOffset = 0;
    imageUID = std::move(uid);
    frameNumber = frame;
    return Answer(0, [&] {
        for (const Reader reader : kReaders) (this->*reader)(object, info);
        return 1;
    });
}

int CXGSPSObject::GetGSPSModule(unsigned int selector, CDcmObject* object, CXGSPSInfo* info) {
    using Reader = int (CXGSPSObject::*)(CDcmObject*, CXGSPSInfo*);
    static constexpr Reader kReaders[] = {
        &CXGSPSObject::GetModalityLUT,
        &CXGSPSObject::GetShutter,
        &CXGSPSObject::GetVOILUT,
        &CXGSPSObject::GetPresentationLUT,
        nullptr,
        &CXGSPSObject::GetSpatialTransformation,
        &CXGSPSObject::GetDisplayTransformation,
    };
    if (object == nullptr || info == nullptr) return 1;
    const Reader reader = selector < std::size(kReaders) ? kReaders[selector] : nullptr;
    if (reader == nullptr) return 1;
    return Answer(0, [&] {
        (this->*reader)(object, info);
        return 1;
    });
}

}  // namespace quorvex
