#include "foundation/dicom/frames/pixel_shape.h"

#include "foundation/dicom/model/tags.h"
#include "foundation/dicom/model/transfer_syntax.h"

namespace quorvex::dicom {
namespace {

using namespace tag;

std::uint32_t NumberOr(const CDcmObject& object, std::uint32_t tag, std::uint32_t otherwise) {
    int number = 0;
    if (object.GetValue(tag, number) != kDcmSuccess || number < 0) return otherwise;
    return static_cast<std::uint32_t>(number);
}

}  // namespace

PixelShape ShapeOf(const CDcmObject& object) {
    CString photometric;
    static_cast<void>(object.GetValue(tag::kPhotometricInterpretation, photometric));
    PixelShape shape = {.rows = NumberOr(object, tag::kRows, 0),
                        .columns = NumberOr(object, tag::kColumns, 0),
                        .samplesPerPixel = NumberOr(object, tag::kSamplesPerPixel, 1),
                        .bitsAllocated = NumberOr(object, tag::kBitsAllocated, 0),
                        .frameCount = NumberOr(object, tag::kNumberOfFrames, 1)};
    shape.isHalfChroma = shape.samplesPerPixel == 3 &&
                         (photometric == "YBR_FULL_422" || photometric == "YBR_PARTIAL_422");
    return shape;
}

bool IsEncapsulated(TRANSFER_SYNTAX syntax) noexcept {
    const auto* row = SyntaxOfNumber(syntax);
    return row == nullptr ? syntax == kOtherEncapsulated : row->isEncapsulated;
}

}  // namespace quorvex::dicom
