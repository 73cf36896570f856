#include "pipeline/thumbnail/standard_thumbnail.h"

#include "foundation/types/checked_size.h"
#include "pipeline/displayed_image.h"
#include "pipeline/recipe/standard_rules.h"
#include "pipeline/recipe/standard_view.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CxDcmParser.h"

#include <algorithm>
#include <utility>

namespace quorvex {

namespace {

constexpr std::uint16_t kColourSamples = 3;

/// A side as the view has it, where it misses that by less than a pixel.
double Filled(double side, int view) {
    return view - side < 1.0 ? view : std::max(side, 1.0);
}

/// The image has been laid out, so it is fitted: lets it fill what rounding would leave open.
void FillView(DisplayedImage& shown) {
    CSize view = shown.viewSize;
    if (shown.QuarterTurns() % 180 != 0) std::swap(view.cx, view.cy);
    const double width = shown.imageSize.cx * shown.zoom;
    const double height = shown.imageSize.cy * shown.zoom * shown.EffectiveAspectRatio();
    shown.zoom = Filled(width, view.cx) / shown.imageSize.cx;
    shown.aspectRatio = Filled(height, view.cy) / (shown.imageSize.cy * shown.zoom);
}

/// Copies B, G, R as R, G, B.
void CopyReversed(const unsigned char* from, std::size_t bytes, unsigned char* to) {
    for (std::size_t i = 0; i < bytes; i += kColourSamples) {
        to[i] = from[i + 2];
        to[i + 1] = from[i + 1];
        to[i + 2] = from[i];
    }
}

/// Copies the picture, whose rows run from the bottom, to where it lies in the view.
void CopyPicture(const DisplayedImage& shown, bool isReversed, std::size_t stride,
                 unsigned char* to) {
    const auto samples = static_cast<std::size_t>(shown.renderedPixelSize);
    const std::size_t rowBytes = static_cast<std::size_t>(shown.resultSize.cx) * samples;
    to += static_cast<std::size_t>(shown.resultCorner.y) * stride +
          static_cast<std::size_t>(shown.resultCorner.x) * samples;
    const unsigned char* from = shown.resultImage.data.get() + shown.resultImage.size;
    for (int y = 0; y < shown.resultSize.cy; ++y, to += stride) {
        from -= rowBytes;
        if (isReversed) {
            CopyReversed(from, rowBytes, to);
        } else {
            std::copy_n(from, rowBytes, to);
        }
    }
}

ThumbnailImage PictureOf(const DisplayedImage& shown, const ThumbnailForm& form) {
    ThumbnailImage picture;
    picture.samples = static_cast<std::uint16_t>(shown.renderedPixelSize);
    const bool isColour = picture.samples == kColourSamples;
    picture.photometric = isColour ? "RGB" : "MONOCHROME2";
    const std::size_t rowBytes = static_cast<std::size_t>(form.size.cx) * picture.samples;
    const std::size_t stride = form.IsCoded() ? rowBytes : (rowBytes + 3) / 4 * 4;
    const auto size = CheckedProduct(stride, form.size.cy);
    if (!size) return ThumbnailImage(QVM_ERROR_INVALID_OUTPUT_SIZE);
    picture.block = std::make_unique<unsigned char[]>(*size);  // black
    picture.size = *size;
    CopyPicture(shown, isColour && form.IsCoded(), stride, picture.block.get());
    picture.bitmap.biWidth = form.size.cx;
    picture.bitmap.biHeight = -form.size.cy;
    picture.bitmap.biBitCount = static_cast<std::uint16_t>(8 * picture.samples);
    picture.bitmap.biSizeImage = static_cast<std::uint32_t>(*size);
    return picture;
}

}  // namespace

ThumbnailImage MakeStandardThumbnail(CxDcmParser& parser, const ThumbnailForm& form) {
    DisplayedImage shown;
    shown.isPreview = !form.useDataRange;
    const auto taken = StandardRules().ShowFrame(shown, parser, form.size, form.frame);
    if (taken != QVM_SUCCESS) return ThumbnailImage(taken);
    if (form.useDataRange) {
        shown.standard->voiChoice = static_cast<std::size_t>(CXDIPP::kOverTheValues);
    }
    FillView(shown);
    const auto rendered = RenderStandardView(shown);
    return rendered == QVM_SUCCESS ? PictureOf(shown, form) : ThumbnailImage(rendered);
}

}  // namespace quorvex
