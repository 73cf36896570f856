#include "pipeline/intake/incoming_image.h"

#include "foundation/types/limits.h"
#include "foundation/types/saturate.h"
#include "pipeline/intake/presentation_record.h"
#include "pipeline/intake/rgb_frame.h"
#include "pipeline/intake/scaled_windowing.h"
#include "pipeline/pixel_header.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXWindowing.h"

#include <algorithm>
#include <utility>

namespace quorvex {

namespace {

constexpr int kColourBytes = 3;
constexpr int kHighestColour = 255;

}  // namespace

void SetDomain(ValueRange& range, std::int64_t low, std::int64_t high) noexcept {
    if (high - low >= kLargestDomain) {
        low = std::min<std::int64_t>(range.low, 0);
        high = std::max<std::int64_t>(range.high, 0);
    }
    range.domainLow = SaturateToInt(low);
    range.domainHigh = SaturateToInt(high);
}

void IncomingImage::TakeHeader(const PixelHeader& header, CDcmObject& object) {
    imageSize = header.size;
    pixelRepresentation = header.pixelRepresentation;
    bitsStored = header.bitsStored;
    record = ReadRecord(&object, header.size, CString());
    record->pixelBitDepth = header.bitsAllocated;
    record->pixelRepresentation = header.pixelRepresentation;
}

void IncomingImage::TakeColour(PixelBlock frame, const PixelHeader& header) {
    pixels = RgbFrame(std::move(frame), header);
    bytesPerPixel = kColourBytes;
    range = {0, kHighestColour, 0, kHighestColour};
    record->pixelBitDepth = 8;
}

void IncomingImage::TakeGrey(ModalityFrame frame) {
    bytesPerPixel = frame.bytesPerPixel;
    minValue = std::min(minValue, SaturateToInt(frame.values.low));
    maxValue = std::max(maxValue, SaturateToInt(frame.values.high));
    scale_ = frame.scale;
    SetDomain(frame);
    WidenFullRange(frame);
    pixels = std::move(frame.pixels);
}

// A domain over all values met keeps windows over the full range alike from frame to frame. Where
// elements are scaled, `fullRange` does that.
void IncomingImage::SetDomain(const ModalityFrame& frame) {
    range.low = frame.elements.low;
    range.high = frame.elements.high;
    const bool isPlain = frame.scale.IsPlain();
    quorvex::SetDomain(range, std::min<std::int64_t>(isPlain ? minValue : 0, range.low),
                       std::max<std::int64_t>(isPlain ? maxValue : 0, range.high));
}

void IncomingImage::WidenFullRange(const ModalityFrame& frame) {
    const ValueScale& scale = frame.scale;
    if (scale.IsFractional()) {
        fullRange = {std::min(fullRange.low, scale.ValueOf(frame.elements.low)),
                     std::max(fullRange.high, scale.ValueOf(frame.elements.high))};
    } else {
        fullRange = {static_cast<double>(std::min<std::int64_t>(minValue, frame.values.low)),
                     static_cast<double>(std::max<std::int64_t>(maxValue, frame.values.high))};
    }
}

void IncomingImage::Replace(DisplayedImage& current) {
    Prepare(*current.windowing);
    Commit(current);
}

// Tables are prepared on a copy: those of the image on show stay until all is done.
void IncomingImage::Prepare(const CXWindowing& current) {
    windowing_ = std::make_unique<CXWindowing>(current);
    valueWindow_ = PrepareWindowing(*windowing_, *record, {range, scale_, fullRange, bitsStored});
}

void IncomingImage::Commit(DisplayedImage& current) noexcept {
    current.standard.reset();
    current.imageSize = imageSize;
    current.viewSize = viewSize;
    current.pixelRepresentation = pixelRepresentation;
    current.bytesPerPixel = bytesPerPixel;
    current.resultPixelSize = bytesPerPixel >= kColourBytes ? kColourBytes : 1;
    current.bitsStored = bitsStored;
    current.pixels = std::move(pixels);
    current.headerOverlays = std::move(headerOverlays);
    current.windowing = std::move(windowing_);
    current.valueRange = range;
    current.valueScale = scale_;
    current.fullRange = fullRange;
    current.valueWindow = valueWindow_;
    current.rotation = record->imageRotation;
    current.horizontalFlip = record->imageHorizontalFlip;
    current.presentation = std::move(record);
    current.PrepareDisplayAreaTransform();
}

}  // namespace quorvex
