/// Numbers in bytes, in either byte order.
#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace quorvex::dicom {

static_assert(std::endian::native == std::endian::little, "values are little endian in memory");

template <std::unsigned_integral Number>
[[nodiscard]] constexpr Number Turned(Number number) noexcept {
    if constexpr (sizeof(Number) == 1) return number;
    if constexpr (sizeof(Number) == 2) return __builtin_bswap16(number);
    if constexpr (sizeof(Number) == 4) return __builtin_bswap32(number);
    if constexpr (sizeof(Number) == 8) return __builtin_bswap64(number);
}

/// The number whose bytes begin at `bytes`.
template <std::unsigned_integral Number>
[[nodiscard]] inline Number Load(const unsigned char* bytes, bool isBigEndian) noexcept {
    Number number;
    std::memcpy(&number, bytes, sizeof number);
    return isBigEndian ? Turned(number) : number;
}

/// Turns every whole group of `unit` bytes (1, 2, 4 or 8) round.
inline void TurnBytes(unsigned char* bytes, std::size_t length, std::size_t unit) noexcept {
    for (std::size_t at = 0; unit > 1 && at + unit <= length; at += unit) {
        for (std::size_t i = 0; i < unit / 2; ++i) {
            const unsigned char byte = bytes[at + i];
            bytes[at + i] = bytes[at + unit - 1 - i];
            bytes[at + unit - 1 - i] = byte;
        }
    }
}

}  // namespace quorvex::dicom
