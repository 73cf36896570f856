#include "foundation/dicom/model/attributes.h"
#include "presentation/presentation_reader.h"

namespace quorvex {
namespace {

std::int32_t BitDepth(const CDcmObject& object) {
    if (!Read<unsigned short>(object, tag::kBitsAllocated)) return 0;
    return Read<unsigned short>(object, tag::kBitsStored).value_or(0);
}

}  // namespace

/// A rescale wins over a table.
void PresentationReader::GetModalityLUT() {
    const std::int32_t representation =
        Read<unsigned short>(object_, tag::kPixelRepresentation).value_or(0);
    info_.pixelBitDepth = BitDepth(object_);
    info_.pixelValueOffset = 0;

    if (const auto intercept = Read<double>(object_, tag::kRescaleIntercept)) {
        info_.rescaleIntercept = *intercept;
        info_.rescaleSlope = Read<double>(object_, tag::kRescaleSlope).value_or(1.0);
        info_.modalityLUTData = nullptr;
    } else if (const auto item = Read<CDcmItem>(object_, tag::kModalityLUTSequence)) {
        auto lut = GetLUTData(*item);
        if (!lut) return;
        info_.modalityLUTCount = lut->count;
        info_.modalityLUTFirst = lut->first;
        info_.modalityLUTData = lut->data.release();
    } else {
        info_.modalityLUTData = nullptr;
        info_.rescaleSlope = 0.0;
    }
    info_.pixelRepresentation = representation;
}

}  // namespace quorvex
