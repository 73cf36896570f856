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
std::size_t UnstuffSegment(std::span<const unsigned char> segment,
                           std::vector<unsigned char>& bits);

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

    /// Takes the same time whatever the decision is.
    [[gnu::always_inline]] inline unsigned Decode(MqState& context) noexcept {
        const MqState state = context;
        const std::uint64_t probability = std::uint64_t{state} << 48;
        const std::uint64_t upper = interval_ - probability;
        return DecodeFrom(context, state, probability, upper);
    }

    /// Faster where the more probable symbol is much more probable.
    [[gnu::always_inline]] inline unsigned DecodeSkewed(MqState& context) noexcept {
        const MqState state = context;
        const std::uint64_t probability = std::uint64_t{state} << 48;
        const std::uint64_t upper = interval_ - probability;
        if (code_ >= probability && static_cast<std::int64_t>(upper) < 0) [[likely]] {
            code_ -= probability;
            interval_ = upper;
            return MoreProbable(state);
        }
        return DecodeFrom(context, state, probability, upper);
    }

private:
    [[gnu::always_inline]] inline unsigned DecodeFrom(MqState& context, MqState state,
                                                      std::uint64_t probability,
                                                      std::uint64_t upper) noexcept {
        const MqSuccessors next = kMqSuccessors[IndexOf(state)];
        const bool isLower = code_ < probability;
        const auto isLess = static_cast<unsigned>(isLower != (upper < probability));
        Narrow(state, probability, upper, isLower);
        const MqState moved = Select(shift_ != 0, next.afterMore, state);
        context = Select(isLess != 0, next.afterLess, moved);
        return MoreProbable(state) ^ isLess;
    }

    // Both outcomes are worked out, and one is taken.
    [[gnu::always_inline]] inline void Narrow(MqState state, std::uint64_t probability,
                                              std::uint64_t upper, bool isLower) noexcept {
        const auto upperShift = static_cast<unsigned>(__builtin_clzll(upper));
        const auto lowerShift = static_cast<unsigned>(ShiftOf(state));
        const std::uint64_t upperCode = (code_ - probability) << upperShift;
        const std::uint64_t lowerCode = code_ << lowerShift;
        const std::uint64_t upperInterval = upper << upperShift;
        const std::uint64_t lowerInterval = probability << lowerShift;
        interval_ = Select(isLower, lowerInterval, upperInterval);
        code_ = Select(isLower, lowerCode, upperCode);
        shift_ = static_cast<int>(Select(isLower, lowerShift, upperShift));
        ahead_ -= shift_;
        if (ahead_ < 0) [[unlikely]]
            Refill();
    }

    template <class T>
    [[gnu::always_inline]] static inline T Select(bool condition, T yes, T no) noexcept {
#if defined(__clang__)
        return __builtin_unpredictable(condition) ? yes : no;
#else
        T mask = T{0} - T{condition};
        asm("" : "+r"(mask));  // or the compiler makes a branch of it
        return no ^ ((yes ^ no) & mask);
#endif
    }

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
    int shift_ = 0;  ///< of the last decision
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
