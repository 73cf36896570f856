/// Tags by name, and what their numbers tell.
#pragma once

#include "quorvex/Tags.h"

#include <cstdint>

namespace quorvex::dicom {

[[nodiscard]] constexpr std::uint32_t GroupOf(std::uint32_t tag) noexcept {
    return tag >> 16U;
}
[[nodiscard]] constexpr bool IsMetaTag(std::uint32_t tag) noexcept {
    return GroupOf(tag) == 0x0002;
}

}  // namespace quorvex::dicom
