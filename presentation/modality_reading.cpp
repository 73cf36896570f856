#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/model/tags.h"
#include "quorvex/CXGSPSObject.h"

namespace quorvex {
namespace {

std::int32_t BitDepth(const CDcmObject& object) {
    if (!Read<unsigned short>(object, tag::kBitsAllocated)) return 0;
    return Read<unsigned short>(object, tag::kBitsStored).value_or(0);
}

}  // namespace

int CXGSPSObject::GetModalityLUT(CDcmObject* object, CXGSPSInfo* info) {
    const std::int32_t representation =
        Read<unsigned short>(*object, tag::kPixelRepresentation).value_or(0);
    info->pixelBitDepth = BitDepth(*object);
    info->pixelValueOffset = 0;

    if (const auto intercept = Read<double>(*object, tag::kRescaleIntercept)) {
        info->rescaleIntercept = *intercept;
        info->rescaleSlope = Read<double>(*object, tag::kRescaleSlope).value_or(1.0);
        info->modalityLUTData = nullptr;
    } else if (auto item = Read<CDcmItem>(*object, tag::kModalityLUTSequence)) {
        unsigned short count = 0;
        unsigned short bits = 0;
        if (GetLUTData(&*item, count, info->modalityLUTFirst, bits, info->modalityLUTData) == 0) {
            return 0;
        }
        info->modalityLUTCount = count;
    } else {
        info->modalityLUTData = nullptr;
        info->rescaleSlope = 0.0;
    }
    info->pixelRepresentation = representation;
    return 1;
}

}  // namespace quorvex
