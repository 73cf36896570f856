#include "foundation/dicom/model/attributes.h"
#include "presentation/presentation_reader.h"
#include "presentation/words.h"

namespace quorvex {
namespace {

enum PresentationShape : std::int32_t { kIdentity = 0, kInverse = 1, kNeither = 2 };

std::int32_t ShapeOfImage(const CDcmObject& object) {
    const auto photometric = Read<CString>(object, tag::kPhotometricInterpretation);
    if (!photometric) return kNeither;
    if (photometric->Find("MONOCHROME1") >= 0) return kInverse;
    return photometric->Find("MONOCHROME2") >= 0 ? kIdentity : kNeither;
}

void TakeShape(CXGSPSInfo& info, std::int32_t shape) noexcept {
    info.presentationShape = shape;
    info.presentationLUTData = nullptr;
}

}  // namespace

void PresentationReader::GetPresentationLUT() {
    if (IsForImage()) return TakeShape(info_, ShapeOfImage(object_));
    if (const auto word = Read<CString>(object_, tag::kPresentationLUTShape)) {
        return TakeShape(info_, PlaceOf(*word, kShapeWords).value_or(kNeither));
    }
    const auto item = Read<CDcmItem>(object_, tag::kPresentationLUTSequence);
    if (!item) return TakeShape(info_, kIdentity);

    auto lut = GetLUTData(*item);
    if (!lut) return;
    info_.presentationLUTCount = lut->count;
    info_.presentationLUTFirst = lut->first;
    info_.presentationLUTBits = lut->bits;
    info_.presentationLUTData = lut->data.release();
}

}  // namespace quorvex
