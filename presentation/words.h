/// The words that presentation attributes take. The record keeps numbers instead: places in these
/// lists. An empty word fills a place that no word has.
#pragma once

#include "quorvex/Types.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace quorvex {

template <std::size_t Count>
using Words = std::array<const char*, Count>;

inline constexpr Words<2> kUnitWords = {"PIXEL", "DISPLAY"};
inline constexpr Words<3> kJustificationWords = {"LEFT", "RIGHT", "CENTER"};
inline constexpr Words<6> kGraphicTypeWords = {"",       "POINT",  "POLYLINE", "INTERPOLATED",
                                               "CIRCLE", "ELLIPSE"};
inline constexpr Words<3> kSizeModeWords = {"SCALE TO FIT", "TRUE SIZE", "MAGNIFY"};
inline constexpr Words<2> kShapeWords = {"IDENTITY", "INVERSE"};
inline constexpr Words<4> kShutterWords = {"RECTANGULAR", "CIRCULAR", "POLYGONAL", "BITMAP"};

/// Place of `text` in the list; nothing for a text that is not there.
template <std::size_t Count>
[[nodiscard]] std::optional<std::int32_t> PlaceOf(const CString& text, const Words<Count>& words) {
    for (std::size_t i = 0; i < Count; ++i) {
        if (!text.IsEmpty() && text == CString(words[i])) return static_cast<std::int32_t>(i);
    }
    return std::nullopt;
}

/// The word at a place; `otherwise` for a place that has none.
template <std::size_t Count>
[[nodiscard]] const char* WordAt(std::int32_t place, const Words<Count>& words,
                                 const char* otherwise = "") {
    const auto index = static_cast<std::size_t>(place);
    return index < Count ? words[index] : otherwise;
}

}  // namespace quorvex
