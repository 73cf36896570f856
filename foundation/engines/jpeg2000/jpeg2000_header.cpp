#include "foundation/engines/jpeg2000/jpeg2000_header.h"

#include <algorithm>
#include <array>

namespace quorvex {
namespace {

using Bytes = std::span<const unsigned char>;

constexpr unsigned kSoc = 0xFF4F;
constexpr unsigned kSiz = 0xFF51;
constexpr unsigned kCod = 0xFF52;
constexpr unsigned kCoc = 0xFF53;
constexpr unsigned kSot = 0xFF90;
constexpr unsigned kSod = 0xFF93;
constexpr std::size_t kSizFixedPart = 36;
constexpr std::size_t kSotBytes = 12;

unsigned Word(Bytes bytes, std::size_t place) noexcept {
    return (static_cast<unsigned>(bytes[place]) << 8) | bytes[place + 1];
}

std::uint32_t Long(Bytes bytes, std::size_t place) noexcept {
    return (std::uint32_t{Word(bytes, place)} << 16) | Word(bytes, place + 2);
}

std::uint64_t CeilDivide(std::uint64_t a, std::uint64_t b) noexcept {
    return (a + b - 1) / b;
}

bool BeginsWithCodestream(Bytes bytes) noexcept {
    return bytes.size() >= 4 && Word(bytes, 0) == kSoc && Word(bytes, 2) == kSiz;
}

struct Segment {
    unsigned marker = 0;
    Bytes content;
    std::size_t next = 0;
};

std::optional<Segment> SegmentAt(Bytes codestream, std::size_t place) noexcept {
    if (place + 4 > codestream.size()) return std::nullopt;
    const std::size_t length = Word(codestream, place + 2);
    if (length < 2 || place + 2 + length > codestream.size()) return std::nullopt;
    return Segment{Word(codestream, place), codestream.subspan(place + 4, length - 2),
                   place + 2 + length};
}

struct Grid {
    std::uint32_t right, bottom, left, top;
    std::uint32_t tileWidth, tileHeight, tileLeft, tileTop;
};

Grid ReadGrid(Bytes siz) noexcept {
    return {Long(siz, 2),  Long(siz, 6),  Long(siz, 10), Long(siz, 14),
            Long(siz, 18), Long(siz, 22), Long(siz, 26), Long(siz, 30)};
}

bool IsSound(const Grid& grid) noexcept {
    return grid.right > grid.left && grid.bottom > grid.top && grid.tileWidth > 0 &&
           grid.tileHeight > 0 && grid.tileLeft <= grid.left && grid.tileTop <= grid.top;
}

struct ComponentEntry {
    unsigned depth, dx, dy;
};

ComponentEntry ReadComponent(Bytes siz, std::size_t index) noexcept {
    const Bytes entry = siz.subspan(kSizFixedPart + 3 * index, 3);
    return {entry[0], entry[1], entry[2]};
}

bool ReadComponents(Bytes siz, Jpeg2000Header& header) noexcept {
    const std::size_t count = Word(siz, 34);
    if (count == 0 || siz.size() < kSizFixedPart + 3 * count) return false;
    const ComponentEntry first = ReadComponent(siz, 0);
    header.components = static_cast<int>(count);
    header.precision = static_cast<int>(first.depth & 0x7F) + 1;
    header.isSigned = (first.depth & 0x80) != 0;
    for (std::size_t i = 0; i < count; ++i) {
        const ComponentEntry entry = ReadComponent(siz, i);
        if (entry.depth != first.depth || entry.dx == 0 || entry.dy == 0) return false;
        if (entry.dx != 1 || entry.dy != 1) header.isSubsampled = true;
    }
    return first.dx == 1 && first.dy == 1;
}

bool ReadSize(Bytes siz, Grid& grid, Jpeg2000Header& header) noexcept {
    if (siz.size() < kSizFixedPart) return false;
    grid = ReadGrid(siz);
    if (!IsSound(grid)) return false;
    header.width = grid.right - grid.left;
    header.height = grid.bottom - grid.top;
    header.tiles = CeilDivide(grid.right - grid.tileLeft, grid.tileWidth) *
                   CeilDivide(grid.bottom - grid.tileTop, grid.tileHeight);
    return ReadComponents(siz, header);
}

// Precincts of one tile in one resolution: `down` halvings below the tile's own size.
std::uint64_t Precincts(std::uint64_t width, std::uint64_t height, unsigned down,
                        unsigned exponents) noexcept {
    const auto along = [down](std::uint64_t size, unsigned exponent) {
        return CeilDivide(CeilDivide(size, std::uint64_t{1} << down), std::uint64_t{1} << exponent);
    };
    return along(width, exponents & 15) * along(height, exponents >> 4);
}

/// The most that any coding style in a codestream asks of a tile.
struct Demand {
    std::uint64_t layers = 0;
    std::uint64_t precincts = 0;
};

// From the number of levels on, COD and COC segments are alike.
bool ReadStyle(Bytes style, bool hasPrecincts, const Grid& grid, const Jpeg2000Header& header,
               Demand& demand) noexcept {
    constexpr unsigned kMostLevels = 32;
    constexpr unsigned kLargestPrecincts = 0xFF;
    constexpr std::size_t kFixedPart = 5;
    if (style.size() < kFixedPart) return false;
    const unsigned levels = style[0];
    if (levels > kMostLevels || (hasPrecincts && style.size() < kFixedPart + levels + 1))
        return false;
    std::uint64_t precincts = 0;
    for (unsigned r = 0; r <= levels; ++r) {
        precincts += Precincts(std::min(grid.tileWidth, header.width),
                               std::min(grid.tileHeight, header.height), levels - r,
                               hasPrecincts ? style[kFixedPart + r] : kLargestPrecincts);
    }
    demand.precincts = std::max(demand.precincts, precincts);
    return true;
}

// False for a damaged segment; segments of other kinds are skipped.
bool ReadCoding(const Segment& segment, const Grid& grid, const Jpeg2000Header& header,
                Demand& demand) noexcept {
    const Bytes content = segment.content;
    if (segment.marker == kCod) {
        if (content.size() < 5) return false;
        demand.layers = std::max<std::uint64_t>(demand.layers, Word(content, 2));
        return ReadStyle(content.subspan(5), (content[0] & 1) != 0, grid, header, demand);
    }
    if (segment.marker != kCoc) return true;
    const std::size_t numberBytes = header.components > 256 ? 2 : 1;
    if (content.size() < numberBytes + 1) return false;
    return ReadStyle(content.subspan(numberBytes + 1), (content[numberBytes] & 1) != 0, grid,
                     header, demand);
}

std::uint64_t Packets(const Demand& demand, const Jpeg2000Header& header) noexcept {
    std::uint64_t packets = 0;
    const bool overflow =
        __builtin_mul_overflow(demand.precincts, demand.layers, &packets) ||
        __builtin_mul_overflow(packets, header.tiles, &packets) ||
        __builtin_mul_overflow(packets, static_cast<std::uint64_t>(header.components), &packets);
    return overflow ? UINT64_MAX : packets;
}

// Length of the tile-part at `place`; 0 where none is there or it is not whole. The last tile-part
// may leave its length open.
std::size_t TilePartLength(Bytes codestream, std::size_t place) noexcept {
    if (place + kSotBytes > codestream.size() || Word(codestream, place) != kSot) return 0;
    const std::size_t rest = codestream.size() - place;
    const std::size_t length = Long(codestream, place + 6);
    if (length == 0) return rest;
    return length < kSotBytes + 2 || length > rest ? 0 : length;
}

// Reads the segments from `place` on up to one that begins something else, and gives its place;
// nothing where they are damaged or break off.
template <class Read>
std::optional<std::size_t> ReadSegments(Bytes codestream, std::size_t place, unsigned end,
                                        const Read& read) noexcept {
    while (place + 2 <= codestream.size() && Word(codestream, place) != end) {
        const auto segment = SegmentAt(codestream, place);
        if (!segment || !read(*segment)) return std::nullopt;
        place = segment->next;
    }
    return place + 2 <= codestream.size() ? std::optional(place) : std::nullopt;
}

// Tiles may have a coding style of their own. False for a damaged one.
bool ReadTileStyles(Bytes codestream, std::size_t place, const Grid& grid,
                    const Jpeg2000Header& header, Demand& demand) noexcept {
    bool isSound = true;
    const auto read = [&](const Segment& segment) {
        isSound = ReadCoding(segment, grid, header, demand);
        return isSound;
    };
    while (place + kSotBytes <= codestream.size() && Word(codestream, place) == kSot) {
        if (!ReadSegments(codestream, place + kSotBytes, kSod, read)) break;
        const std::size_t length = TilePartLength(codestream, place);
        if (length == 0) break;
        place += length;
    }
    return isSound;
}

// The box at `place`: its kind, and where its content begins and ends; nothing past the end.
struct Box {
    std::uint32_t kind = 0;
    std::size_t begin = 0;
    std::size_t end = 0;
};

std::optional<Box> BoxAt(Bytes bytes, std::size_t place) noexcept {
    constexpr std::size_t kShort = 8;
    constexpr std::size_t kLong = 16;
    if (place + kShort > bytes.size()) return std::nullopt;
    const std::uint64_t rest = bytes.size() - place;
    const std::uint32_t kind = Long(bytes, place + 4);
    std::uint64_t length = Long(bytes, place);
    std::size_t head = kShort;
    if (length == 1) {
        if (rest < kLong) return std::nullopt;
        length = (std::uint64_t{Long(bytes, place + 8)} << 32) | Long(bytes, place + 12);
        head = kLong;
    }
    if (length == 0) length = rest;
    if (length < head) return std::nullopt;
    return Box{kind, place + head, place + static_cast<std::size_t>(std::min(length, rest))};
}

}  // namespace

std::optional<Bytes> FindCodestream(Bytes stream) noexcept {
    constexpr std::uint32_t kCodestreamBox = 0x6A703263;  // "jp2c"
    if (BeginsWithCodestream(stream)) return stream;
    std::size_t place = 0;
    while (auto box = BoxAt(stream, place)) {
        const Bytes content = stream.subspan(box->begin, box->end - box->begin);
        if (box->kind == kCodestreamBox) {
            return BeginsWithCodestream(content) ? std::optional(content) : std::nullopt;
        }
        place = box->end;
    }
    return std::nullopt;
}

std::optional<Jpeg2000Header> ReadJpeg2000Header(Bytes codestream) noexcept {
    if (!BeginsWithCodestream(codestream)) return std::nullopt;
    const auto size = SegmentAt(codestream, 2);
    Jpeg2000Header header;
    Grid grid{};
    Demand demand;
    if (!size || !ReadSize(size->content, grid, header)) return std::nullopt;
    const auto tileParts = ReadSegments(codestream, size->next, kSot, [&](const Segment& segment) {
        if (segment.marker == kCod && segment.content.size() > 4) {
            constexpr std::size_t kTransform = 9;
            header.hasColourTransform = segment.content[4] != 0;
            header.isReversible =
                segment.content.size() > kTransform && segment.content[kTransform] == 1;
        }
        return ReadCoding(segment, grid, header, demand);
    });
    if (!tileParts || demand.layers == 0) return std::nullopt;
    if (!ReadTileStyles(codestream, *tileParts, grid, header, demand)) return std::nullopt;
    header.packets = Packets(demand, header);
    return header;
}

}  // namespace quorvex
