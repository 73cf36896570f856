#include "pipeline/recipe/standard_incoming.h"

#include "pipeline/displayed_image.h"
#include "pipeline/intake/rgb_frame.h"
#include "pipeline/intake/stored_elements.h"
#include "pipeline/pixel_elements.h"
#include "pipeline/pixel_header.h"
#include "pipeline/recipe/palette_colours.h"
#include "quorvex/CXGSPSInfo.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

namespace quorvex {

namespace {

constexpr int kColourBytes = 3;
constexpr int kQuarter = 90;
constexpr int kWidestTable = 2;  ///< bytes of an element

/// Lowest and highest of the finite elements that are no padding.
template <class Element>
ExactSpan SpanOf(const PixelBlock& block, const std::optional<RealPaddingRange>& padding) {
    ExactSpan span{std::numeric_limits<double>::infinity(),
                   -std::numeric_limits<double>::infinity()};
    const std::size_t count = block.size / sizeof(Element);
    for (std::size_t i = 0; i < count; ++i) {
        const auto value = static_cast<double>(ElementAt<Element>(block.data.get(), i));
        if (!std::isfinite(value) || (padding && padding->Holds(value))) continue;
        span.low = std::min(span.low, value);
        span.high = std::max(span.high, value);
    }
    return span;
}

}  // namespace

StoredForm FormOf(const PixelHeader& header) {
    constexpr int kRealBits = 32;  // as of signed numbers that are wide enough
    if (header.IsReal()) return {kRealBits, true};
    const int most = header.Layout().ElementBytes() * 8;
    return {std::clamp<int>(header.bitsStored, 1, most), header.pixelRepresentation != 0};
}

void StandardIncoming::TakeGrey(PixelBlock frame, const PixelHeader& header) {
    const StoredLayout layout = header.Layout();
    ElementFrame stored = StoredElements(std::move(frame), layout);
    image.stored = stored.span;
    pixels = std::move(stored.elements);
    bytesPerPixel = layout.ElementBytes();
}

bool StandardIncoming::TakeReal(PixelBlock frame, const PixelHeader& header) {
    const bool isDouble = header.sampleType == SampleType::kFloat64;
    bytesPerPixel = isDouble ? sizeof(double) : sizeof(float);
    if (frame.size / static_cast<std::size_t>(bytesPerPixel) < header.PixelCount()) return false;
    image.real = isDouble ? SpanOf<double>(frame, image.realPadding)
                          : SpanOf<float>(frame, image.realPadding);
    pixels = std::move(frame);
    return true;
}

void StandardIncoming::TakeColour(PixelBlock frame, const PixelHeader& header) {
    image.isGrey = false;
    pixels = RgbFrame(std::move(frame), header);
    bytesPerPixel = kColourBytes;
}

bool StandardIncoming::TakePalette(PixelBlock frame, const PixelHeader& header,
                                   CDcmObject& object) {
    auto palette = ReadExactPalette(object, header.pixelRepresentation != 0);
    if (!palette) return false;
    TakeGrey(std::move(frame), header);
    pixels = ColouredBy(*palette, pixels, bytesPerPixel, image.form.isSigned);
    image.isGrey = false;
    bytesPerPixel = kColourBytes;
    return true;
}

void StandardIncoming::TakeSupplement(CDcmObject& object) {
    if (!image.isGrey || bytesPerPixel > kWidestTable) return;
    image.colours = SupplementalColoursOf(object, image.form, bytesPerPixel);
}

void TakeAttitude(DisplayedImage& shown, const StandardImage& image,
                  const CXGSPSInfo& record) noexcept {
    if (image.applied) {
        shown.rotation = kQuarter * image.applied->quarterTurns;
        shown.horizontalFlip = image.applied->isFlipped ? 1 : 0;
    } else {
        shown.rotation = record.imageRotation;
        shown.horizontalFlip = record.imageHorizontalFlip;
    }
}

void StandardIncoming::Commit(DisplayedImage& shown, CSize viewSize) noexcept {
    if (shown.shrunk) shown.shrunk->isOfEarlierFrame = true;
    shown.imageSize = size;
    shown.viewSize = viewSize;
    shown.pixels = std::move(pixels);
    shown.bytesPerPixel = bytesPerPixel;
    shown.bitsStored = static_cast<unsigned short>(image.form.bitsStored);
    shown.pixelRepresentation = image.form.isSigned ? 1 : 0;
    TakeAttitude(shown, image, *record);
    shown.presentation = std::move(record);
    shown.standard = std::move(image);
    LayOutByStandard(shown);
}

}  // namespace quorvex
