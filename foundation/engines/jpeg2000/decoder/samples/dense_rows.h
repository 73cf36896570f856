/// Samples that stand side by side in memory.
#pragma once

#include "foundation/engines/jpeg2000/decoder/samples/output_plane.h"

#include <cstdint>

namespace quorvex::j2k {

/// As StoreRow() does, into `count` samples from `out` on, the lower byte first.
void StoreDenseRow(const SampleRange& range, const std::int32_t* values, std::uint32_t count,
                   std::uint8_t* out) noexcept;
void StoreDenseRow(const SampleRange& range, const std::int32_t* values, std::uint32_t count,
                   std::uint16_t* out) noexcept;

}  // namespace quorvex::j2k
