/// Values shrunk by the average of areas, before they are made visible.
#pragma once

#include "quorvex/Types.h"

#include <cstddef>
#include <functional>
#include <span>

namespace quorvex {

/// What an image's pixels are: whole numbers of 1 or 2 bytes in this machine's byte order.
enum class ValueKind { kUnsignedByte, kSignedByte, kUnsignedWord, kSignedWord };

[[nodiscard]] constexpr std::size_t BytesOf(ValueKind kind) noexcept {
    return kind == ValueKind::kUnsignedByte || kind == ValueKind::kSignedByte ? 1 : 2;
}

/// Receives row `y` of the shrunk image, from the top.
using ValueSink = std::function<void(int y, std::span<const float> row)>;

/// Shrinks an image, whose rows lie without gaps, to a size that is larger in neither direction;
/// all sides are above 0. Throws std::bad_alloc before the first row.
void ShrinkValues(const unsigned char* values, ValueKind kind, CSize size, CSize to,
                  const ValueSink& sink);

}  // namespace quorvex
