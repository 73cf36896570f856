#include "foundation/types/answer.h"
#include "parser/palette/palette_image.h"
#include "pipeline/colour/supplemental_palette.h"
#include "pipeline/intake/callers_frame.h"
#include "pipeline/intake/incoming_image.h"
#include "pipeline/intake/presentation_record.h"
#include "pipeline/layers/overlay_layer.h"
#include "pipeline/pixel_header.h"
#include "pipeline/recipe/callers_pixels.h"
#include "quorvex/CLData.h"
#include "quorvex/CXDIPP.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXImageCreator.h"

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

constexpr ImageKind KindOf(int imageKind) {
    switch (imageKind) {
        case kPaletteImage:
            return ImageKind::kPalette;
        case kSupplementalImage:
            return ImageKind::kSupplemental;
        case kOverlayImage:
            return ImageKind::kOverlays;
        default:
            return ImageKind::kPlain;
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
    ColourByPalette(palette, volume.pixels, volume.IndexBytes(), rgb.Bytes());
    return rgb;
}

PixelBlock SupplementalLayer(const Volume& volume, CDcmObject& object) {
    const auto palette = LoadPalette(object);
    if (!palette || !volume.header.IsGrey()) return {};
    PixelBlock layer = ClearedPixelBlock(volume.header.PixelCount() * kChannels);
    const auto rules = RulesForDisplay(*palette, volume.header.pixelRepresentation != 0);
    ColourByTable(SupplementalColours(*palette, volume.IndexBytes(), rules), volume.pixels,
                  volume.IndexBytes(), layer.Bytes());
    return layer;
}

std::span<const unsigned char> EmbeddedPlaneOf(const CLData& data) {
    if (data.overlayPlane == nullptr) return {};
    return {data.overlayPlane, data.overlayPlaneSize};
}

// Grey under colours keeps to bytes, unless its pixels are wider.
ValueSpan RangeOfKind(int imageKind, const Volume& volume, ValueSpan stated) {
    if (imageKind != kSupplementalImage) return stated;
    if (volume.header.bitsAllocated <= 8) return kByteValues;
    return {std::min(stated.low, kByteValues.low), std::max(stated.high, kByteValues.high)};
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

/// All of a volume's image but its pixels. Rotation and flip stay those of the image on show.
IncomingImage FromVolume(const CLData& data, CSize viewSize, const DisplayedImage& current) {
    IncomingImage incoming;
    incoming.imageSize = {data.width, data.height};
    incoming.viewSize = viewSize;
    incoming.pixelRepresentation = data.pixelRepresentation;
    incoming.bitsStored = data.bitsStored;
    incoming.record = RecordOf(data);
    incoming.record->imageRotation = current.rotation;
    incoming.record->imageHorizontalFlip = current.horizontalFlip;
    return incoming;
}

/// The layers that a kind of image brings.
struct Layers {
    std::optional<PixelBlock> overlays;
    std::optional<PixelBlock> colours;
};

Layers LayersOf(const Volume& volume, const CLData& data, CDcmObject* object, int imageKind,
                int bytesPerPixel) {
    Layers layers;
    if (imageKind == kOverlayImage) {
        layers.overlays =
            OverlayLayer(object, EmbeddedPlaneOf(data), volume.header.size, bytesPerPixel);
    }
    if (imageKind == kSupplementalImage && object != nullptr) {
        layers.colours = SupplementalLayer(volume, *object);
    }
    return layers;
}

}  // namespace

QUORVEX_MESSAGE CXDIPP::Initialize(CDcmObject* object, CLData* data, CSize viewSize, int maxValue,
                                   int minValue, int imageKind) {
    return Answer(kNoPixels, [&] {
        const auto volume = ReadVolume(data);
        if (!volume) return kNoPixels;
        if (image_->rules == Rules::kStandard) {
            ShowPixelsByStandard(*image_,
                                 {.header = volume->header,
                                  .pixels = volume->pixels,
                                  .range = SpanOfCaller(minValue, maxValue),
                                  .object = object,
                                  .data = data,
                                  .kind = KindOf(imageKind)},
                                 viewSize);
            return QVM_SUCCESS;
        }
        IncomingImage incoming = FromVolume(*data, viewSize, *image_);
        TakePixels(incoming, *volume, object, imageKind, SpanOfCaller(minValue, maxValue));
        if (object != nullptr) {
            incoming.headerOverlays =
                HeaderOverlays(*object, volume->pixels, incoming.imageSize, incoming.bytesPerPixel);
        }
        Layers layers = LayersOf(*volume, *data, object, imageKind, incoming.bytesPerPixel);
        incoming.Replace(*image_);
        image_->renderMode = RenderModeOf(imageKind);
        if (layers.overlays) image_->overlayImage = std::move(*layers.overlays);
        if (layers.colours) image_->paletteImage = std::move(*layers.colours);
        return QVM_SUCCESS;
    });
}

QUORVEX_MESSAGE CXDIPP::Initialize(CLData* data, CSize viewSize, int maxValue, int minValue) {
    return Answer(kNoPixels, [&] {
        const auto volume = ReadVolume(data);
        if (!volume) return kNoPixels;
        if (image_->rules == Rules::kStandard) {
            ShowPixelsByStandard(*image_,
                                 {.header = volume->header,
                                  .pixels = volume->pixels,
                                  .range = SpanOfCaller(minValue, maxValue),
                                  .data = data},
                                 viewSize);
            return QVM_SUCCESS;
        }
        IncomingImage incoming = FromVolume(*data, viewSize, *image_);
        TakeCallersFrame(incoming, volume->pixels, volume->header,
                         SpanOfCaller(minValue, maxValue));
        incoming.record->pixelBitDepth = data->bitsAllocated;
        incoming.Replace(*image_);
        return QVM_SUCCESS;
    });
}

}  // namespace quorvex
