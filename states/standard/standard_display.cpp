// Displayed areas and shutters.
#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/object/element_copy.h"
#include "presentation/presentation_reader.h"
#include "presentation/words.h"
#include "states/attribute_writing.h"
#include "states/shutter_writing.h"
#include "states/standard/earlier_state.h"
#include "states/standard/standard_state.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace quorvex {
namespace {

enum SizeModePlace : std::int32_t { kScaleToFit = 0, kTrueSize = 1, kMagnify = 2 };

struct Corners {
    CPoint topLeft;
    CPoint bottomRight;
};

CRect AreaOf(const ImageState& image) {
    const CXGSPSInfo& info = *image.record;
    if (info.displayedAreaRight == 0 && info.displayedAreaBottom == 0)
        return {1, 1, image.columns, image.rows};
    const auto [left, right] = std::minmax(info.displayedAreaLeft, info.displayedAreaRight);
    const auto [top, bottom] = std::minmax(info.displayedAreaTop, info.displayedAreaBottom);
    return {left, top, right, bottom};
}

/// The pixels that lie in two corners of what is seen: turned clockwise, then mirrored (PS3.3
/// C.10.4).
Corners CornersOf(const CRect& area, int rotation, bool isFlipped) {
    // Clockwise, as they lie in the stored image; a quarter turn brings each to the next place.
    const CPoint stored[] = {{area.left, area.top},
                             {area.right, area.top},
                             {area.right, area.bottom},
                             {area.left, area.bottom}};
    const auto turns = static_cast<unsigned>((rotation % 360 + 360) % 360 / 90);
    const auto seenAt = [&](unsigned place) { return stored[(place + 4 - turns) % 4]; };
    if (isFlipped) return {seenAt(1), seenAt(3)};
    return {seenAt(0), seenAt(2)};
}

bool HasSpacing(const CXGSPSInfo& info) {
    return info.pixelSpacingX > 0.0 && info.pixelSpacingY > 0.0;
}

/// In whole numbers, as an integer string has them.
std::pair<int, int> WholeRatio(double vertical, double horizontal) {
    constexpr double kFinest = 1000.0;
    if (!(vertical > 0.0) || !(horizontal > 0.0)) return {1, 1};
    const bool areWhole = vertical == std::floor(vertical) && horizontal == std::floor(horizontal);
    const double scale = areWhole ? 1.0 : kFinest;
    const auto whole = [&](double value) {
        return static_cast<int>(std::clamp(std::round(value * scale), 1.0, 1e9));
    };
    const int first = whole(vertical);
    const int second = whole(horizontal);
    const int common = areWhole ? 1 : std::gcd(first, second);
    return {first / common, second / common};
}

/// The shape of a pixel is given once: by its size where that is known, else by its aspect.
void WriteSize(const CXGSPSInfo& info, CDcmItem& item) {
    const bool isTrueSize = info.presentationSizeMode == kTrueSize && HasSpacing(info);
    const bool isMagnified = info.presentationSizeMode == kMagnify;
    const int mode = isTrueSize ? kTrueSize : isMagnified ? kMagnify : kScaleToFit;
    item.SetValue(tag::kPresentationSizeMode, WordAt(mode, kSizeModeWords));
    if (HasSpacing(info)) {
        WritePair(item, tag::kPresentationPixelSpacing, info.pixelSpacingY, info.pixelSpacingX);
    } else {
        const auto [vertical, horizontal] =
            WholeRatio(info.pixelAspectVertical, info.pixelAspectHorizontal);
        WritePair(item, tag::kPresentationPixelAspectRatio, vertical, horizontal);
    }
    const double factor = info.presentationMagnification;
    if (isMagnified)
        item.SetValue(tag::kPresentationPixelMagnificationRatio, factor > 0.0 ? factor : 1.0);
}

enum Shape : std::uint32_t { kRectangle = 1, kCircle = 2, kPolygon = 4, kBitmap = 8 };

std::uint32_t ShapesOf(const CXGSPSInfo& info) {
    constexpr std::int32_t kLastType = 3;
    if (info.shutterType < 0 || info.shutterType > kLastType) return 0;
    if (info.shutterType > 0) return 1U << static_cast<unsigned>(info.shutterType);
    if (info.shutterShapes != 0) return static_cast<std::uint32_t>(info.shutterShapes) & 0xFU;
    return info.shutterRight > 0 || info.shutterLower > 0 ? kRectangle : 0U;
}

/// The shapes for which the record has all that they need.
std::uint32_t UsableShapes(const ImageState& image) {
    constexpr std::size_t kFewestVertices = 3;
    const CXGSPSInfo& info = *image.record;
    std::uint32_t shapes = ShapesOf(info);
    if (info.shutterVertices.size() < kFewestVertices) shapes &= ~std::uint32_t{kPolygon};
    if (info.shutterMask == nullptr) shapes &= ~std::uint32_t{kBitmap};
    // A bitmap stands alone.
    return (shapes & kBitmap) != 0 ? std::uint32_t{kBitmap} : shapes;
}

std::size_t PixelsOf(const ImageState& image) {
    return static_cast<std::size_t>(image.columns) * static_cast<std::size_t>(image.rows);
}

/// One bit a pixel, the lowest one first, in whole words.
std::vector<unsigned char> PackedMask(const ImageState& image) {
    const std::size_t pixels = PixelsOf(image);
    std::vector<unsigned char> bits((pixels + 15) / 16 * 2);
    for (std::size_t i = 0; i < pixels; ++i) {
        if (image.record->shutterMask[i] != 0)
            bits[i / 8] = static_cast<unsigned char>(bits[i / 8] | 1U << (i % 8));
    }
    return bits;
}

/// The last group where all have overlays: a shutter hides more than any of them.
std::uint32_t GroupForBitmap(const CDcmObject& target) {
    auto group = tag::kFirstOverlayGroup;
    const auto isTaken = [&] {
        return HasElement(target, tag::InGroup(group, tag::kOverlayRows)) ||
               HasElement(target, tag::InGroup(group, tag::kOverlayActivationLayer));
    };
    while (group < tag::kLastOverlayGroup && isTaken()) group += 2;
    return group;
}

void WriteBitmap(const ImageState& image, CDcmObject& target) {
    const std::uint32_t group = GroupForBitmap(target);
    const auto at = [&](std::uint32_t tag) { return tag::InGroup(group, tag); };
    for (const auto tag : {tag::kOverlayActivationLayer, tag::kNumberOfFramesInOverlay,
                           tag::kImageFrameOrigin, tag::kOverlayDescription})
        target.RemoveValue(at(tag));
    target.SetValue(tag::kShutterOverlayGroup, static_cast<unsigned short>(group));
    target.SetValue(at(tag::kOverlayRows), image.rows);
    target.SetValue(at(tag::kOverlayColumns), image.columns);
    target.SetValue(at(tag::kOverlayType), "G");
    WritePair(target, at(tag::kOverlayOrigin), 1, 1);
    target.SetValue(at(tag::kOverlayBitsAllocated), 1);
    target.SetValue(at(tag::kOverlayBitPosition), 0);
    const auto bits = PackedMask(image);
    SetWords(target, at(tag::kOverlayData), bits);
}

}  // namespace

