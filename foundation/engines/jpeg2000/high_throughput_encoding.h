/// High-throughput JPEG 2000 (ISO/IEC 15444-15), written by OpenJPH where it is built in.
#pragma once

#include "foundation/engines/jpeg2000/jpeg2000_engine.h"

namespace quorvex {

[[nodiscard]] bool HasHighThroughputCoder() noexcept;

/// Codes to `coded` what CanEncodeJpeg2000() has let pass, as every high-throughput transfer
/// syntax wants it (PS3.5 10.18): resolution by resolution (RPCL), the lowest at most 64 samples
/// wide and high, the lengths of the tile-parts ahead of them (TLM). Throws std::bad_alloc.
///
/// A lossy stream is as good as fits `targetBytes`, or as short as half the samples' range in a
/// step makes it; without a target its steps are those of the samples.
[[nodiscard]] bool EncodeHighThroughput(PegasusParameters& parameters);

}  // namespace quorvex
