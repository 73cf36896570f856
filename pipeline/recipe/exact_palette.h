/// Palettes as the DICOM standard defines them: entries over all that their bits can hold.
#pragma once

#include "pipeline/pixel_block.h"
#include "presentation/grey/grey_stages.h"
#include "quorvex/DicomObject.h"
#include "render/view_job.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace quorvex {

/// Colours of `first` and of the values behind it; values outside take the nearest one.
struct ExactPalette {
    std::int64_t first = 0;
    std::vector<Rgb> colours;

    [[nodiscard]] const Rgb& Of(std::int64_t value) const noexcept;
};

/// The palette of an object, plain or segmented; nothing where one of its three tables is missing.
[[nodiscard]] std::optional<ExactPalette> ReadExactPalette(CDcmObject& object,
                                                           const StoredForm& form);

/// Every element of a frame in its colour: red, green, blue.
[[nodiscard]] PixelBlock ColouredBy(const ExactPalette& palette, const PixelBlock& elements,
                                    int elementBytes, bool isSigned);

/// The colours of a supplemental palette for every value of an element of 1 or 2 bytes, by its
/// bits. Empty without one.
[[nodiscard]] std::vector<ValueColour> SupplementalColoursOf(CDcmObject& object,
                                                             const StoredForm& form,
                                                             int elementBytes);

}  // namespace quorvex
