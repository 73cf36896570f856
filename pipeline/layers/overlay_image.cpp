#include "pipeline/layers/overlay_image.h"

#include "foundation/dicom/model/attributes.h"
#include "foundation/types/answer.h"
#include "pipeline/layers/overlay_planes.h"
#include "quorvex/CLData.h"
#include "quorvex/CXDIPP.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace quorvex {

namespace {

constexpr OverlayColour kWhite{255, 255, 255};

using Bits = std::span<const unsigned char>;

void BurnRow(Bits bits, std::size_t firstBit, std::size_t count, std::size_t pixelBytes,
             unsigned char* row, const OverlayColour& colour) {
    if (pixelBytes > 2) {
        ForEachSetBit(bits, firstBit, count, [&](std::size_t pixel) {
            std::copy(colour.begin(), colour.end(), row + pixel * pixelBytes);
        });
    } else {
        ForEachSetBit(bits, firstBit, count, [&](std::size_t pixel) { row[pixel] = 255; });
    }
}

void BurnPlane(const OverlayPlane& plane, Bits bits, const OverlayPicture& picture,
               const OverlayColour& colour, std::span<unsigned char> image) {
    const CoveredPart part = PartCoveredBy(plane, picture.size);
    if (part.IsEmpty()) return;
    const auto count = static_cast<std::size_t>(part.endColumn - part.firstColumn);
    for (std::int64_t y = part.firstRow; y < part.endRow; ++y) {
        const auto firstBit = static_cast<std::size_t>(
            (part.skippedRows + y - part.firstRow) * plane.size.columns + part.skippedColumns);
        const auto firstPixel =
            static_cast<std::size_t>(y * picture.size.columns + part.firstColumn);
        BurnRow(bits, firstBit, count, picture.pixelBytes,
                image.data() + firstPixel * picture.pixelBytes, colour);
    }
}

std::vector<unsigned char> Shared(Bits one, Bits other) {
    std::vector<unsigned char> shared(std::min(one.size(), other.size()));
    for (std::size_t i = 0; i < shared.size(); ++i) {
        shared[i] = static_cast<unsigned char>(one[i] & other[i]);
    }
    return shared;
}

/// Draws plane after plane, and gathers their bits.
class OverlayBurner {
public:
    OverlayBurner(const OverlayPicture& picture, std::span<unsigned char> image)
        : picture_(picture), image_(image), merged_(picture.size.ByteCount()) {}

    // The merged plane has the rows of the picture, so only the plane's own bits say where its
    // marks are. A plane that does not fit in shows only the marks that the merged plane has too.
    void Burn(const OverlayPlane& plane, Bits bits, const OverlayColour& colour) {
        MergeOverlay(merged_, bits, picture_.size, plane.size);
        if (plane.size.BitCount() <= picture_.size.BitCount()) {
            BurnPlane(plane, bits, picture_, colour, image_);
        } else {
            BurnPlane(plane, Shared(bits, merged_), picture_, colour, image_);
        }
    }

private:
    const OverlayPicture& picture_;
    std::span<unsigned char> image_;
    std::vector<unsigned char> merged_;
};

}  // namespace

OverlayPicture PictureOf(const CDcmObject& object) {
    const auto word = [&object](std::uint32_t tag) {
        return Read<unsigned short>(object, tag).value_or(0);
    };
    return {{word(tag::kRows), word(tag::kColumns)},
            OverlayPixelBytes(word(tag::kBitsAllocated), word(tag::kSamplesPerPixel))};
}

void BurnFirstOverlay(const CDcmObject& object, const OverlayPicture& picture,
                      std::span<unsigned char> image) {
    for (auto group = tag::kFirstOverlayGroup; group <= tag::kLastOverlayGroup; group += 2) {
        const auto plane = ReadOverlayPlane(object, group, /*needsBitPosition=*/false);
        if (!plane || plane->bitsAllocated != 1) continue;
        const auto bits = ReadOverlayData(object, *plane);
        if (!bits) continue;
        return BurnPlane(*plane, *bits, picture, kWhite, image);
    }
}

void BurnOverlays(const CDcmObject& object, Bits embedded, const OverlayPicture& picture,
                  std::span<unsigned char> image) {
    OverlayBurner burner(picture, image);
    for (auto group = tag::kFirstOverlayGroup; group <= tag::kLastOverlayGroup; group += 2) {
        const auto plane = ReadOverlayPlane(object, group, /*needsBitPosition=*/true);
        if (!plane) continue;
        if (!plane->HasOwnData()) {
            burner.Burn(*plane, embedded, kWhite);
        } else if (const auto bits = ReadOverlayData(object, *plane)) {
            burner.Burn(*plane, *bits, ReadOverlayColour(object, group));
        }
    }
}

QUORVEX_MESSAGE CXDIPP::MakeOverlayImage(CDcmObject* object, unsigned char* /*pixels*/,
                                         unsigned char* overlay, unsigned long& length,
                                         unsigned short& /*outWidth*/, int /*reserved*/) const {
    return Answer(QVM_ERROR_NO_IMAGE, [&] {
        if (object == nullptr) return QVM_SUCCESS;
        const OverlayPicture picture = PictureOf(*object);
        length = picture.size.BitCount();
        if (overlay == nullptr) return QVM_SUCCESS;
        BurnFirstOverlay(*object, picture, {overlay, picture.ImageBytes()});
        return QVM_SUCCESS;
    });
}

QUORVEX_MESSAGE CXDIPP::MakeOverlayImage2(CDcmObject* object, CLData* data, unsigned char* overlay,
                                          unsigned long& length, unsigned short& /*outWidth*/,
                                          int /*reserved*/, unsigned short bitsAllocated,
                                          unsigned short samplesPerPixel, unsigned short columns,
                                          unsigned short rows,
                                          unsigned short /*pixelRepresentation*/) const {
    return Answer(QVM_ERROR_NO_IMAGE, [&] {
        if (object == nullptr) return QVM_SUCCESS;
        const bool isGiven = bitsAllocated != 0 || samplesPerPixel != 0;
        const OverlayPicture picture =
            isGiven
                ? OverlayPicture{{rows, columns}, OverlayPixelBytes(bitsAllocated, samplesPerPixel)}
                : PictureOf(*object);
        length = picture.size.BitCount();
        if (overlay == nullptr) return QVM_SUCCESS;
        Bits embedded;
        if (data != nullptr && data->overlayPlane != nullptr) {
            embedded = {data->overlayPlane, data->overlayPlaneSize};
        }
        BurnOverlays(*object, embedded, picture, {overlay, picture.ImageBytes()});
        return QVM_SUCCESS;
    });
}

}  // namespace quorvex
