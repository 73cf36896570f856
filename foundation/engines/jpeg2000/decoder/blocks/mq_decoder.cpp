#include "foundation/engines/jpeg2000/decoder/blocks/mq_decoder.h"

#include <algorithm>

namespace quorvex::j2k {
namespace {

/// Bytes with up to seven bits pending below them.
class BitSink {
public:
    explicit BitSink(unsigned char* out) noexcept : begin_(out), out_(out) {}

    void PutWord(std::uint32_t word) noexcept {
        const std::uint64_t joined = (std::uint64_t{pending_} << 32) | word;
        const auto whole = __builtin_bswap32(static_cast<std::uint32_t>(joined >> count_));
        std::memcpy(out_, &whole, sizeof whole);
        out_ += sizeof whole;
        pending_ = static_cast<std::uint32_t>(joined) & ((1U << count_) - 1);
    }

    void PutByte(unsigned byte) noexcept {
        const unsigned joined = (pending_ << 8) | byte;
        *out_++ = static_cast<unsigned char>(joined >> count_);
        pending_ = joined & ((1U << count_) - 1);
    }

    /// The byte behind 0xFF: seven bits, and one that is added to the bits before.
    void PutStuffed(unsigned byte) noexcept {
        const unsigned joined = (pending_ << 7) + byte;
        if ((joined >> (count_ + 7)) != 0) Carry();
        if (count_ == 0) {
            pending_ = joined & 0x7F;
            count_ = 7;
        } else {
            --count_;
            *out_++ = static_cast<unsigned char>(joined >> count_);
            pending_ = joined & ((1U << count_) - 1);
        }
    }

    /// Ends with ones.
    [[nodiscard]] std::size_t End() noexcept {
        PutByte(0xFF);
        const auto size = static_cast<std::size_t>(out_ - begin_);
        std::fill_n(out_, kSegmentTail, static_cast<unsigned char>(0xFF));
        return size;
    }

    void BeginWithZeroBit() noexcept { count_ = 1; }

private:
    void Carry() noexcept {
        for (unsigned char* place = out_; place > begin_ && ++*--place == 0;) {
        }
    }

    unsigned char* begin_;
    unsigned char* out_;
    std::uint32_t pending_ = 0;
    unsigned count_ = 0;
};

}  // namespace

std::size_t UnstuffSegment(std::span<const unsigned char> segment,
                           std::vector<unsigned char>& bits) {
    const std::size_t room = segment.size() + 2 * kSegmentTail;
    if (bits.size() < room) bits.resize(room);
    BitSink sink(bits.data());
    sink.BeginWithZeroBit();  // the code register starts one bit lower than the interval
    const unsigned char* place = segment.data();
    const unsigned char* const end = place + segment.size();
    while (place != end) {
        const void* found = std::memchr(place, 0xFF, static_cast<std::size_t>(end - place));
        const auto* run = found == nullptr ? end : static_cast<const unsigned char*>(found) + 1;
        for (; run - place >= 4; place += 4) {
            std::uint32_t word = 0;
            std::memcpy(&word, place, sizeof word);
            sink.PutWord(__builtin_bswap32(word));
        }
        while (place != run) sink.PutByte(*place++);
        if (found == nullptr || place == end || *place > 0x8F) break;
        sink.PutStuffed(*place);
        // A stuffed byte is at most 0x8F: what follows it is a plain byte.
        ++place;
    }
    return sink.End();
}

}  // namespace quorvex::j2k
