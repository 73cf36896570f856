#include "foundation/types/answer.h"
#include "parser/palette/palette_image.h"
#include "pipeline/colour/supplemental_palette.h"
#include "pipeline/intake/callers_frame.h"
#include "pipeline/intake/incoming_image.h"
#include "pipeline/pixel_header.h"
#include "pipeline/intake/presentation_record.h"
#include "pipeline/layers/overlay_layer.h"
#include "quorvex/CLData.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXImageCreator.h"
#include "quorvex/CXWindowing.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <utility>

namespace quorvex {

namespace {

constexpr auto kNoPixels = QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
constexpr std::size_t kChannels = 3;
constexpr ValueSpan kByteValues{0, 255};

// What a volume's image is to be shown as.
constexpr int kPaletteImage = 2;
constexpr int kSupplementalImage = 3;
constexpr int kOverlayImage = 5;

constexpr int RenderModeOf(int imageKind) {
    switch (imageKind) {
        case kPaletteImage:
            return kRenderPalette;
        case kSupplementalImage:
            return kRenderSupplementalPalette;
        case kOverlayImage:
            return kRenderOverlay;
        default:
            return kRenderPlain;
    }
}

/// The pixels of a volume, and what its fields say about them.
struct Volume {
    PixelHeader header;
    std::span<const unsigned char> pixels;

