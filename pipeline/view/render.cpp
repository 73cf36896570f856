#include "foundation/types/cancellation.h"
#include "foundation/types/checked_size.h"
#include "pipeline/displayed_image.h"
#include "pipeline/layers/shown_shutter.h"
#include "pipeline/recipe/established_rules.h"
#include "pipeline/view/display_table.h"
#include "pipeline/view/host_pixels.h"
#include "quorvex/CXImageCreator.h"
#include "render/job_rules.h"
#include "render/render_run.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

namespace quorvex {

namespace {

constexpr unsigned short kHalfWordBits = 8;

bool IsRenderable(const _OUTSIZE_INFO& info) {
    if (info.rotation % 90 != 0) return false;
    if (!std::isfinite(info.zoom) || info.zoom < 0.0) return false;
    constexpr std::int32_t kLongestSide = std::numeric_limits<std::int32_t>::max() / 2;
    const double longest =
        std::max({double{1}, info.aspectRatio}) * std::max(info.roi.Width(), info.roi.Height());
    return longest * info.zoom < kLongestSide;
}

std::optional<CSize> SizeOfResult(_OUTSIZE_INFO info) {
    if (!IsRenderable(info)) return std::nullopt;
    CSize size;
    CXImageCreator().GetOutputSize(info, size);
    return size;
}

bool IsEmpty(CSize size) {
    return size.cx < 1 || size.cy < 1;
}

// Words with 8 stored bits are read by their low byte, unless the values have outgrown it.
unsigned short BitsToRead(unsigned short bitsStored, const ValueRange& range) {
    const bool hasOutgrown = range.high - range.low > 255;
    return bitsStored == kHalfWordBits && hasOutgrown ? 16 : bitsStored;
}

ElementWidth WidthToRead(int bytesPerPixel, unsigned short bitsStored) {
    return bytesPerPixel == 2 && bitsStored != kHalfWordBits ? ElementWidth::kWord
                                                             : ElementWidth::kByte;
}

void Complement(std::span<unsigned char> table) {
    for (auto& value : table) value = static_cast<unsigned char>(255 - value);
}

/// A layer of an earlier image may have another size, and is not drawn then.
unsigned char* LayerOfSize(const PixelBlock& layer, std::size_t pixelCount, int pixelBytes) {
    const auto size = CheckedProduct(pixelCount, pixelBytes);
    return size && layer.size == *size ? layer.data.get() : nullptr;
}

/// All of a job but its output and its table.
_IMAGE_INFO RenderJob(const DisplayedImage& image, CSize size) {
    const auto pixelCount =
        static_cast<std::size_t>(image.imageSize.cx) * static_cast<std::size_t>(image.imageSize.cy);
    _IMAGE_INFO job;
    job.bytesPerPixel = image.bytesPerPixel;
    job.imageWidth = image.imageSize.cx;
    job.imageHeight = image.imageSize.cy;
    job.pixels = image.pixels.data.get();
    job.outputWidth = size.cx;
    job.outputHeight = size.cy;
    job.roi = image.roi;
    job.rotation = image.QuarterTurns();
    job.horizontalFlip = image.horizontalFlip;
    job.renderMode = image.renderMode;
    job.paletteImage = LayerOfSize(image.paletteImage, pixelCount, kColourBytes);
    job.overlayImage = LayerOfSize(image.overlayImage, pixelCount, image.resultPixelSize);
    const bool showsHeaderOverlays = image.overlaysShown != 0 && image.headerOverlays.data &&
                                     image.renderMode != kRenderSupplementalPalette;
    if (showsHeaderOverlays) {
        job.renderMode = kRenderOverlay;
        job.overlayImage = LayerOfSize(image.headerOverlays, pixelCount, image.resultPixelSize);
    }
    job.aspectRatio = image.EffectiveAspectRatio();
    job.bitsStored = BitsToRead(image.bitsStored, image.valueRange);
    return job;
}

/// Runs a job that lacks its table and output, with the table and shutter of the image.
bool RunJob(_IMAGE_INFO& job, DisplayedImage& image, unsigned char* output) {
    auto table = DisplayTable(*image.windowing, image.valueRange,
                              WidthToRead(image.bytesPerPixel, job.bitsStored), image.scratch);
    if (table.empty()) return false;
    if (image.inverse != 0) Complement(table);
    job.lut = table.data();
    job.lutCount = static_cast<int>(table.size());
    job.output = output;
    std::unique_ptr<ShutteredLayers> shuttered;
    if (image.shutterShown != 0 && image.presentation) {
        shuttered = PutShutter(job, *image.presentation);
    }
    return IsEmpty({job.outputWidth, job.outputHeight}) ||
           RenderRun(job, image.scratch).Run() == kJobDone;
}

/// The size of the result in pixels and bytes.
struct ResultShape {
    CSize size;
    int pixelSize = 0;
    std::size_t bytes = 0;
};

QUORVEX_MESSAGE ShapeOfResult(const DisplayedImage& image, ResultShape& shape) {
    if (!image.pixels.data) return QVM_ERROR_NO_IMAGE;
    const auto size =
        SizeOfResult({image.roi, image.zoom, image.EffectiveAspectRatio(), image.QuarterTurns()});
    if (!size) return QVM_ERROR_INVALID_OUTPUT_SIZE;
    const int pixelSize =
        image.renderMode == kRenderSupplementalPalette ? kColourBytes : image.resultPixelSize;
    const auto bytes = CheckedProduct(size->cx, size->cy, pixelSize);
    if (!bytes) return QVM_ERROR_INVALID_OUTPUT_SIZE;
    shape = {*size, pixelSize, *bytes};
    return QVM_SUCCESS;
}

}  // namespace

QUORVEX_MESSAGE EstablishedRules::Render(DisplayedImage& image) const {
    ResultShape shape;
    const QUORVEX_MESSAGE shaped = ShapeOfResult(image, shape);
    if (shaped != QVM_SUCCESS) return shaped;
    const ScratchMemory::Use scratch(image.scratch);

    // A job that fails has left its output as it was, so the last result may be its output: unless
    // it can be called off.
    const bool isAgain = image.resultImage.data && image.resultImage.size == shape.bytes &&
                         !Cancellation::OfThisThread().IsPossible();
    PixelBlock fresh = isAgain ? PixelBlock{} : NewPixelBlock(shape.bytes);
    _IMAGE_INFO job = RenderJob(image, shape.size);
    if (!RunJob(job, image, (isAgain ? image.resultImage : fresh).data.get())) {
        return QVM_ERROR_NO_IMAGE;
    }
    if (!isAgain) image.resultImage = std::move(fresh);
    image.resultSize = shape.size;
    image.renderedPixelSize = shape.pixelSize;
    image.renderedView = {image.imageSize, image.EffectiveAspectRatio(), image.QuarterTurns(),
                          image.horizontalFlip != 0};
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE EstablishedRules::RenderInto(DisplayedImage& image,
                                             const PixelTarget& target) const {
    ResultShape shape;
    const QUORVEX_MESSAGE shaped = ShapeOfResult(image, shape);
    if (shaped != QVM_SUCCESS) return shaped;
    const QUORVEX_MESSAGE checked = CheckTarget(target, shape.size, shape.pixelSize);
    if (checked != QVM_SUCCESS) return checked;
    const ScratchMemory::Use scratch(image.scratch);
    const auto pixels = TakeArray<unsigned char>(image.scratch, shape.bytes);
    _IMAGE_INFO job = RenderJob(image, shape.size);
    if (!RunJob(job, image, pixels.data())) return QVM_ERROR_NO_IMAGE;
    CopyInto(target, pixels, shape.size, shape.pixelSize);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE EstablishedRules::DescribePicture(const DisplayedImage& image,
                                                  PictureInfo& picture) const {
    ResultShape shape;
    const QUORVEX_MESSAGE shaped = ShapeOfResult(image, shape);
    if (shaped == QVM_SUCCESS) picture = {shape.size, shape.pixelSize, PlaceOnView(image)};
    return shaped;
}

}  // namespace quorvex
