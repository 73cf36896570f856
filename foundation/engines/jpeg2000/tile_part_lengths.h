/// The segment that tells a reader where the tile-parts of a codestream are.
#pragma once

#include <vector>

namespace quorvex {

/// Puts a TLM segment (ISO/IEC 15444-1 A.7.1) behind the main header of a codestream of ours.
/// @return false, and `codestream` as it was, where its tile-parts cannot be followed. Throws
///         std::bad_alloc.
[[nodiscard]] bool AddTilePartLengths(std::vector<unsigned char>& codestream);

}  // namespace quorvex
