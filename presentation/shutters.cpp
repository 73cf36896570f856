#include "foundation/dicom/model/attributes.h"
#include "foundation/platform/region.h"
#include "foundation/types/block.h"
#include "foundation/types/checked_size.h"
#include "foundation/types/limits.h"
#include "foundation/types/saturate.h"
#include "presentation/presentation_reader.h"
#include "presentation/shutter_size.h"
#include "presentation/words.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <span>
#include <utility>

namespace quorvex {
namespace {

constexpr ShapePaint kShown{.inside = 0, .outside = 255};
constexpr std::uint32_t kOverlayDataElement = 0x3000;

/// A mask in the making: its block, still undefined, and the picture that it is.
struct MaskBlock {
    HeapBlock block;
    ByteMask mask;
};

/// A state of a few bytes can claim any size; a large mask is made only for an image of that size.
bool IsPlausibleMask(CSize size, const CXGSPSInfo& info) {
    const auto bytes = CheckedProduct(size.cx, size.cy);
    return size == CSize{info.imageColumns, info.imageRows} ||
           (bytes && *bytes <= kPictureAllowance) || RefuseBy(Limit::kLargestPicture);
}

/// Nothing where the mask is not plausible; throws std::bad_alloc where there is no memory for it.
std::optional<MaskBlock> NewMask(const CDcmObject& object, const CXGSPSInfo& info) {
    const CSize size = ShutterMaskSize(object, info);
    if (!IsPlausibleMask(size, info)) return std::nullopt;
    HeapBlock block(static_cast<std::size_t>(size.cx) * static_cast<std::size_t>(size.cy));
    const ByteMask mask{block.Bytes(), size.cx, size.cy};
    return MaskBlock{std::move(block), mask};
}

void ShutAll(const ByteMask& mask) {
    std::ranges::fill(mask.bytes, kShown.outside);
}

bool HasFewCrossings(const ByteMask& mask, std::span<const CPoint> polygon) {
    std::int64_t crossings = 0;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const auto [top, bottom] = std::minmax(polygon[i].y, polygon[(i + 1) % polygon.size()].y);
        crossings += std::clamp<std::int64_t>(bottom, 0, mask.rows) -
                     std::clamp<std::int64_t>(top, 0, mask.rows);
    }
    return crossings <= kMostPolygonCrossings || RefuseBy(Limit::kPolygonCrossings);
}

/// Where the bytes of an overlay go, and how many are there by now.
struct OverlayCopyContext {
    std::span<std::uint8_t> destination;
    std::size_t written = 0;
};

MC_STATUS CopyOverlayBlock(int /*messageId*/, std::uint32_t /*tag*/, void* user, int length,
                           void* data, int /*first*/, int /*last*/) {
    auto& context = *static_cast<OverlayCopyContext*>(user);
    const std::span block(static_cast<const std::uint8_t*>(data),
                          static_cast<std::size_t>(std::max(length, 0)));
    const auto room = context.destination.subspan(context.written);
    const std::size_t fitting = std::min(block.size(), room.size());
    std::ranges::copy(block.first(fitting), room.begin());
    context.written += fitting;
    return kMcContinue;
}

std::int32_t ShapesOf(const CDcmObject& object) {
    std::uint32_t shapes = 0;
    ForEachValue<CString>(object, tag::kShutterShape, [&](const CString& word) {
        const auto place = PlaceOf(word, kShutterWords);
        if (place) shapes |= 1U << static_cast<unsigned>(*place);
    });
    return static_cast<std::int32_t>(shapes);
}

/// The geometry of several shapes, for writing: no mask is made of them.
void ReadGeometry(const CDcmObject& object, CXGSPSInfo& info) {
    const auto take = [&](std::uint32_t tag, std::int32_t& field) {
        field = Read<int>(object, tag).value_or(field);
    };
    take(tag::kShutterLeftVerticalEdge, info.shutterLeft);
    take(tag::kShutterRightVerticalEdge, info.shutterRight);
    take(tag::kShutterUpperHorizontalEdge, info.shutterUpper);
    take(tag::kShutterLowerHorizontalEdge, info.shutterLower);
    take(tag::kRadiusOfCircularShutter, info.shutterRadius);
    if (const auto centre = ReadPair<int>(object, tag::kCenterOfCircularShutter)) {
        info.shutterCenterRow = centre->first;
        info.shutterCenterColumn = centre->second;
    }
    ForEachPair<int>(object, tag::kVerticesOfThePolygonalShutter, [&](const auto& vertex) {
        info.shutterVertices.push_back({.x = vertex.second, .y = vertex.first});
    });
}

}  // namespace

CSize ShutterMaskSize(const CDcmObject& object, const CXGSPSInfo& info) {
    const auto rows = Read<unsigned short>(object, tag::kRows);
    const auto columns = Read<unsigned short>(object, tag::kColumns);
    if (rows) return {columns.value_or(0), *rows};
    return {static_cast<unsigned short>(info.imageColumns),
            static_cast<unsigned short>(info.imageRows)};
}

