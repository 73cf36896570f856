/// Huffman tables as the decoder of lossless pictures looks them up.
#pragma once

#include "foundation/engines/lossless/lossless_scan.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>

namespace quorvex {

/// The next bits of a scan, the first on top. Words are read ahead: LosslessBytes supplies them.
struct LosslessBits {
    const unsigned char* next = nullptr;
    std::uint64_t bits = 0;
    unsigned held = 0;  ///< of `bits`; what lies below them will be read again

    /// Afterwards at least 56 bits are held.
    void Refill() noexcept {
        static_assert(std::endian::native == std::endian::little);
        std::uint64_t word;
        std::memcpy(&word, next, sizeof word);
        bits |= __builtin_bswap64(word) >> held;
        next += (63 - held) >> 3;
        held |= 56;
    }
    void Drop(unsigned count) noexcept {
        bits <<= count;
        held -= count;
    }
};

/// One table's codes, and the differences behind them shifted by the point transform.
///
/// Three ways through the same codes: Whole() is fast where a code and its difference are short
/// together, Pair() faster still where no component comes between two differences, and Code() does
/// not mind long differences.
class LosslessTable {
public:
    static constexpr unsigned kBits = 13;         ///< looked up at once
    static constexpr std::uint32_t kMiss = 0x80;  ///< in an entry's low byte: does not fit
    static constexpr unsigned kLengthMask = 63;

    /// False for codes that are no prefix code, or have a code of ones alone: both are errors.
    [[nodiscard]] bool Build(const LosslessTableSegment& segment, unsigned pointTransform) noexcept;

    /// The difference times 65536, plus the number of bits of code and difference together.
    [[nodiscard]] std::uint32_t Whole(std::uint64_t bits) const noexcept {
        return wholes_[bits >> (64 - kBits)];
    }

    /// One difference or two, as many as fit together: the number of bits of all, that of the
    /// differences times 64, and both differences in 12 and 10 bits on top; 0 where none fits. Of
    /// tables without a point transform.
    [[nodiscard]] std::uint32_t Pair(std::uint64_t bits) const noexcept {
        return pairs_[bits >> (64 - kBits)];
    }
    [[nodiscard]] static std::uint32_t CountOf(std::uint32_t pair) noexcept {
        return pair >> 6 & 3;
    }
    [[nodiscard]] static std::uint32_t FirstOf(std::uint32_t pair) noexcept {
        return static_cast<std::uint32_t>(static_cast<std::int32_t>(pair << 10) >> 20);
    }
    [[nodiscard]] static std::uint32_t SecondOf(std::uint32_t pair) noexcept {
        return static_cast<std::uint32_t>(static_cast<std::int32_t>(pair) >> 22);
    }
    [[nodiscard]] bool HasPairs() const noexcept { return pointTransform_ == 0; }

    /// The bits of code and difference together, those of the code times 256, those of the
    /// difference times 65536, and a difference that has none in the top byte's highest bit.
    [[nodiscard]] std::uint32_t Code(std::uint64_t bits) const noexcept {
        return codes_[bits >> (64 - kBits)];
    }
    /// The difference that a hit of Code() begins with on top of `bits`.
    [[nodiscard]] std::uint32_t Difference(std::uint64_t bits, std::uint32_t code) const noexcept {
        const std::uint64_t rest = bits << ((code >> 8) & kLengthMask);
        const unsigned length = (code >> 16) & kLengthMask;
        const auto value = static_cast<std::uint32_t>((rest >> 1) >> (63 - length));
        // Those that begin with 0 count from the least negative one.
        const auto isBelow = static_cast<std::uint32_t>(rest >> 63) - 1;
        const std::uint32_t below = isBelow & ((1U << length) - 1);
        return (value - below + (code >> 31 << 15)) << pointTransform_;
    }

    /// Reads one difference, however long; nothing where the bits are no code.
    [[nodiscard]] std::optional<std::uint32_t> ReadOne(LosslessBits& reader) const noexcept {
        reader.Refill();
        const std::uint64_t bits = reader.bits;
        const std::uint32_t code = Code(bits);
        if ((code & kMiss) != 0) return ReadLong(reader);
        reader.Drop(code & kLengthMask);
        return Difference(bits, code);
    }

private:
    [[nodiscard]] std::optional<std::uint32_t> ReadLong(LosslessBits& reader) const noexcept;
    void EnterPairs() noexcept;
    void Enter(std::uint32_t code, unsigned length, unsigned category) noexcept;

    std::array<std::uint32_t, std::size_t{1} << kBits> wholes_;
    std::array<std::uint32_t, std::size_t{1} << kBits> codes_;
    std::array<std::uint32_t, std::size_t{1} << kBits> pairs_;
    // By code length: the first 16 bits behind its codes, its first code, and that one's place.
    std::array<std::uint32_t, 17> limits_;
    std::array<std::uint32_t, 17> firstCodes_;
    std::array<std::uint32_t, 17> firstPlaces_;
    std::array<std::uint8_t, kLosslessCategories> categories_;
    unsigned pointTransform_ = 0;
};

}  // namespace quorvex
