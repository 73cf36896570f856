#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/model/tags.h"
#include "quorvex/CXGSPSObject.h"

namespace quorvex {
namespace {

enum PresentationShape : std::int32_t { kIdentity = 0, kInverse = 1, kNeither = 2 };

PresentationShape ShapeOfImage(const CDcmObject& object) {
    const auto photometric = Read<CString>(object, tag::kPhotometricInterpretation);
    if (!photometric) return kNeither;
    if (photometric->Find("MONOCHROME1") >= 0) return kInverse;
    return photometric->Find("MONOCHROME2") >= 0 ? kIdentity : kNeither;
}

PresentationShape ShapeOfWord(const CString& word) {
    if (word == CString("INVERSE")) return kInverse;
    return word == CString("IDENTITY") ? kIdentity : kNeither;
}

int TakeShape(CXGSPSInfo& info, PresentationShape shape) noexcept {
    info.presentationShape = shape;
    info.presentationLUTData = nullptr;
    return 1;
}

}  // namespace

int CXGSPSObject::GetPresentationLUT(CDcmObject* object, CXGSPSInfo* info) {
    if (imageUID.IsEmpty()) return TakeShape(*info, ShapeOfImage(*object));
    if (const auto word = Read<CString>(*object, tag::kPresentationLUTShape)) {
        return TakeShape(*info, ShapeOfWord(*word));
    }
    auto item = Read<CDcmItem>(*object, tag::kPresentationLUTSequence);
    if (!item) return TakeShape(*info, kIdentity);

    unsigned short count = 0;
    unsigned short bits = 0;
    if (GetLUTData(&*item, count, info->presentationLUTFirst, bits, info->presentationLUTData) ==
        0) {
        return 0;
    }
    info->presentationLUTCount = count;
    info->presentationLUTBits = bits;
    return 1;
}

}  // namespace quorvex
