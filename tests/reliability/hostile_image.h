/// Files of a few bytes that claim to be large images.
#pragma once

#include "tests/support/dicom_builder.h"

#include <string>
#include <vector>

namespace quorvex::test {

inline constexpr const char* kExplicitLittle = "1.2.840.10008.1.2.1";
inline constexpr const char* kRle = "1.2.840.10008.1.2.5";
inline constexpr const char* kImageSyntaxes[] = {
    "1.2.840.10008.1.2",      "1.2.840.10008.1.2.2",    "1.2.840.10008.1.2.4.50",
    "1.2.840.10008.1.2.4.70", "1.2.840.10008.1.2.4.90", "1.2.840.10008.1.2.5",
};

/// Numbers as text, so that any representation can tell them, whatever its width.
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
/// syntax everything but Pixel Data, explicit little endian.
DicomBuilder HostileImage(const ImageClaim& claim, const char* syntax, int fragments = 1);

/// A deflated file whose data set goes on with so many zeros.
std::vector<unsigned char> DeflatedZeros(std::size_t count);

/// A value in a representation: text for what holds text, else a number of its width.
std::string ValueIn(const std::string& vr, const std::string& number);

/// A file on disk for as long as this lives.
class TemporaryImage {
public:
    explicit TemporaryImage(const DicomBuilder& file);
    ~TemporaryImage();
    TemporaryImage(const TemporaryImage&) = delete;
    TemporaryImage& operator=(const TemporaryImage&) = delete;

    [[nodiscard]] const std::string& Path() const { return path_; }

private:
    std::string path_;
};

}  // namespace quorvex::test
