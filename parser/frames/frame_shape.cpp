#include "parser/frames/frame_shape.h"

#include "foundation/dicom/model/tags.h"
#include "foundation/types/checked_size.h"

namespace quorvex {
namespace {

std::uint16_t ReadWord(const CDcmObject& header, std::uint32_t tag, std::uint16_t absent) {
    unsigned short value = 0;
    return header.GetValue(tag, value) == kDcmSuccess ? value : absent;
}

/// Two pixels of 4:2:2 have two samples of brightness and one of each colour.
bool IsHalfChroma(const FrameShape& shape) {
    return shape.photometric == CString("YBR_FULL_422") ||
           shape.photometric == CString("YBR_PARTIAL_422");
}

}  // namespace

std::optional<std::size_t> FrameShape::NativeFrameBytes() const {
    const unsigned samples = samplesPerPixel == 3 && IsHalfChroma(*this) ? 2 : samplesPerPixel;
    const auto bits = CheckedProduct(bitsAllocated, samples, columns, rows);
    if (!bits) {
        const auto bytes = CheckedProduct(bitsAllocated / 8U, samples, columns, rows);
        return bytes;
    }
    return *bits / 8;
}

_IMAGE_PROCESS_PARAM FrameShape::DecodingParam() const {
    _IMAGE_PROCESS_PARAM param;
    param.transferSyntax = syntax;
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
    FrameShape shape{.syntax = syntax,
                     .rows = ReadWord(header, tag::kRows, 0),
                     .columns = ReadWord(header, tag::kColumns, 0),
                     .samplesPerPixel = ReadWord(header, tag::kSamplesPerPixel, 1),
                     .bitsAllocated = ReadWord(header, tag::kBitsAllocated, 0),
                     .pixelRepresentation = ReadWord(header, tag::kPixelRepresentation, 0),
                     .planarConfiguration = ReadWord(header, tag::kPlanarConfiguration, 0),
                     .photometric = {}};
    if (shape.rows == 0 || shape.columns == 0) return std::nullopt;
    CString photometric;
    if (header.GetValue(tag::kPhotometricInterpretation, photometric, -1) == kDcmSuccess) {
        shape.photometric = photometric;
    }
    return shape;
}

}  // namespace quorvex
