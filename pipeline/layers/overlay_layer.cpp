#include "pipeline/layers/overlay_layer.h"

#include "foundation/dicom/model/tags.h"
#include "foundation/types/block.h"
#include "foundation/types/checked_size.h"
#include "pipeline/layers/embedded_overlay.h"
#include "pipeline/layers/overlay_image.h"
#include "pipeline/layers/overlay_planes.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace quorvex {

namespace {

constexpr int kMostPixels = std::numeric_limits<unsigned short>::max();

PixelBlock ClearedLayer(CSize size, std::size_t pixelBytes) {
    const auto bytes = CheckedProduct(size.cx, size.cy, pixelBytes);
    if (!bytes) throw BlockTooLarge();
    return ClearedPixelBlock(*bytes);
}

void ReverseRows(std::span<unsigned char> image, std::size_t rows) {
    if (rows == 0) return;
    const std::size_t rowBytes = image.size() / rows;
    for (std::size_t top = 0, bottom = rows - 1; top < bottom; ++top, --bottom) {
        const auto upper = image.subspan(top * rowBytes, rowBytes);
        std::swap_ranges(upper.begin(), upper.end(),
                         image.subspan(bottom * rowBytes, rowBytes).begin());
    }
}

void SwapRedAndBlue(std::span<unsigned char> image) {
    for (std::size_t i = 0; i + 2 < image.size(); i += 3) std::swap(image[i], image[i + 2]);
}

}  // namespace

PixelBlock OverlayLayer(const CDcmObject* object, std::span<const unsigned char> embedded,
                        CSize imageSize, int imageBytesPerPixel) {
    const bool isColour = imageBytesPerPixel > 2;
    PixelBlock layer = ClearedLayer(imageSize, isColour ? 3 : 1);
    if (object == nullptr || imageSize.cx > kMostPixels || imageSize.cy > kMostPixels) return layer;
    const OverlayPicture picture{
        {static_cast<unsigned short>(imageSize.cy), static_cast<unsigned short>(imageSize.cx)},
        isColour ? std::size_t{3} : std::size_t{1}};
    const std::span<unsigned char> image = layer.Bytes();
    BurnOverlays(*object, embedded, picture, image);
    ReverseRows(image, picture.size.rows);
    if (isColour) SwapRedAndBlue(image);
    return layer;
}

PixelBlock HeaderOverlays(const CDcmObject& object, std::span<const unsigned char> frame,
                          CSize imageSize, int imageBytesPerPixel) {
    bool hasPlanes = false;
    for (auto group = tag::kFirstOverlayGroup; group <= tag::kLastOverlayGroup && !hasPlanes;
         group += 2) {
        hasPlanes = ReadOverlayPlane(object, group, /*needsBitPosition=*/true).has_value();
    }
    if (!hasPlanes) return {};
    return OverlayLayer(&object, EmbeddedOverlays(object, frame), imageSize, imageBytesPerPixel);
}

}  // namespace quorvex
