/// Questions about transfer syntaxes by their numbers, answered by the one table.
#pragma once

#include "quorvex/TransferSyntaxes.h"

namespace quorvex {

/// What decodes its frames; kNone for a number without a row.
[[nodiscard]] FrameDecoder DecoderOf(TRANSFER_SYNTAX syntax) noexcept;
/// Coded, and with a decoder here.
[[nodiscard]] bool HasDecoder(TRANSFER_SYNTAX syntax) noexcept;
[[nodiscard]] bool IsEncapsulated(TRANSFER_SYNTAX syntax) noexcept;
[[nodiscard]] bool IsBigEndian(TRANSFER_SYNTAX syntax) noexcept;

}  // namespace quorvex
