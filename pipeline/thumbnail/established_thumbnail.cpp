#include "pipeline/thumbnail/established_thumbnail.h"

#include "parser/frames/frame_fetch.h"
#include "pipeline/thumbnail/thumbnail_pixels.h"
#include "quorvex/CxImageProcessor.h"

namespace quorvex {

namespace {

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

}  // namespace

ThumbnailImage MakeEstablishedThumbnail(ParserState& parser, const ThumbnailForm& form) {
    FrameFetch fetch(parser, form.frame);
    std::unique_ptr<unsigned char[]> owner;
    std::span<const unsigned char> pixels;
    const QUORVEX_MESSAGE fetched = fetch.View(owner, pixels);
    if (fetched != QVM_SUCCESS) return ThumbnailImage(fetched);
    const FrameShape& shape = fetch.Shape();
    if (shape.sampleType != SampleType::kInteger)
        return ThumbnailImage(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA);
    SmallPixels small =
        ReduceToBytes(*parser.file.GetHeader(), shape, pixels, form.useDataRange, form.size.cy);
    if (small.result != QVM_SUCCESS) return ThumbnailImage(small.result);
    ThumbnailImage made = Scale(small, shape, form.size);
    made.bitmap.biWidth = (form.size.cx + 3) / 4 * 4;
    made.bitmap.biHeight = form.size.cy;
    made.bitmap.biBitCount = static_cast<std::uint16_t>(8 * made.samples);
    return made;
}

}  // namespace quorvex
