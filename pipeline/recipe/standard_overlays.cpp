#include "pipeline/recipe/standard_overlays.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/raster/bit_marks.h"
#include "pipeline/layers/embedded_overlay.h"
#include "pipeline/layers/overlay_planes.h"
#include "presentation/graphic_layers.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace quorvex {
namespace {

using Bits = std::vector<unsigned char>;

Bits ClearBits(CSize size) {
    const auto pixels = static_cast<std::size_t>(size.cx) * static_cast<std::size_t>(size.cy);
    return Bits((pixels + 7) / 8);
}

bool FitsPlane(CSize size) {
    constexpr int kMost = std::numeric_limits<unsigned short>::max();
    return size.cx <= kMost && size.cy <= kMost;
}

/// Puts what a plane has inside the image where it belongs. Its first bit is bit `firstBit`.
Bits OnImage(const OverlayPlane& plane, std::span<const unsigned char> bits, std::size_t firstBit,
             CSize size) {
    Bits marks = ClearBits(size);
    const CoveredPart part = PartCoveredBy(
        plane, {static_cast<unsigned short>(size.cy), static_cast<unsigned short>(size.cx)});
    if (part.IsEmpty()) return marks;
    const auto count = static_cast<std::size_t>(part.endColumn - part.firstColumn);
    for (std::int64_t y = part.firstRow; y < part.endRow; ++y) {
        const auto from = static_cast<std::size_t>(
            (part.skippedRows + y - part.firstRow) * plane.size.columns + part.skippedColumns);
        const auto to = static_cast<std::size_t>(y * size.cx + part.firstColumn);
        ForEachSetBit(bits, firstBit + from, count, [&](std::size_t i) {
            marks[(to + i) / 8] |= static_cast<unsigned char>(1U << ((to + i) % 8));
        });
    }
    return marks;
}

/// Which of a plane's own frames lies over a frame of the image; nothing where none does. A plane
/// that counts no frames lies over all.
std::optional<std::size_t> PlaneFrame(const CDcmObject& object, std::uint32_t group,
                                      int frameNumber) {
    const auto at = [&](std::uint32_t tag) { return tag::InGroup(group, tag); };
    const auto frames = Read<int>(object, at(tag::kNumberOfFramesInOverlay));
    if (!frames || (*frames <= 1 && !Read<int>(object, at(tag::kImageFrameOrigin)))) return 0;
    const int first = Read<int>(object, at(tag::kImageFrameOrigin)).value_or(1);
    if (frameNumber < first || frameNumber - first >= *frames) return std::nullopt;
    return static_cast<std::size_t>(frameNumber - first);
}

std::optional<Bits> MarksOfPlane(const CDcmObject& object, const OverlayPlane& plane,
                                 CSize imageSize, int frameNumber) {
    const auto frame = PlaneFrame(object, plane.group, frameNumber);
    if (!frame) return std::nullopt;
    const auto bits = ReadBytes(object, tag::InGroup(plane.group, tag::kOverlayData));
    if (!bits || bits->empty()) return std::nullopt;
    return OnImage(plane, *bits, *frame * plane.size.BitCount(), imageSize);
}

/// The plane of a group: the state's own one, else the image's.
std::optional<Bits> ActivatedBits(const CDcmObject& state, const std::vector<OwnedMarks>& ofImage,
                                  std::uint32_t group, CSize imageSize, int frameNumber) {
    const auto plane = ReadOverlayPlane(state, group, /*needsBitPosition=*/false);
    if (plane && plane->HasOwnData()) return MarksOfPlane(state, *plane, imageSize, frameNumber);
    const auto found = std::ranges::find(ofImage, group, &OwnedMarks::group);
    if (found == ofImage.end()) return std::nullopt;
    return found->bits;
}

bool HasPlanesInPixels(const CDcmObject& object) {
    for (auto group = tag::kFirstOverlayGroup; group <= tag::kLastOverlayGroup; group += 2) {
        const auto plane = ReadOverlayPlane(object, group, /*needsBitPosition=*/true);
        if (plane && !plane->HasOwnData()) return true;
    }
    return false;
}

}  // namespace

std::vector<OwnedMarks> ImageOverlays(const CDcmObject& object,
                                      std::span<const unsigned char> frame, CSize imageSize,
                                      int frameNumber, bool isColour) {
    std::vector<OwnedMarks> marks;
    if (!FitsPlane(imageSize)) return marks;
    if (HasPlanesInPixels(object)) {
        Bits bits = EmbeddedOverlays(object, frame);
        if (!bits.empty()) marks.push_back({0, std::move(bits), {255, 255, 255}});
    }
    for (auto group = tag::kFirstOverlayGroup; group <= tag::kLastOverlayGroup; group += 2) {
        const auto plane = ReadOverlayPlane(object, group, /*needsBitPosition=*/false);
        if (!plane || !plane->HasOwnData()) continue;
        auto bits = MarksOfPlane(object, *plane, imageSize, frameNumber);
        if (!bits) continue;
        const Rgb colour = isColour ? ReadOverlayColour(object, group) : Rgb{255, 255, 255};
        marks.push_back({group, *std::move(bits), colour});
    }
    return marks;
}

std::vector<OwnedMarks> StateOverlays(const CDcmObject& state,
                                      const std::vector<OwnedMarks>& ofImage, CSize imageSize,
                                      int frameNumber) {
    std::vector<OwnedMarks> marks;
    if (!FitsPlane(imageSize)) return marks;
    for (const GSPSGraphicLayer& layer : ReadGraphicLayers(state)) {
        for (auto group = tag::kFirstOverlayGroup; group <= tag::kLastOverlayGroup; group += 2) {
            const auto name =
                Read<CString>(state, tag::InGroup(group, tag::kOverlayActivationLayer));
            if (!name || name->IsEmpty() || *name != layer.name) continue;
            auto bits = ActivatedBits(state, ofImage, group, imageSize, frameNumber);
            if (bits) marks.push_back({group, *std::move(bits), ColourOf(layer)});
        }
    }
    return marks;
}

}  // namespace quorvex
