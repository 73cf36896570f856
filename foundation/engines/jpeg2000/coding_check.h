/// Our decoder's word on what a coder has made.
#pragma once

#include "foundation/engines/jpeg2000/jpeg2000_engine.h"

#include <optional>

namespace quorvex {

/// How far the samples of `coded` are from the input's at most; nothing where it is not decoded
/// whole. Throws std::bad_alloc.
[[nodiscard]] std::optional<int> GreatestCodingError(const PegasusParameters& parameters);

}  // namespace quorvex
