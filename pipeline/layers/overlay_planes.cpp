#include "pipeline/layers/overlay_planes.h"

#include "foundation/dicom/model/attributes.h"

#include <algorithm>
#include <cstddef>

namespace quorvex {

namespace {

constexpr unsigned short kFullColour = 255;
constexpr std::uint32_t kColours[] = {tag::kOverlaysRed, tag::kOverlaysGreen, tag::kOverlaysBlue};

/// Reads attributes of one overlay group.
struct GroupReader {
    const CDcmObject& object;
    std::uint32_t group;

    [[nodiscard]] std::optional<unsigned short> Word(std::uint32_t tag) const {
        return Read<unsigned short>(object, tag::InGroup(group, tag));
    }
    [[nodiscard]] std::optional<ValuePair<int>> Origin() const {
        return ReadPair<int>(object, tag::InGroup(group, tag::kOverlayOrigin));
    }
};

}  // namespace

std::optional<OverlayPlane> ReadOverlayPlane(const CDcmObject& object, std::uint32_t group,
                                             bool needsBitPosition) {
    const GroupReader reader{object, group};
    const auto rows = reader.Word(tag::kOverlayRows);
    if (!rows) return std::nullopt;  // most groups have no overlay
    const auto columns = reader.Word(tag::kOverlayColumns);
    const auto origin = reader.Origin();
    const auto bitsAllocated = reader.Word(tag::kOverlayBitsAllocated);
    std::optional<unsigned short> bitPosition = 0;
    if (needsBitPosition) bitPosition = reader.Word(tag::kOverlayBitPosition);
    if (!columns || !origin || !bitsAllocated || !bitPosition) return std::nullopt;
    const OverlayPlane plane{group,          {*rows, *columns}, origin->first,
                             origin->second, *bitsAllocated,    *bitPosition};
    const bool isUsable = plane.size.BitCount() != 0 && plane.bitsAllocated != 0;
    return isUsable ? std::optional(plane) : std::nullopt;
}

std::optional<std::vector<unsigned char>> ReadOverlayData(const CDcmObject& object,
                                                          const OverlayPlane& plane) {
    return ReadBytes(object, tag::InGroup(plane.group, tag::kOverlayData), plane.size.ByteCount());
}

OverlayColour ReadOverlayColour(const CDcmObject& object, std::uint32_t group) {
    const GroupReader reader{object, group};
    OverlayColour colour{};
    for (std::size_t i = 0; i < colour.size(); ++i) {
        colour[i] = static_cast<unsigned char>(reader.Word(kColours[i]).value_or(kFullColour));
    }
    return colour;
}

CoveredPart PartCoveredBy(const OverlayPlane& plane, PlaneSize image) noexcept {
    constexpr std::int64_t kNone = 0;
    CoveredPart part;
    part.firstRow = std::max(plane.originRow - 1, kNone);
    part.endRow = std::min<std::int64_t>(image.rows, plane.size.rows + plane.originRow - 1);
    part.firstColumn = std::max(plane.originColumn - 1, kNone);
    part.endColumn =
        std::min<std::int64_t>(image.columns, plane.size.columns + plane.originColumn - 1);
    part.skippedRows = std::max(1 - plane.originRow, kNone);
    part.skippedColumns = std::max(1 - plane.originColumn, kNone);
    return part;
}

}  // namespace quorvex
