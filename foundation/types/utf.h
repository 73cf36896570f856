/// UTF-8 and UTF-16, each to the other. What is not text becomes U+FFFD.
#pragma once

#include <string>
#include <string_view>

namespace quorvex {

[[nodiscard]] std::u16string Utf16FromUtf8(std::string_view utf8);
[[nodiscard]] std::string Utf8FromUtf16(std::u16string_view utf16);

}  // namespace quorvex
