#include "codec/rle/rle_header.h"

#include <algorithm>

namespace quorvex {
namespace {

constexpr std::size_t kHeaderBytes = 64;

std::size_t ReadWord(std::span<const unsigned char> source, std::size_t index) noexcept {
    const auto bytes = source.subspan(4 * index, 4);
    return std::size_t{bytes[0]} | std::size_t{bytes[1]} << 8 | std::size_t{bytes[2]} << 16 |
           std::size_t{bytes[3]} << 24;
}

RleSegment SegmentBetween(std::span<const unsigned char> source, std::size_t begin,
                          std::size_t end) noexcept {
    const bool isInside = begin <= source.size() && end <= source.size();
    begin = std::min(begin, source.size());
    end = std::clamp(end, begin, source.size());
    return {source.subspan(begin, end - begin), isInside};
}

}  // namespace

std::optional<RleHeader> ReadRleHeader(std::span<const unsigned char> source) noexcept {
    if (source.size() < kHeaderBytes) return std::nullopt;
    RleHeader header{.count = ReadWord(source, 0), .segments = {}};
    if (header.count > kMostRleSegments) {
        RefuseBy(Limit::kMostSegments);
        return std::nullopt;
    }
    for (std::size_t i = 0; i < header.count; ++i) {
        const bool isLast = i + 1 == header.count;
        const std::size_t end = isLast ? source.size() : ReadWord(source, i + 2);
        header.segments[i] = SegmentBetween(source, ReadWord(source, i + 1), end);
    }
    return header;
}

}  // namespace quorvex
