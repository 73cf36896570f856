#include "foundation/dicom/object/pixel_shape.h"

#include "foundation/dicom/model/attributes.h"

namespace quorvex::dicom {
namespace {

std::uint32_t NumberOr(const CDcmObject& object, std::uint32_t tag, std::uint32_t otherwise) {
    const int number = Read<int>(object, tag).value_or(-1);
    return number < 0 ? otherwise : static_cast<std::uint32_t>(number);
}

}  // namespace

bool IsHalfChroma(const CString& photometric) {
    return photometric == CString("YBR_FULL_422") || photometric == CString("YBR_PARTIAL_422");
}

PixelShape ShapeOf(const CDcmObject& object) {
    PixelShape shape = {.rows = NumberOr(object, tag::kRows, 0),
                        .columns = NumberOr(object, tag::kColumns, 0),
                        .samplesPerPixel = NumberOr(object, tag::kSamplesPerPixel, 1),
                        .bitsAllocated = NumberOr(object, tag::kBitsAllocated, 0),
                        .frameCount = NumberOr(object, tag::kNumberOfFrames, 1)};
    shape.isHalfChroma =
        shape.samplesPerPixel == 3 &&
        IsHalfChroma(Read<CString>(object, tag::kPhotometricInterpretation).value_or(CString()));
    return shape;
}

}  // namespace quorvex::dicom
