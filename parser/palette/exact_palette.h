/// Palettes as the DICOM standard defines them: entries over all that their bits can hold.
#pragma once

#include "quorvex/DicomObject.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace quorvex {

/// Colours (red, green, blue) of `first` and of the values behind it; values outside take the
/// nearest one.
struct ExactPalette {
    std::int64_t first = 0;
    std::vector<std::array<std::uint8_t, 3>> colours;

    [[nodiscard]] const std::array<std::uint8_t, 3>& Of(std::int64_t value) const noexcept;
};

/// The palette of an object, plain or segmented; nothing where one of its three tables is missing.
/// The first table says which values have entries.
[[nodiscard]] std::optional<ExactPalette> ReadExactPalette(CDcmObject& object, bool isSigned);

}  // namespace quorvex
