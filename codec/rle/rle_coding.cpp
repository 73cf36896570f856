#include "codec/rle/rle_coding.h"

#include "foundation/raster/byte_runs.h"
#include "foundation/types/cancellation.h"
#include "foundation/types/limits.h"
#include "foundation/types/progress.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

namespace quorvex {
namespace {

constexpr std::size_t kHeaderBytes = 64;
constexpr std::size_t kLongest = 128;  ///< bytes of a run, and of a literal stretch
constexpr unsigned kRunMark = 257;     ///< a run of n begins with this less n
constexpr std::size_t kStride = 64;
constexpr std::size_t kRowsBetweenAsking = 32;
constexpr std::size_t kBandBytes = 1 << 14;  ///< coded bytes that are still in the cache

/// Codes one plane of rows of one length. Bits tell which bytes equal the next one, so that the
/// ends of runs and of literal stretches are found by words.
class PlaneCoder {
public:
    PlaneCoder(std::size_t pixelBytes, std::size_t place, std::size_t columns)
        : pixelBytes_(pixelBytes), place_(place), columns_(columns), row_(columns) {}

    /// Codes the byte of its place of each pixel, and gives where the coded ones end at `to`.
    unsigned char* Code(const unsigned char* pixels, unsigned char* to) {
        row_.Take(pixels, pixelBytes_, place_);
        const unsigned char* const bytes = row_.Bytes();
        for (std::size_t at = 0; at < columns_;) {
            const std::size_t run = RunAt(at);
            if (run > 1) {
                *to++ = static_cast<unsigned char>(kRunMark - run);
                *to++ = bytes[at];
                at += run;
            } else {
                const std::size_t count = LiteralEnd(at) - at;
                *to++ = static_cast<unsigned char>(count - 1);
                for (std::size_t done = 0; done < count; done += kStride)
                    std::memcpy(to + done, bytes + at + done, kStride);
                to += count;
                at += count;
            }
        }
        return to;
    }

    /// What a row may take: a byte more for each literal stretch, which two bytes end at least, and
    /// what the last stride writes too much.
    [[nodiscard]] std::size_t Most() const noexcept {
        return columns_ + columns_ / 2 + 2 + kStride;
    }

private:
    /// How many bytes from `at` on are equal, `kLongest` at most.
    [[nodiscard]] std::size_t RunAt(std::size_t at) const noexcept {
        std::size_t equal = 0;
        for (; equal < kLongest; equal += PlaneRow::kKnownBits) {
            const auto more = static_cast<std::size_t>(std::countr_one(row_.EqualNext(at + equal)));
            if (more < PlaneRow::kKnownBits) return std::min(equal + more + 1, kLongest);
        }
        return kLongest;
    }

    /// Where the literal stretch that begins at `at` ends: ahead of three equal bytes.
    [[nodiscard]] std::size_t LiteralEnd(std::size_t at) const noexcept {
        const std::size_t end = std::min(columns_, at + kLongest);
        for (std::size_t from = at; from < end; from += PlaneRow::kKnownBits) {
            const std::uint64_t threes = row_.EqualNextTwo(from);
            if (threes == 0) continue;
            const std::size_t begin = from + static_cast<std::size_t>(std::countr_zero(threes));
            return begin + 2 < end ? begin : end;
        }
        return end;
    }

    std::size_t pixelBytes_;
    std::size_t place_;
    std::size_t columns_;
    PlaneRow row_;
};

/// The byte at `place` of every pixel, row by row.
void CodeSegment(const RleSource& source, std::size_t place, std::vector<unsigned char>& coded) {
    const std::size_t pixelBytes = source.samplesPerPixel * source.bytesPerSample;
    PlaneCoder coder(pixelBytes, place, source.columns);
    std::vector<unsigned char> band(kBandBytes + coder.Most());
    unsigned char* to = band.data();
    const auto cancellation = Cancellation::OfThisThread();
    for (std::size_t y = 0; y < source.rows; ++y) {
        if (y % kRowsBetweenAsking == 0) {
            TellProgress(y, source.rows);
            cancellation.ThrowIfAsked();
        }
        to = coder.Code(source.frame.data() + y * source.columns * pixelBytes, to);
        if (to < band.data() + kBandBytes) continue;
        coded.insert(coded.end(), band.data(), to);
        to = band.data();
    }
    coded.insert(coded.end(), band.data(), to);
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
    std::vector<unsigned char> coded;
    coded.reserve(kHeaderBytes + source.frame.size() + source.frame.size() / kLongest);
    coded.resize(kHeaderBytes);
    PutWord(coded, 0, segments);
    for (std::size_t i = 0; i < segments; ++i) {
        const std::size_t sample = i / source.bytesPerSample;
        const std::size_t fromHigh = i % source.bytesPerSample;
        const std::size_t place =
            sample * source.bytesPerSample + (source.bytesPerSample - 1 - fromHigh);
        PutWord(coded, i + 1, coded.size());
        const ProgressStretch stretch(i, segments);
        CodeSegment(source, place, coded);
    }
    if (coded.size() < coded.capacity() / 2) coded.shrink_to_fit();
    return coded;
}

}  // namespace quorvex
