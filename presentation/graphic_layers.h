/// The graphic layers of a presentation state (DICOM PS3.3 C.10.7).
#pragma once

#include "quorvex/CXGSPSInfo.h"

#include <array>
#include <cstdint>
#include <vector>

namespace quorvex {

class CDcmObjectCommon;

/// In the order in which they are drawn: those of the same order as the state lists them.
[[nodiscard]] std::vector<GSPSGraphicLayer> ReadGraphicLayers(const CDcmObjectCommon& state);

/// Red, green, blue of what lies in a layer.
[[nodiscard]] std::array<std::uint8_t, 3> ColourOf(const GSPSGraphicLayer& layer) noexcept;

}  // namespace quorvex
