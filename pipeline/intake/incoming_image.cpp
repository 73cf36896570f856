#include "pipeline/intake/incoming_image.h"

#include "foundation/types/limits.h"
#include "foundation/types/saturate.h"
#include "pipeline/intake/presentation_record.h"
#include "pipeline/intake/rgb_frame.h"
#include "pipeline/pixel_header.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXWindowing.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace quorvex {

namespace {

constexpr int kColourBytes = 3;
constexpr int kHighestColour = 255;

// Over a range of two values the usual full-range window shows both white.
void ShowBitsBlackAndWhite(CXGSPSInfo& record) {
    if (record.voiLUTData != nullptr || record.windowWidth != 0) return;
    record.windowCenter = 1;
    record.windowWidth = 1;
}

void ScaleWindow(CXGSPSInfo& record, const ValueScale& scale) {
    record.windowCenter = TruncateToInt((record.windowCenter - scale.offset) / scale.step);
    if (record.windowWidth == 0) return;
    record.windowWidth = std::max(TruncateToInt(record.windowWidth / scale.step), 1);
}

bool FitsWholeNumbers(const ValueScale& scale) {
    constexpr double kLimit = 1 << 30;
    const bool areStepsWhole = scale.step >= 1.0;
    return areStepsWhole && std::abs(scale.offset) < kLimit && scale.step * 65536.0 < kLimit;
}

}  // namespace

// A record's window counts in values. Where those are no usable whole numbers, it counts in
// elements, like the pixels.
void PrepareWindow(CXGSPSInfo& record, int bitsStored, const ValueScale& scale) {
    if (bitsStored == 1) ShowBitsBlackAndWhite(record);
    if (!FitsWholeNumbers(scale)) ScaleWindow(record, scale);
}

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
    SetDomain(frame);
    scale_ = frame.scale;
    PrepareWindow(*record, bitsStored, scale_);
    pixels = std::move(frame.pixels);
}

// A domain over all values met keeps windows over the full range alike from frame to frame.
void IncomingImage::SetDomain(const ModalityFrame& frame) {
    range.low = frame.elements.low;
    range.high = frame.elements.high;
    std::int64_t low = std::min<std::int64_t>(minValue, frame.values.low);
    std::int64_t high = std::max<std::int64_t>(maxValue, frame.values.high);
    if (frame.scale.step > 1.0) {
        low = ScaledElement(low, frame.scale);
        high = ScaledElement(high, frame.scale);
    } else if (!frame.scale.IsPlain()) {
        low = std::min<std::int64_t>(range.low, 0);
        high = std::max<std::int64_t>(range.high, 0);
    }
    quorvex::SetDomain(range, low, high);
}

void IncomingImage::Replace(DisplayedImage& current) {
    Prepare(*current.windowing);
    Commit(current);
}

// Tables are prepared on a copy: those of the image on show stay until all is done.
void IncomingImage::Prepare(const CXWindowing& current) {
    windowing_ = std::make_unique<CXWindowing>(current);
    const ValueScale scale = FitsWholeNumbers(scale_) ? scale_ : ValueScale{};
    windowing_->SetRescale(scale.step, scale.offset);
    windowing_->PrepareGSPSProcessing2(record.get(), range.domainLow, range.domainHigh);
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
    current.rotation = record->imageRotation;
    current.horizontalFlip = record->imageHorizontalFlip;
    current.presentation = std::move(record);
    current.PrepareDisplayAreaTransform();
}

}  // namespace quorvex
