/// The variable-length codes of the high-throughput clean-up pass (ISO/IEC 15444-15 clause 7 and
/// Annex C), as look-up tables.
#pragma once

#include <array>
#include <cstdint>

namespace quorvex::j2k {

/// An entry of HtTables::quads: what a CxtVLC code word tells about a quad. Sample n of a quad is
/// bit n of a field: down first, then right. What counts a shift has the lowest 6 bits for itself,
/// which is all that a shift looks at.
namespace ht_quad {
inline constexpr unsigned kLength = 0x3F;        ///< of the code word
inline constexpr unsigned kHasOffset = 0x40;     ///< an exponent offset follows (u_off)
inline constexpr unsigned kHasOffsetToo = 0x80;  ///< the same, for the second quad of a pair
inline constexpr int kSignificance = 8;          ///< rho, 4 bits from here on
inline constexpr int kTop = 12;                  ///< known top bits (e_1)
inline constexpr int kHasTop = 16;               ///< samples that have a known top bit (e_k)
inline constexpr unsigned kKept = 0xFFF00;       ///< what the magnitudes need
inline constexpr int kBound = 24;                ///< where they have U
inline constexpr int kContext = 22;              ///< the neighbour's context x 128 from here on
}  // namespace ht_quad

/// An entry of HtTables::offsets: how the U-VLC codes of a pair of quads read.
///
/// Bits 0-5 length altogether; then for either quad, from bit 6 and from bit 17 on: 4 bits where
/// its suffix begins, 3 bits the suffix's length, 4 bits what its prefix stands for.
using HtOffset = std::uint32_t;
namespace ht_offset {
inline constexpr unsigned kLength = 0x3F;
inline constexpr int kFirst = 6;
inline constexpr int kBits = 11;  ///< of a quad's fields
}  // namespace ht_offset

inline constexpr std::size_t kHtQuadCodes = std::size_t{8} * 128;
inline constexpr std::size_t kHtOffsetCodes = std::size_t{5} * 64;

struct HtTables {
    /// The first row's and the other rows' code words: index is context x 128 + the next 7 bits.
    std::array<std::array<std::uint32_t, kHtQuadCodes>, 2> quads;
    /// For the first row and the others: index is which x 64 + the next 6 bits; which is 0 none,
    /// 1 the first quad, 2 the second, 3 both; 4 both, where a MEL event of the first row tells
    /// that both are above 2.
    std::array<std::array<HtOffset, kHtOffsetCodes>, 2> offsets;
};

extern const HtTables kHtTables;

}  // namespace quorvex::j2k
