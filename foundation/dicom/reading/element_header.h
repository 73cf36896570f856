/// The header of an element as a file writes it: tag, VR, length.
#pragma once

#include "foundation/dicom/model/encoding.h"
#include "quorvex/DicomObject.h"

#include <cstddef>
#include <cstdint>

namespace quorvex::dicom {

struct ElementHeader {
    std::uint32_t tag = 0;
    MC_VR vr = MC_VR_UN;
    std::uint32_t length = 0;
    std::size_t bytes = kShortHeader;  ///< how long the header itself is
    /// Explicit VR, but nothing like a VR stands there: the header was read as implicit VR.
    bool isGuessed = false;
    /// Implicit VR of a tag that is US or SS as Pixel Representation says; `vr` is US.
    bool isUsOrSs = false;

    [[nodiscard]] bool IsUndefined() const noexcept { return length == kUndefinedLength; }
};

/// True for two letters that name a VR.
[[nodiscard]] bool IsVr(const unsigned char* letters) noexcept;

enum class HeaderForm : std::uint8_t { kImplicit, kShort, kLong };

/// The form of the header that begins with these eight bytes.
[[nodiscard]] HeaderForm HeaderFormOf(const unsigned char* eight, Encoding encoding) noexcept;

/// How many bytes a header takes.
[[nodiscard]] constexpr std::size_t HeaderBytes(HeaderForm form) noexcept {
    return form == HeaderForm::kLong ? kLongHeader : kShortHeader;
}
[[nodiscard]] inline std::size_t HeaderBytes(const unsigned char* eight,
                                             Encoding encoding) noexcept {
    return HeaderBytes(HeaderFormOf(eight, encoding));
}

/// The header at `bytes`, of which `HeaderBytes` must be there. Implicit VR takes its VR from the
/// dictionary, and so does a header whose VR is not even capital letters; delimiters and items have
/// none in either encoding.
[[nodiscard]] ElementHeader ReadHeader(const unsigned char* bytes, Encoding encoding,
                                       HeaderForm form) noexcept;
[[nodiscard]] inline ElementHeader ReadHeader(const unsigned char* bytes,
                                              Encoding encoding) noexcept {
    return ReadHeader(bytes, encoding, HeaderFormOf(bytes, encoding));
}

}  // namespace quorvex::dicom
