#include "pipeline/layers/shown_shutter.h"

#include "foundation/types/block.h"
#include "foundation/types/checked_size.h"
#include "quorvex/CXGSPSInfo.h"
#include "quorvex/CXImageCreator.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <span>

namespace quorvex {

namespace {

constexpr std::size_t kChannels = 3;
constexpr int kWidestGrey = 2;

std::span<const std::uint8_t> MaskOf(const _IMAGE_INFO& job, const CXGSPSInfo& record) {
    const auto pixelCount =
        static_cast<std::size_t>(job.imageWidth) * static_cast<std::size_t>(job.imageHeight);
    return {record.shutterMask, pixelCount};
}

PixelBlock ColourBlock(std::size_t pixelCount) {
    const auto size = CheckedProduct(pixelCount, kChannels);
    if (!size) throw BlockTooLarge();
    return NewPixelBlock(*size);
}

// Colours as the table shows them, so that the value under the mask needs none.
PixelBlock ShownColours(const _IMAGE_INFO& job, std::span<const std::uint8_t> mask,
                        unsigned char hidden) {
    PixelBlock shown = ColourBlock(mask.size());
    for (std::size_t i = 0; i < mask.size(); ++i) {
        const unsigned char* const from = job.pixels + i * kChannels;
        unsigned char* const to = shown.data.get() + i * kChannels;
        for (std::size_t channel = 0; channel < kChannels; ++channel) {
            to[channel] = mask[i] != 0 ? hidden : job.lut[from[channel]];
        }
    }
    return shown;
}

// Where a palette has no colour, the grey image shows through, and with it the shutter.
PixelBlock UncoveredPalette(const _IMAGE_INFO& job, std::span<const std::uint8_t> mask) {
    PixelBlock palette = ColourBlock(mask.size());
    std::memcpy(palette.data.get(), job.paletteImage, palette.size);
    for (std::size_t i = 0; i < mask.size(); ++i) {
        if (mask[i] != 0) std::memset(palette.data.get() + i * kChannels, 0, kChannels);
    }
    return palette;
}

void PutOverColour(_IMAGE_INFO& job, std::span<const std::uint8_t> mask, ShutteredLayers& layers) {
    layers.colours = ShownColours(job, mask, static_cast<unsigned char>(job.shutterValue));
    std::iota(layers.plainTable.begin(), layers.plainTable.end(), static_cast<unsigned char>(0));
    job.pixels = layers.colours.data.get();
    job.lut = layers.plainTable.data();
}

void PutOverGrey(_IMAGE_INFO& job, const CXGSPSInfo& record, ShutteredLayers& layers) {
    job.shutterMask = record.shutterMask;
    if (job.renderMode != kRenderSupplementalPalette || job.paletteImage == nullptr) return;
    layers.palette = UncoveredPalette(job, MaskOf(job, record));
    job.paletteImage = layers.palette.data.get();
}

}  // namespace

std::unique_ptr<ShutteredLayers> PutShutter(_IMAGE_INFO& job, const CXGSPSInfo& record) {
    if (record.shutterMask == nullptr) return nullptr;
    auto layers = std::make_unique<ShutteredLayers>();
    job.shutterValue = record.shutterPresentationValue >> 8;
    if (job.bytesPerPixel > kWidestGrey) {
        PutOverColour(job, MaskOf(job, record), *layers);
    } else {
        PutOverGrey(job, record, *layers);
    }
    return layers;
}

}  // namespace quorvex
