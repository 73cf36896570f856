#include "foundation/types/answer.h"
#include "presentation/presentation_reader.h"
#include "quorvex/CXGSPSObject.h"

#include <iterator>
#include <utility>

namespace quorvex {
namespace {

using Module = void (PresentationReader::*)();

constexpr Module kAllModules[] = {
    &PresentationReader::GetModalityLUT,
    &PresentationReader::GetVOILUT,
    &PresentationReader::GetPresentationLUT,
    &PresentationReader::GetShutter,
    &PresentationReader::GetSpatialTransformation,
    &PresentationReader::GetDisplayTransformation,
    &PresentationReader::GetAnnotation,
};

constexpr Module kModulesBySelector[] = {
    &PresentationReader::GetModalityLUT,
    &PresentationReader::GetShutter,
    &PresentationReader::GetVOILUT,
    &PresentationReader::GetPresentationLUT,
    nullptr,
    &PresentationReader::GetSpatialTransformation,
    &PresentationReader::GetDisplayTransformation,
};

}  // namespace

int CXGSPSObject::GSPSApplier(CDcmObject* object, CXGSPSInfo* info, CString uid, int frame) {
    if (object == nullptr || info == nullptr) return 0;
    info->pixelValueOffset = 0;
    imageUID = std::move(uid);
    frameNumber = frame;
    return Answer(0, [&] {
        PresentationReader reader(*object, *info, imageUID, frameNumber);
        for (const Module module : kAllModules) (reader.*module)();
        return 1;
    });
}

int CXGSPSObject::GetGSPSModule(unsigned int selector, CDcmObject* object, CXGSPSInfo* info) {
    if (object == nullptr || info == nullptr) return 1;
    if (selector >= std::size(kModulesBySelector)) return 1;
    const Module module = kModulesBySelector[selector];
    if (module == nullptr) return 1;
    return Answer(0, [&] {
        PresentationReader reader(*object, *info, imageUID, frameNumber);
        (reader.*module)();
        return 1;
    });
}

int CXGSPSObject::GetMask(CDcmObject* object, CXGSPSInfo* info) {
    if (object == nullptr || info == nullptr) return 0;
    return Answer(0, [&] {
        PresentationReader(*object, *info, imageUID, frameNumber).GetMask();
        return 1;
    });
}

}  // namespace quorvex
