#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <optional>
#include <utility>

#include "foundation/types/answer.h"
#include "foundation/types/checked_size.h"
#include "pipeline/incoming_image.h"
#include "pipeline/modality_stage.h"
#include "pipeline/pixel_header.h"
#include "pipeline/presentation_record.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXWindowing.h"

namespace quorvex {

namespace {

constexpr auto kNoPixels = QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
constexpr unsigned short kBitsStoredWithoutHeader = 12;
constexpr ValueSpan kWordValues{std::numeric_limits<std::int16_t>::min(),
                                std::numeric_limits<std::uint16_t>::max()};

PixelBlock Copied(const unsigned char* pixels, std::size_t size) {
    PixelBlock copy = NewPixelBlock(size);
    std::memcpy(copy.data.get(), pixels, size);
    return copy;
}

/// Bytes of a frame that a caller hands over under a header.
std::optional<std::size_t> CallerFrameBytes(const PixelHeader& header) {
    if (!header.IsGrey()) return CheckedProduct(header.PixelCount(), header.samplesPerPixel);
    const auto bits = CheckedProduct(header.PixelCount(), header.bitsAllocated);
    if (!bits) return std::nullopt;
    return *bits / 8;
}

// A caller's range may be given the other way round, and be wider than any pixel is.
ValueRange RangeOfCaller(ValueSpan met) {
    ValueRange range{std::clamp(met.low, kWordValues.low, kWordValues.high),
                     std::clamp(met.high, kWordValues.low, kWordValues.high), 0, 0};
    SetDomain(range, met.low, met.high);
    return range;
}

ValueSpan SpanOfCaller(int one, int other) {
    return {std::min(one, other), std::max(one, other)};
}

// Words and bytes stay as they are; what is neither is brought into words.
void TakeCallersGrey(IncomingImage& incoming, PixelBlock frame, const PixelHeader& header,
                     ValueSpan met) {
    if (header.bitsAllocated == 8 || header.bitsAllocated == 16) {
        incoming.pixels = std::move(frame);
        incoming.bytesPerPixel = header.bitsAllocated / 8;
        incoming.range = RangeOfCaller(met);
    } else {
        incoming.TakeGrey(
            ApplyModalityStage(std::move(frame), header.Layout(), ModalityTransform(), met));
    }
}

}  // namespace

QUORVEX_MESSAGE CXDIPP::Initialize(CDcmApp*, CDcmObject* object, unsigned char* pixelData,
                                   CSize newViewSize, int newMaxValue, int newMinValue,
                                   int /*reserved*/) {
    return Answer(kNoPixels, [&] {
        if (object == nullptr || pixelData == nullptr) return kNoPixels;
        auto header = ReadPixelHeader(*object);
        const auto bytes = header ? CallerFrameBytes(*header) : std::nullopt;
        if (!bytes) return kNoPixels;
        IncomingImage incoming;
        incoming.viewSize = newViewSize;
        incoming.TakeHeader(*header, *object);
        PixelBlock frame = Copied(pixelData, *bytes);
        if (header->IsGrey()) {
            TakeCallersGrey(incoming, std::move(frame), *header,
                            SpanOfCaller(newMinValue, newMaxValue));
        } else {
            header->bitsAllocated = 8;
            incoming.TakeColour(std::move(frame), *header);
        }
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
        incoming.pixels = Copied(pixelData, *bytes);
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