void PresentationReader::GetShutter() {
    using Maker = void (PresentationReader::*)();
    static constexpr Maker kMakers[kShutterWords.size()] = {
        &PresentationReader::MakeRectangleShutter, &PresentationReader::MakeCircularShutter,
        &PresentationReader::MakePolygonalShutter, &PresentationReader::MakeBitmapShutter};
    info_.shutterPresentationValue = 0;
    info_.shutterShapes = ShapesOf(object_);
    const auto shape = Read<CString>(object_, tag::kShutterShape);
    if (!shape) {
        info_.shutterMask = nullptr;
        return;
    }
    int shapeCount = 0;
    object_.GetValueCount(tag::kShutterShape, shapeCount);
    const auto place = PlaceOf(*shape, kShutterWords);
    if (shapeCount == 1 && place) (this->*kMakers[*place])();
    if (shapeCount > 1) ReadGeometry(object_, info_);
    info_.shutterPresentationValue =
        Read<unsigned short>(object_, tag::kShutterPresentationValue).value_or(0);
}

void PresentationReader::MakeRectangleShutter() {
    auto shutter = NewMask(object_, info_);
    const auto left = Read<int>(object_, tag::kShutterLeftVerticalEdge);
    const auto right = Read<int>(object_, tag::kShutterRightVerticalEdge);
    const auto upper = Read<int>(object_, tag::kShutterUpperHorizontalEdge);
    const auto lower = Read<int>(object_, tag::kShutterLowerHorizontalEdge);
    info_.shutterLeft = left.value_or(info_.shutterLeft);
    info_.shutterRight = right.value_or(info_.shutterRight);
    info_.shutterUpper = upper.value_or(info_.shutterUpper);
    info_.shutterLower = lower.value_or(info_.shutterLower);
    if (!shutter) return;
    if (lower) {
        // An edge that is not there does not bound the rectangle.
        const auto columns = static_cast<std::int32_t>(shutter->mask.columns);
        const CRect open{left.value_or(0), upper.value_or(0), right.value_or(columns), *lower};
        PaintRectangle(shutter->mask, open, kShown);
    } else {
        ShutAll(shutter->mask);
    }
    info_.shutterMask = shutter->block.Release();
}

void PresentationReader::MakeCircularShutter() {
    auto shutter = NewMask(object_, info_);
    const auto row = Read<int>(object_, tag::kCenterOfCircularShutter);
    const auto center = ReadPair<int>(object_, tag::kCenterOfCircularShutter);
    const auto radius = Read<int>(object_, tag::kRadiusOfCircularShutter);
    info_.shutterCenterRow = row.value_or(info_.shutterCenterRow);
    if (center) info_.shutterCenterColumn = center->second;
    info_.shutterRadius = radius.value_or(info_.shutterRadius);
    if (!shutter) return;
    if (center && radius) {
        const std::int64_t reach = std::int64_t{*radius} - 1;
        const CRect box{SaturateToInt(center->second - reach), SaturateToInt(center->first - reach),
                        SaturateToInt(center->second + reach),
                        SaturateToInt(center->first + reach)};
        PaintEllipse(shutter->mask, box, kShown);
    } else {
        ShutAll(shutter->mask);
    }
    info_.shutterMask = shutter->block.Release();
}

void PresentationReader::MakePolygonalShutter() {
    auto shutter = NewMask(object_, info_);
    ForEachPair<int>(object_, tag::kVerticesOfThePolygonalShutter, [&](const auto& vertex) {
        info_.shutterVertices.push_back({.x = vertex.second, .y = vertex.first});
    });
    if (!shutter || !HasFewCrossings(shutter->mask, info_.shutterVertices)) return;
    PaintPolygon(shutter->mask, info_.shutterVertices, kShown);
    info_.shutterMask = shutter->block.Release();
}

void PresentationReader::MakeBitmapShutter() {
    auto shutter = NewMask(object_, info_);
    if (!shutter) return;
    const std::span<std::uint8_t> pixels = shutter->mask.bytes;
    HeapBlock bits((pixels.size() + 7) / 8);
    std::ranges::fill(bits.Bytes(), std::uint8_t{0});
    const std::uint32_t group =
        Read<unsigned short>(object_, tag::kShutterOverlayGroup).value_or(0);
    OverlayCopyContext context{bits.Bytes()};
    object_.GetValue(group << 16 | kOverlayDataElement, &context, &CopyOverlayBlock);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        pixels[i] = static_cast<std::uint8_t>(bits.Bytes()[i / 8] >> (i % 8) & 1);
    }
    info_.shutterMask = shutter->block.Release();
}

}  // namespace quorvex