    [[nodiscard]] std::size_t IndexBytes() const { return PaletteIndexBytes(header.bitsAllocated); }
};

std::optional<Volume> ReadVolume(const CLData* data) {
    if (data == nullptr || data->pixels == nullptr) return std::nullopt;
    PixelHeader header;
    header.size = {data->width, data->height};
    header.samplesPerPixel = data->samplesPerPixel;
    header.bitsAllocated = data->bitsAllocated;
    header.pixelRepresentation = data->pixelRepresentation;
    header.bitsStored = data->bitsStored != 0 ? data->bitsStored : data->bitsAllocated;
    header.highBit = static_cast<unsigned short>(header.bitsStored - 1);
    const auto bytes = IsUsable(header) ? CallerFrameBytes(header) : std::nullopt;
    if (!bytes) return std::nullopt;
    return Volume{header, {data->pixels, *bytes}};
}

/// The volume as three bytes a pixel, as its pixels are taken to be already.
Volume AsColour(Volume volume) {
    volume.header.samplesPerPixel = kChannels;
    volume.header.bitsAllocated = 8;
    volume.header.bitsStored = 8;
    volume.header.highBit = 7;
    volume.pixels = {volume.pixels.data(), volume.header.PixelCount() * kChannels};
    return volume;
}

int ShapeOf(const CString& photometric) {
    if (photometric.Find("MONOCHROME1") >= 0) return 1;
    return photometric.Find("MONOCHROME2") >= 0 ? 0 : 2;
}

std::shared_ptr<CXGSPSInfo> RecordOf(const CLData& data) {
    auto record = NewRecord({data.width, data.height});
    record->windowCenter = data.windowCenter;
    record->windowWidth = data.windowWidth;
    record->presentationShape = ShapeOf(data.photometricInterpretation);
    record->pixelSpacingX = data.pixelSpacingX;
    record->pixelSpacingY = data.pixelSpacingY;
    record->pixelAspectHorizontal = data.aspectRatioHorizontal;
    record->pixelAspectVertical = data.aspectRatioVertical;
    record->pixelRepresentation = data.pixelRepresentation;
    return record;
}

PixelBlock ColouredPixels(const Volume& volume, const Palette& palette) {
    PixelBlock rgb = NewPixelBlock(volume.header.PixelCount() * kChannels);
    ColourByPalette(palette, volume.pixels, volume.IndexBytes(), {rgb.data.get(), rgb.size});
    return rgb;
}

PixelBlock SupplementalLayer(const Volume& volume, CDcmObject& object) {
    const auto palette = LoadPalette(object);
    if (!palette || !volume.header.IsGrey()) return {};
    PixelBlock layer = NewPixelBlock(volume.header.PixelCount() * kChannels);
    std::fill_n(layer.data.get(), layer.size, static_cast<unsigned char>(0));
    const auto rules = RulesForDisplay(*palette, volume.header.pixelRepresentation != 0);
    ColourByTable(SupplementalColours(*palette, volume.IndexBytes(), rules), volume.pixels,
                  volume.IndexBytes(), {layer.data.get(), layer.size});
    return layer;
}

std::span<const unsigned char> EmbeddedPlaneOf(const CLData& data) {
    if (data.overlayPlane == nullptr) return {};
    return {data.overlayPlane, data.overlayPlaneSize};
}

// Grey under colours keeps to bytes, unless its pixels are wider.
ValueSpan RangeOfKind(int imageKind, const Volume& volume, ValueSpan told) {
    if (imageKind != kSupplementalImage) return told;
    if (volume.header.bitsAllocated <= 8) return kByteValues;
    return {std::min(told.low, kByteValues.low), std::max(told.high, kByteValues.high)};
}

void TakePixels(IncomingImage& incoming, const Volume& volume, CDcmObject* object, int imageKind,
                ValueSpan range) {
    const bool hasIndices = imageKind == kPaletteImage && volume.header.IsGrey();
    const bool hasColours = hasIndices && object == nullptr;
    const auto palette = hasIndices && !hasColours ? LoadPalette(*object) : std::nullopt;
    if (palette) {
        incoming.TakeColour(ColouredPixels(volume, *palette), AsColour(volume).header);
    } else {
        const Volume shown = hasColours ? AsColour(volume) : volume;
        TakeCallersFrame(incoming, shown.pixels, shown.header,
                         RangeOfKind(imageKind, volume, range));
    }
    incoming.record->pixelBitDepth = incoming.bytesPerPixel;
}

}  // namespace

IncomingImage CXDIPP::FromVolume(const CLData& data, CSize newViewSize) const {
    IncomingImage incoming;
    incoming.imageSize = {data.width, data.height};
    incoming.viewSize = newViewSize;
    incoming.pixelRepresentation = data.pixelRepresentation;
    incoming.bitsStored = data.bitsStored;
    incoming.record = RecordOf(data);
    incoming.record->imageRotation = rotation;
    incoming.record->imageHorizontalFlip = horizontalFlip;
    return incoming;
}

void CXDIPP::ShowVolume(IncomingImage& incoming) {
    incoming.minValue = minValue;
    incoming.maxValue = maxValue;
    Prepare(incoming);
    Commit(incoming);
}

QUORVEX_MESSAGE CXDIPP::Initialize(CDcmObject* object, CLData* data, CSize newViewSize,
                                   int newMaxValue, int newMinValue, int imageKind) {
    return Answer(kNoPixels, [&] {
        const auto volume = ReadVolume(data);
        if (!volume) return kNoPixels;
        IncomingImage incoming = FromVolume(*data, newViewSize);
        TakePixels(incoming, *volume, object, imageKind, SpanOfCaller(newMinValue, newMaxValue));
        if (object != nullptr) {
            incoming.headerOverlays =
                HeaderOverlays(*object, volume->pixels, incoming.imageSize, incoming.bytesPerPixel);
        }
        PixelBlock overlays;
        if (imageKind == kOverlayImage) {
            overlays = OverlayLayer(object, EmbeddedPlaneOf(*data), incoming.imageSize,
                                    incoming.bytesPerPixel);
        }
        const bool makesColours = imageKind == kSupplementalImage && object != nullptr;
        PixelBlock colours;
        if (makesColours) colours = SupplementalLayer(*volume, *object);

        ShowVolume(incoming);
        renderMode = RenderModeOf(imageKind);
        if (imageKind == kOverlayImage) overlayImage = std::move(overlays);
        if (makesColours) paletteImage = std::move(colours);
        return QVM_SUCCESS;
    });
}

QUORVEX_MESSAGE CXDIPP::Initialize(CLData* data, CSize newViewSize, int newMaxValue,
                                   int newMinValue) {
    return Answer(kNoPixels, [&] {
        const auto volume = ReadVolume(data);
        if (!volume) return kNoPixels;
        IncomingImage incoming = FromVolume(*data, newViewSize);
        TakeCallersFrame(incoming, volume->pixels, volume->header,
                         SpanOfCaller(newMinValue, newMaxValue));
        incoming.record->pixelBitDepth = data->bitsAllocated;
        ShowVolume(incoming);
        return QVM_SUCCESS;
    });
}

}  // namespace quorvex
