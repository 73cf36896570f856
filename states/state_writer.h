/// One presentation state in the making: its modules, written from records.
#pragma once

#include "quorvex/CXGSPSInfo.h"
#include "quorvex/DicomObject.h"

#include <span>

namespace quorvex {

/// Writes modules into a new object that has its patient, study and series already. What belongs to
/// one image comes from its record, what a state has only once from the first record, and what the
/// records do not describe from the source. Throws std::bad_alloc.
class StateWriter {
public:
    /// All are kept by reference.
    /// @param infos  at least one record
    StateWriter(const CDcmObject& source, std::span<CXGSPSInfo* const> infos, CDcmObject& target)
        : source_(source), infos_(infos), first_(*infos.front()), target_(target) {}

    void WriteAllModules();

private:
    void SetPresentationStateModule();
    void SetDisplayedAreaModule();
    void SetSoftcopyPresentationLUTModule();
    void SetMaskModule();
    void SetDisplayShutterModule();
    /// The place of a module that is not written yet, as are the two below.
    void SetBitmapDisplayShutterModule() {}
    void SetOverlayCurveActivationModule() {}
    void SetOverlayPlaneModule() {}
    void SetGraphicAnnotationModule();
    void SetGraphicLayerModule();
    void SetSpatialTransformationModule();
    void SetModalityLUTModule();
    void SetSoftcopyVOILUTModule();

    const CDcmObject& source_;
    std::span<CXGSPSInfo* const> infos_;
    const CXGSPSInfo& first_;
    CDcmObject& target_;
};

}  // namespace quorvex
