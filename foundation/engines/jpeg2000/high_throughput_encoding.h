/// High-throughput JPEG 2000 (ISO/IEC 15444-15), written by OpenJPH where it is built in.
#pragma once

#include "foundation/engines/jpeg2000/jpeg2000_engine.h"

namespace quorvex {

[[nodiscard]] bool HasHighThroughputCoder() noexcept;

/// Codes to `coded` what CanEncodeJpeg2000() has let pass: resolution by resolution (RPCL), with
/// the lengths of the tile-parts ahead of them (TLM). The lowest resolution of a lossless stream is
/// at most 64 samples wide and high, as all high-throughput transfer syntaxes take it (PS3.5
/// 10.18). Throws std::bad_alloc.
///
/// Every stream is decoded again: a lossless one must come back to the byte.
/// A lossy stream is as good as fits `targetBytes`, or as short as half the samples' range in a
/// step makes it; a target below some hundred bytes, which headers need, counts as those. Without a
/// target its steps are those of the samples.
[[nodiscard]] bool EncodeHighThroughput(PegasusParameters& parameters);

}  // namespace quorvex
