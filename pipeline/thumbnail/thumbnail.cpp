#include "foundation/types/answer.h"
#include "foundation/types/block.h"
#include "parser/parser_state.h"
#include "pipeline/thumbnail/established_thumbnail.h"
#include "pipeline/thumbnail/standard_thumbnail.h"
#include "quorvex/CxDcmParser.h"
#include "quorvex/CxImageProcessor.h"

#include <cstring>
#include <memory>

namespace quorvex {
namespace {

constexpr std::size_t kGreyEntries = 256;

/// A bitmap header, with the colour entries of a grey image behind it.
HeapBlock BitmapHeaderBlock(const tagBITMAPINFOHEADER& header) {
    const std::size_t entryBytes = header.biBitCount == 8 ? 4 * kGreyEntries : 0;
    HeapBlock block(sizeof header + entryBytes);
    std::memcpy(block.Data(), &header, sizeof header);
    const auto entries = block.Bytes().subspan(sizeof header);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        entries[i] = static_cast<unsigned char>(i % 4 == 3 ? 0 : i / 4);
    }
    return block;
}

bool IsThumbnailFormat(QUORVEX_XFERSYNTAX format) {
    return format == kXferUncompressed || format == kXferJpegBaseline ||
           format == kXferJpegLossless;
}

/// Without block and size where the coder refuses.
ThumbnailImage Compress(const ThumbnailImage& plain, const ThumbnailForm& form) {
    constexpr std::int32_t kLargest = 65535;
    if (form.size.cx > kLargest || form.size.cy > kLargest)
        return ThumbnailImage(QVM_ERROR_FAILED_TO_COMPRESS);
    _IMAGE_PROCESS_PARAM param;
    param.transferSyntax = kExplicitLittleEndian;
    param.samplesPerPixel = plain.samples;
    param.photometric = plain.photometric;
    param.planarConfiguration = 0;
    param.rows = static_cast<std::uint16_t>(form.size.cy);
    param.columns = static_cast<std::uint16_t>(form.size.cx);
    param.bitsAllocated = 8;
    param.quality = form.quality;
    param.pixelRepresentation = 0;  // whatever the frame's values were, these bytes are grey levels
    param.targetSyntax = form.syntax;
    ThumbnailImage coded;
    unsigned char* block = nullptr;
    CxImageProcessor processor;
    coded.result =
        processor.CompressFrameData(&param, plain.block.get(), plain.size, block, coded.size);
    coded.block.reset(block);
    return coded;
}

}  // namespace

QUORVEX_MESSAGE CxDcmParser::MakeThumbNail(int frame, CSize size, QUORVEX_XFERSYNTAX format,
                                           int useDataRange, unsigned char*& image,
                                           unsigned long& imageSize,
                                           tagBITMAPINFOHEADER*& bitmapHeader,
                                           unsigned long& bitmapHeaderSize,
                                           unsigned short quality) {
    return Answer(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA, [&] {
        if (size.cx < 1 || size.cy < 1) return QVM_ERROR_INVALID_OUTPUT_SIZE;
        if (!IsThumbnailFormat(format)) return QVM_ERROR_INVALID_TARGET_SYNTAX;
        const ThumbnailForm form{frame, size, format, useDataRange != 0, quality};
        ThumbnailImage made = state_->rules == Rules::kStandard
                                  ? MakeStandardThumbnail(*this, form)
                                  : MakeEstablishedThumbnail(*state_, form);
        if (made.result != QVM_SUCCESS) return made.result;
        if (form.IsCoded()) made = Compress(made, form);
        HeapBlock header;
        if (!form.IsCoded()) header = BitmapHeaderBlock(made.bitmap);
        bitmapHeaderSize = header.Size();
        bitmapHeader = static_cast<tagBITMAPINFOHEADER*>(static_cast<void*>(header.Release()));
        imageSize = made.size;
        image = made.block.release();
        return made.result;
    });
}

}  // namespace quorvex
