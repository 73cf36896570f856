/// Small DICOM images of one sample a pixel, written by hand.
#pragma once

#include "quorvex/Tags.h"
#include "tests/support/dicom_builder.h"

#include <string>
#include <string_view>

namespace quorvex::test {

struct PixelForm {
    std::uint16_t rows = 8;  ///< 0: not told
    std::uint16_t columns = 8;
    std::uint16_t allocated = 8;
    std::uint16_t stored = 8;
    std::uint16_t isSigned = 0;
    std::string_view photometric = "MONOCHROME2 ";
};

/// The attributes that describe the pixels.
inline DicomBuilder& AddForm(DicomBuilder& file, const PixelForm& form) {
    file.Us(tag::kSamplesPerPixel, 1).Add(tag::kPhotometricInterpretation, "CS", form.photometric);
    if (form.rows > 0) file.Us(tag::kRows, form.rows);
    return file.Us(tag::kColumns, form.columns)
        .Us(tag::kBitsAllocated, form.allocated)
        .Us(tag::kBitsStored, form.stored)
        .Us(tag::kHighBit, static_cast<std::uint16_t>(form.stored - 1))
        .Us(tag::kPixelRepresentation, form.isSigned);
}

/// A file with these attributes alone, explicit and little-endian, its Pixel Data to be added.
inline DicomBuilder HeaderOf(const PixelForm& form, std::string_view syntax = kExplicitUid) {
    auto file = DicomBuilder::Part10(syntax);
    return AddForm(file, form);
}

/// A whole file.
inline std::vector<unsigned char> ImageOf(const PixelForm& form, std::string_view pixels) {
    return HeaderOf(form).Add(tag::kPixelData, "OW", pixels).Bytes();
}

/// The beginning of a pattern that goes on without end.
inline std::string Repeated(const std::string& pattern, std::size_t bytes) {
    std::string pixels;
    while (pixels.size() < bytes) pixels += pattern;
    return pixels.substr(0, bytes);
}

/// A little-endian number of two bytes.
inline std::string Word(unsigned value) {
    return {static_cast<char>(value & 255), static_cast<char>(value >> 8 & 255)};
}

}  // namespace quorvex::test
