#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/object/functional_groups.h"
#include "foundation/types/answer.h"
#include "presentation/presentation_reader.h"
#include "quorvex/CXGSPSObject.h"

#include <iterator>
#include <memory>
#include <optional>
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

/// An image as the frame that is meant has it.
std::optional<CDcmObject> HeaderFor(const CDcmObject& image, int frame, CXGSPSInfo& info) {
    if (frame > 0) return HeaderOfFrame(image, frame - 1);
    info.modalityVaries = HaveOneModality(image, {}) ? 0 : 1;
    return HeaderOfAllFrames(image);
}

}  // namespace

int CXGSPSObject::GSPSApplier(CDcmObject* object, CXGSPSInfo* info, CString uid, int frame) {
    if (object == nullptr || info == nullptr) return 0;
    info->pixelValueOffset = 0;
    imageUID = std::move(uid);
    frameNumber = frame;
    return Answer(0, [&] {
        const bool isState = !imageUID.IsEmpty();
        info->state.reset();
        info->modalityVaries = 0;
        const auto ofFrame = isState || rules_ == Rules::kEstablished
                                 ? std::nullopt
                                 : HeaderFor(*object, frame, *info);
        PresentationReader reader(ofFrame ? *ofFrame : *object, *info, imageUID, frameNumber);
        for (const Module module : kAllModules) (reader.*module)();
        if (!isState && rules_ == Rules::kStandard) reader.GetPixelShape();
        const bool hasPixels = Read<int>(*object, tag::kRows).has_value();
        if (isState && !hasPixels) info->state = std::make_unique<CDcmObject>(*object);
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
