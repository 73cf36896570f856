/// Photometric interpretations as the standard names them, however a file writes them.
#pragma once

#include "quorvex/DicomObject.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace quorvex {

struct Photometric {
    std::string_view name;  ///< as DICOM PS3.3 C.7.6.3.1.2 has it
    unsigned short samplesPerPixel;
};

/// Whether a header has CMYK in JPEG 2000, whose four samples stay; those of JPEG become R, G, B.
[[nodiscard]] bool KeepsInks(const CDcmObject& header);

/// What a text means, whatever its letters' case and wherever it has blanks or underscores. Nothing
/// for a text without a meaning here.
[[nodiscard]] std::optional<Photometric> UnderstoodPhotometric(std::u16string_view text) noexcept;

/// Gives a header its understood photometric interpretation as the standard writes it, and the
/// Samples per Pixel that go with it, unless KeepsInks(). Any other one stays as it is. Native
/// YBR_FULL_422 whose `nativeBytes` are those of three samples a pixel is YBR_FULL: some writers
/// name it wrong.
/// @param nativeBytes  length of native Pixel Data; 0 where there is none
void UnderstandPhotometric(CDcmObject& header, std::size_t nativeBytes);

}  // namespace quorvex
