/// The high-throughput code block of ISO/IEC 15444-15 clause 7.
#pragma once

#include "foundation/engines/jpeg2000/decoder/blocks/coded_block.h"
#include "foundation/engines/jpeg2000/decoder/blocks/ht_scratch.h"

#include <cstddef>
#include <cstdint>

namespace quorvex::j2k {

/// As DecodeMqBlock() of mq_block.h. Allocates nothing.
///
/// `block.segments` may hold several HT sets, one behind the other: a clean-up segment of 3 k + 1
/// passes, k of them placeholder sets, then a refinement segment of 1 or 2 passes or none. Every
/// set goes one plane below the one before it, and tells all planes above anew: the last set that
/// is sound is decoded. `block.bitPlanes` is that of the first set.
///
/// A segment of which the stream's end cut a part off must not be among them: what tells its
/// lengths stands at its end.
[[nodiscard]] bool DecodeHtBlock(const CodedBlock& block, std::int32_t* out, std::ptrdiff_t stride,
                                 HtScratch& scratch);

}  // namespace quorvex::j2k
