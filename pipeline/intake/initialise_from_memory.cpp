#include "foundation/types/answer.h"
#include "foundation/types/checked_size.h"
#include "pipeline/intake/callers_frame.h"
#include "pipeline/intake/incoming_image.h"
#include "pipeline/intake/presentation_record.h"
#include "pipeline/layers/overlay_layer.h"
#include "pipeline/pixel_header.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXWindowing.h"

#include <optional>

namespace quorvex {

namespace {

constexpr auto kNoPixels = QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
constexpr unsigned short kBitsStoredWithoutHeader = 12;

}  // namespace

QUORVEX_MESSAGE CXDIPP::Initialize(CDcmApp*, CDcmObject* object, unsigned char* pixelData,
                                   CSize viewSize, int maxValue, int minValue, int /*reserved*/) {
    return Answer(kNoPixels, [&] {
        if (object == nullptr || pixelData == nullptr) return kNoPixels;
        const auto header = ReadPixelHeader(*object);
        const auto bytes = header ? CallerFrameBytes(*header) : std::nullopt;
        if (!bytes) return kNoPixels;
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
