/// Runs of characters of one set, converted by iconv(3) with handles that each thread has for
/// itself.
#pragma once

#include "foundation/dicom/text/text_codec.h"

#include <optional>
#include <string>
#include <string_view>

namespace quorvex::dicom {

/// Appends `bytes`, which are in the encoding that the table names for `set`; bytes that mean
/// nothing there become U+FFFD.
void AppendDecoded(std::string_view bytes, CharacterSet set, std::u16string& text);

/// `text` in the encoding that the table names for `set`; nothing when that cannot hold it.
[[nodiscard]] std::optional<std::string> EncodedAs(CharacterSet set, std::u16string_view text);

}  // namespace quorvex::dicom
