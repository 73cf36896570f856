#include "foundation/dicom/model/tags.h"
#include "presentation/words.h"
#include "states/attribute_writing.h"
#include "states/state_writer.h"

#include <utility>

namespace quorvex {
namespace {

/// A LUT wins over the window.
void WriteVOI(const CXGSPSInfo& info, CDcmItem& item) {
    if (info.voiLUTData != nullptr) {
        CDcmItem lut = LUTItem(VOILUTOf(info));
        item.SetValue(tag::kVOILUTSequence, &lut);
        return;
    }
    item.SetValue(tag::kWindowCenter, info.windowCenter);
    item.SetValue(tag::kWindowWidth, info.windowWidth);
}

}  // namespace

void StateWriter::SetSoftcopyPresentationLUTModule() {
    if (first_.presentationLUTData == nullptr) {
        target_.SetValue(tag::kPresentationLUTShape, WordAt(first_.presentationShape, kShapeWords));
        return;
    }
    CDcmItem lut = LUTItem(PresentationLUTOf(first_));
    target_.SetValue(tag::kPresentationLUTSequence, &lut);
}

void StateWriter::SetSoftcopyVOILUTModule() {
    ValueWriter images(target_, tag::kSoftcopyVOILUTSequence);
    for (const CXGSPSInfo* info : infos_) {
        CDcmItem item = ItemForImage(*info);
        WriteVOI(*info, item);
        images.Add(std::move(item));
    }
}

}  // namespace quorvex
