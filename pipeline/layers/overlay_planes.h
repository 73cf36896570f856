/// The overlay planes of a data set: groups (6000,xxxx) to (601E,xxxx).
#pragma once

#include "pipeline/layers/bit_planes.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace quorvex {

class CDcmObject;

/// What the header says about one plane.
struct OverlayPlane {
    std::uint32_t group = 0;
    PlaneSize size;
    std::int64_t originRow = 1;  ///< image row of its first row, counted from 1
    std::int64_t originColumn = 1;
    unsigned short bitsAllocated = 0;
    unsigned short bitPosition = 0;

    /// Its bits are in Overlay Data; otherwise they are in the pixel data.
    [[nodiscard]] bool HasOwnData() const noexcept {
        return bitsAllocated == 1 && bitPosition == 0;
    }
};

/// The plane of a group; nothing where an attribute that places it is missing or says 0. The bit
/// position is 0 where it is missing and not `needsBitPosition`.
[[nodiscard]] std::optional<OverlayPlane> ReadOverlayPlane(const CDcmObject& object,
                                                           std::uint32_t group,
                                                           bool needsBitPosition);

/// Overlay Data in overlay order, as much of it as the plane has bits for, or less; nothing where
/// it is missing.
[[nodiscard]] std::optional<std::vector<unsigned char>> ReadOverlayData(const CDcmObject& object,
                                                                        const OverlayPlane& plane);

/// Red, green, blue; 255 where the group does not say.
using OverlayColour = std::array<unsigned char, 3>;
[[nodiscard]] OverlayColour ReadOverlayColour(const CDcmObject& object, std::uint32_t group);

/// Where a plane covers an image: rows and columns of the image (ends exclusive), and the row and
/// column of the plane that lie on the first of them. Empty where it covers none.
struct CoveredPart {
    std::int64_t firstRow = 0;
    std::int64_t endRow = 0;
    std::int64_t firstColumn = 0;
    std::int64_t endColumn = 0;
    std::int64_t skippedRows = 0;
    std::int64_t skippedColumns = 0;

    [[nodiscard]] bool IsEmpty() const noexcept {
        return firstRow >= endRow || firstColumn >= endColumn;
    }
};
[[nodiscard]] CoveredPart PartCoveredBy(const OverlayPlane& plane, PlaneSize image) noexcept;

}  // namespace quorvex
