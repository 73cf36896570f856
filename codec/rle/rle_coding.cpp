#include "codec/rle/rle_coding.h"

#include "foundation/types/limits.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace quorvex {
namespace {

constexpr std::size_t kHeaderBytes = 64;
constexpr std::size_t kLongest = 128;  ///< bytes of a run, and of a literal stretch
constexpr std::size_t kWorthARun = 3;  ///< equal bytes that end a literal stretch
constexpr unsigned kRunMark = 257;     ///< a run of n begins with this less n

/// How many bytes from `at` on are equal, `kLongest` at most.
std::size_t RunAt(std::span<const unsigned char> row, std::size_t at) {
    const std::size_t end = std::min(row.size(), at + kLongest);
    std::size_t next = at + 1;
    while (next < end && row[next] == row[at]) ++next;
    return next - at;
}

/// Where the literal stretch that begins at `at` ends: ahead of the next run that is worth it.
std::size_t LiteralEnd(std::span<const unsigned char> row, std::size_t at) {
    const std::size_t end = std::min(row.size(), at + kLongest);
    std::size_t equal = 1;
    for (std::size_t next = at + 1; next < end; ++next) {
        equal = row[next] == row[next - 1] ? equal + 1 : 1;
        if (equal == kWorthARun) return next + 1 - kWorthARun;
    }
    return end;
}

void CodeRow(std::span<const unsigned char> row, std::vector<unsigned char>& coded) {
    for (std::size_t at = 0; at < row.size();) {
        const std::size_t run = RunAt(row, at);
        if (run > 1) {
            coded.push_back(static_cast<unsigned char>(kRunMark - run));
            coded.push_back(row[at]);
            at += run;
            continue;
        }
        const std::size_t end = std::max(LiteralEnd(row, at), at + 1);
        coded.push_back(static_cast<unsigned char>(end - at - 1));
        coded.insert(coded.end(), row.begin() + static_cast<std::ptrdiff_t>(at),
                     row.begin() + static_cast<std::ptrdiff_t>(end));
        at = end;
    }
}

/// The byte at `place` of every pixel, row by row.
void CodeSegment(const RleSource& source, std::size_t place, std::vector<unsigned char>& coded) {
    const std::size_t pixelBytes = source.samplesPerPixel * source.bytesPerSample;
    std::vector<unsigned char> row(source.columns);
    const unsigned char* from = source.frame.data() + place;
    for (std::size_t y = 0; y < source.rows; ++y) {
        for (unsigned char& byte : row) {
            byte = *from;
            from += pixelBytes;
        }
        CodeRow(row, coded);
    }
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
