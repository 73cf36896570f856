#include "foundation/engines/jpeg2000/decoder/codestream/codestream.h"

#include "foundation/engines/jpeg2000/decoder/codestream/markers.h"
#include "foundation/engines/jpeg2000/decoder/codestream/packed_headers.h"

#include <algorithm>

namespace quorvex::j2k {
namespace {

constexpr std::size_t kSotBytes = 12;
constexpr std::size_t kLeastTilePart = kSotBytes + 2;

bool IsMultiComponent(unsigned marker) noexcept {
    return marker == kMct || marker == kMcc || marker == kMco || marker == kCbd;
}

// Reads marker segments up to one that begins something else, and calls `read(marker, content)`
// for each. False where they are damaged, break off or are refused.
template <class Read>
bool ReadSegments(ByteReader& reader, const Read& read) {
    while (true) {
        const std::uint32_t marker = reader.Ahead();
        if (marker == kSot || marker == kSod) return true;
        if (marker < 0xFF00) return false;
        static_cast<void>(reader.Word());
        if (marker >= 0xFF30 && marker <= 0xFF3F) continue;  // these have no content
        const std::uint32_t length = reader.Word();
        if (reader.RanOut() || length < 2 || length - 2 > reader.Left()) return false;
        if (!read(marker, reader.Take(length - 2))) return false;
    }
}

bool ReadMainHeader(ByteReader& reader, Codestream& codestream) {
    if (reader.Word() != kSoc || reader.Word() != kSiz) return false;
    const std::uint32_t length = reader.Word();
    if (reader.RanOut() || length < 2 || length - 2 > reader.Left() ||
        !ReadSize(reader.Take(length - 2), codestream.size))
        return false;
    Parameters& parameters = codestream.parameters;
    parameters.components.resize(codestream.size.components.size());
    PackedHeaderParts packed;
    const bool isSound = ReadSegments(reader, [&](std::uint32_t marker, Bytes content) {
        if (IsMultiComponent(marker)) codestream.isMultiComponent = true;
        if (marker == kPpm) return packed.Add(content);
        return ReadSegment(marker, content, parameters);
    });
    codestream.hasPackedHeaders = !packed.IsEmpty();
    codestream.packed = packed.Join();
    return isSound && parameters.hasStyle && parameters.hasQuantisation;
}

enum class PartEnd { kWhole, kCut, kNone };

// The tile-part that begins at `bytes`; `length` receives how long it says it is, or is.
PartEnd ReadTilePart(Bytes bytes, std::uint64_t tiles, TilePart& part, std::size_t& length) {
    ByteReader reader(bytes);
    if (reader.Word() != kSot || reader.Word() != kSotBytes - 2) return PartEnd::kNone;
    part.tile = reader.Word();
    length = reader.Long();
    static_cast<void>(reader.Word());  // its number, and how many: their order tells
    if (reader.RanOut() || part.tile >= tiles) return PartEnd::kNone;
    const bool isCut = length > bytes.size();
    if (length == 0 || isCut) length = bytes.size();
    if (length < kLeastTilePart) return PartEnd::kNone;
    ByteReader header(bytes.subspan(kSotBytes, length - kSotBytes));
    if (!ReadSegments(header, [](std::uint32_t, Bytes) { return true; })) return PartEnd::kNone;
    part.header = bytes.subspan(kSotBytes, header.Place());
    if (header.Word() != kSod) return PartEnd::kNone;
    part.body = header.Rest();
    return isCut ? PartEnd::kCut : PartEnd::kWhole;
}

// Bytes behind the last whole tile-part are junk that some writers leave there, unless they begin
// like a tile-part.
void ReadTileParts(Bytes bytes, Codestream& codestream) {
    const std::uint64_t tiles = codestream.size.TilesAcross() * codestream.size.TilesDown();
    PackedHeaderShares shares(codestream.packed);
    while (bytes.size() >= 2) {
        TilePart part;
        std::size_t length = 0;
        const PartEnd end = ReadTilePart(bytes, tiles, part, length);
        if (end == PartEnd::kNone) {
            codestream.isCut |= ByteReader(bytes).Ahead() == kSot;
            break;
        }
        part.packedHeaders = shares.Next();
        codestream.parts.push_back(part);
        codestream.isCut |= end == PartEnd::kCut;
        bytes = bytes.subspan(length);
    }
    std::stable_sort(codestream.parts.begin(), codestream.parts.end(),
                     [](const TilePart& a, const TilePart& b) { return a.tile < b.tile; });
}

}  // namespace

std::span<const TilePart> Codestream::PartsOf(std::uint32_t tile) const noexcept {
    const auto isBefore = [](const TilePart& part, std::uint32_t number) {
        return part.tile < number;
    };
    const auto first = std::lower_bound(parts.begin(), parts.end(), tile, isBefore);
    auto last = first;
    while (last != parts.end() && last->tile == tile) ++last;
    return {first, last};
}

bool ReadCodestream(Bytes bytes, Codestream& codestream) {
    ByteReader reader(bytes);
    if (!ReadMainHeader(reader, codestream)) return false;
    ReadTileParts(reader.Rest(), codestream);
    return true;
}

TileHeader ReadTileHeader(const Codestream& codestream, std::uint32_t tile) {
    TileHeader header;
    header.parameters = codestream.parameters;
    for (ComponentParameters& component : header.parameters.components) {
        component.hasOwnStyle = false;
        component.hasOwnQuantisation = false;
    }
    bool hasOwnVolumes = false;
    PackedHeaderParts packed;
    for (const TilePart& part : codestream.PartsOf(tile)) {
        ByteReader reader(part.header);
        const auto read = [&](std::uint32_t marker, Bytes content) {
            if (marker == kPpt) return packed.Add(content);
            if (marker == kPoc && !hasOwnVolumes) {
                header.parameters.volumes.clear();
                hasOwnVolumes = true;
            }
            return ReadSegment(marker, content, header.parameters);
        };
        // The segments end where the header does.
        if (!ReadSegments(reader, read) && reader.Left() > 0) header.isSound = false;
        packed.EndTilePart();
        header.packed.insert(header.packed.end(), part.packedHeaders.begin(),
                             part.packedHeaders.end());
    }
    header.hasPackedHeaders = codestream.hasPackedHeaders || !packed.IsEmpty();
    const std::vector<unsigned char> own = packed.Join();
    header.packed.insert(header.packed.end(), own.begin(), own.end());
    return header;
}

}  // namespace quorvex::j2k
