#include "parser/frames/frame_shape.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/model/transfer_syntax.h"
#include "foundation/dicom/object/pixel_shape.h"
#include "foundation/types/checked_size.h"

namespace quorvex {
std::optional<std::size_t> FrameShape::NativeFrameBytes() const {
    // Two pixels of 4:2:2 have two samples of brightness and one of each colour.
    const bool sharesChroma = samplesPerPixel == 3 && dicom::IsHalfChroma(photometric);
    const unsigned samples = sharesChroma ? 2 : samplesPerPixel;
    const auto bits = CheckedProduct(bitsAllocated, samples, columns, rows);
    if (!bits) return CheckedProduct(bitsAllocated / 8U, samples, columns, rows);
    return *bits / 8;
}

std::optional<std::size_t> FrameShape::PlainFrameBytes() const noexcept {
    const bool isWide = sampleType != SampleType::kInteger || bitsAllocated == 32;
    const unsigned sampleBytes = isWide ? bitsAllocated / 8U : BytesPerSample();
    return CheckedProduct(sampleBytes, samplesPerPixel, columns, rows);
}

bool FrameShape::AreFloats() const noexcept {
    if (sampleType == SampleType::kInteger || samplesPerPixel != 1) return false;
    return bitsAllocated == (sampleType == SampleType::kFloat32 ? 32 : 64);
}

std::uint32_t FrameShape::FloatTag() const noexcept {
    return sampleType == SampleType::kFloat32 ? tag::kFloatPixelData : tag::kDoubleFloatPixelData;
}

_IMAGE_PROCESS_PARAM FrameShape::DecodingParam() const {
    _IMAGE_PROCESS_PARAM param;
    param.transferSyntax = IsBigEndian(syntax) ? kExplicitLittleEndian : syntax;
    param.samplesPerPixel = samplesPerPixel;
    param.photometric = photometric;
    param.planarConfiguration = planarConfiguration;
    param.rows = rows;
    param.columns = columns;
    param.bitsAllocated = bitsAllocated;
    param.pixelRepresentation = pixelRepresentation;
    param.targetSyntax = kXferUncompressed;
    if (syntax == kRle && samplesPerPixel == 3) {
        // RLE segments are whole planes by nature, whatever the header says about either.
        param.planarConfiguration = 1;
        if (photometric == CString("YBR_FULL_422")) param.photometric = "YBR_FULL";
    }
    return param;
}

std::optional<FrameShape> ReadFrameShape(const CDcmObject& header, TRANSFER_SYNTAX syntax) {
    const auto word = [&](std::uint32_t tag) { return Read<unsigned short>(header, tag); };
    FrameShape shape{
        .syntax = syntax,
        .rows = word(tag::kRows).value_or(0),
        .columns = word(tag::kColumns).value_or(0),
        .samplesPerPixel = word(tag::kSamplesPerPixel).value_or(1),
        .bitsAllocated = word(tag::kBitsAllocated).value_or(0),
        .bitsStored = word(tag::kBitsStored).value_or(0),
        .pixelRepresentation = word(tag::kPixelRepresentation).value_or(0),
        .planarConfiguration = word(tag::kPlanarConfiguration).value_or(0),
        .photometric = Read<CString>(header, tag::kPhotometricInterpretation).value_or(CString())};
    if (shape.rows == 0 || shape.columns == 0) return std::nullopt;
    return shape;
}

}  // namespace quorvex
