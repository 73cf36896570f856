/// The arithmetic decoder of ISO/IEC 15444-1 Annex C, without a branch that depends on a decision.
#pragma once

#include "foundation/engines/jpeg2000/decoder/blocks/mq_tables.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace quorvex::j2k {

/// A codeword segment as plain bits: stuffed bits taken out, carries done, ones behind the end.
/// `bits` is overwritten. Gives the length in bytes that counts; at least kSegmentTail follow.
std::size_t UnstuffSegment(std::span<const unsigned char> segment, std::vector<unsigned char>& bits);

inline constexpr std::size_t kSegmentTail = 16;

/// Interval and code are kept at the upper end of 64 bits, so that one count of leading zeros gives
/// the shift; the bits below the upper 16 of the code are read ahead.
class MqDecoder {
public:
    void Begin(const unsigned char* bits, std::size_t size) noexcept {
        interval_ = std::uint64_t{0x8000} << 48;
        code_ = std::uint64_t{Word(bits)} << 32;
        ahead_ = 16;
        next_ = bits + 4;
        last_ = bits + size + kSegmentTail - 4;
    }

    [[gnu::always_inline]] inline unsigned Decode(MqState& context) noexcept {
        const MqState state = context;
        const MqSuccessors next = kMqSuccessors[state >> 16];
        const std::uint64_t probability = std::uint64_t{state} << 48;
        const std::uint64_t upper = interval_ - probability;
        const bool isLower = code_ < probability;
        const bool isExchanged = upper < probability;
        const std::uint64_t lowerMask = std::uint64_t{0} - std::uint64_t{isLower};
        interval_ = upper ^ ((upper ^ probability) & lowerMask);
        code_ -= probability & ~lowerMask;
        const int shift = std::countl_zero(interval_);
        const std::uint32_t isLess = static_cast<std::uint32_t>(isLower != isExchanged);
        const std::uint32_t moved = shift != 0 ? next.afterMore : state;
        context = isLess != 0 ? next.afterLess : moved;
        interval_ <<= shift;
        code_ <<= shift;
        ahead_ -= shift;
        if (ahead_ < 0) [[unlikely]] Refill();
        return ((state >> 16) & 1) ^ isLess;
    }

private:
    static std::uint32_t Word(const unsigned char* bytes) noexcept {
        std::uint32_t word = 0;
        std::memcpy(&word, bytes, sizeof word);
        return __builtin_bswap32(word);
    }

    [[gnu::always_inline]] inline void Refill() noexcept {
        code_ |= std::uint64_t{Word(next_)} << (16 - ahead_);
        ahead_ += 32;
        next_ = last_ - next_ > 4 ? next_ + 4 : last_;
    }

    std::uint64_t interval_ = 0;
    std::uint64_t code_ = 0;
    int ahead_ = 0;
    const unsigned char* next_ = nullptr;
    const unsigned char* last_ = nullptr;
};

/// Raw bits of the bypass style, ones behind the end.
class RawBits {
public:
    explicit RawBits(std::span<const unsigned char> segment) noexcept : bytes_(segment) {}

    [[nodiscard]] unsigned Decode() noexcept {
        if (left_ == 0) ReadByte();
        --left_;
        return (byte_ >> left_) & 1;
    }

private:
    void ReadByte() noexcept {
        const unsigned next = place_ < bytes_.size() ? bytes_[place_] : 0xFF;
        const bool isStuffed = byte_ == 0xFF;
        if (isStuffed && next > 0x8F) {  // a marker: the segment ends here
            left_ = 8;
            return;
        }
        if (place_ < bytes_.size()) ++place_;
        byte_ = next;
        left_ = isStuffed ? 7 : 8;
    }

    std::span<const unsigned char> bytes_;
    std::size_t place_ = 0;
    unsigned byte_ = 0;
    unsigned left_ = 0;
};

}  // namespace quorvex::j2k
