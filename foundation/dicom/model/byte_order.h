/// Numbers in bytes, in either byte order.
#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace quorvex::dicom {

static_assert(std::endian::native == std::endian::little, "values are little endian in memory");

template <std::unsigned_integral Number>
[[nodiscard]] constexpr Number Swapped(Number number) noexcept {
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
    return isBigEndian ? Swapped(number) : number;
}

/// Puts a number behind the bytes, least significant byte first.
template <std::unsigned_integral Number>
inline void AppendNumber(std::vector<unsigned char>& bytes, Number number) {
    const auto* first = reinterpret_cast<const unsigned char*>(&number);
    bytes.insert(bytes.end(), first, first + sizeof number);
}

/// Reverses the bytes of every whole group of `unit` (1, 2, 4 or 8).
inline void SwapBytes(unsigned char* bytes, std::size_t length, std::size_t unit) noexcept {
    for (std::size_t at = 0; unit > 1 && at + unit <= length; at += unit) {
        for (std::size_t i = 0; i < unit / 2; ++i) {
            const unsigned char byte = bytes[at + i];
            bytes[at + i] = bytes[at + unit - 1 - i];
            bytes[at + unit - 1 - i] = byte;
        }
    }
}

}  // namespace quorvex::dicom
