#include "pipeline/layers/embedded_overlay.h"

#include "foundation/dicom/model/tags.h"
#include "foundation/types/answer.h"
#include "foundation/types/block.h"
#include "pipeline/layers/overlay_planes.h"
#include "pipeline/pixel_elements.h"
#include "pipeline/pixel_header.h"
#include "quorvex/CLData.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace quorvex {

namespace {

/// Bits of a pixel that the image takes up.
std::uint32_t ImageBits(const PixelHeader& header) {
    const int lowest = std::max(header.highBit + 1 - header.bitsStored, 0);
    const std::uint64_t upToHighBit = (std::uint64_t{2} << std::min<int>(header.highBit, 31)) - 1;
    const std::uint64_t belowLowest = (std::uint64_t{1} << std::min(lowest, 32)) - 1;
    return static_cast<std::uint32_t>(upToHighBit & ~belowLowest);
}

/// Bits of a pixel that overlays take up.
std::uint32_t OverlayBits(const CDcmObject& object, const PixelHeader& header) {
    std::uint32_t bits = 0;
    for (auto group = tag::kFirstOverlayGroup; group <= tag::kLastOverlayGroup; group += 2) {
        const auto plane = ReadOverlayPlane(object, group, /*needsBitPosition=*/true);
        if (!plane || plane->HasOwnData() || plane->bitPosition >= header.bitsAllocated) continue;
        const bool hasSizeOfImage =
            plane->size.rows == header.size.cy && plane->size.columns == header.size.cx;
        if (hasSizeOfImage) bits |= std::uint32_t{1} << plane->bitPosition;
    }
    return bits & ~ImageBits(header);
}

template <class Element>
void GatherBits(std::span<const unsigned char> frame, std::uint32_t bits,
                std::span<unsigned char> plane, std::size_t pixelCount) {
    const std::size_t there = std::min(frame.size() / sizeof(Element), pixelCount);
    for (std::size_t i = 0; i < there; ++i) {
        const bool isSet = (ElementAt<Element>(frame.data(), i) & bits) != 0;
        plane[i / 8] |= static_cast<unsigned char>(static_cast<unsigned>(isSet) << (i % 8));
    }
}

}  // namespace

std::vector<unsigned char> EmbeddedOverlays(const CDcmObject& object,
                                            std::span<const unsigned char> frame) {
    const auto header = ReadPixelHeader(object);
    if (!header || !header->IsGrey()) return {};
    const std::uint32_t bits = OverlayBits(object, *header);
    if (bits == 0) return {};
    std::vector<unsigned char> plane((header->PixelCount() + 7) / 8);
    if (header->bitsAllocated == 8) {
        GatherBits<std::uint8_t>(frame, bits, plane, header->PixelCount());
    } else if (header->bitsAllocated == 16) {
        GatherBits<std::uint16_t>(frame, bits, plane, header->PixelCount());
    }
    return plane;
}

QUORVEX_MESSAGE MakeEmbeddedOverlayPlane(CDcmObject* object, const unsigned char* frame,
                                         unsigned long frameSize, unsigned char*& plane,
                                         unsigned long& planeSize) {
    return Answer(QVM_ERROR_FAILED_TO_GET_PIXEL_DATA, [&] {
        if (object == nullptr || frame == nullptr || !ReadPixelHeader(*object)) {
            return QVM_ERROR_FAILED_TO_GET_PIXEL_DATA;
        }
        const auto gathered = EmbeddedOverlays(*object, {frame, frameSize});
        HeapBlock block;
        if (!gathered.empty()) {
            block = HeapBlock(gathered.size());
            std::ranges::copy(gathered, block.Bytes().begin());
        }
        planeSize = gathered.size();
        plane = block.Release();
        return QVM_SUCCESS;
    });
}

}  // namespace quorvex
