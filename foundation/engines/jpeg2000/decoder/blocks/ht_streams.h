/// The bit streams of a high-throughput block (ISO/IEC 15444-15 clause 7): stuffed bits are taken
/// out of a whole stream first, so that its reader needs no more than one load and one shift.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace quorvex::j2k {

/// Eight bytes, the first one lowest.
inline std::uint64_t LoadWord(const unsigned char* bytes) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
    return word;
}

/// Readers of plain bits may load this many bytes behind the last bit.
inline constexpr std::size_t kHtSlack = 40;

/// Bits without stuffing, the first one lowest, with filler behind them.
struct HtBits {
    const unsigned char* bytes = nullptr;
    std::uint32_t count = 0;
};

/// Takes the stuffed bits out of a stream that runs forward: the byte behind FF has 7 bits
/// (MagSgn, SigProp). `bits` has room for the stream, for `more` bytes and kHtSlack bytes.
///
/// @param filler  what the standard reads behind the end: FF or 0
/// @param more    bytes of filler that are wanted, beside kHtSlack
/// @param isSound set to false where a byte behind FF has its top bit set, which no coder writes
HtBits UnstuffForward(std::span<const unsigned char> stream, unsigned char filler, std::size_t more,
                      unsigned char* bits, bool& isSound);

/// The same for a stream that runs backward from the last byte on (VLC, MagRef): a byte whose low 7
/// bits are set has 7 bits where the byte before it, in reading order, is above 8F. Zeros follow.
///
/// @param last  the byte that was read before: above 8F or not
/// @param head  bits, at most 7, that come first, with their number
struct HtHead {
    unsigned bits = 0;
    unsigned count = 0;
    bool isAbove8F = true;
};
HtBits UnstuffBackward(std::span<const unsigned char> stream, const HtHead& head, std::size_t more,
                       unsigned char* bits);

/// Events of the MEL decoder, the next one lowest, and a 1 behind the last one.
using HtEvents = std::uint64_t;

/// The adaptive run-length decoder of MEL events.
class HtMelReader {
public:
    HtMelReader() = default;
    /// `stream` is the suffix of the clean-up segment without its last byte.
    explicit HtMelReader(std::span<const unsigned char> stream)
        : at_(stream.data()), end_(stream.data() + stream.size()) {}

    /// The events with others behind them, 32 or more.
    [[nodiscard]] HtEvents Extended(HtEvents events);

private:
    void Feed();

    const unsigned char* at_ = nullptr;
    const unsigned char* end_ = nullptr;
    std::uint64_t bits_ = 0;  ///< the next one highest
    int bitCount_ = 0;
    unsigned state_ = 0;
    bool isStuffed_ = false;  ///< the next byte has 7 bits
};

/// Reads plain bits from a register.
class HtBitReader {
public:
    explicit HtBitReader(const HtBits& bits)
        : at_(bits.bytes), bytes_(bits.bytes), size_(bits.count) {}

    /// Afterwards 56 bits are at hand.
    void Refill() {
        word_ |= LoadWord(at_) << count_;
        at_ += (63 - count_) >> 3;
        count_ |= 56;
    }
    [[nodiscard]] std::uint64_t Peek() const { return word_; }
    /// What is not in the lowest 6 bits does not count.
    void Skip(unsigned count) {
        word_ >>= count & 63;
        count_ -= count & 63;
    }
    /// Whether bits were taken that the stream does not have.
    [[nodiscard]] bool IsOverrun() const {
        return static_cast<std::size_t>(at_ - bytes_) * 8 - count_ > size_;
    }

private:
    std::uint64_t word_ = 0;
    unsigned count_ = 0;
    const unsigned char* at_;
    const unsigned char* bytes_;
    std::size_t size_;
};

}  // namespace quorvex::j2k
