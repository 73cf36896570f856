/// Whether a record says how stored values become modality values.
#pragma once

#include "quorvex/CXGSPSInfo.h"

namespace quorvex {

/// True also for a record that was read and has neither rescale nor table: its values stay.
[[nodiscard]] bool KnowsModality(const CXGSPSInfo& record) noexcept;

}  // namespace quorvex
