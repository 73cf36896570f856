/// Files of a few bytes that claim to be large images.
#pragma once

#include "tests/support/dicom_builder.h"

#include <string>
#include <string_view>
#include <vector>

namespace quorvex::test {

inline constexpr std::string_view kImageSyntaxes[] = {
    kImplicitUid,
    kBigEndianUid,
    "1.2.840.10008.1.2.4.50",
    "1.2.840.10008.1.2.4.70",
    "1.2.840.10008.1.2.4.90",
    kRleUid,
};

/// Numbers as text, so that any representation can hold them, whatever its width.
struct ImageClaim {
    const char* rows = "2";
    const char* columns = "2";
    const char* samples = "1";
    const char* bits = "16";
    const char* frames = "1";
    const char* vr = "US";  ///< of Rows and Columns

    [[nodiscard]] std::string Text() const;
};

/// An image of that claim with 64 bytes of Pixel Data, or `fragments` fragments of them; without a
/// syntax all but Pixel Data, explicit little endian.
DicomBuilder HostileImage(const ImageClaim& claim, std::string_view syntax = {}, int fragments = 1);

/// A deflated file whose data set goes on with so many zeros.
std::vector<unsigned char> DeflatedZeros(std::size_t count);

}  // namespace quorvex::test
