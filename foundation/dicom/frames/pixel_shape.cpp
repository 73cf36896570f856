#include "foundation/dicom/frames/pixel_shape.h"

#include "foundation/dicom/model/attributes.h"

namespace quorvex::dicom {
namespace {

std::uint32_t NumberOr(const CDcmObject& object, std::uint32_t tag, std::uint32_t otherwise) {
    const int number = Read<int>(object, tag).value_or(-1);
    return number < 0 ? otherwise : static_cast<std::uint32_t>(number);
}

}  // namespace

PixelShape ShapeOf(const CDcmObject& object) {
    PixelShape shape = {.rows = NumberOr(object, tag::kRows, 0),
                        .columns = NumberOr(object, tag::kColumns, 0),
                        .samplesPerPixel = NumberOr(object, tag::kSamplesPerPixel, 1),
                        .bitsAllocated = NumberOr(object, tag::kBitsAllocated, 0),
                        .frameCount = NumberOr(object, tag::kNumberOfFrames, 1)};
    shape.isHalfChroma = shape.samplesPerPixel == 3 &&
                         (TextIs(object, tag::kPhotometricInterpretation, "YBR_FULL_422") ||
                          TextIs(object, tag::kPhotometricInterpretation, "YBR_PARTIAL_422"));
    return shape;
}

}  // namespace quorvex::dicom
