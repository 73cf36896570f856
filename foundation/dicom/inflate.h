/// Deflated data sets.
#pragma once

#include "foundation/dicom/element.h"

#include <optional>

namespace quorvex::dicom {

/// What a deflated data set may grow to: this many bytes whatever its size, and this many times its
/// size. Images that are mostly empty reach a few hundred; a bomb reaches 1,032.
inline constexpr std::size_t kInflatedAnyway = std::size_t{64} << 20;
inline constexpr std::size_t kInflatedRatio = 400;

/// Inflates a raw deflate stream (with a zlib header it is taken too). A stream that breaks off or
/// turns bad gives what came before. Nothing when it is none, or grows beyond the limits.
[[nodiscard]] std::optional<ByteBuffer> Inflate(Bytes deflated);

}  // namespace quorvex::dicom
