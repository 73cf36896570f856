/// Questions about transfer syntaxes by their numbers, answered by the one table.
#pragma once

#include "quorvex/TransferSyntaxes.h"

#include <span>
#include <string_view>

namespace quorvex {

/// How its frames are stored; kNone for a number without a row.
[[nodiscard]] FrameCoding CodingOf(TRANSFER_SYNTAX syntax) noexcept;
/// Coded, and with a decoder here.
[[nodiscard]] bool HasDecoder(TRANSFER_SYNTAX syntax) noexcept;
[[nodiscard]] bool IsEncapsulated(TRANSFER_SYNTAX syntax) noexcept;
[[nodiscard]] bool IsBigEndian(TRANSFER_SYNTAX syntax) noexcept;

/// The UID that a value holds, without its padding.
[[nodiscard]] std::string_view UidOf(std::span<const unsigned char> value) noexcept;

}  // namespace quorvex
