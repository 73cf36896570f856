/// Sizes that come from a header: multiplied only with a check, never above one limit.
#pragma once

#include "foundation/types/limits.h"

#include <concepts>
#include <cstddef>
#include <optional>

namespace quorvex {

/// Product of sizes from a header; nothing when it is more than we would ever allocate.
template <std::integral... Sizes>
[[nodiscard]] constexpr std::optional<std::size_t> CheckedProduct(Sizes... sizes) noexcept {
    std::size_t product = 1;
    const bool overflow = (__builtin_mul_overflow(product, sizes, &product) || ...);
    if (overflow || product > kLargestBlock) return std::nullopt;
    return product;
}

}  // namespace quorvex
