#include "foundation/engines/jpeg2000/decoder/blocks/ht_streams.h"

#include <array>

namespace quorvex::j2k {
namespace {

constexpr std::uint64_t kLows = 0x0101010101010101;
constexpr std::uint64_t kTops = 0x8080808080808080;

/// The top bit of every byte whose low 7 bits are set.
std::uint64_t FullBytes(std::uint64_t word) {
    return ((word & ~kTops) + kLows) & kTops;
}

/// Packs bits into bytes, the first one lowest.
class Packer {
public:
    explicit Packer(unsigned char* bytes) : first_(bytes), next_(bytes) {}

    /// At most 8 bits, with zeros above.
    void Add(unsigned bits, unsigned count) {
        pending_ |= std::uint64_t{bits} << count_;
        count_ += count;
        if (count_ < 8) return;
        *next_++ = static_cast<unsigned char>(pending_);
        pending_ >>= 8;
        count_ -= 8;
    }

    void AddWord(std::uint64_t word) {
        Store(pending_ | word << count_);
        next_ += 8;
        pending_ = (word >> 1) >> (63 - count_);
    }

    /// The whole, with filler bits behind it.
    HtBits Finish(unsigned char filler, std::size_t more) {
        const auto bits = static_cast<std::uint32_t>((next_ - first_) * 8) + count_;
        *next_ = static_cast<unsigned char>(pending_ | static_cast<unsigned>(filler) << count_);
        std::memset(next_ + 1, filler, more + kHtSlack - 1);
        return {first_, bits};
    }

private:
    void Store(std::uint64_t word) {
        if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
        std::memcpy(next_, &word, sizeof word);
    }

    unsigned char* first_;
    unsigned char* next_;
    std::uint64_t pending_ = 0;  ///< fewer than 8 bits, the rest is 0
    unsigned count_ = 0;
};

std::uint64_t Reversed(std::uint64_t word) {
    return __builtin_bswap64(word);
}

constexpr std::array<unsigned char, 13> kMelExponents = {0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 4, 5};

}  // namespace

HtBits UnstuffForward(std::span<const unsigned char> stream, unsigned char filler, std::size_t more,
                      unsigned char* bits, bool& isSound) {
    Packer packer(bits);
    bool wasFull = false;
    for (std::size_t i = 0; i < stream.size();) {
        if (!wasFull && i + 8 <= stream.size()) {
            const std::uint64_t word = LoadWord(stream.data() + i);
            if ((FullBytes(word) & word) == 0) {
                packer.AddWord(word);
                i += 8;
                continue;
            }
        }
        for (const std::size_t stop = std::min(i + 8, stream.size()); i < stop; ++i) {
            const unsigned byte = stream[i];
            if (wasFull && byte > 0x7F) isSound = false;
            packer.Add(wasFull ? byte & 0x7F : byte, wasFull ? 7 : 8);
            wasFull = byte == 0xFF;
        }
    }
    return packer.Finish(filler, more);
}

HtBits UnstuffBackward(std::span<const unsigned char> stream, const HtHead& head, std::size_t more,
                       unsigned char* bits) {
    Packer packer(bits);
    packer.Add(head.bits, head.count);
    bool wasAbove = head.isAbove8F;
    for (std::size_t left = stream.size(); left > 0;) {
        if (left >= 8) {
            const std::uint64_t word = Reversed(LoadWord(stream.data() + left - 8));
            if (FullBytes(word) == 0) {
                packer.AddWord(word);
                left -= 8;
                wasAbove = stream[left] > 0x8F;
                continue;
            }
        }
        for (const std::size_t stop = left - std::min<std::size_t>(left, 8); left > stop; --left) {
            const unsigned byte = stream[left - 1];
            const bool isStuffed = wasAbove && (byte & 0x7F) == 0x7F;
            packer.Add(isStuffed ? byte & 0x7F : byte, isStuffed ? 7 : 8);
            wasAbove = byte > 0x8F;
        }
    }
    return packer.Finish(0, more);
}

void HtMelReader::Feed() {
    while (bitCount_ <= 56) {
        unsigned byte = 0xFF;  // what is read behind the end
        if (at_ != end_) {
            byte = *at_++;
            if (at_ == end_) byte |= 0x0F;  // these bits belong to the suffix length
        }
        const int count = isStuffed_ ? 7 : 8;
        bits_ |= std::uint64_t{byte & (isStuffed_ ? 0x7FU : 0xFFU)} << (64 - bitCount_ - count);
        bitCount_ += count;
        isStuffed_ = byte == 0xFF;
    }
}

HtEvents HtMelReader::Extended(HtEvents events) {
    int count = 63 - std::countl_zero(events);
    events ^= HtEvents{1} << count;
    while (count < 32) {
        if (bitCount_ < 6) Feed();
        const int exponent = kMelExponents[state_];
        const bool isRun = bits_ >> 63 != 0;
        bits_ <<= 1;
        if (isRun) {  // a whole run of events 0
            count += 1 << exponent;
            bitCount_ -= 1;
            if (state_ < kMelExponents.size() - 1) ++state_;
            continue;
        }
        const auto zeros = static_cast<int>(bits_ >> 1 >> (63 - exponent));
        events |= HtEvents{1} << (count + zeros);
        count += zeros + 1;
        bits_ <<= exponent;
        bitCount_ -= exponent + 1;
        if (state_ > 0) --state_;
    }
    return events | HtEvents{1} << count;
}

}  // namespace quorvex::j2k
