#include "foundation/types/answer.h"
#include "foundation/types/block.h"
#include "parser/frames/frame_shape.h"
#include "parser/thumbnail/thumbnail_pixels.h"
#include "quorvex/CxDcmParser.h"

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

/// An image on its way to the caller.
struct ThumbnailImage {
    QUORVEX_MESSAGE result = QVM_SUCCESS;
    std::unique_ptr<unsigned char[]> block;
    unsigned long size = 0;
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
    return scaled;
}

/// A frame that was not grey has become R, G, B by now.
CString PhotometricOf(const SmallPixels& small, const FrameShape& shape) {
    const bool isColour = small.samples == 3 || shape.photometric.Find("YBR") >= 0;
    return isColour ? CString("RGB") : shape.photometric;
}

ThumbnailImage Compress(const ThumbnailImage& scaled, const SmallPixels& small,
                        const FrameShape& shape, CSize size, QUORVEX_XFERSYNTAX format,
                        unsigned short quality) {
    constexpr std::int32_t kLargest = 65535;
    ThumbnailImage coded;
    coded.result = QVM_ERROR_FAILED_TO_COMPRESS;
    if (size.cx > kLargest || size.cy > kLargest) return coded;
    _IMAGE_PROCESS_PARAM param;
    param.transferSyntax = kExplicitLittleEndian;
    param.samplesPerPixel = small.samples;
    param.photometric = PhotometricOf(small, shape);
    param.planarConfiguration = 0;
    param.rows = static_cast<std::uint16_t>(size.cy);
    param.columns = static_cast<std::uint16_t>(size.cx);
    param.bitsAllocated = 8;
    param.quality = quality;
    param.pixelRepresentation = 0;  // whatever the frame's values were, these bytes are grey levels
    param.targetSyntax = format;
    unsigned char* block = nullptr;
    CxImageProcessor processor;
    coded.result =
        processor.CompressFrameData(&param, scaled.block.get(), scaled.size, block, coded.size);
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
        std::unique_ptr<unsigned char[]> owner;
        std::span<const unsigned char> pixels;
        const QUORVEX_MESSAGE fetched = ViewFrame(frame, owner, pixels);
        if (fetched != QVM_SUCCESS) return fetched;
        const auto shape = ReadFrameShape(*header, kSyntaxNone);
        if (!shape) return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
        SmallPixels small = ReduceToBytes(*header, *shape, pixels, useDataRange != 0, size.cy);
        if (small.result != QVM_SUCCESS) return small.result;
        ThumbnailImage made = Scale(small, *shape, size);
        if (made.result != QVM_SUCCESS) return made.result;
        if (format != kXferUncompressed) {
            made = Compress(made, small, *shape, size, format, quality);
            if (made.result != QVM_SUCCESS) return made.result;
            bitmapHeader = nullptr;
            bitmapHeaderSize = 0;
            imageSize = made.size;
            image = made.block.release();
            return QVM_SUCCESS;
        }
        HeapBlock headerBlock = MakeBitmapHeader(size, small.samples);
        bitmapHeaderSize = headerBlock.Size();
        bitmapHeader = static_cast<tagBITMAPINFOHEADER*>(static_cast<void*>(headerBlock.Release()));
        imageSize = made.size;
        image = made.block.release();
        return QVM_SUCCESS;
    });
}

}  // namespace quorvex
