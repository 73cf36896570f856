#include "foundation/engines/jpeg2000/tile_part_lengths.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>

namespace quorvex {
namespace {

using Bytes = std::span<const unsigned char>;

constexpr std::uint32_t kStartOfTilePart = 0xFF90;
constexpr std::uint32_t kTilePartLengths = 0xFF55;
constexpr std::uint32_t kEndOfCodestream = 0xFFD9;
// Tile numbers of 16 bits, lengths of 32.
constexpr std::uint32_t kWideEntries = 0x60;
constexpr std::size_t kEntryBytes = 6;
constexpr std::size_t kMostEntries = (0xFFFF - 4) / kEntryBytes;

std::optional<std::uint32_t> NumberAt(Bytes bytes, std::size_t place, int width) noexcept {
    if (place > bytes.size() || bytes.size() - place < static_cast<std::size_t>(width))
        return std::nullopt;
    std::uint32_t number = 0;
    for (int i = 0; i < width; ++i)
        number = number << 8 | bytes[place + static_cast<std::size_t>(i)];
    return number;
}

void Append(std::vector<unsigned char>& bytes, std::uint32_t number, int width) {
    for (int shift = 8 * (width - 1); shift >= 0; shift -= 8)
        bytes.push_back(static_cast<unsigned char>(number >> shift));
}

// Where the first tile-part begins.
std::optional<std::size_t> EndOfMainHeader(Bytes stream) noexcept {
    std::size_t place = 2;
    for (;;) {
        const auto marker = NumberAt(stream, place, 2);
        if (!marker) return std::nullopt;
        if (*marker == kStartOfTilePart) return place;
        const auto length = NumberAt(stream, place + 2, 2);
        if (!length || *length < 2) return std::nullopt;
        place += 2 + *length;
    }
}

}  // namespace

bool AddTilePartLengths(std::vector<unsigned char>& codestream) {
    const Bytes stream(codestream);
    const auto header = EndOfMainHeader(stream);
    if (!header) return false;
    std::vector<unsigned char> entries;
    std::size_t place = *header;
    while (NumberAt(stream, place, 2) == kStartOfTilePart) {
        const auto tile = NumberAt(stream, place + 4, 2);
        const auto length = NumberAt(stream, place + 6, 4);
        if (!tile || !length || *length == 0 || *length > stream.size() - place) return false;
        Append(entries, *tile, 2);
        Append(entries, *length, 4);
        place += *length;
    }
    const std::size_t count = entries.size() / kEntryBytes;
    if (count == 0 || count > kMostEntries || NumberAt(stream, place, 2) != kEndOfCodestream)
        return false;
    std::vector<unsigned char> segment;
    Append(segment, kTilePartLengths, 2);
    Append(segment, static_cast<std::uint32_t>(4 + entries.size()), 2);
    Append(segment, 0, 1);  // the first segment of its kind
    Append(segment, kWideEntries, 1);
    segment.insert(segment.end(), entries.begin(), entries.end());
    codestream.insert(codestream.begin() + static_cast<std::ptrdiff_t>(*header), segment.begin(),
                      segment.end());
    return true;
}

}  // namespace quorvex
