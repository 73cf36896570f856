/// The segmented form of a palette's look-up table (DICOM PS3.3 C.7.9.2).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace quorvex {

/// How the segments are stored and read.
struct SegmentForm {
    std::size_t fieldBytes = 2;  ///< of an opcode, a length or an entry: 1 or 2
    bool roundsEntries = false;  ///< on a line; else they are cut off
};

/// Expands `fields` into `table`. False for an unknown segment, one outside the data or the table,
/// or when data and table do not end together. A byte of padding may follow fields of bytes.
[[nodiscard]] bool ExpandPaletteSegments(std::span<const std::uint16_t> fields, SegmentForm form,
                                         std::span<std::uint16_t> table) noexcept;

}  // namespace quorvex
