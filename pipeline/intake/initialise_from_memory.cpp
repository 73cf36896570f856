#include "foundation/types/answer.h"
#include "foundation/types/checked_size.h"
#include "pipeline/intake/callers_frame.h"
#include "pipeline/intake/incoming_image.h"
#include "pipeline/intake/presentation_record.h"
#include "pipeline/layers/overlay_layer.h"
#include "pipeline/pixel_header.h"
#include "pipeline/recipe/callers_pixels.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXWindowing.h"

#include <optional>

namespace quorvex {

namespace {

constexpr auto kNoPixels = QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
constexpr unsigned short kBitsStoredWithoutHeader = 12;

/// What is known of pixels without a header.
PixelHeader HeaderOf(CSize size, int bytesPerPixel, int pixelRepresentation) {
    PixelHeader header;
    header.size = size;
    header.samplesPerPixel = bytesPerPixel >= 3 ? static_cast<unsigned short>(bytesPerPixel) : 1;
    header.bitsAllocated = static_cast<unsigned short>(header.IsGrey() ? 8 * bytesPerPixel : 8);
    header.bitsStored = header.bitsAllocated;
    header.highBit = static_cast<unsigned short>(header.bitsAllocated - 1);
    header.pixelRepresentation = pixelRepresentation != 0 ? 1 : 0;
    return header;
}

}  // namespace

QUORVEX_MESSAGE CXDIPP::Initialize(CDcmApp*, CDcmObject* object, unsigned char* pixelData,
                                   CSize viewSize, int maxValue, int minValue, int /*reserved*/) {
    return Answer(kNoPixels, [&] {
        if (object == nullptr || pixelData == nullptr) return kNoPixels;
        const auto header = ReadPixelHeader(*object);
        const auto bytes = header ? CallerFrameBytes(*header) : std::nullopt;
        if (!bytes) return kNoPixels;
        if (image_->rules == Rules::kStandard) {
            ShowPixelsByStandard(*image_,
                                 {.header = *header,
                                  .pixels = {pixelData, *bytes},
                                  .range = SpanOfCaller(minValue, maxValue),
                                  .object = object},
                                 viewSize);
            return QVM_SUCCESS;
        }
        IncomingImage incoming;
        incoming.viewSize = viewSize;
        incoming.TakeHeader(*header, *object);
        TakeCallersFrame(incoming, {pixelData, *bytes}, *header, SpanOfCaller(minValue, maxValue));
        incoming.headerOverlays =
            HeaderOverlays(*object, {pixelData, *bytes}, header->size, incoming.bytesPerPixel);
        incoming.Replace(*image_);
        return QVM_SUCCESS;
    });
}

QUORVEX_MESSAGE CXDIPP::Initialize(unsigned char* pixelData, CSize viewSize, CSize imageSize,
                                   int bytesPerPixel, int maxValue, int minValue,
                                   int pixelRepresentation) {
    return Answer(kNoPixels, [&] {
        const bool isImage = imageSize.cx > 0 && imageSize.cy > 0 && bytesPerPixel > 0;
        if (pixelData == nullptr || !isImage) return kNoPixels;
        const auto bytes = CheckedProduct(imageSize.cx, imageSize.cy, bytesPerPixel);
        if (!bytes) return kNoPixels;
        if (image_->rules == Rules::kStandard) {
            ShowPixelsByStandard(*image_,
                                 {.header = HeaderOf(imageSize, bytesPerPixel, pixelRepresentation),
                                  .pixels = {pixelData, *bytes},
                                  .range = SpanOfCaller(minValue, maxValue)},
                                 viewSize);
            return QVM_SUCCESS;
        }
        IncomingImage incoming;
        incoming.viewSize = viewSize;
        incoming.imageSize = imageSize;
        incoming.pixelRepresentation = pixelRepresentation;
        incoming.bytesPerPixel = bytesPerPixel;
        incoming.bitsStored = kBitsStoredWithoutHeader;
        incoming.pixels = CopyOf({pixelData, *bytes});
        incoming.range = RangeOfCaller(SpanOfCaller(minValue, maxValue));
        incoming.record = NewRecord({});
        incoming.record->pixelBitDepth = bytesPerPixel;
        incoming.record->pixelRepresentation = pixelRepresentation;
        incoming.record->pixelAspectHorizontal = 1.0;
        incoming.record->pixelAspectVertical = 1.0;
        incoming.Replace(*image_);
        return QVM_SUCCESS;
    });
}

}  // namespace quorvex
