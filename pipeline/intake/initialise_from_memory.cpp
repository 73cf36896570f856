#include "foundation/types/answer.h"
#include "foundation/types/checked_size.h"
#include "pipeline/intake/callers_frame.h"
#include "pipeline/intake/incoming_image.h"
#include "pipeline/pixel_header.h"
#include "pipeline/intake/presentation_record.h"
#include "pipeline/layers/overlay_layer.h"
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
                                   CSize newViewSize, int newMaxValue, int newMinValue,
                                   int /*reserved*/) {
    return Answer(kNoPixels, [&] {
        if (object == nullptr || pixelData == nullptr) return kNoPixels;
        const auto header = ReadPixelHeader(*object);
        const auto bytes = header ? CallerFrameBytes(*header) : std::nullopt;
        if (!bytes) return kNoPixels;
        IncomingImage incoming;
        incoming.viewSize = newViewSize;
        incoming.TakeHeader(*header, *object);
        TakeCallersFrame(incoming, {pixelData, *bytes}, *header,
                         SpanOfCaller(newMinValue, newMaxValue));
        incoming.headerOverlays =
            HeaderOverlays(*object, {pixelData, *bytes}, header->size, incoming.bytesPerPixel);
        incoming.minValue = minValue;
        incoming.maxValue = maxValue;
        Prepare(incoming);
        Commit(incoming);
        return QVM_SUCCESS;
    });
}

QUORVEX_MESSAGE CXDIPP::Initialize(unsigned char* pixelData, CSize newViewSize, CSize newImageSize,
                                   int newBytesPerPixel, int newMaxValue, int newMinValue,
                                   int newPixelRepresentation) {
    return Answer(kNoPixels, [&] {
        const bool isImage = newImageSize.cx > 0 && newImageSize.cy > 0 && newBytesPerPixel > 0;
        if (pixelData == nullptr || !isImage) return kNoPixels;
        const auto bytes = CheckedProduct(newImageSize.cx, newImageSize.cy, newBytesPerPixel);
        if (!bytes) return kNoPixels;
        IncomingImage incoming;
        incoming.imageSize = newImageSize;
        incoming.viewSize = newViewSize;
        incoming.pixelRepresentation = newPixelRepresentation;
        incoming.bytesPerPixel = newBytesPerPixel;
        incoming.bitsStored = kBitsStoredWithoutHeader;
        incoming.pixels = CopyOf({pixelData, *bytes});
        incoming.record = NewRecord({});
        incoming.range = RangeOfCaller(SpanOfCaller(newMinValue, newMaxValue));
        incoming.minValue = minValue;
        incoming.maxValue = maxValue;
        incoming.record->pixelBitDepth = newBytesPerPixel;
        incoming.record->pixelRepresentation = newPixelRepresentation;
        incoming.record->pixelAspectHorizontal = 1.0;
        incoming.record->pixelAspectVertical = 1.0;
        Prepare(incoming);
        Commit(incoming);
        return QVM_SUCCESS;
    });
}

}  // namespace quorvex
