#include "foundation/dicom/model/tags.h"
#include "quorvex/CXGSPSObject.h"
#include "states/attribute_writing.h"

#include <span>

namespace quorvex {
namespace {

LUTContent PresentationLUTOf(const CXGSPSInfo& info) {
    return {info.presentationLUTData, info.presentationLUTCount, info.presentationLUTFirst,
            info.presentationLUTBits};
}

LUTContent VOILUTOf(const CXGSPSInfo& info) {
    return {info.voiLUTData, info.voiLUTCount, info.voiLUTFirst, info.voiLUTBits};
}

const char* ShapeWord(std::int32_t shape) {
    return shape == 0 ? "IDENTITY" : shape == 1 ? "INVERSE" : "";
}

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

int CXGSPSObject::SetSoftcopyPresentationLUTModule(CXGSPSInfo* info, CDcmObject* target) {
    if (info->presentationLUTData == nullptr) {
        target->SetValue(tag::kPresentationLUTShape, ShapeWord(info->presentationShape));
        return 1;
    }
    CDcmItem lut = LUTItem(PresentationLUTOf(*info));
    target->SetValue(tag::kPresentationLUTSequence, &lut);
    return 1;
}

int CXGSPSObject::SetSoftcopyVOILUTModule(CXGSPSInfo** infos, int count, CDcmObject* target) {
    SequenceWriter images(*target, tag::kSoftcopyVOILUTSequence);
    for (const CXGSPSInfo* info : std::span(infos, static_cast<std::size_t>(count))) {
        CDcmItem item = ItemForImage(*info);
        WriteVOI(*info, item);
        images.Add(item);
    }
    return 1;
}

}  // namespace quorvex
