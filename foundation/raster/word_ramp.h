/// A window's table of bytes for 16-bit words, computed instead of looked up.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace quorvex {

inline constexpr std::size_t kWords = 65536;

/// Words counted from `origin` on, modulo 65,536, are places. From `floor` to `top` the byte is
/// 255 x (place - start) / width, truncated; below and above it stays as it is there. `top` may
/// have a byte of its own.
///
/// The quotient is computed as bias + (steps << shift) x factor / 2^16, truncated, over 2^16. For a
/// whole-number window the bias is 1 and the factor just below 255 x 2^32 / (width << shift): that
/// is above the exact quotient by less than 2^-16, or below by nothing that would reach the next
/// whole number, and the exact one lies 1 / width or more below that: equal for every width up to
/// 65,536.
struct WordRamp {
    std::uint16_t origin = 0;
    std::uint16_t floor = 0;
    std::uint16_t top = 0;
    std::uint16_t start = 0;  ///< modulo 65,536: a window may begin ahead of the words
    int shift = 0;
    std::uint32_t factor = 0;
    std::uint16_t bias = 1;  ///< added to the quotient, in units of 2^-16
    bool leapsAtTop = false;
    std::uint8_t topByte = 0;
    std::uint8_t inversion = 0;  ///< 0xFF for a ramp that falls: bits to invert in every byte
};

/// The ramp that gives all 65,536 bytes of a table as they are; nothing where none does.
/// @param table      entry i belongs to the word firstWord + i, modulo 65,536
[[nodiscard]] std::optional<WordRamp> RampOfTable(std::span<const std::uint8_t, kWords> table,
                                                  std::uint16_t firstWord);

/// The ramp of a straight line, rounded to the nearest byte, for the words that hold the low bits
/// of `low` and of the values that follow it: nothing where it does not give all of `bytes` as they
/// are, which belong to these values.
/// @param gain  bytes for one step of a value; not 0
/// @param zero  the value, a fraction too, at which the line is 0
[[nodiscard]] std::optional<WordRamp> RampOfLine(double gain, double zero, std::int64_t low,
                                                 std::span<const std::uint8_t> bytes);

/// The bytes of `count` words, which lie least significant byte first at any address.
/// @param prefetch  as many words that are needed a little later: they are prefetched
void MapByRamp(const WordRamp& ramp, const unsigned char* words, const unsigned char* prefetch,
               unsigned char* to, std::size_t count);

}  // namespace quorvex
