/// The segmented form of a palette's look-up table (DICOM PS3.3 C.7.9.2).
#pragma once

#include <cstdint>
#include <span>

namespace quorvex {

/// Expands `words` into `table`. False for an unknown segment, one outside the data or the table,
/// or when data and table do not end together.
[[nodiscard]] bool ExpandPaletteSegments(std::span<const std::uint16_t> words,
                                         std::span<std::uint16_t> table) noexcept;

}  // namespace quorvex
