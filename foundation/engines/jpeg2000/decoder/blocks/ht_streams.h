/// The bit streams of a high-throughput block (ISO/IEC 15444-15 clause 7.1): stuffed bits are taken
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

/// Bits without stuffing, the first one lowest, with kHtSlack bytes of filler behind them.
struct HtBits {
    const unsigned char* bytes = nullptr;
    std::uint32_t count = 0;
};

/// Takes the stuffed bits out of a stream that runs forward: the byte behind FF has 7 bits (clause
/// 7.1.2, MagSgn; 7.1.5, SigProp). `bits` has room for the stream and kHtSlack bytes.
///
/// @param filler  what the standard reads behind the end: FF or 0
/// @param isSound set to false where a byte behind FF has its top bit set, which no coder writes
HtBits UnstuffForward(std::span<const unsigned char> stream, unsigned char filler,
                      unsigned char* bits, bool& isSound);

/// The same for a stream that runs backward from the last byte on: a byte xF has 7 bits where its
/// low 7 bits are set and the byte before it, in reading order, is above 8F (clause 7.1.4, VLC;
/// 7.1.6, MagRef). Zeros follow.
///
/// @param last  the byte that was read before: above 8F or not
/// @param head  bits, at most 7, that come first, with their number
struct HtHead {
    unsigned bits = 0;
    unsigned count = 0;
    bool isAbove8F = true;
};
HtBits UnstuffBackward(std::span<const unsigned char> stream, const HtHead& head,
                       unsigned char* bits);

/// The adaptive run-length decoder of clause 7.3.3, which keeps the next events in a word.
class HtMelReader {
public:
    /// `stream` is the suffix of the clean-up segment without its last byte.
    explicit HtMelReader(std::span<const unsigned char> stream)
        : at_(stream.data()), end_(stream.data() + stream.size()) {}

    /// There are at least `kReady` events behind the next one.
    static constexpr int kReady = 3;
    void MakeReady() {
        if (count_ < kReady) Decode();
    }
    /// The next event; taken away where `isTaken`, which is 0 or 1.
    [[nodiscard]] unsigned Next() const { return static_cast<unsigned>(events_ & 1); }
    void Take(unsigned isTaken) {
        events_ >>= isTaken;
        count_ -= static_cast<int>(isTaken);
    }

private:
    void Decode();
    void Feed();

    const unsigned char* at_;
    const unsigned char* end_;
    std::uint64_t events_ = 0;  ///< the next one lowest
    int count_ = 0;
    std::uint64_t bits_ = 0;  ///< the next one highest
    int bitCount_ = 0;
    unsigned state_ = 0;
    bool isStuffed_ = false;  ///< the next byte has 7 bits
};

/// Reads plain bits from a register; zeros follow the last one.
class HtBitReader {
public:
    explicit HtBitReader(const HtBits& bits)
        : bytes_(bits.bytes),
          at_(bits.bytes),
          end_(bits.bytes + bits.count / 8 + 9),
          size_(bits.count) {}

    /// Afterwards 56 bits are at hand.
    void Refill() {
        word_ |= LoadWord(at_) << count_;
        at_ += (63 - count_) >> 3;
        at_ = std::min(at_, end_);
        count_ |= 56;
    }
    [[nodiscard]] std::uint64_t Peek() const { return word_; }
    void Skip(unsigned count) {
        word_ >>= count;
        count_ -= count;
    }
    /// Whether bits were taken that the stream does not have.
    [[nodiscard]] bool IsOverrun() const {
        return static_cast<std::size_t>(at_ - bytes_) * 8 - count_ > size_;
    }

private:
    const unsigned char* bytes_;
    const unsigned char* at_;
    const unsigned char* end_;  ///< only zeros are here
    std::uint64_t word_ = 0;
    unsigned count_ = 0;
    std::size_t size_;
};

}  // namespace quorvex::j2k
