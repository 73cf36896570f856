/// UTF-8 and UTF-16, each to the other.
#pragma once

#include <string>
#include <string_view>

namespace quorvex {

/// Text: what is none becomes U+FFFD.
[[nodiscard]] std::u16string Utf16FromUtf8(std::string_view utf8);
[[nodiscard]] std::string Utf8FromUtf16(std::u16string_view utf16);

/// Bytes that should be UTF-8 and may be anything, as names of files: a byte that is no part of
/// UTF-8 becomes a surrogate that stands alone, U+DC80 to U+DCFF, and that becomes the byte again.
[[nodiscard]] std::u16string Utf16FromBytes(std::string_view bytes);
[[nodiscard]] std::string BytesFromUtf16(std::u16string_view utf16);

}  // namespace quorvex