void WriteDisplayedAreas(const StateDraft& draft) {
    const CXGSPSInfo& first = draft.First();
    // A state has to have areas; the shape of pixels is that of the image where one had none.
    const bool lacksAreas = draft.Earlier() != nullptr &&
                            !HasElement(*draft.Earlier(), tag::kDisplayedAreaSelectionSequence);
    CXGSPSInfo ofImage;
    PresentationReader(draft.source, ofImage, CString(), -1).GetPixelShape();
    ValueWriter areas(draft.target, tag::kDisplayedAreaSelectionSequence);
    for (const ImageState& image : draft.images) {
        CDcmItem item = image.Item();
        const Corners corners =
            CornersOf(AreaOf(image), first.imageRotation, first.imageHorizontalFlip != 0);
        WritePair(item, tag::kDisplayedAreaTopLeftHandCorner, corners.topLeft.x, corners.topLeft.y);
        WritePair(item, tag::kDisplayedAreaBottomRightHandCorner, corners.bottomRight.x,
                  corners.bottomRight.y);
        WriteSize(lacksAreas ? ofImage : *image.record, item);
        areas.Add(std::move(item));
    }
}

void WriteShutters(const StateDraft& draft) {
    const ImageState& image = draft.images.front();
    const CXGSPSInfo& info = *image.record;
    const std::uint32_t shapes = UsableShapes(image);
    if (shapes == 0) return;
    ValueWriter words(draft.target, tag::kShutterShape);
    for (std::size_t place = 0; place < kShutterWords.size(); ++place) {
        if ((shapes >> place & 1U) != 0) words.Add(kShutterWords[place]);
    }
    if ((shapes & kRectangle) != 0) WriteRectangle(info, draft.target);
    if ((shapes & kCircle) != 0) WriteCircle(info, draft.target);
    if ((shapes & kPolygon) != 0) WritePolygon(info, draft.target);
    const bool isBitmap = (shapes & kBitmap) != 0;
    if (isBitmap && !CopyEarlierBitmap(info, PixelsOf(image), draft.target))
        WriteBitmap(image, draft.target);
    draft.target.SetValue(tag::kShutterPresentationValue, info.shutterPresentationValue);
}

}  // namespace quorvex
