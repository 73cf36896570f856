#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

#include "foundation/types/answer.h"
#include "foundation/types/checked_size.h"
#include "pipeline/incoming_image.h"
#include "pipeline/modality_stage.h"
#include "pipeline/pixel_header.h"
#include "pipeline/presentation_record.h"
#include "pipeline/rgb_frame.h"
#include "pipeline/whole_number.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXWindowing.h"
#include "quorvex/CxDcmParser.h"

namespace quorvex {

namespace {

constexpr auto kNoPixels = QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
constexpr int kColourBytes = 3;
constexpr int kHighestColour = 255;
constexpr unsigned short kBitsStoredWithoutHeader = 12;
/// Of what windowing gets a table for: more values than any frame has, and still a small table.
constexpr std::int64_t kLargestDomain = std::int64_t{1} << 24;

PixelBlock Copied(const unsigned char* pixels, std::size_t size) {
    PixelBlock copy = NewPixelBlock(size);
    std::memcpy(copy.data.get(), pixels, size);
    return copy;
}

IncomingImage IncomingUnder(const PixelHeader& header, CDcmObject& object, CSize viewSize) {
    IncomingImage incoming;
    incoming.imageSize = header.size;
    incoming.viewSize = viewSize;
    incoming.pixelRepresentation = header.pixelRepresentation;
    incoming.bitsStored = header.bitsStored;
    incoming.record = ReadRecord(&object, header.size, CString());
    incoming.record->pixelBitDepth = header.bitsAllocated;
    incoming.record->pixelRepresentation = header.pixelRepresentation;
    return incoming;
}

void TakeColour(IncomingImage& incoming, PixelBlock frame, const PixelHeader& header) {
    incoming.pixels = RgbFrame(std::move(frame), header);
    incoming.bytesPerPixel = kColourBytes;
    incoming.range = {0, kHighestColour, 0, kHighestColour};
    incoming.record->pixelBitDepth = 8;
}

// A domain over all values met keeps windows over the full range alike from frame to frame. Once
// those lie too far apart for a table, the frame's own values have to do.
void SetDomain(ValueRange& range, std::int64_t low, std::int64_t high) {
    if (high - low >= kLargestDomain) {
        low = std::min<std::int64_t>(range.low, 0);
        high = std::max<std::int64_t>(range.high, 0);
    }
    range.domainLow = HeldToInt(low);
    range.domainHigh = HeldToInt(high);
}

// A record's window counts in values. Where they do not fit into whole numbers, it is told in
// elements, like the pixels.
void ScaleWindow(CXGSPSInfo& record, const ValueScale& scale) {
    record.windowCenter = TruncatedToInt((record.windowCenter - scale.offset) / scale.step);
    if (record.windowWidth == 0) return;
    record.windowWidth = std::max(TruncatedToInt(record.windowWidth / scale.step), 1);
}

bool FitsWholeNumbers(const ValueScale& scale) {
    constexpr double kLimit = 1 << 30;
    const bool areStepsWhole = scale.step >= 1.0;
    return areStepsWhole && std::abs(scale.offset) < kLimit && scale.step * 65536.0 < kLimit;
}

void TakeScale(IncomingImage& incoming, ValueScale scale) {
    if (!FitsWholeNumbers(scale)) {
        ScaleWindow(*incoming.record, scale);
        scale = {};
    }
    incoming.scale = scale;
}

// Over a range of two values the usual full-range window shows both white.
void ShowBitsBlackAndWhite(CXGSPSInfo& record) {
    if (record.voiLUTData != nullptr || record.windowWidth != 0) return;
    record.windowCenter = 1;
    record.windowWidth = 1;
}

void TakeGrey(IncomingImage& incoming, ModalityFrame frame) {
    incoming.bytesPerPixel = frame.bytesPerPixel;
    incoming.pixels = std::move(frame.pixels);
    incoming.minValue = std::min(incoming.minValue, HeldToInt(frame.values.low));
    incoming.maxValue = std::max(incoming.maxValue, HeldToInt(frame.values.high));
    incoming.range = {frame.elements.low, frame.elements.high, 0, 0};
    if (incoming.bitsStored == 1) ShowBitsBlackAndWhite(*incoming.record);
    const auto low = std::min<std::int64_t>(incoming.minValue, frame.values.low);
    const auto high = std::max<std::int64_t>(incoming.maxValue, frame.values.high);
    if (frame.scale.IsPlain()) return SetDomain(incoming.range, low, high);
    if (frame.scale.step < 1.0) {
        SetDomain(incoming.range, std::min<std::int64_t>(frame.elements.low, 0),
                  std::max<std::int64_t>(frame.elements.high, 0));
    } else {
        incoming.range.domainLow = HeldToInt(ScaledElement(low, frame.scale));
        incoming.range.domainHigh = HeldToInt(ScaledElement(high, frame.scale));
    }
    TakeScale(incoming, frame.scale);
}

ValueRange RangeOfCaller(int minValue, int maxValue) {
    const auto [low, high] = std::minmax(minValue, maxValue);
    ValueRange range{low, high, low, high};
    if (std::int64_t{high} - low < kLargestDomain) return range;
    range.domainLow = std::max<int>(low, std::numeric_limits<std::int16_t>::min());
    range.domainHigh = std::min<int>(high, std::numeric_limits<std::uint16_t>::max());
    if (range.domainLow > range.domainHigh) range = {0, 0, 0, 0};
    return range;
}

/// Bytes of a frame that a caller hands over under a header.
std::optional<std::size_t> CallerFrameBytes(const PixelHeader& header) {
    if (!header.IsGrey()) return CheckedProduct(header.PixelCount(), header.samplesPerPixel);
    const auto bits = CheckedProduct(header.PixelCount(), header.bitsAllocated);
    if (!bits) return std::nullopt;
    return *bits / 8;
}

bool IsOneOrTwoWholeBytes(const PixelHeader& header) {
    return header.bitsAllocated == 8 || header.bitsAllocated == 16;
}

}  // namespace

// Prepares the tables on a copy: those of the image on show stay until all is done.
void CXDIPP::Prepare(IncomingImage& incoming) const {
    incoming.windowing = std::make_unique<CXWindowing>(*windowing);
    incoming.windowing->SetRescale(incoming.scale.step, incoming.scale.offset);
    incoming.windowing->PrepareGSPSProcessing2(incoming.record.get(), incoming.range.domainLow,
                                               incoming.range.domainHigh);
}

void CXDIPP::Commit(IncomingImage& incoming) noexcept {
    imageSize = incoming.imageSize;
    viewSize = incoming.viewSize;
    pixelRepresentation = incoming.pixelRepresentation;
    bytesPerPixel = incoming.bytesPerPixel;
    resultPixelSize = bytesPerPixel >= kColourBytes ? kColourBytes : 1;
    bitsStored = incoming.bitsStored;
    pixels = std::move(incoming.pixels);
    presentation = std::move(incoming.record);
    windowing = std::move(incoming.windowing);
    valueRange = incoming.range;
    minValue = incoming.minValue;
    maxValue = incoming.maxValue;
    rotation = presentation->imageRotation;
    horizontalFlip = presentation->imageHorizontalFlip;
    PrepareDisplayAreaTransform();
}

QUORVEX_MESSAGE CXDIPP::ShowFrame(CxDcmParser& source, CSize newViewSize, int frameIndex) {
    unsigned char* data = nullptr;
    unsigned long size = 0;
    const auto result = source.GetAFrame(frameIndex, data, size, 0);
    if (result != QVM_SUCCESS) return result;
    PixelBlock frame{std::unique_ptr<unsigned char[]>(data), size};
    const auto header = ReadPixelHeader(*source.GetHeader());
    if (!header || !frame.data) return kNoPixels;
    IncomingImage incoming = IncomingUnder(*header, *source.GetHeader(), newViewSize);
    incoming.minValue = minValue;
    incoming.maxValue = maxValue;
    if (header->IsGrey()) {
        StoredLayout layout = header->Layout();
        layout.extendsSign = incoming.record->modalityLUTData == nullptr;
        TakeGrey(incoming,
                 ApplyModalityStage(std::move(frame), layout, ModalityTransform(*incoming.record),
                                    {minValue, maxValue}));
    } else {
        TakeColour(incoming, std::move(frame), *header);
    }
    Prepare(incoming);
    Commit(incoming);
    return QVM_SUCCESS;
}

QUORVEX_MESSAGE CXDIPP::Initialize(CDcmApp* app, CString path, CSize newViewSize, int frameIndex) {
    return Answer(kNoPixels, [&] {
        auto opened = std::make_unique<CxDcmParser>();
        auto result = opened->Initialize(app, std::move(path), 0);
        if (result == QVM_SUCCESS) result = ShowFrame(*opened, newViewSize, frameIndex);
        if (result == QVM_SUCCESS) parser = std::move(opened);
        return result;
    });
}

QUORVEX_MESSAGE CXDIPP::Initialize(CDcmApp* app, CDcmObject* object, CSize newViewSize,
                                   int frameIndex) {
    return Answer(kNoPixels, [&] {
        auto opened = std::make_unique<CxDcmParser>();
        auto result = opened->Initialize(app, object, nullptr, 0, 0);
        if (result == QVM_SUCCESS) result = ShowFrame(*opened, newViewSize, frameIndex);
        if (result == QVM_SUCCESS) parser = std::move(opened);
        return result;
    });
}

QUORVEX_MESSAGE CXDIPP::Initialize(CDcmApp*, CSize newViewSize, int frameIndex) {
    return Answer(kNoPixels, [&] { return ShowFrame(*parser, newViewSize, frameIndex); });
}

QUORVEX_MESSAGE CXDIPP::Initialize(CDcmApp*, CDcmObject* object, unsigned char* pixelData,
                                   CSize newViewSize, int newMaxValue, int newMinValue,
                                   int /*reserved*/) {
    return Answer(kNoPixels, [&] {
        if (object == nullptr || pixelData == nullptr) return kNoPixels;
        auto header = ReadPixelHeader(*object);
        const auto bytes = header ? CallerFrameBytes(*header) : std::nullopt;
        if (!bytes) return kNoPixels;
        IncomingImage incoming = IncomingUnder(*header, *object, newViewSize);
        incoming.minValue = minValue;
        incoming.maxValue = maxValue;
        PixelBlock frame = Copied(pixelData, *bytes);
        if (!header->IsGrey()) {
            header->bitsAllocated = 8;
            TakeColour(incoming, std::move(frame), *header);
        } else if (IsOneOrTwoWholeBytes(*header)) {
            incoming.pixels = std::move(frame);
            incoming.bytesPerPixel = header->bitsAllocated / 8;
            incoming.range = RangeOfCaller(newMinValue, newMaxValue);
        } else {
            TakeGrey(incoming,
                     ApplyModalityStage(
                         std::move(frame), header->Layout(), ModalityTransform(),
                         {std::min(newMinValue, newMaxValue), std::max(newMinValue, newMaxValue)}));
            incoming.minValue = minValue;
            incoming.maxValue = maxValue;
        }
        Prepare(incoming);
        Commit(incoming);
        return QVM_SUCCESS;
    });
}

QUORVEX_MESSAGE CXDIPP::Initialize(unsigned char* pixelData, CSize newViewSize, CSize newImageSize,
                                   int newBytesPerPixel, int newMaxValue, int newMinValue,
                                   int newPixelRepresentation) {
    return Answer(kNoPixels, [&] {
        if (pixelData == nullptr || newImageSize.cx < 1 || newImageSize.cy < 1) return kNoPixels;
        const auto bytes = CheckedProduct(newImageSize.cx, newImageSize.cy, newBytesPerPixel);
        if (!bytes || newBytesPerPixel < 1) return kNoPixels;
        IncomingImage incoming;
        incoming.imageSize = newImageSize;
        incoming.viewSize = newViewSize;
        incoming.pixelRepresentation = newPixelRepresentation;
        incoming.bytesPerPixel = newBytesPerPixel;
        incoming.bitsStored = kBitsStoredWithoutHeader;
        incoming.pixels = Copied(pixelData, *bytes);
        incoming.range = RangeOfCaller(newMinValue, newMaxValue);
        incoming.minValue = minValue;
        incoming.maxValue = maxValue;
        incoming.record = NewRecord({});
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
