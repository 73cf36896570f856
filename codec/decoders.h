/// Which transfer syntaxes are decoded here.
#pragma once

#include "quorvex/DicomObject.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace quorvex {

inline constexpr std::array<std::uint32_t, 7> kDecodedSyntaxes = {
    kRle,          kJpegBaseline,           kJpegExtended,
    kJpegLossless, kJpegLosslessFirstOrder, kJpeg2000Lossless,
    kJpeg2000};

/// Coded, and with a decoder. All else is copied as it is.
[[nodiscard]] constexpr bool HasDecoder(std::uint32_t syntax) noexcept {
    return std::ranges::find(kDecodedSyntaxes, syntax) != kDecodedSyntaxes.end();
}

[[nodiscard]] constexpr bool IsBigEndian(std::uint32_t syntax) noexcept {
    return syntax == kExplicitBigEndian || syntax == kImplicitBigEndian;
}

/// Stored without coding.
[[nodiscard]] constexpr bool IsNative(std::uint32_t syntax) noexcept {
    return syntax <= kDeflatedExplicitLittleEndian;
}

}  // namespace quorvex
