#include "foundation/types/answer.h"
#include "foundation/types/checked_size.h"
#include "pipeline/intake/stored_elements.h"
#include "pipeline/layers/shown_shutter.h"
#include "pipeline/view/display_table.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CXImageCreator.h"
#include "quorvex/CXWindowing.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <utility>

namespace quorvex {

namespace {

constexpr int kColourBytes = 3;
constexpr unsigned short kHalfWordBits = 8;

bool IsRenderable(const _OUTSIZE_INFO& info) {
    if (info.rotation % 90 != 0) return false;
    if (!std::isfinite(info.zoom) || info.zoom < 0.0) return false;
    constexpr double kLongestSide = std::numeric_limits<std::int32_t>::max() / 2;
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

void Complement(std::vector<unsigned char>& table) {
    for (auto& value : table) value = static_cast<unsigned char>(255 - value);
}

/// A layer of an earlier image may have another size, and is not drawn then.
unsigned char* LayerOfSize(const PixelBlock& layer, std::size_t pixelCount, int pixelBytes) {
    const auto size = CheckedProduct(pixelCount, pixelBytes);
    return size && layer.size == *size ? layer.data.get() : nullptr;
}

}  // namespace

// All of a job but its output and its table.
_IMAGE_INFO CXDIPP::RenderJob(CSize size) const {
    const auto pixelCount =
        static_cast<std::size_t>(imageSize.cx) * static_cast<std::size_t>(imageSize.cy);
    _IMAGE_INFO job;
    job.bytesPerPixel = bytesPerPixel;
    job.imageWidth = imageSize.cx;
    job.imageHeight = imageSize.cy;
    job.pixels = pixels.data.get();
    job.outputWidth = size.cx;
    job.outputHeight = size.cy;
    job.roi = roi;
    job.rotation = QuarterTurns();
    job.horizontalFlip = horizontalFlip;
    job.renderMode = renderMode;
    job.paletteImage = LayerOfSize(paletteImage, pixelCount, kColourBytes);
    job.overlayImage = LayerOfSize(overlayImage, pixelCount, resultPixelSize);
    if (overlaysShown != 0 && headerOverlays.data && renderMode != kRenderSupplementalPalette) {
        job.renderMode = kRenderOverlay;
        job.overlayImage = LayerOfSize(headerOverlays, pixelCount, resultPixelSize);
    }
    job.aspectRatio = EffectiveAspectRatio();
    job.bitsStored = BitsToRead(bitsStored, valueRange);
    return job;
}

QUORVEX_MESSAGE CXDIPP::Render() {
    return Answer(QVM_ERROR_NO_IMAGE, [&] {
        if (!pixels.data) return QVM_ERROR_NO_IMAGE;
        const auto size = SizeOfResult({roi, zoom, EffectiveAspectRatio(), QuarterTurns()});
        if (!size) return QVM_ERROR_INVALID_OUTPUT_SIZE;
        const int pixelSize =
            renderMode == kRenderSupplementalPalette ? kColourBytes : resultPixelSize;
        const auto bytes = CheckedProduct(size->cx, size->cy, pixelSize);
        if (!bytes) return QVM_ERROR_INVALID_OUTPUT_SIZE;

        _IMAGE_INFO job = RenderJob(*size);
        auto table =
            DisplayTable(*windowing, valueRange, WidthToRead(bytesPerPixel, job.bitsStored));
        if (table.empty()) return QVM_ERROR_NO_IMAGE;
        if (inverse != 0) Complement(table);
        // A job that fails has left its output as it was.
        const bool isAgain = resultImage.data && resultImage.size == *bytes;
        PixelBlock fresh = isAgain ? PixelBlock{} : NewPixelBlock(*bytes);
        job.lut = table.data();
        job.lutCount = static_cast<int>(table.size());
        job.output = (isAgain ? resultImage : fresh).data.get();
        std::unique_ptr<ShutteredLayers> shuttered;
        if (shutterShown != 0 && presentation) shuttered = PutShutter(job, *presentation);
        if (!IsEmpty(*size) && CXImageCreator().GetImageWithInfo(job) != 0) {
            return QVM_ERROR_NO_IMAGE;
        }
        if (!isAgain) resultImage = std::move(fresh);
        resultSize = *size;
        renderedPixelSize = pixelSize;
        renderedView = {imageSize, EffectiveAspectRatio(), QuarterTurns(), horizontalFlip != 0};
        return QVM_SUCCESS;
    });
}

QUORVEX_MESSAGE CXDIPP::ShowOverlays(int on) noexcept {
    overlaysShown = on;
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::GetResultImageInfo(CSize& size, int& pixelSize) const {
    if (!resultImage.data) return QVM_ERROR_NO_IMAGE;
    size = resultSize;
    pixelSize = renderedPixelSize;
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::GetResultImage(unsigned char*& destination, int length) const {
    if (!resultImage.data || destination == nullptr || length < 1) return QVM_SUCCESS;
    std::memcpy(destination, resultImage.data.get(),
                std::min(resultImage.size, static_cast<std::size_t>(length)));
    return QVM_SUCCESS;
}

}  // namespace quorvex
