/// The variable-length codes of the high-throughput clean-up pass (ISO/IEC 15444-15 clause 7.3.5,
/// 7.3.6 and Annex C), as look-up tables.
#pragma once

#include <array>
#include <cstdint>

namespace quorvex::j2k {

/// An entry of HtTables::quads: what a CxtVLC code word tells about a quad.
///
/// Bits 0-2 code word length | 3 an exponent offset follows (u_off) | 4-7 significance (rho) |
/// 8-11 known top bits (e_1) | 12-15 samples that have a known top bit (e_k) | 23-25 what the quad
/// gives to its right neighbour's context. Sample n of a quad is bit n: down first, then right.
namespace ht_quad {
inline constexpr unsigned kLength = 7;
inline constexpr unsigned kHasOffset = 8;
inline constexpr unsigned kSignificance = 0xF0;
inline constexpr unsigned kKept = 0xFFF0;  ///< what the magnitudes need
inline constexpr int kContextShift = 16;   ///< brings the neighbour's context to bits 7-9
}  // namespace ht_quad

/// An entry of HtTables::offsets: how the U-VLC codes of a pair of quads read.
///
/// Bits 0-4 length altogether | 5-7 length of both prefixes | 8-10, 11-13 lengths of the first and
/// the second suffix | 16-19, 20-23 what the prefixes stand for.
using HtOffset = std::uint32_t;

struct HtTables {
    /// The first row's and the other rows' code words: index is context x 128 + the next 7 bits.
    std::array<std::array<std::uint32_t, 8 * 128>, 2> quads;
    /// For the first row and the others: index is which x 64 + the next 6 bits; which is 0 none,
    /// 1 the first quad, 2 the second, 3 both; 4 both, where a MEL event of the first row tells that
    /// both are above 2.
    std::array<std::array<HtOffset, 5 * 64>, 2> offsets;
};

extern const HtTables kHtTables;

}  // namespace quorvex::j2k
