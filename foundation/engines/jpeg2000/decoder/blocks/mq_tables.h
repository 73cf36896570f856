/// The tables of the arithmetic decoder and of its contexts, worked out by the compiler.
#pragma once

#include "foundation/engines/jpeg2000/decoder/blocks/coded_block.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>

namespace quorvex::j2k {

/// Contexts (ISO/IEC 15444-1 Table D.7): zero coding 0 to 8, then these.
inline constexpr unsigned kFirstSignContext = 9;
inline constexpr unsigned kFirstRefinementContext = 14;
inline constexpr unsigned kRunContext = 17;
inline constexpr unsigned kUniformContext = 18;
inline constexpr unsigned kContexts = 19;

/// A context's state in one word: the probability in bits 0 to 15, the more probable symbol in bit
/// 16, the state's number in bits 17 to 22, so that these are an index, and from bit 24 on by how
/// many places the probability is shifted to fill an interval.
using MqState = std::uint32_t;

struct MqRow {
    std::uint16_t probability;
    std::uint8_t afterMore, afterLess;
    bool isSwitching;
};

/// ISO/IEC 15444-1 Table C.2.
inline constexpr std::array<MqRow, 47> kMqRows = {{
    {0x5601, 1, 1, true},    {0x3401, 2, 6, false},   {0x1801, 3, 9, false},
    {0x0AC1, 4, 12, false},  {0x0521, 5, 29, false},  {0x0221, 38, 33, false},
    {0x5601, 7, 6, true},    {0x5401, 8, 14, false},  {0x4801, 9, 14, false},
    {0x3801, 10, 14, false}, {0x3001, 11, 17, false}, {0x2401, 12, 18, false},
    {0x1C01, 13, 20, false}, {0x1601, 29, 21, false}, {0x5601, 15, 14, true},
    {0x5401, 16, 14, false}, {0x5101, 17, 15, false}, {0x4801, 18, 16, false},
    {0x3801, 19, 17, false}, {0x3401, 20, 18, false}, {0x3001, 21, 19, false},
    {0x2801, 22, 19, false}, {0x2401, 23, 20, false}, {0x2201, 24, 21, false},
    {0x1C01, 25, 22, false}, {0x1801, 26, 23, false}, {0x1601, 27, 24, false},
    {0x1401, 28, 25, false}, {0x1201, 29, 26, false}, {0x1101, 30, 27, false},
    {0x0AC1, 31, 28, false}, {0x09C1, 32, 29, false}, {0x08A1, 33, 30, false},
    {0x0521, 34, 31, false}, {0x0441, 35, 32, false}, {0x02A1, 36, 33, false},
    {0x0221, 37, 34, false}, {0x0141, 38, 35, false}, {0x0111, 39, 36, false},
    {0x0085, 40, 37, false}, {0x0049, 41, 38, false}, {0x0025, 42, 39, false},
    {0x0015, 43, 40, false}, {0x0009, 44, 41, false}, {0x0005, 45, 42, false},
    {0x0001, 45, 43, false}, {0x5601, 46, 46, false},
}};

constexpr MqState StateOf(unsigned row, unsigned moreProbable) {
    const auto shift = static_cast<unsigned>(std::countl_zero(kMqRows[row].probability));
    return kMqRows[row].probability | (moreProbable << 16) | (row << 17) | (shift << 24);
}
constexpr unsigned IndexOf(MqState state) {
    return (state >> 16) & 0x7F;
}
constexpr unsigned MoreProbable(MqState state) {
    return (state >> 16) & 1;
}
constexpr int ShiftOf(MqState state) {
    return static_cast<int>(state >> 24);
}

struct MqSuccessors {
    MqState afterMore, afterLess;
};

/// By IndexOf().
inline constexpr auto kMqSuccessors = [] {
    std::array<MqSuccessors, 2 * kMqRows.size()> table{};
    for (unsigned row = 0; row < kMqRows.size(); ++row) {
        for (unsigned more = 0; more < 2; ++more) {
            const MqRow& r = kMqRows[row];
            table[2 * row + more] = {StateOf(r.afterMore, more),
                                     StateOf(r.afterLess, r.isSwitching ? 1 - more : more)};
        }
    }
    return table;
}();

inline constexpr auto kFirstStates = [] {
    std::array<MqState, kContexts> states{};
    states.fill(StateOf(0, 0));
    states[0] = StateOf(4, 0);
    states[kRunContext] = StateOf(3, 0);
    states[kUniformContext] = StateOf(46, 0);
    return states;
}();

/// Zero-coding context (Table D.1) from the 3 x 3 neighbours: bit 3 * row + column.
using ZeroCodingTable = std::array<std::uint8_t, 512>;

constexpr std::uint8_t ZeroCodingOfDiagonalBand(int sides, int diagonals) {
    if (diagonals >= 3) return 8;
    if (diagonals == 2) return sides >= 1 ? 7 : 6;
    if (diagonals == 1) return static_cast<std::uint8_t>(3 + std::min(sides, 2));
    return static_cast<std::uint8_t>(std::min(sides, 2));
}

constexpr std::uint8_t ZeroCodingOfLowBand(int horizontal, int vertical, int diagonals) {
    if (horizontal == 2) return 8;
    if (horizontal == 1) {
        if (vertical >= 1) return 7;
        return diagonals >= 1 ? 6 : 5;
    }
    if (vertical >= 1) return static_cast<std::uint8_t>(vertical + 2);
    return static_cast<std::uint8_t>(std::min(diagonals, 2));
}

constexpr ZeroCodingTable MakeZeroCodingTable(Orientation band) {
    ZeroCodingTable table{};
    for (unsigned n = 0; n < table.size(); ++n) {
        const auto bit = [n](unsigned place) { return static_cast<int>((n >> place) & 1); };
        const int vertical = bit(1) + bit(7);
        const int horizontal = bit(3) + bit(5);
        const int diagonals = bit(0) + bit(2) + bit(6) + bit(8);
        // NOLINTBEGIN(readability-suspicious-call-argument): HL has them the other way round
        table[n] = band == Orientation::HH
                       ? ZeroCodingOfDiagonalBand(horizontal + vertical, diagonals)
                   : band == Orientation::HL ? ZeroCodingOfLowBand(vertical, horizontal, diagonals)
                                             : ZeroCodingOfLowBand(horizontal, vertical, diagonals);
        // NOLINTEND(readability-suspicious-call-argument)
    }
    return table;
}

inline constexpr std::array<ZeroCodingTable, 4> kZeroCoding = {
    MakeZeroCodingTable(Orientation::LL), MakeZeroCodingTable(Orientation::HL),
    MakeZeroCodingTable(Orientation::LH), MakeZeroCodingTable(Orientation::HH)};

/// Sign context (Table D.3) in bits 0 to 6 and the sign's flip in bit 7, from significance in bits
/// 1 (above), 3 (left), 5 (right), 7 (below) and the sign of each in the bit below it.
inline constexpr auto kSignCoding = [] {
    std::array<std::uint8_t, 256> table{};
    for (unsigned n = 0; n < table.size(); ++n) {
        const auto sign = [n](unsigned place) {
            return ((n >> place) & 2) == 0 ? 0 : ((n >> place) & 1) != 0 ? -1 : 1;
        };
        int horizontal = std::clamp(sign(2) + sign(4), -1, 1);
        int vertical = std::clamp(sign(0) + sign(6), -1, 1);
        const bool flips = horizontal < 0 || (horizontal == 0 && vertical < 0);
        if (flips) {
            horizontal = -horizontal;
            vertical = -vertical;
        }
        const int context = horizontal == 0 ? vertical : 3 + vertical;
        table[n] = static_cast<std::uint8_t>((static_cast<int>(kFirstSignContext) + context) |
                                             (flips ? 0x80 : 0));
    }
    return table;
}();

}  // namespace quorvex::j2k
