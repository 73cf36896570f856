#include "foundation/dicom/model/attributes.h"
#include "foundation/dicom/model/tags.h"
#include "foundation/platform/region.h"
#include "foundation/types/answer.h"
#include "foundation/types/block.h"
#include "foundation/types/checked_size.h"
#include "foundation/types/limits.h"
#include "foundation/types/saturate.h"
#include "presentation/shutter_size.h"
#include "quorvex/CXGSPSObject.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <span>

namespace quorvex {
namespace {

constexpr ShapePaint kShown{.inside = 0, .outside = 255};
constexpr std::uint32_t kOverlayDataElement = 0x3000;

/// A mask in the making: its block, still undefined, and the picture that it is.
struct MaskBlock {
    HeapBlock block;
    ByteMask mask;
};

/// A state of a few bytes can claim any size; a mask that large is made only for an image of that size.
bool IsPlausibleMask(CSize size, const CXGSPSInfo& info) {
    const auto bytes = CheckedProduct(size.cx, size.cy);
    return size == CSize{info.imageColumns, info.imageRows} ||
           (bytes && *bytes <= kPictureForAnybody) || RefuseBy(Limit::kLargestPicture);
}

/// Throws std::bad_alloc where there is no memory for a mask, or the mask is not plausible.
MaskBlock NewMask(const CDcmObject& object, const CXGSPSInfo& info) {
    const CSize size = ShutterMaskSize(object, info);
    if (!IsPlausibleMask(size, info)) throw std::bad_alloc();
    HeapBlock block(static_cast<std::size_t>(size.cx) * static_cast<std::size_t>(size.cy));
    const ByteMask mask{block.Bytes(), size.cx, size.cy};
    return {std::move(block), mask};
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

/// Stores the value of an attribute where it is there, and tells whether it is.
bool TakeInt(const CDcmObject& object, std::uint32_t valueTag, std::int32_t& value) {
    const auto read = Read<int>(object, valueTag);
    if (read) value = *read;
    return read.has_value();
}

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

}  // namespace

CSize ShutterMaskSize(const CDcmObject& object, const CXGSPSInfo& info) {
    const auto rows = Read<unsigned short>(object, tag::kRows);
    const auto columns = Read<unsigned short>(object, tag::kColumns);
    if (rows) return {columns.value_or(0), *rows};
    return {static_cast<unsigned short>(info.imageColumns),
            static_cast<unsigned short>(info.imageRows)};
}

int CXGSPSObject::GetShutter(CDcmObject* object, CXGSPSInfo* info) {
    using Maker = int (CXGSPSObject::*)(CDcmObject*, CXGSPSInfo*);
    static constexpr struct {
        const char* shape;
        Maker make;
    } kMakers[] = {
        {"RECTANGULAR", &CXGSPSObject::MakeRectangleShutter},
        {"CIRCULAR", &CXGSPSObject::MakeCircularShutter},
        {"POLYGONAL", &CXGSPSObject::MakePolygonalShutter},
        {"BITMAP", &CXGSPSObject::MakeBitmapShutter},
    };
    const auto shape = Read<CString>(*object, tag::kShutterShape);
    info->shutterPresentationValue = 0;
    if (!shape) {
        info->shutterMask = nullptr;
        return 1;
    }
    int shapeCount = 0;
    object->GetValueCount(tag::kShutterShape, shapeCount);
    for (const auto& maker : kMakers) {
        // A mask larger than any block is none, and the reading goes on.
        if (shapeCount == 1 && *shape == CString(maker.shape)) {
            static_cast<void>(Answer(0, [&] { return (this->*maker.make)(object, info); }));
        }
    }
    info->shutterPresentationValue =
        Read<unsigned short>(*object, tag::kShutterPresentationValue).value_or(0);
    return 1;
}

int CXGSPSObject::MakeRectangleShutter(CDcmObject* object, CXGSPSInfo* info) {
    MaskBlock shutter = NewMask(*object, *info);
    // An edge that is not there does not bound the rectangle.
    CRect open{0, 0, static_cast<std::int32_t>(shutter.mask.columns), 0};
    if (TakeInt(*object, tag::kShutterLeftVerticalEdge, info->shutterLeft))
        open.left = info->shutterLeft;
    if (TakeInt(*object, tag::kShutterRightVerticalEdge, info->shutterRight))
        open.right = info->shutterRight;
    if (TakeInt(*object, tag::kShutterUpperHorizontalEdge, info->shutterUpper))
        open.top = info->shutterUpper;
    if (TakeInt(*object, tag::kShutterLowerHorizontalEdge, info->shutterLower)) {
        open.bottom = info->shutterLower;
        PaintRectangle(shutter.mask, open, kShown);
    } else {
        ShutAll(shutter.mask);
    }
    info->shutterMask = shutter.block.Release();
    return 1;
}

int CXGSPSObject::MakeCircularShutter(CDcmObject* object, CXGSPSInfo* info) {
    MaskBlock shutter = NewMask(*object, *info);
    const auto center = ReadPair<int>(*object, tag::kCenterOfCircularShutter);
    if (center) {
        info->shutterCenterRow = center->first;
        info->shutterCenterColumn = center->second;
    }
    if (TakeInt(*object, tag::kRadiusOfCircularShutter, info->shutterRadius) && center) {
        const std::int64_t reach = std::int64_t{info->shutterRadius} - 1;
        const CRect box{SaturateToInt(center->second - reach), SaturateToInt(center->first - reach),
                        SaturateToInt(center->second + reach),
                        SaturateToInt(center->first + reach)};
        PaintEllipse(shutter.mask, box, kShown);
    } else {
        ShutAll(shutter.mask);
    }
    info->shutterMask = shutter.block.Release();
    return 1;
}

int CXGSPSObject::MakePolygonalShutter(CDcmObject* object, CXGSPSInfo* info) {
    MaskBlock shutter = NewMask(*object, *info);
    ForEachPair<int>(*object, tag::kVerticesOfThePolygonalShutter,
                     [&](const ValuePair<int>& vertex) {
                         info->shutterVertices.push_back({.x = vertex.second, .y = vertex.first});
                     });
    if (!HasFewCrossings(shutter.mask, info->shutterVertices)) return 0;
    PaintPolygon(shutter.mask, info->shutterVertices, kShown);
    info->shutterMask = shutter.block.Release();
    return 1;
}

int CXGSPSObject::MakeBitmapShutter(CDcmObject* object, CXGSPSInfo* info) {
    MaskBlock shutter = NewMask(*object, *info);
    const std::span<std::uint8_t> pixels = shutter.mask.bytes;
    HeapBlock bits((pixels.size() + 7) / 8);
    std::ranges::fill(bits.Bytes(), std::uint8_t{0});
    const std::uint32_t group =
        Read<unsigned short>(*object, tag::kShutterOverlayGroup).value_or(0);
    OverlayCopyContext context{bits.Bytes()};
    object->GetValue(group << 16 | kOverlayDataElement, &context, &CopyOverlayBlock);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        pixels[i] = static_cast<std::uint8_t>(bits.Bytes()[i / 8] >> (i % 8) & 1);
    }
    info->shutterMask = shutter.block.Release();
    return 1;
}

}  // namespace quorvex
