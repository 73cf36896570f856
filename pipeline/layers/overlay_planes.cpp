#include "pipeline/layers/overlay_planes.h"

#include "foundation/dicom/model/tags.h"
#include "quorvex/DicomObject.h"

#include <algorithm>
#include <cstddef>

namespace quorvex {

namespace {

constexpr std::uint32_t kColours[] = {tag::kOverlaysRed, tag::kOverlaysGreen, tag::kOverlaysBlue};

/// Values of one group; the first that is missing leaves `isComplete` false.
struct GroupReader {
    const CDcmObject& object;
    std::uint32_t group;
    bool isComplete = true;

    unsigned short Word(std::uint32_t tag) {
        unsigned short value = 0;
        if (object.GetValue(tag::InGroup(group, tag), value) != kDcmSuccess) isComplete = false;
        return value;
    }
    void Origin(OverlayPlane& plane) {
        int row = 0;
        int column = 0;
        const auto tag = tag::InGroup(group, tag::kOverlayOrigin);
        if (object.GetValue(tag, row) != kDcmSuccess ||
            object.GetNextValue(tag, column) != kDcmSuccess) {
            isComplete = false;
        }
        plane.originRow = row;
        plane.originColumn = column;
    }
};

/// As much of a value as is wanted.
struct LimitedBytes {
    std::vector<unsigned char> bytes;
    std::size_t limit = 0;

    static MC_STATUS Take(int, std::uint32_t, void* user, int length, void* data, int, int) {
        auto& value = *static_cast<LimitedBytes*>(user);
        if (length <= 0) return kMcContinue;
        const std::size_t room = value.limit - value.bytes.size();
        const auto* piece = static_cast<const unsigned char*>(data);
        const std::size_t taken = std::min(room, static_cast<std::size_t>(length));
        value.bytes.insert(value.bytes.end(), piece, piece + taken);
        return kMcContinue;
    }
};

}  // namespace

std::optional<OverlayPlane> ReadOverlayPlane(const CDcmObject& object, std::uint32_t group,
                                             bool needsBitPosition) {
    GroupReader reader{object, group};
    OverlayPlane plane;
    plane.group = group;
    plane.size.rows = reader.Word(tag::kOverlayRows);
    if (!reader.isComplete) return std::nullopt;
    plane.size.columns = reader.Word(tag::kOverlayColumns);
    reader.Origin(plane);
    plane.bitsAllocated = reader.Word(tag::kOverlayBitsAllocated);
    if (needsBitPosition) plane.bitPosition = reader.Word(tag::kOverlayBitPosition);
    const bool isUsable = plane.size.BitCount() != 0 && plane.bitsAllocated != 0;
    if (!reader.isComplete || !isUsable) return std::nullopt;
    return plane;
}

std::optional<std::vector<unsigned char>> ReadOverlayData(const CDcmObject& object,
                                                          const OverlayPlane& plane) {
    LimitedBytes value;
    value.limit = plane.size.ByteCount();
    if (object.GetValue(tag::InGroup(plane.group, tag::kOverlayData), &value, LimitedBytes::Take) !=
        kDcmSuccess) {
        return std::nullopt;
    }
    return std::move(value.bytes);
}

OverlayColour ReadOverlayColour(const CDcmObject& object, std::uint32_t group) {
    OverlayColour colour{255, 255, 255};
    for (std::size_t i = 0; i < colour.size(); ++i) {
        unsigned short value = 0;
        if (object.GetValue(tag::InGroup(group, kColours[i]), value) == kDcmSuccess) {
            colour[i] = static_cast<unsigned char>(value);
        }
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
