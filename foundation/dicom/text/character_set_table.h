/// The coded character sets: their names in (0008,0005), their escapes, their encodings.
#pragma once

#include "foundation/dicom/text/text_codec.h"

#include <cstdint>
#include <string_view>

namespace quorvex::dicom {

/// How a set lies in the bytes of a value (ISO/IEC 2022).
enum class CharacterSetForm : std::uint8_t {
    kAscii,       ///< bytes below 128 only
    kSingleHigh,  ///< one byte above 127
    kDoubleHigh,  ///< two bytes above 127
    kDoubleLow,   ///< two bytes below 128, between escapes
    kWhole,       ///< the whole value is in this encoding, without escapes
};

/// One row (DICOM PS3.3 Tables C.12-2 to C.12-5).
struct CharacterSetRow {
    CharacterSet set;
    std::string_view name;    ///< as in (0008,0005), without "ISO", "2022", "IR", blanks and marks
    const char* encoding;     ///< as iconv knows it
    std::string_view escape;  ///< what follows ESC
    CharacterSetForm form;
};

inline constexpr char kEscape = '\x1B';

[[nodiscard]] const CharacterSetRow& RowOf(CharacterSet set) noexcept;

/// The row whose escape `afterEscape` begins with; null for an unknown one. `length` receives the
/// bytes that the escape takes behind ESC.
[[nodiscard]] const CharacterSetRow* RowOfEscape(std::string_view afterEscape,
                                                 std::size_t& length) noexcept;

}  // namespace quorvex::dicom
