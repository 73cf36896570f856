/// Shutters as the DICOM standard defines them (PS3.3 C.7.6.11, C.7.6.15, C.7.6.17).
#pragma once

#include "quorvex/DicomObject.h"
#include "quorvex/Types.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace quorvex {

struct ExactShutter {
    /// A byte for each pixel of the image, rows from the top; not 0 hides it.
    std::vector<unsigned char> mask;
    /// What hidden pixels show, red, green, blue: all alike without a colour.
    std::array<std::uint8_t, 3> colour{};
};

/// The shutter of an image or a presentation state over an image of that size. Where there are
/// several shapes, only what all of them leave open is seen; edges and the rim of a circle belong
/// to what is seen. Nothing without a usable shape.
[[nodiscard]] std::optional<ExactShutter> ReadExactShutter(const CDcmObject& object,
                                                           CSize imageSize);

}  // namespace quorvex
