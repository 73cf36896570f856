/// The two directions of the JPEG 2000 engine.
#pragma once

#include "foundation/engines/jpeg2000/jpeg2000_engine.h"

namespace quorvex {

/// Fills what a query fills. False for a stream that is not decoded.
[[nodiscard]] bool QueryJpeg2000(PegasusParameters& parameters) noexcept;
/// The frame that the block describes is the one in the stream, and `output` is as long as it.
[[nodiscard]] bool CanDecodeJpeg2000(const PegasusParameters& parameters) noexcept;
/// Decodes to `output`. Where it answers false the samples there are undefined.
/// Throws std::bad_alloc.
[[nodiscard]] bool DecodeJpeg2000(PegasusParameters& parameters);
/// The same by OpenJPEG, which knows transforms that our decoder does not.
[[nodiscard]] bool DecodeJpeg2000ByLibrary(std::span<const unsigned char> codestream,
                                           PegasusParameters& parameters);

[[nodiscard]] bool CanEncodeJpeg2000(const PegasusParameters& parameters) noexcept;
/// Codes to `coded`. Throws std::bad_alloc.
[[nodiscard]] bool EncodeJpeg2000(PegasusParameters& parameters);

}  // namespace quorvex
