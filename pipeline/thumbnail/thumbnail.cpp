#include "foundation/types/answer.h"
#include "foundation/types/block.h"
#include "parser/frames/frame_fetch.h"
#include "parser/parser_state.h"
#include "pipeline/thumbnail/thumbnail_pixels.h"
#include "quorvex/CxDcmParser.h"
#include "quorvex/CxImageProcessor.h"

#include <cstring>
#include <memory>

namespace quorvex {
namespace {

constexpr std::size_t kGreyEntries = 256;

/// A bitmap header, with the colour entries of a grey image behind it.
HeapBlock MakeBitmapHeader(CSize size, unsigned samples) {
    const std::size_t entryBytes = samples == 1 ? 4 * kGreyEntries : 0;
    HeapBlock block(sizeof(tagBITMAPINFOHEADER) + entryBytes);
    const tagBITMAPINFOHEADER header{.biWidth = (size.cx + 3) / 4 * 4,
                                     .biHeight = size.cy,
                                     .biBitCount = static_cast<std::uint16_t>(8 * samples)};
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

/// What the caller asks for.
struct ThumbnailForm {
    CSize size;
    QUORVEX_XFERSYNTAX syntax;
    bool useDataRange;
    unsigned short quality;
};

/// An image on its way to the caller.
struct ThumbnailImage {
    explicit ThumbnailImage(QUORVEX_MESSAGE answer = QVM_SUCCESS) noexcept : result(answer) {}

    QUORVEX_MESSAGE result;
    std::unique_ptr<unsigned char[]> block;
    unsigned long size = 0;
    std::uint16_t samples = 1;
    CString photometric;
};

ThumbnailImage Scale(SmallPixels& small, const FrameShape& shape, CSize size) {
    _IMAGE_PROCESS_PARAM param;
    param.samplesPerPixel = small.samples;
    param.rows = shape.rows;
    param.columns = shape.columns;
    param.bitsAllocated = 8;
    ThumbnailImage scaled;
    unsigned char* block = nullptr;
    CxImageProcessor processor;
    scaled.result = processor.ResizeImage(&param, small.Data(), block, scaled.size, size);
    scaled.block.reset(block);
    scaled.samples = small.samples;
    // A frame that was not grey has become R, G, B by now.
    const bool isColour = small.samples == 3 || shape.photometric.Find("YBR") >= 0;
    scaled.photometric = isColour ? CString("RGB") : shape.photometric;
    return scaled;
}

/// Without block and size where the coder refuses.
ThumbnailImage Compress(const ThumbnailImage& scaled, const ThumbnailForm& form) {
    constexpr std::int32_t kLargest = 65535;
    if (form.size.cx > kLargest || form.size.cy > kLargest)
        return ThumbnailImage(QVM_ERROR_FAILED_TO_COMPRESS);
    _IMAGE_PROCESS_PARAM param;
    param.transferSyntax = kExplicitLittleEndian;
    param.samplesPerPixel = scaled.samples;
    param.photometric = scaled.photometric;
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
        processor.CompressFrameData(&param, scaled.block.get(), scaled.size, block, coded.size);
    coded.block.reset(block);
    return coded;
}

/// The frame at its full size as bytes, then at the size of the thumbnail.
ThumbnailImage Make(FrameFetch& fetch, const ParsedFile& file, const ThumbnailForm& form) {
    std::unique_ptr<unsigned char[]> owner;
    std::span<const unsigned char> pixels;
    const QUORVEX_MESSAGE fetched = fetch.View(owner, pixels);
    if (fetched != QVM_SUCCESS) return ThumbnailImage(fetched);
    const FrameShape& shape = fetch.Shape();
    SmallPixels small =
        ReduceToBytes(*file.GetHeader(), shape, pixels, form.useDataRange, form.size.cy);
    if (small.result != QVM_SUCCESS) return ThumbnailImage(small.result);
    return Scale(small, shape, form.size);
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
        FrameFetch fetch(*state_, frame);
        const ThumbnailForm form{size, format, useDataRange != 0, quality};
        ThumbnailImage made = Make(fetch, state_->file, form);
        if (made.result != QVM_SUCCESS) return made.result;
        if (format != kXferUncompressed) made = Compress(made, form);
        HeapBlock header;
        if (format == kXferUncompressed) header = MakeBitmapHeader(size, made.samples);
        bitmapHeaderSize = header.Size();
        bitmapHeader = static_cast<tagBITMAPINFOHEADER*>(static_cast<void*>(header.Release()));
        imageSize = made.size;
        image = made.block.release();
        return made.result;
    });
}

}  // namespace quorvex
