#include "pipeline/layers/overlay_planes.h"

#include "quorvex/DicomObject.h"

#include <algorithm>
#include <cstddef>

namespace quorvex {

namespace {

// Elements of an overlay group.
constexpr std::uint32_t kRows = 0x0010;
constexpr std::uint32_t kColumns = 0x0011;
constexpr std::uint32_t kOrigin = 0x0050;
constexpr std::uint32_t kBitsAllocated = 0x0100;
constexpr std::uint32_t kBitPosition = 0x0102;
constexpr std::uint32_t kColours[] = {0x1201, 0x1202, 0x1203};
constexpr std::uint32_t kData = 0x3000;

constexpr std::uint32_t TagOf(std::uint32_t group, std::uint32_t element) {
    return group << 16 | element;
}

/// Values of one group; the first that is missing leaves `isComplete` false.
struct GroupReader {
    const CDcmObject& object;
    std::uint32_t group;
    bool isComplete = true;

    unsigned short Word(std::uint32_t element) {
        unsigned short value = 0;
        if (object.GetValue(TagOf(group, element), value) != kDcmSuccess) isComplete = false;
        return value;
    }
    void Origin(OverlayPlane& plane) {
        int row = 0;
        int column = 0;
        const auto tag = TagOf(group, kOrigin);
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
    plane.size.rows = reader.Word(kRows);
    if (!reader.isComplete) return std::nullopt;
    plane.size.columns = reader.Word(kColumns);
    reader.Origin(plane);
    plane.bitsAllocated = reader.Word(kBitsAllocated);
    if (needsBitPosition) plane.bitPosition = reader.Word(kBitPosition);
    const bool isUsable = plane.size.BitCount() != 0 && plane.bitsAllocated != 0;
    if (!reader.isComplete || !isUsable) return std::nullopt;
    return plane;
}

std::optional<std::vector<unsigned char>> ReadOverlayData(const CDcmObject& object,
                                                          const OverlayPlane& plane) {
    LimitedBytes value;
    value.limit = plane.size.ByteCount();
    if (object.GetValue(TagOf(plane.group, kData), &value, LimitedBytes::Take) != kDcmSuccess) {
        return std::nullopt;
    }
    return std::move(value.bytes);
}

OverlayColour ReadOverlayColour(const CDcmObject& object, std::uint32_t group) {
    OverlayColour colour{255, 255, 255};
    for (std::size_t i = 0; i < colour.size(); ++i) {
        unsigned short value = 0;
        if (object.GetValue(TagOf(group, kColours[i]), value) == kDcmSuccess) {
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
