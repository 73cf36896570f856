/// A host's pixels as the values that JPEG 2000 coders take.
#pragma once

#include "foundation/engines/jpeg2000/jpeg2000_engine.h"

#include <cstdint>
#include <span>

namespace quorvex {

/// How many levels of resolution halve a picture sensibly: none of its sides below one sample, and
/// at most five.
[[nodiscard]] int UsefulLevels(const PegasusParameters& parameters) noexcept;

/// Takes one component's samples, `values.size()` of them from `place` on, a pixel apart.
/// @return false when a sample needs more bits than are coded: it would come back as another
[[nodiscard]] bool ReadComponent(std::span<std::int32_t> values, const unsigned char* place,
                                 const PegasusParameters& parameters) noexcept;

}  // namespace quorvex
