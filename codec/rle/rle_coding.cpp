#include "codec/rle/rle_coding.h"

#include "foundation/types/limits.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

namespace quorvex {
namespace {

constexpr std::size_t kHeaderBytes = 64;
constexpr std::size_t kLongest = 128;  ///< bytes of a run, and of a literal stretch
constexpr unsigned kRunMark = 257;     ///< a run of n begins with this less n
constexpr std::size_t kWordBits = 64;

/// A bit for each of eight bytes that is 0 in `bytes`, the first byte's lowest.
std::uint64_t ZeroBytes(std::uint64_t bytes) noexcept {
    constexpr std::uint64_t kLow = 0x7F7F7F7F7F7F7F7F;
    const std::uint64_t zeros = ~(((bytes & kLow) + kLow) | bytes | kLow);
    return ((zeros >> 7) * 0x0102040810204080) >> 56;
}

std::uint64_t EightBytes(const unsigned char* from) noexcept {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, from, sizeof bytes);
    return bytes;
}

/// Codes rows of one length. Bits tell which bytes equal the next one, so that the ends of runs
/// and of literal stretches are found by words.
class RowCoder {
public:
    explicit RowCoder(std::size_t columns)
        : columns_(columns),
          row_(columns / kWordBits * kWordBits + 2 * kWordBits),
          equal_(columns / kWordBits + 4) {}

    /// Takes every `step`th byte for a row, and gives where the coded ones end at `to`.
    unsigned char* Code(const unsigned char* from, std::size_t step, unsigned char* to) {
        for (std::size_t x = 0; x < columns_; ++x) row_[x] = from[x * step];
        FindEqual();
        for (std::size_t at = 0; at < columns_;) {
            const std::size_t run = RunAt(at);
            const std::size_t end = run > 1 ? at + run : LiteralEnd(at);
            if (run > 1) {
                *to++ = static_cast<unsigned char>(kRunMark - run);
                *to++ = row_[at];
            } else {
                *to++ = static_cast<unsigned char>(end - at - 1);
                to = std::copy_n(row_.data() + at, end - at, to);
            }
            at = end;
        }
        return to;
    }

    /// What a row may take: a byte more for each literal stretch, which two bytes end at least.
    [[nodiscard]] std::size_t Most() const noexcept { return columns_ + columns_ / 2 + 2; }

private:
    void FindEqual() noexcept {
        const std::size_t last = columns_ - 1;  // has no next one
        for (std::size_t word = 0; word <= last / kWordBits; ++word) {
            std::uint64_t bits = 0;
            for (std::size_t i = 0; i < kWordBits; i += 8) {
                const unsigned char* const at = row_.data() + word * kWordBits + i;
                bits |= ZeroBytes(EightBytes(at) ^ EightBytes(at + 1)) << i;
            }
            equal_[word] = bits;
        }
        equal_[last / kWordBits] &= (std::uint64_t{1} << (last % kWordBits)) - 1;
    }

    /// The equality bits from `at` on.
    [[nodiscard]] std::uint64_t From(std::size_t at) const noexcept {
        const std::size_t word = at / kWordBits;
        const std::size_t shift = at % kWordBits;
        if (shift == 0) return equal_[word];
        return equal_[word] >> shift | equal_[word + 1] << (kWordBits - shift);
    }

    /// How many bytes from `at` on are equal, `kLongest` at most.
    [[nodiscard]] std::size_t RunAt(std::size_t at) const noexcept {
        auto equal = static_cast<std::size_t>(std::countr_one(From(at)));
        if (equal == kWordBits)
            equal += static_cast<std::size_t>(std::countr_one(From(at + kWordBits)));
        return std::min(equal + 1, kLongest);
    }

    /// Where the literal stretch that begins at `at` ends: ahead of three equal bytes.
    [[nodiscard]] std::size_t LiteralEnd(std::size_t at) const noexcept {
        const std::size_t end = std::min(columns_, at + kLongest);
        for (std::size_t from = at; from < end; from += kWordBits) {
            const std::uint64_t threes = From(from) & From(from + 1);
            if (threes == 0) continue;
            const std::size_t begin = from + static_cast<std::size_t>(std::countr_zero(threes));
            return begin + 2 < end ? begin : end;
        }
        return end;
    }

    std::size_t columns_;
    std::vector<unsigned char> row_;
    std::vector<std::uint64_t> equal_;
};

/// The byte at `place` of every pixel, row by row.
void CodeSegment(const RleSource& source, std::size_t place, std::vector<unsigned char>& coded) {
    const std::size_t pixelBytes = source.samplesPerPixel * source.bytesPerSample;
    RowCoder coder(source.columns);
    const unsigned char* from = source.frame.data() + place;
    std::size_t size = coded.size();
    for (std::size_t y = 0; y < source.rows; ++y) {
        if (coded.size() < size + coder.Most()) coded.resize(2 * size + coder.Most());
        unsigned char* const to = coded.data() + size;
        size += static_cast<std::size_t>(coder.Code(from, pixelBytes, to) - to);
        from += source.columns * pixelBytes;
    }
    coded.resize(size);
    if (coded.size() % 2 != 0) coded.push_back(0);
}

void PutWord(std::vector<unsigned char>& coded, std::size_t index, std::size_t value) {
    const auto word = static_cast<std::uint32_t>(value);
    std::memcpy(coded.data() + 4 * index, &word, sizeof word);
}

}  // namespace

std::optional<std::vector<unsigned char>> CodeRle(const RleSource& source) {
    const std::size_t segments = source.samplesPerPixel * source.bytesPerSample;
    const std::size_t pixels = source.rows * source.columns;
    if (segments == 0 || segments > kMostRleSegments || pixels == 0) return std::nullopt;
    if (source.frame.size() / segments < pixels) return std::nullopt;
    std::vector<unsigned char> coded(kHeaderBytes);
    PutWord(coded, 0, segments);
    for (std::size_t i = 0; i < segments; ++i) {
        const std::size_t sample = i / source.bytesPerSample;
        const std::size_t fromHigh = i % source.bytesPerSample;
        const std::size_t place =
            sample * source.bytesPerSample + (source.bytesPerSample - 1 - fromHigh);
        PutWord(coded, i + 1, coded.size());
        CodeSegment(source, place, coded);
    }
    return coded;
}

}  // namespace quorvex
